"""The document root of a version: a choice among its global elements, with the product view."""
from . import accessors
from .text import BANNER, indent


def _kind(cls):
    """How the root holds a global element: an object of its class, its text, or its list."""
    if cls.text is None:
        return "object"
    return "token_list" if cls.text.row.is_list else "scalar"


def _accessors(name, cls):
    if _kind(cls) == "object":
        return accessors.chosen_object(name, cls.name)
    values = f"value_sets::{cls.text.row.values}"
    choose = f"s_description, m_choice, e_{name}"
    chosen = f"m_choice, e_{name}"
    if _kind(cls) == "scalar":
        return [
            f"const std::string& get_{name}() const {{ return binding::chosen_text({chosen}, "
            f"\"chosen == e_{name}\", source_tag); }}",
            f"lmx::elmx_error set_{name}(const std::string& a_value) {{ "
            f"binding::choose_text({choose}) = a_value; return lmx::elmx_error{{}}; }}",
            f"elmx_enums getenum_{name}() const {{ return static_cast<elmx_enums>("
            f"binding::number_of({values}, *static_cast<const std::string*>(m_choice.object))); }}",
            f"bool setenum_{name}(elmx_enums a_value) {{ return binding::choose_number({choose}, "
            f"{values}, a_value); }}",
        ]
    held = "binding::held_list(m_choice)"
    return [
        f"std::size_t size_{name}() const {{ return m_choice.chosen == e_{name} ? {held}.size() : "
        "0; }",
        f"const std::string& get_{name}(std::size_t a_index) const {{ return "
        f"binding::chosen_list({chosen}, \"chosen == e_{name}\", source_tag).get(a_index, "
        f"\"a_index < u.m_{name}->size()\", source_tag); }}",
        f"lmx::elmx_error append_{name}(const std::string& a_value) {{ return "
        f"binding::choose_list({choose}).append(a_value); }}",
        f"bool appendenum_{name}(elmx_enums a_value) {{ return binding::entry_of({values}, "
        f"a_value) != nullptr && binding::choose_list({choose}).append_number({values}, a_value); }}",
        f"lmx::elmx_error set_{name}(std::size_t a_index, const std::string& a_value) {{ return "
        f"{held}.set(a_index, a_value); }}",
        f"lmx::elmx_error insert_{name}(std::size_t a_index, const std::string& a_value) {{ return "
        f"{held}.insert(a_index, a_value); }}",
        f"elmx_enums getenum_{name}(std::size_t a_index) const {{ return static_cast<elmx_enums>("
        f"{held}.number(a_index, {values}, \"a_index < u.m_{name}->size()\", source_tag)); }}",
        f"bool setenum_{name}(std::size_t a_index, elmx_enums a_value) {{ return "
        f"{held}.set_number(a_index, {values}, a_value); }}",
        f"bool insertenum_{name}(std::size_t a_index, elmx_enums a_value) {{ return "
        f"{held}.insert_number(a_index, {values}, a_value); }}",
        f"void delete_{name}(std::size_t a_index) {{ {held}.remove(a_index, \"a_index < "
        f"u.m_{name}->size()\", source_tag); }}",
        f"void clear_{name}() {{ {held}.clear(); }}",
    ]


def _header(version):
    name = f"c_{version.namespace}"
    lines = [BANNER, "#pragma once", "", '#include "schema/class_parts.h"',
             '#include "schema/product_view.h"', f'#include "{version.tag}/source_tag.h"']
    lines += [f'#include "{version.tag}/{cls.name}.h"' for cls in version.globals]
    lines += ["", f"namespace {version.namespace} {{", "",
              f"// The document: a choice among the global elements of schema {version.text}. The",
              "// product view walks its level1Product.",
              f"class ANNOTATION_API {name} : public level1bProduct::product_view<{name}> {{",
              " public:"]
    names = ", ".join(f"e_{n}" for n, _, _ in version.root_members)
    body = [
        f"enum elmx_chosen {{ {names}, e_nothing_chosen }};", "",
        f"{name}();",
        f"{name}(const char* a_file_name, lmx::elmx_error* a_error);",
        f"{name}(const char* a_data, std::size_t a_length, lmx::elmx_error* a_error);",
        f"{name}(const std::string& a_xml_text, lmx::elmx_error* a_error);",
        f"{name}(const {name}& a_other);",
        f"{name}& operator=(const {name}& a_other);",
        f"~{name}() override;",
        f"void swap({name}& a_other);",
        "void reset();",
        "bool is_occurs_ok() const;",
        "elmx_chosen getchosen() const { return static_cast<elmx_chosen>(m_choice.chosen); }", "",
        "lmx::elmx_error unmarshal(const char* a_file_name);",
        "lmx::elmx_error unmarshal(const char* a_data, std::size_t a_length);",
        "lmx::elmx_error unmarshal(const std::string& a_xml_text);",
        "lmx::elmx_error unmarshal(lmx::c_xml_reader& a_reader);",
        "bool unmarshal(lmx::c_xml_reader& a_reader, std::string* a_name, lmx::elmx_error* "
        "a_error);",
        "lmx::elmx_error marshal(const char* a_file_name) const;",
        "lmx::elmx_error marshal(std::string* a_text) const;",
        "lmx::elmx_error marshal(std::ostream& a_stream) const;",
        "lmx::elmx_error marshal(lmx::c_xml_writer& a_writer, const char* a_element_name) const;",
        "lmx::elmx_error marshal_child_elements(lmx::c_xml_writer& a_writer) const;", "",
        "// Whether the reader stands on a global element of this version; the event stays as",
        "// classified when it does.",
        "static bool is_member(lmx::c_xml_reader& a_reader, const std::string& a_name);",
    ]
    for member, cls, _ in version.root_members:
        body += ["", f"// element {member}"] + _accessors(member, cls)
    body += ["", "// What the engine knows of the root.",
             "static const binding::class_description s_description;"]
    lines += indent(body) + ["", " private:"] + indent([
        "void init();", "void release();", "void release_choice();", "",
        "static const binding::member s_members[];", "binding::choice m_choice;"]) + ["};"]
    return lines + ["", f"}}  // namespace {version.namespace}"]


