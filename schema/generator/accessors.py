"""The accessors of a member, by its shape, as lines of C++."""

CPP_TYPES = {"string": "std::string", "dateTime": "lmx::c_datetime", "double": "double",
             "float": "float", "int32": "std::int32_t", "uint32": "std::uint32_t",
             "int64": "std::int64_t", "uint64": "std::uint64_t", "uint8": "std::uint8_t",
             "boolean": "bool", "any": "std::string"}
ERROR = "lmx::elmx_error"


def storage(member):
    """The type that holds the member in its class."""
    form = member.form
    if form == "object":
        return f"binding::held<{member.class_name}>"
    if form == "object_list":
        bound = f", {member.maximum}" if member.maximum is not None else ""
        return f"binding::object_list<{member.class_name}{bound}>"
    if form in ("token_list", "string_list"):
        return f"binding::{form}"
    return f"binding::held<{CPP_TYPES[member.row.type]}>"


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


def _enumerated_list(name, entries, values):
    return [
        f"elmx_enums getenum_{name}(std::size_t a_index) const {{ return static_cast<elmx_enums>("
        f"{entries}.number(a_index, {values}, \"a_index < m_{name}.size()\", source_tag)); }}",
        f"bool setenum_{name}(std::size_t a_index, elmx_enums a_value) {{ return "
        f"m_{name}.set_number(a_index, {values}, a_value); }}",
        f"bool appendenum_{name}(elmx_enums a_value) {{ return m_{name}.append_number({values}, "
        "a_value); }",
        f"bool insertenum_{name}(std::size_t a_index, elmx_enums a_value) {{ return "
        f"m_{name}.insert_number(a_index, {values}, a_value); }}",
    ]


def _texts(member):
    name = member.identifier
    entries = f"m_{name}" + (".entries" if member.form == "token_list" else "")
    lines = [
        f"std::size_t size_{name}() const {{ return {entries}.size(); }}",
        f"const std::string& get_{name}(std::size_t a_index) const {{ return "
        f"{entries}.get(a_index, \"a_index < m_{name}.size()\", source_tag); }}",
        f"{ERROR} set_{name}(std::size_t a_index, const std::string& a_value) {{ return "
        f"m_{name}.set(a_index, a_value); }}",
        f"{ERROR} append_{name}(const std::string& a_value) {{ return m_{name}.append(a_value); }}",
        f"{ERROR} insert_{name}(std::size_t a_index, const std::string& a_value) {{ return "
        f"m_{name}.insert(a_index, a_value); }}",
        f"void delete_{name}(std::size_t a_index) {{ {entries}.remove(a_index, \"a_index < m_{name}.size()\", "
        "source_tag); }",
        f"void clear_{name}() {{ {entries}.clear(); }}",
    ]
    if member.row.values:
        lines += _enumerated_list(name, entries, f"value_sets::{member.row.values}")
    return lines


def _object_list(member):
    name, cls = member.identifier, member.class_name
    return [
        f"std::size_t size_{name}() const {{ return m_{name}.size(); }}",
        f"const {cls}& get_{name}(std::size_t a_index) const {{ return m_{name}.get(a_index, "
        f"\"a_index < m_{name}.size()\", source_tag); }}",
        f"{cls}& get_{name}(std::size_t a_index) {{ return m_{name}.grow(a_index, source_tag); }}",
        f"{cls}& assign_{name}(std::size_t a_index, const {cls}& a_value) {{ return "
        f"get_{name}(a_index) = a_value; }}",
        f"{ERROR} append_{name}() {{ return m_{name}.append(); }}",
        f"{ERROR} insert_{name}(std::size_t a_index) {{ return m_{name}.insert(a_index); }}",
        f"void delete_{name}(std::size_t a_index) {{ m_{name}.remove(a_index, \"a_index < m_{name}.size()\", "
        "source_tag); }",
        f"void clear_{name}() {{ m_{name}.clear(); }}",
        f"{cls}& back_{name}() {{ return m_{name}.back(\"!m_{name}.empty()\", source_tag); }}",
    ]


def _object(member):
    name, cls = member.identifier, member.class_name
    return [
        f"const {cls}& get_{name}() const {{ return m_{name}.value; }}",
        f"{cls}& get_{name}() {{ return m_{name}.touch(); }}",
        f"{cls}& assign_{name}(const {cls}& a_value) {{ return get_{name}() = a_value; }}",
    ]


def chosen_object(name, cls):
    """The accessors of a choice's member that is an object of a class."""
    return [
        f"const {cls}& get_{name}() const {{ return binding::chosen_object<{cls}>(m_choice, "
        f"e_{name}, \"chosen == e_{name}\", source_tag); }}",
        f"{cls}& get_{name}() {{ return binding::choose_object<{cls}>(s_description, m_choice, "
        f"e_{name}); }}",
        f"{cls}& assign_{name}(const {cls}& a_value) {{ return get_{name}() = a_value; }}",
    ]


def _scalar(member):
    name, cpp = member.identifier, CPP_TYPES[member.row.type]
    passed = f"const {cpp}&" if "::c_" in cpp or cpp == "std::string" else cpp
    lines = [
        f"{passed} get_{name}() const {{ return m_{name}.value; }}",
        f"{ERROR} set_{name}({passed} a_value) {{ return m_{name}.set(a_value); }}",
    ]
    if member.row.values:
        values = f"value_sets::{member.row.values}"
        lines += [
            f"elmx_enums getenum_{name}() const {{ return static_cast<elmx_enums>("
            f"binding::number_of({values}, m_{name}.value)); }}",
            f"bool setenum_{name}(elmx_enums a_value) {{ return binding::set_number(m_{name}, "
            f"{values}, a_value); }}",
        ]
    return lines


def _presence(name):
    return [
        f"bool isset_{name}() const {{ return m_{name}.is_set; }}",
        f"void unset_{name}() {{ m_{name}.is_set = false; }}",
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
