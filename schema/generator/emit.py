"""Writes the classes of all versions as C++: one header a class, nested as the elements nest, and one
source a branch with the tables that the engine works on."""
from . import accessors, root
from .text import BANNER, indent, write_if_changed

VALUE_TYPES = {"string": "string", "any": "string", "double": "float64", "float": "float32",
               "int32": "int32", "uint32": "uint32", "int64": "int64", "uint64": "uint64",
               "uint8": "uint8", "boolean": "boolean", "dateTime": "date_time"}
INTEGER_RANGES = {
    "int32": ("int32_lowest", "int32_highest"), "uint32": ("zero", "uint32_highest"),
    "int64": ("int64_lowest", "int64_highest"), "uint64": ("zero", "uint64_highest")}
BOUND_NAMES = {"-1": "minus_one", "0": "zero", "1": "one", "20": "twenty",
               "2147483647": "int32_highest", "18446744073709551615": "uint64_highest"}
DOCUMENT_OPERATIONS = [
    "{name}(const char* a_file_name, lmx::elmx_error* a_error);",
    "{name}(const char* a_data, std::size_t a_length, lmx::elmx_error* a_error);",
    "{name}(const std::string& a_xml_text, lmx::elmx_error* a_error);",
    "lmx::elmx_error unmarshal(const char* a_file_name);",
    "lmx::elmx_error unmarshal(const char* a_data, std::size_t a_length);",
    "lmx::elmx_error unmarshal(const std::string& a_xml_text);",
    "lmx::elmx_error unmarshal(lmx::c_xml_reader& a_reader);",
    "lmx::elmx_error marshal(const char* a_file_name) const;",
    "lmx::elmx_error marshal(std::string* a_text) const;",
    "lmx::elmx_error marshal(std::ostream& a_stream) const;",
]


def _declarations(cls):
    """The class body without its nested classes' definitions."""
    name = cls.name
    lines = [
        f"{name}();",
        f"{name}(const {name}& a_other);",
        f"{name}& operator=(const {name}& a_other);",
        f"virtual ~{name}();",
        f"void swap({name}& a_other);",
        "void reset();",
        "bool is_occurs_ok() const;",
        "lmx::elmx_error marshal(lmx::c_xml_writer& a_writer, const char* a_element_name) const;",
        "lmx::elmx_error unmarshal(lmx::c_xml_reader& a_reader, const std::string& "
        "a_element_name);",
    ]
    if cls.has_document:
        lines += [line.format(name=name) for line in DOCUMENT_OPERATIONS]
    if cls.is_choice:
        names = ", ".join(f"e_{m.identifier}" for m in cls.elements)
        lines += ["", f"enum elmx_chosen {{ {names}, e_nothing_chosen }};",
                  "elmx_chosen getchosen() const { return "
                  "static_cast<elmx_chosen>(m_choice.chosen); }"]
    for member in cls.members:
        lines += ["", f"// {accessors.describe(member)}"] + accessors.of(member)
    lines += ["", "// What the engine knows of the class.",
              "static const binding::class_description s_description;"]
    return lines


def _protected(cls):
    content = ", bool a_has_content" if cls.text else ""
    return [
        "void marshal_attributes(lmx::c_xml_writer& a_writer) const;",
        "lmx::elmx_error marshal_child_elements(lmx::c_xml_writer& a_writer) const;",
        "bool unmarshal_attributes(lmx::c_xml_reader& a_reader, const std::string& a_name, "
        "lmx::elmx_error* a_error);",
        "lmx::elmx_error unmarshal_attributes_check(lmx::c_xml_reader& a_reader);",
        "bool unmarshal_body(lmx::c_xml_reader& a_reader, std::string* a_name, lmx::elmx_error* "
        f"a_error{content});",
    ]


def _private(cls):
    lines = ["void init();", "void release();"]
    if cls.is_choice:
        lines.append("void release_choice();")
    lines += ["static const binding::member s_members[];", ""]
    if cls.is_choice:
        lines.append("binding::choice m_choice;")
    else:
        lines += [f"{accessors.storage(m)} m_{m.identifier};" for m in cls.members]
    return lines


