#include <algorithm>

#include "binding/engine.h"
#include "binding/member_access.h"
#include "binding/read_value.h"

// An element by itself: its attributes, and what stands around its content.

namespace binding {

namespace {

using lmx::c_xml_reader;
using lmx::elmx_error;

// Moves to the next element start or end.
elmx_error next_element(const ClassDescription& description, c_xml_reader& reader,
                        const lmx::c_string_stack_node& element) {
  elmx_error error{};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  return error == 0 ? error
                    : reader.handle_error(error, element.get_str(), description.source_tag, 0);
}

elmx_error read_end(const ClassDescription& description, c_xml_reader& reader,
                    const lmx::c_string_stack_node& element) {
  if (reader.current_event == lmx::event_end && !(element != reader.current_name)) return {};
  return reader.handle_error(elmx_error{lmx::error_element_not_ended}, element.get_str(),
                             description.source_tag, 0,
                             std::string("</") + element.get_str() + ">");
}

elmx_error read_attributes(const ClassDescription& description, void* object, c_xml_reader& reader,
                           const std::string& element_name) {
  elmx_error error{};
  while (reader.get_attribute_event(nullptr, &error, &reader.attribute_name)) {
    if (error != 0) {
      error = reader.handle_error(error, element_name, description.source_tag, 0);
      if (error != 0) return error;
      continue;
    }
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

elmx_error read_children(const ClassDescription& description, void* object, c_xml_reader& reader,
                         const lmx::c_string_stack_node& element) {
  const lmx::c_xml_reader_local local(&reader);
  if (reader.current_event != lmx::event_end) {
    const elmx_error error = next_element(description, reader, element);
    if (error != 0) return error;
  }
  if (reader.current_event == lmx::event_end) {
    // Kept on purpose: an optional element may stand empty, and its required members then go
    // unchecked.
    if (description.may_be_empty) return {};
    return reader.handle_error(elmx_error{lmx::error_element_empty}, element.get_str(),
                               description.source_tag, 0, "content");
  }
  const elmx_error error = read_content(description, object, reader, reader.current_name);
  return error != 0 ? error : read_end(description, reader, element);
}

elmx_error read_own_text(const ClassDescription& description, void* object, c_xml_reader& reader,
                         const lmx::c_string_stack_node& element) {
  reader.current_name = element.str();
  const bool has_content = reader.current_event != lmx::event_end;
  elmx_error error = read_text(description, object, reader, reader.current_name, has_content);
  if (error != 0 || reader.current_event == lmx::event_end) return error;
  error = next_element(description, reader, element);
  return error != 0 ? error : read_end(description, reader, element);
}

}  // namespace

elmx_error read_element(const ClassDescription& description, void* object, c_xml_reader& reader,
                        const std::string& element_name) {
  // The children overwrite current_name, so the element's own name is kept on the stack.
  const lmx::c_string_stack_node element(reader.element_name_stack, element_name);
  const elmx_error error = read_attributes(description, object, reader, element.str());
  if (error != 0) return error;
  return description.content == Content::text ? read_own_text(description, object, reader, element)
                                              : read_children(description, object, reader, element);
}

bool read_attribute(const ClassDescription& description, void* object, c_xml_reader& reader,
                    const std::string& element_name, elmx_error* error) {
  if (description.attribute_map == nullptr) return false;
  reader.tokenise(description.attribute_map, lmx::current_attribute);
  const auto found = std::find_if(description.attributes.begin(), description.attributes.end(),
                                  [&](const Member& m) { return m.event == reader.current_event; });
  if (found == description.attributes.end()) return false;
  const Member& m = *found;
  const ValueSite site{reader, element_name, description.source_tag, m};
  if (flag_of(object, m)) {
    *error =
        site.fault(elmx_error{lmx::error_attribute_twice}, std::string("one attribute ") + m.name);
    if (*error != 0) return false;
  }
  if (reader.get_attribute_value(&reader.value_text, whitespace_of(m))) {
    *error = store_value(site, &part_of<std::byte>(object, m.offset));
  } else {
    *error = site.fault(elmx_error{lmx::error_unreadable_attribute},
                        std::string("a value of attribute ") + m.name);
  }
  return *error == 0;
}

elmx_error check_attributes(const ClassDescription& description, const void* object,
                            c_xml_reader& reader) {
  for (const Member& m : description.attributes) {
    if (m.minimum == 0 || flag_of(object, m)) continue;
    return reader.handle_error(elmx_error{lmx::error_required_attribute_missing}, description.name,
                               description.source_tag, m.event, std::string("attribute ") + m.name);
  }
  return {};
}

elmx_error read_text(const ClassDescription& description, void* object, c_xml_reader& reader,
                     const std::string& name, bool has_content) {
  const Member& m = *description.text;
  const ValueSite site{reader, name, description.source_tag, m};
  reader.value_text.clear();
  if (has_content && !reader.get_element_value(&reader.value_text, whitespace_of(m), true)) {
    return site.fault(elmx_error{lmx::error_unreadable_element}, expected_text);
  }
  return store_value(site, &part_of<std::byte>(object, m.offset));
}

}  // namespace binding
