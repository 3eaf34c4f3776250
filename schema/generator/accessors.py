"""The accessors of a member, by its shape, as lines of C++."""
from .text import function

CPP_TYPES = {"string": "std::string", "dateTime": "lmx::c_datetime", "double": "double",
             "float": "float", "int32": "std::int32_t", "uint32": "std::uint32_t",
             "int64": "std::int64_t", "uint64": "std::uint64_t", "uint8": "std::uint8_t",
             "boolean": "bool", "any": "std::string"}
ERROR = "lmx::elmx_error"
INDEX = "std::size_t a_index"
TEXT = "const std::string& a_value"
NUMBER = "elmx_enums a_value"


def storage(member):
    """The type that holds the member in its class."""
    form = member.form
    if form == "object":
        return f"binding::Held<{member.class_name}>"
    if form == "object_list":
        bound = f", {member.maximum}" if member.maximum is not None else ""
        return f"binding::ObjectList<{member.class_name}{bound}>"
    if form == "token_list":
        return "binding::TokenList"
    if form == "string_list":
        return "binding::StringList"
    return f"binding::Held<{CPP_TYPES[member.row.type]}>"


def describe(member):
    """What the schema says of a member, for the line above its accessors."""
    row = member.row
    if row.kind == "choice":
        return f"choice {row.name}: {row.type}"
    maximum = "n" if member.maximum is None else str(member.maximum)
    occurs = maximum if str(member.minimum) == maximum else f"{member.minimum}..{maximum}"
    words = [f"{row.kind} {row.name}: {row.type}", occurs]
    if row.is_list:
        words.append("list")
    if row.max_length:
        words.append(f"at most {row.max_length} characters")
    if row.values:
        words.append(f"values of {row.values}")
    if row.bounds:
        words.append(f"{row.bounds[0]} to {row.bounds[1]}")
    return ", ".join(words)


def _enumerated(number):
    return f"return static_cast<elmx_enums>({number});"


def _texts(member):
    name = member.identifier
    held = f"m_{name}"
    entries = f"{held}.entries" if member.form == "token_list" else held
    check = f'a_index, "a_index < {held}.size()", source_tag'
    lines = [
        *function(f"std::size_t size_{name}() const", f"return {entries}.size();"),
        *function(f"const std::string& get_{name}({INDEX}) const", f"return {entries}.get({check});"),
        *function(f"{ERROR} set_{name}({INDEX}, {TEXT})", f"return {held}.set(a_index, a_value);"),
        *function(f"{ERROR} append_{name}({TEXT})", f"return {held}.append(a_value);"),
        *function(f"{ERROR} insert_{name}({INDEX}, {TEXT})",
                  f"return {held}.insert(a_index, a_value);"),
        *function(f"void delete_{name}({INDEX})", f"{entries}.remove({check});"),
        *function(f"void clear_{name}()", f"{entries}.clear();"),
    ]
    if not member.row.values:
        return lines
    values = f"value_sets::{member.row.values}"
    counted = f'a_index, {values}, "a_index < {held}.size()", source_tag'
    return lines + [
        *function(f"elmx_enums getenum_{name}({INDEX}) const",
                  _enumerated(f"{entries}.number({counted})")),
        *function(f"bool setenum_{name}({INDEX}, {NUMBER})",
                  f"return {held}.set_number(a_index, {values}, a_value);"),
        *function(f"bool appendenum_{name}({NUMBER})",
                  f"return {held}.append_number({values}, a_value);"),
        *function(f"bool insertenum_{name}({INDEX}, {NUMBER})",
                  f"return {held}.insert_number(a_index, {values}, a_value);"),
    ]


def _object_list(member):
    name, cls = member.identifier, member.class_name
    held = f"m_{name}"
    check = f'a_index, "a_index < {held}.size()", source_tag'
    return [
        *function(f"std::size_t size_{name}() const", f"return {held}.size();"),
        *function(f"const {cls}& get_{name}({INDEX}) const", f"return {held}.get({check});"),
        *function(f"{cls}& get_{name}({INDEX})", f"return {held}.grow(a_index, source_tag);"),
        *function(f"{cls}& assign_{name}({INDEX}, const {cls}& a_value)",
                  f"return get_{name}(a_index) = a_value;"),
        *function(f"{ERROR} append_{name}()", f"return {held}.append();"),
        *function(f"{ERROR} insert_{name}({INDEX})", f"return {held}.insert(a_index);"),
        *function(f"void delete_{name}({INDEX})", f"{held}.remove({check});"),
        *function(f"void clear_{name}()", f"{held}.clear();"),
        *function(f"{cls}& back_{name}()", f'return {held}.back("!{held}.empty()", source_tag);'),
    ]


def _assign(name, cls):
    return function(f"{cls}& assign_{name}(const {cls}& a_value)", f"return get_{name}() = a_value;")


def _object(member):
    name, cls = member.identifier, member.class_name
    return [
        *function(f"const {cls}& get_{name}() const", f"return m_{name}.value;"),
        *function(f"{cls}& get_{name}()", f"return m_{name}.touch();"),
        *_assign(name, cls),
    ]


def chosen(name, cls):
    """Reading access to a choice's member: an object of a class, a text or a list."""
    return f'binding::chosen<{cls}>(m_choice, e_{name}, "chosen == e_{name}", source_tag)'


def choose(name, cls):
    """Writing access to a choice's member, which makes it the chosen one."""
    return f"binding::choose<{cls}>(m_choice, e_{name}, [this] {{ release_choice(); }})"


def chosen_object(name, cls):
    """The accessors of a choice's member that is an object of a class."""
    return [
        *function(f"const {cls}& get_{name}() const", f"return {chosen(name, cls)};"),
        *function(f"{cls}& get_{name}()", f"return {choose(name, cls)};"),
        *_assign(name, cls),
    ]


def _scalar(member):
    name, cpp = member.identifier, CPP_TYPES[member.row.type]
    passed = f"const {cpp}&" if "::c_" in cpp or cpp == "std::string" else cpp
    lines = [
        *function(f"{passed} get_{name}() const", f"return m_{name}.value;"),
        *function(f"{ERROR} set_{name}({passed} a_value)", f"return m_{name}.set(a_value);"),
    ]
    if member.row.values:
        values = f"value_sets::{member.row.values}"
        lines += [
            *function(f"elmx_enums getenum_{name}() const",
                      _enumerated(f"binding::number_of({values}, m_{name}.value)")),
            *function(f"bool setenum_{name}({NUMBER})",
                      f"return binding::set_number(m_{name}, {values}, a_value);"),
        ]
    return lines


def _presence(name):
    return [
        *function(f"bool isset_{name}() const", f"return m_{name}.is_set;"),
        *function(f"void unset_{name}()", f"m_{name}.is_set = false;"),
    ]


def of(member):
    """All accessors of a member."""
    if member.row.kind == "choice":
        return chosen_object(member.identifier, member.class_name)
    lines = {"object": _object, "object_list": _object_list, "token_list": _texts,
             "string_list": _texts, "scalar": _scalar, "raw": _scalar}[member.form](member)
    flagged = member.form in ("object", "token_list", "scalar")
    if flagged and not member.is_required:
        lines += _presence(member.identifier)
    return lines
