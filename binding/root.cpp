#include "binding/root.h"

#include <algorithm>
#include <memory>
#include <ostream>

#include "binding/assertion.h"
#include "binding/engine.h"
#include "binding/read_value.h"
#include "lmx/value.h"

namespace binding {

namespace {

using lmx::elmx_error;

constexpr int unclassified_element = 7;
constexpr int unknown_name = 1;
constexpr int first_classified = 12;

const member* current_member(const class_description& description,
                             const lmx::c_xml_reader& reader) {
  const auto members = description.elements;
  const auto found = std::find_if(members.begin(), members.end(),
                                  [&](const member& m) { return m.event == reader.current_event; });
  return found == members.end() ? nullptr : &*found;
}

// The value of a text or list member into reader.value_text; the code that ends the read otherwise.
elmx_error fetch_value(const value_site& site, elmx_error code) {
  bool no_value = false;
  elmx_error error{};
  if (site.reader.get_simple_type_value(site.name, lmx::whitespace_preserve,
                                        &site.reader.value_text, &error, &no_value)) {
    return {};
  }
  return site.fault(code == 0 ? error : code, "a text value");
}

elmx_error read_text_member(const value_site& site, choice& held_choice, int number) {
  held_choice = {number, new std::string};
  if (const elmx_error error = fetch_value(site, {}); error != 0) return error;
  held<std::string> value;
  const elmx_error error = store_scalar(site, &value);
  *static_cast<std::string*>(held_choice.object) = std::move(value.value);
  return error;
}

elmx_error read_list_member(const value_site& site, choice& held_choice, int number) {
  held_choice = {number, new string_list};
  const elmx_error error = fetch_value(site, elmx_error{lmx::error_unreadable_element});
  return error != 0 ? error : store_tokens(site, *static_cast<string_list*>(held_choice.object));
}

elmx_error read_member(const class_description& description, choice& held_choice,
                       lmx::c_xml_reader& reader, const std::string& name) {
  const member* m = current_member(description, reader);
  if (m == nullptr) {
    return reader.handle_error(elmx_error{lmx::error_no_choice_present}, name,
                               description.source_tag, 0, "<level1Product>");
  }
  const int number = static_cast<int>(m - description.elements.data());
  const value_site site{reader, name, description.source_tag, *m};
  if (m->form == form::token_list) return read_list_member(site, held_choice, number);
  if (m->form == form::scalar) return read_text_member(site, held_choice, number);
  held_choice = {number, m->nested->create()};
  return read_element(*m->nested, held_choice.object, reader, name);
}

void start_simple_element(lmx::c_xml_writer& writer, const char* name) {
  writer(true) << '<' << name;
  writer.conditionally_select_ns_map(writer_ns_map);
  writer.conditionally_write_ns_attrs(false);
  writer(true) << '>';
}

void write_text(const std::string& text, const char* name, lmx::c_xml_writer& writer) {
  start_simple_element(writer, name);
  writer(false) << lmx::c_as_xml<std::string>(text) << "</" << name << '>' << writer.line_end();
}

void write_list(const string_list& entries, const char* name, lmx::c_xml_writer& writer) {
  if (entries.size() == 0) return;
  start_simple_element(writer, name);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    writer(false) << (i == 0 ? "" : " ") << lmx::c_as_xml<std::string>(entries[i]);
  }
  writer(false) << "</" << name << '>' << writer.line_end();
}

}  // namespace

elmx_error read_root_document(const class_description& description, choice& held_choice,
                              lmx::c_xml_reader& reader) {
  reader.set_ns_map(reader_ns_map);
  const lmx::c_xml_reader_local local(&reader);
  elmx_error error{};
  reader.get_element_event(description.element_map, &error, &reader.current_name);
  if (error != 0) {
    error = reader.handle_error(error, reader.current_name, description.source_tag, 0);
    if (error != 0) return error;
  }
  read_root(description, held_choice, reader, reader.current_name, &error);
  return error;
}

bool read_root(const class_description& description, choice& held_choice, lmx::c_xml_reader& reader,
               const std::string& name, elmx_error* error) {
  reader.tokenise(description.element_map, lmx::current_element);
  *error = read_member(description, held_choice, reader, name);
  return *error == 0;
}

bool is_root_member(const class_description& description, lmx::c_xml_reader& reader) {
  const int event = reader.current_event;
  if (event != unclassified_element && event != unknown_name && event < first_classified) {
    return false;
  }
  reader.tokenise(description.element_map, lmx::current_element);
  if (current_member(description, reader) != nullptr) return true;
  reader.current_event = event;
  return false;
}

elmx_error write_root(const class_description& description, const choice& held_choice,
                      lmx::c_xml_writer& writer) {
  if (held_choice.chosen >= static_cast<int>(description.elements.size())) {
    fail_assertion("is_occurs_ok()", description.source_tag);
  }
  return write_root_content(description, held_choice, writer);
}

elmx_error write_root_content(const class_description& description, const choice& held_choice,
                              lmx::c_xml_writer& writer) {
  if (held_choice.chosen >= static_cast<int>(description.elements.size())) {
    return writer.handle_error(elmx_error{lmx::error_nothing_chosen}, description.name,
                               description.source_tag, 0);
  }
  if (held_choice.object == nullptr) return elmx_error{lmx::error_chosen_but_null};
  const member& m = description.elements[static_cast<std::size_t>(held_choice.chosen)];
  switch (m.form) {
    case form::object:
      return write_element(*m.nested, held_choice.object, writer, m.name);
    case form::token_list:
      write_list(*static_cast<const string_list*>(held_choice.object), m.name, writer);
      return {};
    default:
      write_text(*static_cast<const std::string*>(held_choice.object), m.name, writer);
      return {};
  }
}

}  // namespace binding