def _class_text(version, cls):
    nested = [f'#include "{version.tag}/{"/".join(n.path)}.inc"  // element {n.element}'
              for n in cls.nested]
    lines = [f"// {cls.element}, in schema {version.text}",
             f"class ANNOTATION_API {cls.name} {{", " public:"]
    lines += nested + ([""] if nested else [])
    lines += indent(_declarations(cls)) + ["", " protected:"] + indent(_protected(cls))
    lines += ["", " private:"] + indent(_private(cls)) + ["};"]
    return lines


def _bounds(row):
    if row.type not in VALUE_TYPES or row.type in ("double", "float"):
        return "{}"
    if row.bounds:
        lower, upper = (BOUND_NAMES[b] for b in row.bounds)
    elif row.type in INTEGER_RANGES:
        lower, upper = INTEGER_RANGES[row.type]
    else:
        return "{}"
    return f"{{&binding::{lower}, &binding::{upper}}}"


def _limit(row):
    """The magnitude that bounds a floating value on both sides, 0 for none."""
    return row.bounds[1] if row.bounds and row.type in ("double", "float") else "0"


def _member_row(cls, member):
    row = member.row
    role = "element" if row.kind == "choice" else row.kind
    nested = f"&{member.class_name}::s_description" if member.is_object else "nullptr"
    offset = flag = "0"
    if not cls.is_choice:
        offset = f"offsetof({cls.qualified}, m_{member.identifier})"
        if member.form not in ("object_list", "string_list"):
            flag = f"offsetof({cls.qualified}, m_{member.identifier}.is_set)"
    maximum = "binding::unbounded" if member.maximum is None else member.maximum
    values = f"value_sets::{row.values}" if row.values else "{}"
    return (f'{{"{row.name}", binding::role::{role}, binding::form::{member.form}, '
            f"binding::value_type::{VALUE_TYPES.get(row.type, 'string')}, {member.event}, {offset}, "
            f"{member.minimum}, {maximum}, {row.max_length}, {values}, {_bounds(row)}, "
            f"{_limit(row)}, {nested}, {flag}}},")


def _event_map(name, members):
    rows = [f'{{1, "{m.name}", {len(m.name)}, {m.event}}},' for m in members]
    return ([f"constexpr lmx::s_event_map {name}[] = {{"] + indent(rows + ["{0, nullptr, 0, 1},"])
            + ["};"])


def _symbol(cls):
    return "_".join(cls.path)


def _maps(version, cls):
    """The class's event maps; a class that extends a named type uses that type's element map."""
    lines = []
    if cls.attributes:
        lines += _event_map(f"{_symbol(cls)}_attributes", cls.attributes)
    if cls.elements and not cls.base:
        lines += _event_map(f"{_symbol(cls)}_elements", cls.elements)
    return lines


def _description(version, cls):
    q, attributes = cls.qualified, len(cls.attributes)
    elements = len(cls.elements)
    attribute_map = f"{_symbol(cls)}_attributes" if cls.attributes else "nullptr"
    element_map = f"{_symbol(cls)}_elements" if cls.elements else "nullptr"
    if cls.base:
        element_map = f"{cls.base}::s_description.element_map"
    text = f"&s_members[{attributes + elements}]" if cls.text else "nullptr"
    choice = f"offsetof({q}, m_choice)" if cls.is_choice else "0"
    ordered = cls.attributes + cls.elements + ([cls.text] if cls.text else [])

    def word(value):
        return "true" if value else "false"

    return (
        [f"constinit const binding::member {q}::s_members[] = {{"]
        + indent([_member_row(cls, m) for m in ordered]) + ["};", ""]
        + [f"const binding::class_description {q}::s_description = {{"]
        + indent([
            f'"{q}", "{cls.element}", source_tag,',
            f"{{s_members, {attributes}}}, {{s_members + {attributes}, {elements}}}, {text},",
            f"{attribute_map}, {element_map}, {choice},",
            f"{word(cls.is_choice)}, {word(cls.may_be_empty)}, {word(cls.is_global)},",
            f"&binding::create<{q}>, &binding::destroy<{q}>"])
        + ["};"])


