#include <algorithm>

#include "binding/engine.h"
#include "binding/read_value.h"
#include "binding/storage.h"

namespace binding {

namespace {

using lmx::c_xml_reader;
using lmx::elmx_error;

constexpr int element_end = 6;

// What the walk over a class's children carries along.
struct walk {
  const class_description& description;
  void* object;
  c_xml_reader& reader;
  std::string* name;
  elmx_error* error;

  // Reports a fault; true when the reader's policy lets the read go on.
  bool tolerates(elmx_error code, const std::string& reported, std::string expected,
                 const member& m) const {
    *error =
        reader.handle_error(code, reported, description.source_tag, m.event, std::move(expected));
    return *error == 0;
  }

  bool stands_on(const member& m) const { return reader.current_event == m.event; }

  // The next element, classified by the map from this member's entry onward: an earlier name is
  // unknown from here on, so order is strict.
  bool fetch_from(const member& m) const {
    const auto index = &m - description.elements.data();
    reader.get_element_event(description.element_map + index, error, name);
    return *error == 0 || tolerates(*error, *name, {}, m);
  }

  value_site site(const member& m) const { return {reader, *name, description.source_tag, m}; }
  bool keep(elmx_error result) const {
    *error = result;
    return result == 0;
  }
};

bool& flag_of(const walk& w, const member& m) {
  return part_of<bool>(w.object, m.flag_offset);
}

// The text of a simple-typed child into reader.value_text. False ends the read; `*readable` tells
// whether there is a value, where a policy lets an unreadable one pass.
bool fetch_value(const walk& w, const member& m, elmx_error code, bool* readable) {
  bool no_value = false;
  *readable = w.reader.get_simple_type_value(*w.name, whitespace_of(m), &w.reader.value_text,
                                             w.error, &no_value);
  if (*readable) return true;
  return w.tolerates(code == 0 ? *w.error : code, *w.name, "a text value", m);
}

bool read_scalar(const walk& w, const member& m) {
  bool readable = false;
  if (!fetch_value(w, m, {}, &readable)) return false;
  return !readable || w.keep(store_scalar(w.site(m), &part_of<std::byte>(w.object, m.offset)));
}

bool read_token_list(const walk& w, const member& m) {
  bool readable = false;
  if (!fetch_value(w, m, elmx_error{lmx::error_unreadable_element}, &readable)) return false;
  auto& list = part_of<token_list>(w.object, m.offset);
  if (readable && !w.keep(store_tokens(w.site(m), list.entries))) return false;
  list.is_set = true;
  return true;
}

bool read_string(const walk& w, const member& m) {
  bool readable = false;
  if (!fetch_value(w, m, elmx_error{lmx::error_unreadable_element}, &readable)) return false;
  return !readable || w.keep(store_entry(w.site(m), part_of<string_list>(w.object, m.offset)));
}

// The inner markup as it stands. The member counts as present only when there was any.
bool read_raw(const walk& w, const member& m) {
  bool no_value = false;
  if (!w.reader.get_element_ur_value(*w.name, &w.reader.value_text, w.error, &no_value)) {
    return w.tolerates(*w.error, *w.name, "any content", m);
  }
  auto& target = part_of<held<std::string>>(w.object, m.offset);
  target.value = w.reader.value_text;
  target.is_set = target.is_set || !no_value;
  return true;
}

// A nested element's own fault was reported where it arose and passes up unchanged.
bool read_nested(const walk& w, const member& m, void* object) {
  return w.keep(read_element(*m.nested, object, w.reader, *w.name));
}

bool read_object(const walk& w, const member& m) {
  if (!read_nested(w, m, &part_of<std::byte>(w.object, m.offset))) return false;
  flag_of(w, m) = true;
  return true;
}

bool read_list_object(const walk& w, const member& m) {
  auto& pointers = part_of<object_entries>(w.object, m.offset).pointers;
  owned_object appended(*m.nested);
  pointers.push_back(appended.get());
  appended.release();
  return read_nested(w, m, pointers.back());
}

bool read_one(const walk& w, const member& m) {
  switch (m.form) {
    case form::scalar:
      return read_scalar(w, m);
    case form::token_list:
      return read_token_list(w, m);
    case form::string_list:
      return read_string(w, m);
    case form::object:
      return read_object(w, m);
    case form::object_list:
      return read_list_object(w, m);
    case form::raw:
      return read_raw(w, m);
  }
  return false;
}

bool is_list(const member& m) {
  return m.form == form::object_list || m.form == form::string_list;
}

std::size_t count_of(const walk& w, const member& m) {
  return m.form == form::object_list ? part_of<object_entries>(w.object, m.offset).pointers.size()
                                     : part_of<string_list>(w.object, m.offset).size();
}

std::string in_brackets(const char* name) {
  return std::string("<") + name + ">";
}

bool read_member(const walk& w, const member& m) {
  if (!w.stands_on(m)) {
    return m.minimum == 0 || w.tolerates(elmx_error{lmx::error_required_element_missing}, m.name,
                                         in_brackets(m.name), m);
  }
  if (!is_list(m)) return read_one(w, m) && w.fetch_from(m);
  // A bounded repeat stops at its upper bound without a fault: one more is then out of place.
  while (w.stands_on(m) && count_of(w, m) < m.maximum) {
    if (!read_one(w, m) || !w.fetch_from(m)) return false;
  }
  return true;
}

// One report for all lists of the class that came short, with the class's own name.
bool check_minimums(const walk& w) {
  for (const member& m : w.description.elements) {
    if (!is_list(m) || count_of(w, m) >= m.minimum) continue;
    return w.tolerates(elmx_error{lmx::error_required_element_missing}, w.description.name,
                       std::to_string(m.minimum) + " or more of " + in_brackets(m.name), m);
  }
  return true;
}

std::string any_of(std::span<const member> members) {
  std::string text = "one of";
  for (const member& m : members) text += ' ' + in_brackets(m.name);
  return text;
}

// An object chosen before is overwritten without being released: an object is read once, or reset
// first. That is how the family is told to behave, and the loss is its caller's.
bool read_choice(const walk& w) {
  const auto members = w.description.elements;
  const auto chosen =
      std::find_if(members.begin(), members.end(), [&](const member& m) { return w.stands_on(m); });
  if (chosen == members.end()) {
    return w.tolerates(elmx_error{lmx::error_no_choice_present}, *w.name, any_of(members),
                       members.front());
  }
  auto& held_choice = part_of<choice>(w.object, w.description.choice_offset);
  held_choice = {static_cast<int>(chosen - members.begin()), chosen->nested->create()};
  return read_nested(w, *chosen, held_choice.object) && w.fetch_from(*chosen);
}

elmx_error read_end(const class_description& description, c_xml_reader& reader,
                    const lmx::c_string_stack_node& element) {
  if (reader.current_event == element_end && !(element != reader.current_name)) return {};
  return reader.handle_error(elmx_error{lmx::error_element_not_ended}, element.get_str(),
                             description.source_tag, 0,
                             std::string("</") + element.get_str() + ">");
}

elmx_error read_attributes(const class_description& description, void* object, c_xml_reader& reader,
                           const std::string& element_name) {
  elmx_error error{};
  while (reader.get_attribute_event(nullptr, &error, &reader.attribute_name)) {
    const bool known = read_attribute(description, object, reader, element_name, &error);
    if (error != 0) return error;
    if (known) continue;
    if (!reader.is_xsi_attribute(reader.xml_local, reader.attribute_name)) {
      error =
          reader.handle_error(elmx_error{lmx::error_unknown_attribute}, reader.current_name,
                              description.source_tag, 0, "no attribute " + reader.attribute_name);
      if (error != 0) return error;
    }
    reader.skip_attribute_value();
  }
  return check_attributes(description, object, reader);
}

elmx_error read_children(const class_description& description, void* object, c_xml_reader& reader,
                         const lmx::c_string_stack_node& element) {
  const lmx::c_xml_reader_local local(&reader);
  elmx_error error{};
  if (reader.current_event != element_end) {
    reader.get_element_event(nullptr, &error, &reader.current_name);
    if (error != 0) {
      error = reader.handle_error(error, element.get_str(), description.source_tag, 0);
      if (error != 0) return error;
    }
  }
  if (reader.current_event == element_end) {
    // An optional element may stand empty, and its required members then go unchecked by design.
    if (description.may_be_empty) return {};
    return reader.handle_error(elmx_error{lmx::error_element_empty}, element.get_str(),
                               description.source_tag, 0, "content");
  }
  read_content(description, object, reader, &reader.current_name, &error);
  if (error != 0) return error;
  return read_end(description, reader, element);
}

elmx_error read_own_text(const class_description& description, void* object, c_xml_reader& reader,
                         const lmx::c_string_stack_node& element) {
  reader.current_name = element.str();
  elmx_error error{};
  const bool has_content = reader.current_event != element_end;
  read_text(description, object, reader, reader.current_name, &error, has_content);
  if (error != 0) return error;
  if (reader.current_event == element_end) return {};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  if (error != 0) {
    error = reader.handle_error(error, element.get_str(), description.source_tag, 0);
    if (error != 0) return error;
  }
  return read_end(description, reader, element);
}

}  // namespace

elmx_error read_element(const class_description& description, void* object, c_xml_reader& reader,
                        const std::string& element_name) {
  // The children overwrite current_name, so the element's own name is kept on the stack.
  const lmx::c_string_stack_node element(reader.element_name_stack, element_name);
  if (const elmx_error error = read_attributes(description, object, reader, element.str());
      error != 0) {
    return error;
  }
  return description.text != nullptr ? read_own_text(description, object, reader, element)
                                     : read_children(description, object, reader, element);
}

bool read_attribute(const class_description& description, void* object, c_xml_reader& reader,
                    const std::string& element_name, elmx_error* error) {
  if (description.attribute_map == nullptr) return false;
  reader.tokenise(description.attribute_map, lmx::current_attribute);
  const auto found = std::find_if(description.attributes.begin(), description.attributes.end(),
                                  [&](const member& m) { return m.event == reader.current_event; });
  if (found == description.attributes.end()) return false;
  const member& m = *found;
  const value_site site{reader, element_name, description.source_tag, m};
  if (part_of<bool>(object, m.flag_offset)) {
    *error =
        site.fault(elmx_error{lmx::error_attribute_twice}, std::string("one attribute ") + m.name);
    if (*error != 0) return false;
  }
  if (!reader.get_attribute_value(&reader.value_text, whitespace_of(m))) {
    *error = site.fault(elmx_error{lmx::error_unreadable_attribute},
                        std::string("a value of attribute ") + m.name);
    return *error == 0;
  }
  if (m.form == form::token_list) {
    auto& list = part_of<token_list>(object, m.offset);
    *error = store_tokens(site, list.entries);
    list.is_set = list.is_set || *error == 0;
  } else {
    *error = store_scalar(site, &part_of<std::byte>(object, m.offset));
  }
  return *error == 0;
}

elmx_error check_attributes(const class_description& description, const void* object,
                            c_xml_reader& reader) {
  for (const member& m : description.attributes) {
    if (m.minimum == 0 || part_of<bool>(object, m.flag_offset)) continue;
    return reader.handle_error(elmx_error{lmx::error_required_attribute_missing}, description.name,
                               description.source_tag, m.event, std::string("attribute ") + m.name);
  }
  return {};
}

bool read_content(const class_description& description, void* object, c_xml_reader& reader,
                  std::string* name, elmx_error* error) {
  const walk w{description, object, reader, name, error};
  reader.tokenise(description.element_map, lmx::current_element);
  if (description.is_choice) return read_choice(w);
  for (const member& m : description.elements) {
    if (!read_member(w, m)) return false;
  }
  return check_minimums(w);
}

bool read_text(const class_description& description, void* object, c_xml_reader& reader,
               const std::string& name, elmx_error* error, bool has_content) {
  const member& m = *description.text;
  const value_site site{reader, name, description.source_tag, m};
  reader.value_text.clear();
  if (has_content && !reader.get_element_value(&reader.value_text, whitespace_of(m), true)) {
    *error = site.fault(elmx_error{lmx::error_unreadable_element}, "a text value");
    return *error == 0;
  }
  if (m.form == form::token_list) {
    auto& list = part_of<token_list>(object, m.offset);
    *error = store_tokens(site, list.entries);
    list.is_set = list.is_set || *error == 0;
  } else {
    *error = store_scalar(site, &part_of<std::byte>(object, m.offset));
  }
  return *error == 0;
}

}  // namespace binding
