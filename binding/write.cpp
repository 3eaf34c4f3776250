#include <ostream>

#include "binding/assertion.h"
#include "binding/engine.h"
#include "binding/storage.h"
#include "lmx/value.h"

namespace binding {

namespace {

using lmx::c_xml_writer;
using lmx::elmx_error;

bool is_flagged(const void* object, const member& m) {
  return part_of<bool>(object, m.flag_offset);
}

template <class T>
const T& value_of(const void* object, const member& m) {
  return part_of<held<T>>(object, m.offset).value;
}

void write_value(const void* object, const member& m, std::ostream& out) {
  switch (m.type) {
    case value_type::string:
      out << lmx::c_as_xml<std::string>(value_of<std::string>(object, m));
      return;
    case value_type::float64:
      out << lmx::c_as_xml<double>(value_of<double>(object, m));
      return;
    case value_type::float32:
      out << lmx::c_as_xml<float>(value_of<float>(object, m));
      return;
    case value_type::boolean:
      out << lmx::c_as_xml<bool>(value_of<bool>(object, m));
      return;
    case value_type::date_time:
      out << value_of<lmx::c_datetime>(object, m);
      return;
    case value_type::int32:
      out << value_of<std::int32_t>(object, m);
      return;
    case value_type::uint32:
      out << value_of<std::uint32_t>(object, m);
      return;
    case value_type::int64:
      out << value_of<std::int64_t>(object, m);
      return;
    case value_type::uint64:
      out << value_of<std::uint64_t>(object, m);
      return;
    case value_type::uint8:
      out << static_cast<unsigned>(value_of<std::uint8_t>(object, m));
      return;
  }
}

void write_tokens(const string_list& entries, c_xml_writer& writer) {
  for (std::size_t i = 0; i < entries.size(); ++i) {
    writer(false) << (i == 0 ? "" : " ") << lmx::c_as_xml<std::string>(entries[i]);
  }
}

void write_scalar_element(const void* object, const member& m, c_xml_writer& writer) {
  writer(true) << '<' << m.name << '>';
  write_value(object, m, writer(false));
  writer(false) << "</" << m.name << '>' << writer.line_end();
}

void write_raw_element(const void* object, const member& m, c_xml_writer& writer) {
  writer(true) << '<' << m.name << '>' << value_of<std::string>(object, m) << "</" << m.name << '>'
               << writer.line_end();
}

void write_list_element(const string_list& entries, const member& m, c_xml_writer& writer) {
  if (entries.size() == 0) return;
  writer(true) << '<' << m.name << '>';
  write_tokens(entries, writer);
  writer(false) << "</" << m.name << '>' << writer.line_end();
}

void write_string_elements(const string_list& entries, const member& m, c_xml_writer& writer) {
  for (std::size_t i = 0; i < entries.size(); ++i) {
    writer(true) << '<' << m.name << '>' << lmx::c_as_xml<std::string>(entries[i]) << "</" << m.name
                 << '>' << writer.line_end();
  }
}

elmx_error write_objects(const void* object, const member& m, c_xml_writer& writer) {
  for (const void* entry : part_of<object_entries>(object, m.offset).pointers) {
    if (const elmx_error error = write_element(*m.nested, entry, writer, m.name); error != 0) {
      return error;
    }
  }
  return {};
}

elmx_error write_member(const void* object, const member& m, c_xml_writer& writer) {
  const bool absent = m.minimum == 0 && m.form != form::object_list &&
                      m.form != form::string_list && !is_flagged(object, m);
  if (absent) return {};
  switch (m.form) {
    case form::scalar:
      write_scalar_element(object, m, writer);
      return {};
    case form::raw:
      write_raw_element(object, m, writer);
      return {};
    case form::token_list:
      write_list_element(part_of<token_list>(object, m.offset).entries, m, writer);
      return {};
    case form::string_list:
      write_string_elements(part_of<string_list>(object, m.offset), m, writer);
      return {};
    case form::object:
      return write_element(*m.nested, &part_of<std::byte>(object, m.offset), writer, m.name);
    case form::object_list:
      return write_objects(object, m, writer);
  }
  return {};
}

elmx_error write_choice(const class_description& description, const choice& held_choice,
                        c_xml_writer& writer) {
  if (held_choice.chosen >= static_cast<int>(description.elements.size())) {
    return writer.handle_error(elmx_error{lmx::error_nothing_chosen}, description.name,
                               description.source_tag, 0);
  }
  if (held_choice.object == nullptr) return elmx_error{lmx::error_chosen_but_null};
  const member& m = description.elements[static_cast<std::size_t>(held_choice.chosen)];
  return write_element(*m.nested, held_choice.object, writer, m.name);
}

void write_own_text(const class_description& description, const void* object,
                    c_xml_writer& writer) {
  const member& m = *description.text;
  if (m.form == form::token_list) {
    write_tokens(part_of<token_list>(object, m.offset).entries, writer);
  } else {
    write_value(object, m, writer(false));
  }
}

}  // namespace

void write_attributes(const class_description& description, const void* object,
                      c_xml_writer& writer) {
  for (const member& m : description.attributes) {
    if (m.minimum == 0 && !is_flagged(object, m)) continue;
    if (m.form == form::token_list) {
      const string_list& entries = part_of<token_list>(object, m.offset).entries;
      if (entries.size() == 0) continue;
      writer(false) << ' ' << m.name << "=\"";
      write_tokens(entries, writer);
    } else {
      writer(false) << ' ' << m.name << "=\"";
      write_value(object, m, writer(false));
    }
    writer(false) << '"';
  }
}

elmx_error write_content(const class_description& description, const void* object,
                         c_xml_writer& writer) {
  if (description.is_choice) {
    return write_choice(description, part_of<choice>(object, description.choice_offset), writer);
  }
  if (description.text != nullptr) {
    write_own_text(description, object, writer);
    return {};
  }
  for (const member& m : description.elements) {
    if (const elmx_error error = write_member(object, m, writer); error != 0) return error;
  }
  return {};
}

elmx_error write_element(const class_description& description, const void* object,
                         c_xml_writer& writer, const char* element_name) {
  if (!is_occurs_ok(description, object)) {
    fail_assertion("is_occurs_ok()", description.source_tag);
  }
  const bool has_children = description.text == nullptr;
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
