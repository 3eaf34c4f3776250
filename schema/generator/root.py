"""The document root of a version: a choice among its global elements, with the product view."""
from . import accessors, descriptions, operations
from .accessors import ERROR, INDEX, NUMBER, TEXT
from .operations import READER, SELF, Operation
from .text import BANNER, fold, function, indent


def _form(cls):
    """How the root holds a global element: an object of its class, its text, or its list."""
    if cls.text is None:
        return "object"
    return "token_list" if cls.text.row.is_list else "scalar"


def _by_number(signature, values, call):
    """An operation by an enumerator that passes on its text, where the set holds it."""
    return function(signature,
                    f"const binding::Enumerated* entry = binding::entry_of({values}, a_value);",
                    f"return entry != nullptr && {call} == 0;")


def _text_accessors(name, values):
    held = "binding::held_object<std::string>(m_choice)"
    return [
        *function(f"const std::string& get_{name}() const",
                  f"return {accessors.chosen(name, 'std::string')};"),
        *function(f"{ERROR} set_{name}({TEXT})",
                  f"{accessors.choose(name, 'std::string')} = a_value;", f"return {ERROR}{{}};"),
        *function(f"elmx_enums getenum_{name}() const",
                  f"return static_cast<elmx_enums>(binding::number_of({values}, {held}));"),
        *_by_number(f"bool setenum_{name}({NUMBER})", values,
                    f"set_{name}(std::string(entry->text))"),
    ]


def _list_accessors(name, values):
    kind = "binding::StringList"
    held = f"binding::held_object<{kind}>(m_choice)"
    past_end = f'"a_index < u.m_{name}->size()", source_tag'
    return [
        *function(f"std::size_t size_{name}() const",
                  f"return m_choice.chosen == e_{name} ? {held}.size() : 0;"),
        *function(f"const std::string& get_{name}({INDEX}) const",
                  f"return {accessors.chosen(name, kind)}.get(a_index, {past_end});"),
        *function(f"{ERROR} append_{name}({TEXT})",
                  f"return {accessors.choose(name, kind)}.append(a_value);"),
        *_by_number(f"bool appendenum_{name}({NUMBER})", values,
                    f"append_{name}(std::string(entry->text))"),
        *function(f"{ERROR} set_{name}({INDEX}, {TEXT})", f"return {held}.set(a_index, a_value);"),
        *function(f"{ERROR} insert_{name}({INDEX}, {TEXT})",
                  f"return {held}.insert(a_index, a_value);"),
        *function(f"elmx_enums getenum_{name}({INDEX}) const",
                  "return static_cast<elmx_enums>("
                  f"{held}.number(a_index, {values}, {past_end}));"),
        *function(f"bool setenum_{name}({INDEX}, {NUMBER})",
                  f"return {held}.set_number(a_index, {values}, a_value);"),
        *function(f"bool insertenum_{name}({INDEX}, {NUMBER})",
                  f"return {held}.insert_number(a_index, {values}, a_value);"),
        *function(f"void delete_{name}({INDEX})", f"{held}.remove(a_index, {past_end});"),
        *function(f"void clear_{name}()", f"{held}.clear();"),
    ]


def _accessors(name, cls):
    form = _form(cls)
    if form == "object":
        return accessors.chosen_object(name, cls.name)
    values = f"value_sets::{cls.text.row.values}"
    return (_text_accessors if form == "scalar" else _list_accessors)(name, values)


def _read_current():
    return Operation("bool", "unmarshal", f"{READER}, std::string* a_name, {ERROR}* a_error", "",
                     f"return binding::read_current_member({SELF}, a_reader, a_name, a_error);")


def _header(version):
    name = f"c_{version.namespace}"
    names = ", ".join(f"e_{n}" for n, _, _ in version.root_members)
    body = [
        *fold(f"enum elmx_chosen {{ {names}, e_nothing_chosen }};"), "",
        *operations.declarations(operations.life(name)),
        f"~{name}() override;",
        *function("elmx_chosen getchosen() const",
                  "return static_cast<elmx_chosen>(m_choice.chosen);"), "",
        *operations.declarations(operations.document(name)),
        *operations.declarations([operations.write_element()]), "",
        "// Reads the global element on which the reader stands. True on success; `*a_error` stays as",
        "// it was where a text or a list was read without a fault.",
        *operations.declarations([_read_current()]), "",
        "// Whether the reader stands on a global element of this version; the event stays as",
        "// classified when it does.",
        f"static bool is_member({READER}, const std::string& a_name);",
    ]
    for member, cls, _ in version.root_members:
        body += ["", f"// element {member}"] + _accessors(member, cls)
    body += ["", "// What the engine knows of the root.",
             "static const binding::ClassDescription s_description;"]
    return [
        BANNER, "#pragma once", "", '#include "schema/class_parts.h"',
        '#include "schema/product_view.h"', f'#include "{version.tag}/source_tag.h"',
        *[f'#include "{version.tag}/{cls.name}.h"' for cls in version.globals],
        "", f"namespace {version.namespace} {{", "",
        f"// The document: a choice among the global elements of schema {version.text}. The product",
        "// view walks its level1Product.",
        f"class ANNOTATION_API {name} : public level1bProduct::ProductView<{name}> {{",
        " public:", *indent(body), "",
        " protected:", *indent(operations.declarations([operations.write_content()])), "",
        " private:", *indent([*operations.declarations(operations.insides(True)), "",
                              "static const binding::Member s_members[];",
                              "binding::Choice m_choice;"]), "};",
        "", f"}}  // namespace {version.namespace}"]


def _member(name, cls, event):
    fields = [f".event = {event}"]
    fields.append(f".values = value_sets::{cls.text.row.values}" if cls.text
                  else f".nested = &{cls.name}::s_description")
    return descriptions.member_row(name, "element", _form(cls), fields)


def _source(version):
    name = f"c_{version.namespace}"
    defined = [*operations.life(name), *operations.document(name), operations.write_element(),
               operations.write_content(), _read_current(), *operations.insides(True)]
    events = [(n, event) for n, _, event in version.root_members]
    fields = [f'.class_name = "{name}"', f'.name = "{version.namespace}"', ".source_tag = source_tag",
              ".content = binding::Content::document", f".elements = {{s_members, {len(events)}}}",
              ".element_map = root_elements", f".choice_offset = offsetof({name}, m_choice)",
              ".is_global = true", f".create = &binding::create<{name}>",
              f".destroy = &binding::destroy<{name}>"]
    return [
        BANNER, f'#include "{version.tag}/{version.namespace}.h"', "", "#include <cstddef>", "",
        '#include "binding/document.h"', '#include "binding/engine.h"', "",
        f"namespace {version.namespace} {{", "", "namespace {", "",
        *descriptions.event_map("root_elements", events), "", "}  // namespace", "",
        *descriptions.member_table(name, [_member(*m) for m in version.root_members]), "",
        *descriptions.class_row(name, fields), "",
        *operations.definitions(defined, name),
        *function(f"{name}::~{name}()", "release();"),
        *function(f"bool {name}::is_member({READER}, const std::string&)",
                  "return binding::stands_on_member(s_description, a_reader);"),
        "", f"}}  // namespace {version.namespace}"]


def files(version):
    yield f"{version.tag}/{version.namespace}.h", _header(version)
    yield f"{version.tag}/{version.namespace}.cpp", _source(version)