def _operations(version, cls):
    q, name = cls.qualified, cls.name
    engine = "s_description, this"
    content = ", bool a_has_content" if cls.text else ""
    body = ("read_text(s_description, this, a_reader, *a_name, a_error, a_has_content)"
            if cls.text else "read_content(s_description, this, a_reader, a_name, a_error)")
    init = "m_choice.chosen = e_nothing_chosen;" if cls.is_choice else "binding::init(s_description, this);"
    lines = [
        f"{q}::{name}() {{ init(); }}",
        f"{q}::{name}(const {name}& a_other) {{",
        "  init();",
        "  try {",
        "    binding::copy(s_description, this, &a_other);",
        "  } catch (...) {",
        "    release();",
        "    throw;",
        "  }",
        "}",
        f"{q}& {q}::operator=(const {name}& a_other) {{",
        f"  {name} copied(a_other);",
        "  swap(copied);",
        "  return *this;",
        "}",
        f"{q}::~{name}() {{ release(); }}",
        f"void {q}::swap({name}& a_other) {{ binding::swap({engine}, &a_other); }}",
        f"void {q}::reset() {{ {name} fresh; swap(fresh); }}",
        f"bool {q}::is_occurs_ok() const {{ return binding::is_occurs_ok({engine}); }}",
        f"void {q}::init() {{ {init} }}",
        f"void {q}::release() {{ binding::release({engine}); }}",
        f"lmx::elmx_error {q}::marshal(lmx::c_xml_writer& a_writer, const char* a_element_name) "
        f"const {{ return binding::write_element({engine}, a_writer, a_element_name); }}",
        f"void {q}::marshal_attributes(lmx::c_xml_writer& a_writer) const {{ "
        f"binding::write_attributes({engine}, a_writer); }}",
        f"lmx::elmx_error {q}::marshal_child_elements(lmx::c_xml_writer& a_writer) const {{ return "
        f"binding::write_content({engine}, a_writer); }}",
        f"lmx::elmx_error {q}::unmarshal(lmx::c_xml_reader& a_reader, const std::string& "
        f"a_element_name) {{ return binding::read_element({engine}, a_reader, a_element_name); }}",
        f"bool {q}::unmarshal_attributes(lmx::c_xml_reader& a_reader, const std::string& a_name, "
        f"lmx::elmx_error* a_error) {{ return binding::read_attribute({engine}, a_reader, a_name, "
        "a_error); }",
        f"lmx::elmx_error {q}::unmarshal_attributes_check(lmx::c_xml_reader& a_reader) {{ return "
        f"binding::check_attributes({engine}, a_reader); }}",
        f"bool {q}::unmarshal_body(lmx::c_xml_reader& a_reader, std::string* a_name, "
        f"lmx::elmx_error* a_error{content}) {{ return binding::{body}; }}",
    ]
    if cls.is_choice:
        lines.append(f"void {q}::release_choice() {{ binding::release_choice(s_description, "
                     "m_choice); }")
    if cls.has_document:
        lines += document_operations(q, name)
    return lines


def document_operations(q, name):
    """The document-level entry points, the same for every global element and the root."""
    lines = []
    for parameters, arguments in (
            ("const char* a_file_name", "a_file_name"),
            ("const char* a_data, std::size_t a_length", "a_data, a_length"),
            ("const std::string& a_xml_text", "a_xml_text")):
        lines += [
            f"{q}::{name}({parameters}, lmx::elmx_error* a_error) {{",
            "  *a_error = lmx::error_nothing_read;",
            "  init();",
            "  try {",
            f"    *a_error = unmarshal({arguments});",
            "  } catch (...) {",
            "    release();",
            "    throw;",
            "  }",
            "}",
            f"lmx::elmx_error {q}::unmarshal({parameters}) {{ return binding::read_from(*this, "
            f"{arguments}); }}",
        ]
    lines.append(f"lmx::elmx_error {q}::unmarshal(lmx::c_xml_reader& a_reader) {{ return "
                 "binding::read_document(s_description, this, a_reader); }")
    for parameter in ("const char* a_file_name", "std::string* a_text", "std::ostream& a_stream"):
        argument = parameter.split()[-1].lstrip("*&")
        lines.append(f"lmx::elmx_error {q}::marshal({parameter}) const {{ return "
                     f"binding::write_to(*this, {argument}, s_description.name); }}")
    return lines


