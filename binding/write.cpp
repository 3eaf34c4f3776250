#include <array>
#include <charconv>
#include <concepts>
#include <ostream>
#include <string_view>

#include "binding/assertion.h"
#include "binding/engine.h"
#include "binding/member_access.h"
#include "binding/value_types.h"
#include "lmx/value.h"

namespace binding {

namespace {

using lmx::c_xml_writer;
using lmx::elmx_error;

// --- Values --------------------------------------------------------------------------------------

template <class T>
void insert(std::ostream& out, const T& value) {
  out << lmx::c_as_xml<T>(value);
}

// Not by the stream's own operator: that groups digits as the stream's locale tells and takes the
// base from its flags.
template <std::integral T>
requires(!std::same_as<T, bool>) void insert(std::ostream& out, const T& value) {
  std::array<char, 24> digits;
  const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  out << std::string_view(digits.data(), end);
}

void insert(std::ostream& out, const lmx::c_datetime& value) {
  out << value;
}

void insert(std::ostream& out, const StringList& entries) {
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (i > 0) out << ' ';
    insert(out, entries[i]);
  }
}

const StringList& tokens_of(const void* object, const Member& m) {
  return part_of<TokenList>(object, m.offset).entries;
}

void insert_value(std::ostream& out, const void* object, const Member& m) {
  if (m.form == Form::token_list) return insert(out, tokens_of(object, m));
  with_value_type(m.type, [&]<class T>(std::type_identity<T>) {
    insert(out, part_of<Held<T>>(object, m.offset).value);
  });
}

// An absent member is not written, and a list only where it has entries.
bool is_written(const void* object, const Member& m) {
  if (m.minimum == 0 && !flag_of(object, m)) return false;
  return m.form != Form::token_list || tokens_of(object, m).size() > 0;
}

// --- Elements ------------------------------------------------------------------------------------

void start_element(const Member& m, c_xml_writer& writer) {
  writer(true) << '<' << m.name << '>';
}

void end_element(const Member& m, c_xml_writer& writer) {
  writer(false) << "</" << m.name << '>' << writer.line_end();
}

void write_simple(const void* object, const Member& m, c_xml_writer& writer) {
  start_element(m, writer);
  insert_value(writer(false), object, m);
  end_element(m, writer);
}

void write_raw(const void* object, const Member& m, c_xml_writer& writer) {
  start_element(m, writer);
  writer(false) << part_of<Held<std::string>>(object, m.offset).value;
  end_element(m, writer);
}

void write_strings(const StringList& entries, const Member& m, c_xml_writer& writer) {
  for (std::size_t i = 0; i < entries.size(); ++i) {
    start_element(m, writer);
    insert(writer(false), entries[i]);
    end_element(m, writer);
  }
}

elmx_error write_objects(const void* object, const Member& m, c_xml_writer& writer) {
  for (const void* entry : part_of<ObjectEntries>(object, m.offset).pointers) {
    const elmx_error error = write_element(*m.nested, entry, writer, m.name);
    if (error != 0) return error;
  }
  return {};
}

elmx_error write_member(const void* object, const Member& m, c_xml_writer& writer) {
  if (!repeats(m) && !is_written(object, m)) return {};
  switch (m.form) {
    case Form::scalar:
    case Form::token_list:
      write_simple(object, m, writer);
      return {};
    case Form::raw:
      write_raw(object, m, writer);
      return {};
    case Form::string_list:
      write_strings(part_of<StringList>(object, m.offset), m, writer);
      return {};
    case Form::object:
      return write_element(*m.nested, &part_of<std::byte>(object, m.offset), writer, m.name);
    case Form::object_list:
      return write_objects(object, m, writer);
  }
  return {};
}

// --- A choice's member ---------------------------------------------------------------------------

// A text or a list that stands at a document's root. Kept on purpose: the bracket that closes the
// start tag is indented like the tag.
template <class Value>
void write_global(const Value& value, const Member& m, c_xml_writer& writer) {
  writer(true) << '<' << m.name;
  writer.conditionally_select_ns_map(writer_ns_map);
  writer.conditionally_write_ns_attrs(false);
  insert(writer(true) << '>', value);
  end_element(m, writer);
}

elmx_error write_choice(const ClassDescription& description, const Choice& choice,
                        c_xml_writer& writer) {
  const Member* m = chosen_member(description, choice);
  if (m == nullptr) {
    return writer.handle_error(elmx_error{lmx::error_nothing_chosen}, description.name,
                               description.source_tag, 0);
  }
  if (choice.object == nullptr) return elmx_error{lmx::error_chosen_but_null};
  if (m->form == Form::object) return write_element(*m->nested, choice.object, writer, m->name);
  if (m->form == Form::scalar) {
    write_global(held_object<const std::string>(choice), *m, writer);
  } else if (const auto& list = held_object<const StringList>(choice); list.size() > 0) {
    write_global(list, *m, writer);
  }
  return {};
}

}  // namespace

void write_attributes(const ClassDescription& description, const void* object,
                      c_xml_writer& writer) {
  for (const Member& m : description.attributes) {
    if (!is_written(object, m)) continue;
    writer(false) << ' ' << m.name << "=\"";
    insert_value(writer(false), object, m);
    writer(false) << '"';
  }
}

elmx_error write_content(const ClassDescription& description, const void* object,
                         c_xml_writer& writer) {
  if (has_choice(description)) {
    return write_choice(description, choice_of(description, object), writer);
  }
  if (description.content == Content::text) {
    insert_value(writer(false), object, *description.text);
    return {};
  }
  for (const Member& m : description.elements) {
    if (const elmx_error error = write_member(object, m, writer); error != 0) return error;
  }
  return {};
}

elmx_error write_element(const ClassDescription& description, const void* object,
                         c_xml_writer& writer, const char* element_name) {
  if (!is_occurs_ok(description, object)) {
    fail_assertion("is_occurs_ok()", description.source_tag);
  }
  if (description.content == Content::document) return write_content(description, object, writer);
  const bool has_children = description.content != Content::text;
  writer(true) << '<' << element_name;
  if (description.is_global) {
    writer.conditionally_select_ns_map(writer_ns_map);
    writer.conditionally_write_ns_attrs(false);
  }
  write_attributes(description, object, writer);
  writer(false) << '>' << (has_children ? writer.line_end() : "");
  if (has_children) ++writer.depth;
  if (const elmx_error error = write_content(description, object, writer); error != 0) {
    return error;
  }
  if (has_children && writer.depth > 0) --writer.depth;
  writer(has_children) << "</" << element_name << '>' << writer.line_end();
  return {};
}

}  // namespace binding
