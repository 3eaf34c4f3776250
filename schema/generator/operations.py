"""The operations that classes share: each one's declaration in the header, and its definition, which
is a call of the engine, in the source."""
from .text import fold, function

ERROR = "lmx::elmx_error"
READER = "lmx::c_xml_reader& a_reader"
WRITER = "lmx::c_xml_writer& a_writer"
SELF = "s_description, this"

# What a document is read from: parameters, and the engine's function with its arguments.
SOURCES = [("const char* a_file_name", "read_file", "a_file_name"),
           ("const char* a_data, std::size_t a_length", "read_memory", "a_data, a_length"),
           ("const std::string& a_xml_text", "read_memory", "a_xml_text.data(), a_xml_text.size()")]
# What it is written to.
TARGETS = [("const char* a_file_name", "write_file"), ("std::string* a_text", "write_text"),
           ("std::ostream& a_stream", "write_stream")]


def _names(parameters):
    """The arguments that pass the parameters on."""
    return ", ".join(p.split()[-1].lstrip("*&") for p in parameters.split(", "))


class Operation:
    """A member function: its result ("" for a constructor), name, parameters, qualifier, and what it
    does in one statement after another."""

    def __init__(self, result, name, parameters, qualifier, *statements):
        self.result = f"{result} " if result else ""
        self.signature = f"{name}({parameters})" + (f" {qualifier}" if qualifier else "")
        self.statements = statements

    def declaration(self):
        return f"{self.result}{self.signature};"

    def definition(self, qualified):
        """The class's own name, as a result, is known after the qualified name only."""
        if self.result.endswith("& "):
            return function(f"auto {qualified}::{self.signature} -> {self.result.strip()}",
                            *self.statements)
        return function(f"{self.result}{qualified}::{self.signature}", *self.statements)


class _Guarded(Operation):
    """A constructor that releases what it holds when its statement throws."""

    def definition(self, qualified):
        *first, last = self.statements
        return (fold(f"{qualified}::{self.signature} {{") + [f"  {line}" for line in first]
                + ["  try {", f"    {last}", "  } catch (...) {", "    release();", "    throw;",
                   "  }", "}"])


def life(name):
    """Construction, copies and end, but for the destructor."""
    return [
        Operation("", name, "", "", "init();"),
        _Guarded("", name, f"const {name}& a_other", "", "init();",
                 f"binding::copy({SELF}, &a_other);"),
        Operation(f"{name}&", "operator=", f"const {name}& a_other", "", f"{name} copied(a_other);",
                  "swap(copied);", "return *this;"),
        Operation("void", "swap", f"{name}& a_other", "", f"binding::swap({SELF}, &a_other);"),
        Operation("void", "reset", "", "", f"{name} fresh;", "swap(fresh);"),
        Operation("bool", "is_occurs_ok", "", "const", f"return binding::is_occurs_ok({SELF});"),
    ]


def write_element():
    return Operation(ERROR, "marshal", f"{WRITER}, const char* a_element_name", "const",
                     f"return binding::write_element({SELF}, a_writer, a_element_name);")


def read_element():
    return Operation(ERROR, "unmarshal", f"{READER}, const std::string& a_element_name", "",
                     f"return binding::read_element({SELF}, a_reader, a_element_name);")


def document(name):
    """The entry points of global elements and roots: whole documents."""
    made = []
    for parameters, _, _ in SOURCES:
        made.append(_Guarded("", name, f"{parameters}, {ERROR}* a_error", "",
                             "*a_error = lmx::error_nothing_read;", "init();",
                             f"*a_error = unmarshal({_names(parameters)});"))
    for parameters, function_name, arguments in SOURCES:
        made.append(Operation(ERROR, "unmarshal", parameters, "",
                              f"return binding::{function_name}({SELF}, {arguments});"))
    made.append(Operation(ERROR, "unmarshal", READER, "",
                          f"return binding::read_document({SELF}, a_reader);"))
    for parameters, function_name in TARGETS:
        made.append(Operation(ERROR, "marshal", parameters, "const",
                              f"return binding::{function_name}({SELF}, {_names(parameters)});"))
    return made


def write_content():
    return Operation(ERROR, "marshal_child_elements", WRITER, "const",
                     f"return binding::write_content({SELF}, a_writer);")


def parts(has_own_text):
    """The steps of reading and writing, for classes derived from one."""
    out = f"{ERROR}* a_error"
    body = (Operation("bool", "unmarshal_body",
                      f"{READER}, std::string* a_name, {out}, bool a_has_content", "",
                      f"*a_error = binding::read_text({SELF}, a_reader, *a_name, a_has_content);",
                      "return *a_error == 0;")
            if has_own_text else
            Operation("bool", "unmarshal_body", f"{READER}, std::string* a_name, {out}", "",
                      f"*a_error = binding::read_content({SELF}, a_reader, *a_name);",
                      "return *a_error == 0;"))
    return [
        Operation("void", "marshal_attributes", WRITER, "const",
                  f"binding::write_attributes({SELF}, a_writer);"),
        write_content(),
        Operation("bool", "unmarshal_attributes", f"{READER}, const std::string& a_name, {out}", "",
                  f"return binding::read_attribute({SELF}, a_reader, a_name, a_error);"),
        Operation(ERROR, "unmarshal_attributes_check", READER, "",
                  f"return binding::check_attributes({SELF}, a_reader);"),
        body,
    ]


def insides(has_choice):
    made = [Operation("void", "init", "", "", f"binding::init({SELF});"),
            Operation("void", "release", "", "", f"binding::release({SELF});")]
    if has_choice:
        made.append(Operation("void", "release_choice", "", "",
                              "binding::release_choice(s_description, m_choice);"))
    return made


def declarations(operations):
    return [line for operation in operations for line in fold(operation.declaration())]


def definitions(operations, qualified):
    return [line for operation in operations for line in operation.definition(qualified)]
