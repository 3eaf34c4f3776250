"""Writes the classes of all versions as C++: one header a class, nested as the elements nest, and one
source a branch with the tables that the engine works on."""
from . import accessors, descriptions, operations, root
from .text import BANNER, BODY_WIDTH, comment, fill, fold, function, indent, write_if_changed


def _public(cls):
    """The operations that anyone may call, but for the destructor."""
    made = [*operations.life(cls.name), operations.write_element(), operations.read_element()]
    return made + (operations.document(cls.name) if cls.has_document else [])


def _declarations(cls):
    """The class body without its nested classes' definitions."""
    lines = [*operations.declarations(_public(cls)), f"virtual ~{cls.name}();"]
    if cls.is_choice:
        names = ", ".join(f"e_{m.identifier}" for m in cls.elements)
        lines += ["", *fold(f"enum elmx_chosen {{ {names}, e_nothing_chosen }};"),
                  *function("elmx_chosen getchosen() const",
                            "return static_cast<elmx_chosen>(m_choice.chosen);")]
    for member in cls.members:
        lines += ["", *comment(accessors.describe(member)), *accessors.of(member)]
    return lines + ["", "// What the engine knows of the class.",
                    "static const binding::ClassDescription s_description;"]


def _private(cls):
    lines = [*operations.declarations(operations.insides(cls.is_choice)),
             "static const binding::Member s_members[];", ""]
    if cls.is_choice:
        return lines + ["binding::Choice m_choice;"]
    return lines + [line for m in cls.members
                    for line in fold(f"{accessors.storage(m)} m_{m.identifier};")]


def _class_text(version, cls):
    nested = [f'#include "{"/".join(n.file_path[-2:])}.inc"' for n in cls.nested]
    protected = operations.declarations(operations.parts(cls.text))
    return [f"// {cls.element}, in schema {version.text}",
            f"class ANNOTATION_API {cls.name} {{", " public:",
            *nested, *([""] if nested else []),
            *indent(_declarations(cls)), "", " protected:", *indent(protected),
            "", " private:", *indent(_private(cls)), "};"]


def _definitions(cls):
    q = cls.qualified
    made = [*_public(cls), *operations.parts(cls.text), *operations.insides(cls.is_choice)]
    return operations.definitions(made, q) + function(f"{q}::~{cls.name}()", "release();")


def _source(version, header, classes):
    symbols = descriptions.symbols(classes)
    maps = [line for cls in classes for line in descriptions.maps(cls, symbols[cls.qualified])]
    lines = [BANNER, f'#include "{header}"', "", "#include <cstddef>", "",
             '#include "binding/document.h"', '#include "binding/engine.h"', "",
             f"namespace {version.namespace} {{", ""]
    if maps:
        lines += ["namespace {", ""] + maps + ["", "}  // namespace", ""]
    for cls in classes:
        lines += descriptions.tables(cls, symbols[cls.qualified]) + [""] + _definitions(cls) + [""]
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
            yield f"{version.tag}/{'/'.join(cls.file_path)}.inc", [BANNER] + _class_text(version, cls)


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
        entries = [f'{{{schema.numbers[t]}, "{t}"}}' for t in texts]
        lines += [f"inline constexpr binding::Enumerated {name}[] =",
                  *indent(indent(fill("{", entries, "};", BODY_WIDTH - 2)))]
    yield "level1bProduct/value_sets.h", lines + ["", "}  // namespace level1bProduct::value_sets"]


def _index(version):
    rows = [f"{c.qualified}\t{version.tag}/" + "/".join(c.file_path)
            + (".h" if c.is_global else ".inc")
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
