"""The tables by which the engine knows a class: its event maps, its members and itself."""
from .text import BODY_WIDTH, fill, fold, indent, literal

VALUE_TYPES = {"string": "string", "any": "string", "double": "float64", "float": "float32",
               "int32": "int32", "uint32": "uint32", "int64": "int64", "uint64": "uint64",
               "uint8": "uint8", "boolean": "boolean", "dateTime": "date_time"}
INTEGER_RANGES = {
    "int32": ("int32_lowest", "int32_highest"), "uint32": ("zero", "uint32_highest"),
    "int64": ("int64_lowest", "int64_highest"), "uint64": ("zero", "uint64_highest")}
BOUND_NAMES = {"-1": "minus_one", "0": "zero", "1": "one", "20": "twenty",
               "2147483647": "int32_highest", "18446744073709551615": "uint64_highest"}


def event_map(name, rows):
    """A map from names to event numbers; `rows` are (name, event)."""
    lines = [f'{{1, "{n}", {len(n)}, {event}}},' for n, event in rows]
    return [f"constexpr lmx::s_event_map {name}[] = {{", *indent(lines + ["{0, nullptr, 0, 1},"]),
            "};"]


def _facet_fields(row):
    """What a value is checked by."""
    fields = []
    if row.max_length:
        fields.append(f".max_length = {row.max_length}")
    if row.values:
        fields.append(f".values = value_sets::{row.values}")
    if row.type in ("double", "float"):
        return fields + ([f".limit = {row.bounds[1]}"] if row.bounds else [])
    bounds = [BOUND_NAMES[b] for b in row.bounds] if row.bounds else INTEGER_RANGES.get(row.type)
    if bounds:
        fields.append(f".bounds = {{&binding::{bounds[0]}, &binding::{bounds[1]}}}")
    return fields


def _place_fields(cls, member):
    """Where an object of the class holds the member. A choice holds its members elsewhere."""
    if cls.is_choice:
        return []
    held = f"m_{member.identifier}"
    fields = [[f".offset = offsetof({cls.name},", f"{held})"]]
    if member.form not in ("object_list", "string_list"):
        fields.append([f".flag_offset = offsetof({cls.name},", f"{held}.is_set)"])
    return fields


def member_row(name, role, form, fields):
    return fill("{", [f'.name = "{name}"', f".role = binding::Role::{role}",
                      f".form = binding::Form::{form}", *fields], "},")


def _member(cls, member):
    row = member.row
    # In the order of binding::Member; what is as in most members is left to its defaults.
    value_type = VALUE_TYPES.get(row.type, "string")
    fields = [] if value_type == "string" else [f".type = binding::ValueType::{value_type}"]
    if member.event:
        fields.append(f".event = {member.event}")
    fields += _place_fields(cls, member)
    if member.minimum != 1:
        fields.append(f".minimum = {member.minimum}")
    if member.maximum is None:
        fields.append(".maximum = binding::unbounded")
    elif member.maximum != 1:
        fields.append(f".maximum = {member.maximum}")
    fields += _facet_fields(row)
    if member.is_object:
        fields.append(f".nested = &{member.class_name}::s_description")
    return member_row(row.name, "element" if row.kind == "choice" else row.kind, member.form, fields)


def member_table(qualified, rows):
    return [*fold(f"constinit const binding::Member {qualified}::s_members[] = {{"),
            *indent([line for row in rows for line in row]), "};"]


def class_row(qualified, fields):
    return [*fold(f"const binding::ClassDescription {qualified}::s_description ="),
            *indent(indent(fill("{", fields, "};", BODY_WIDTH - 2)))]


def symbols(classes):
    """A name for each class's maps that is its own among these: as much of its path as it needs."""
    paths = {tuple(cls.path) for cls in classes}

    def shortest(path):
        for length in range(1, len(path) + 1):
            tail = path[-length:]
            if sum(other[-length:] == tail for other in paths) == 1:
                return "_".join(part.removeprefix("c_") for part in tail)
        raise ValueError(f"{path} stands twice")

    return {cls.qualified: shortest(tuple(cls.path)) for cls in classes}


def maps(cls, symbol):
    """The class's event maps; a class that extends a named type uses that type's element map."""
    lines = []
    if cls.attributes:
        lines += event_map(f"{symbol}_attributes", [(m.name, m.event) for m in cls.attributes])
    if cls.elements and not cls.base:
        lines += event_map(f"{symbol}_elements", [(m.name, m.event) for m in cls.elements])
    return lines


def _content(cls):
    return "choice" if cls.is_choice else "text" if cls.text else "elements"


def tables(cls, symbol):
    """The members and the description of a class."""
    attributes, elements = len(cls.attributes), len(cls.elements)
    ordered = cls.attributes + cls.elements + ([cls.text] if cls.text else [])
    named = literal(cls.qualified, 70)
    named[0] = f".class_name = {named[0]}"
    fields = [named, f'.name = "{cls.element}"',
              ".source_tag = source_tag", f".content = binding::Content::{_content(cls)}"]
    if attributes:
        fields.append(f".attributes = {{s_members, {attributes}}}")
    if elements:
        fields.append(f".elements = {{s_members + {attributes}, {elements}}}")
    if cls.text:
        fields.append(f".text = &s_members[{attributes + elements}]")
    if attributes:
        fields.append(f".attribute_map = {symbol}_attributes")
    if elements:
        fields.append(f".element_map = {cls.base}::s_description.element_map" if cls.base
                      else f".element_map = {symbol}_elements")
    if cls.is_choice:
        fields.append(f".choice_offset = offsetof({cls.name}, m_choice)")
    if cls.may_be_empty:
        fields.append(".may_be_empty = true")
    if cls.is_global:
        fields.append(".is_global = true")
    fields += [f".create = &binding::create<{cls.name}>", f".destroy = &binding::destroy<{cls.name}>"]
    return (member_table(cls.qualified, [_member(cls, m) for m in ordered]) + [""]
            + class_row(cls.qualified, fields))