def _source(version, header, classes):
    lines = [BANNER, f'#include "{header}"', "", "#include <cstddef>", "",
             '#include "binding/document.h"', '#include "binding/engine.h"', "",
             f"namespace {version.namespace} {{", ""]
    maps = [line for cls in classes for line in _maps(version, cls)]
    if maps:
        lines += ["namespace {", ""] + maps + ["", "}  // namespace", ""]
    for cls in classes:
        lines += _description(version, cls) + [""] + _operations(version, cls) + [""]
    return lines + [f"}}  // namespace {version.namespace}"]


def _with_nested(cls):
    yield cls
    for nested in cls.nested:
        yield from _with_nested(nested)


def _headers(version):
    """Header or fragment of every class: path below the output folder -> lines."""
    for cls in version.classes.values():
        if cls.is_global:
            users = {m.row.type for c in _with_nested(cls) for m in c.members if m.is_object}
            users |= {c.base for c in _with_nested(cls) if c.base}
            needed = sorted(u for u in users if version.classes[u].is_global and u != cls.name)
            includes = [f'#include "{version.tag}/{u}.h"' for u in needed]
            lines = [BANNER, "#pragma once", "", '#include "schema/class_parts.h"',
                     f'#include "{version.tag}/source_tag.h"'] + includes
            lines += ["", f"namespace {version.namespace} {{", ""] + _class_text(version, cls)
            lines += ["", f"}}  // namespace {version.namespace}"]
            yield f"{version.tag}/{cls.name}.h", lines
        else:
            yield f"{version.tag}/{'/'.join(cls.path)}.inc", [BANNER] + _class_text(version, cls)


def _sources(version):
    product = version.classes["c_level1Product"]
    small = [c for g in version.globals if g is not product for c in _with_nested(g)]
    header = f"{version.tag}/{version.namespace}.h"
    yield f"{version.tag}/globals.cpp", _source(version, header, small)
    yield f"{version.tag}/c_level1Product.cpp", _source(version, header, [product])
    for branch in product.nested:
        yield (f"{version.tag}/{branch.name}.cpp",
               _source(version, header, list(_with_nested(branch))))


def _shared(schema):
    enumerators = [f"e_{text} = {number}," for text, number in schema.numbers.items()]
    yield "level1bProduct/enumeration.h", [
        BANNER, "#pragma once", "", "namespace level1bProduct {", "",
        "// The numbers of all enumerated texts, the same in every version.",
        "enum elmx_enums : int {", "  e_no_match = 0,"] + indent(enumerators) + [
        "};", "", "}  // namespace level1bProduct"]
    lines = [BANNER, "#pragma once", "", '#include "binding/value_set.h"', "",
             "namespace level1bProduct::value_sets {", ""]
    for name, texts in schema.value_sets.items():
        entries = ", ".join(f'{{{schema.numbers[t]}, "{t}"}}' for t in texts)
        lines.append(f"inline constexpr binding::enumerated {name}[] = {{{entries}}};")
    yield "level1bProduct/value_sets.h", lines + ["", "}  // namespace level1bProduct::value_sets"]


def _index(version):
    rows = [f"{c.qualified}\t{version.tag}/" + ("/".join(c.path) + (".h" if c.is_global else ".inc"))
            for c in version.classes.values()]
    return ["# Class and the file that declares it."] + sorted(rows)


def _tag_header(version):
    return [BANNER, "#pragma once", "", f"namespace {version.namespace} {{", "",
            "// Names this version's classes in reports.",
            f'inline constexpr char source_tag[] = "{version.tag}";', "",
            f"}}  // namespace {version.namespace}"]


def write_classes(version, folder):
    """The declarations of a version's classes."""
    for path, lines in _headers(version):
        write_if_changed(folder / path, lines)


def write_all(versions, schema, folder):
    for path, lines in _shared(schema):
        write_if_changed(folder / path, lines)
    for version in versions:
        write_if_changed(folder / version.tag / "source_tag.h", _tag_header(version))
        write_if_changed(folder / version.tag / "index.tsv", _index(version))
        write_classes(version, folder)
        for path, lines in [*_sources(version), *root.files(version)]:
            write_if_changed(folder / path, lines)