def _member_row(name, cls, event):
    values = f"value_sets::{cls.text.row.values}" if cls.text else "{}"
    nested = f"&{cls.name}::s_description" if not cls.text else "nullptr"
    return (f'{{"{name}", binding::role::element, binding::form::{_kind(cls)}, '
            f"binding::value_type::string, {event}, 0, 1, 1, 0, {values}, {{}}, 0, {nested}, 0}},")


def _source(version):
    name = f"c_{version.namespace}"
    lines = [BANNER, f'#include "{version.tag}/{version.namespace}.h"', "", "#include <cstddef>",
             "", '#include "binding/document.h"', '#include "binding/engine.h"',
             '#include "binding/root.h"', "", f"namespace {version.namespace} {{", "",
             "namespace {", "", "constexpr lmx::s_event_map root_elements[] = {"]
    lines += [f'  {{1, "{n}", {len(n)}, {event}}},' for n, _, event in version.root_members]
    lines += ["  {0, nullptr, 0, 1},", "};", "", "}  // namespace", "",
              f"constinit const binding::member {name}::s_members[] = {{"]
    lines += indent([_member_row(*m) for m in version.root_members]) + ["};", ""]
    count = len(version.root_members)
    lines += [f"const binding::class_description {name}::s_description = {{",
              f'  "{name}", "{version.namespace}", source_tag, {{}}, {{s_members, {count}}}, nullptr,',
              f"  nullptr, root_elements, offsetof({name}, m_choice), true, false, true,",
              f"  &binding::create<{name}>, &binding::destroy<{name}>", "};", ""]
    engine = "s_description, m_choice"
    lines += [
        f"{name}::{name}() {{ init(); }}",
        f"{name}::{name}(const {name}& a_other) {{",
        "  init();",
        "  try {",
        "    binding::copy(s_description, this, &a_other);",
        "  } catch (...) {",
        "    release();",
        "    throw;",
        "  }",
        "}",
        f"{name}& {name}::operator=(const {name}& a_other) {{",
        f"  {name} copied(a_other);",
        "  swap(copied);",
        "  return *this;",
        "}",
        f"{name}::~{name}() {{ release(); }}",
        f"void {name}::swap({name}& a_other) {{ std::swap(m_choice, a_other.m_choice); }}",
        f"void {name}::reset() {{ {name} fresh; swap(fresh); }}",
        f"bool {name}::is_occurs_ok() const {{ return m_choice.chosen != e_nothing_chosen; }}",
        f"void {name}::init() {{ m_choice.chosen = e_nothing_chosen; }}",
        f"void {name}::release() {{ release_choice(); }}",
        f"void {name}::release_choice() {{ binding::release_choice({engine}); }}",
        f"bool {name}::unmarshal(lmx::c_xml_reader& a_reader, std::string* a_name, "
        f"lmx::elmx_error* a_error) {{ return binding::read_root({engine}, a_reader, *a_name, "
        "a_error); }",
        f"lmx::elmx_error {name}::marshal(lmx::c_xml_writer& a_writer, const char*) const {{ return "
        f"binding::write_root({engine}, a_writer); }}",
        f"lmx::elmx_error {name}::marshal_child_elements(lmx::c_xml_writer& a_writer) const {{ "
        f"return binding::write_root_content({engine}, a_writer); }}",
        f"bool {name}::is_member(lmx::c_xml_reader& a_reader, const std::string&) {{ return "
        "binding::is_root_member(s_description, a_reader); }",
    ]
    from .emit import document_operations
    for line in document_operations(name, name):
        lines.append(line.replace("binding::read_document(s_description, this, a_reader)",
                                  f"binding::read_root_document({engine}, a_reader)"))
    return lines + ["", f"}}  // namespace {version.namespace}"]


def files(version):
    yield f"{version.tag}/{version.namespace}.h", _header(version)
    yield f"{version.tag}/{version.namespace}.cpp", _source(version)
