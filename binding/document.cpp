#include "binding/document.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <utility>

#include "binding/member_access.h"

namespace binding {

using lmx::elmx_error;

namespace {

constexpr int first_classified = 12;  // of the event numbers that maps give names

}  // namespace

elmx_error read_document(const ClassDescription& description, void* object,
                         lmx::c_xml_reader& reader) {
  const bool is_root = description.content == Content::document;
  reader.set_ns_map(reader_ns_map);
  const lmx::c_xml_reader_local local(&reader);
  elmx_error error{};
  reader.get_element_event(is_root ? description.element_map : nullptr, &error,
                           &reader.current_name);
  if (error != 0) {
    error = reader.handle_error(error, reader.current_name, description.source_tag, 0);
    if (error != 0) return error;
  }
  if (is_root) return read_content(description, object, reader, reader.current_name);
  if (reader.get_element_ns_id() != 1 || reader.local_name != description.name) {
    error =
        reader.handle_error(elmx_error{lmx::error_wrong_root}, reader.current_name,
                            description.source_tag, 0, std::string("<") + description.name + ">");
    if (error != 0) return error;
  }
  return read_element(description, object, reader, reader.current_name);
}

elmx_error read_file(const ClassDescription& description, void* object, const char* file_name) {
  lmx::c_xml_reader_file reader(file_name);
  if (!reader.is_open()) return elmx_error{lmx::error_cannot_open};
  return read_document(description, object, reader);
}

elmx_error read_memory(const ClassDescription& description, void* object, const char* data,
                       std::size_t length) {
  lmx::c_xml_reader_memory reader(data, length);
  return read_document(description, object, reader);
}

elmx_error write_stream(const ClassDescription& description, const void* object,
                        std::ostream& stream) {
  lmx::c_xml_writer writer(stream, lmx::c_xml_writer::include_xml_decl, "\t", "\n");
  return write_element(description, object, writer, description.name);
}

elmx_error write_file(const ClassDescription& description, const void* object,
                      const char* file_name) {
  std::ofstream stream(file_name, std::ios::out | std::ios::trunc | std::ios::binary);
  if (!stream.is_open()) return elmx_error{lmx::error_cannot_open};
  const elmx_error error = write_stream(description, object, stream);
  stream.close();
  return error == 0 && stream.fail() ? elmx_error{lmx::error_cannot_open} : error;
}

elmx_error write_text(const ClassDescription& description, const void* object, std::string* text) {
  std::ostringstream stream;
  const elmx_error error = write_stream(description, object, stream);
  if (error == 0) *text = std::move(stream).str();
  return error;
}

bool read_current_member(const ClassDescription& description, void* object,
                         lmx::c_xml_reader& reader, std::string* name, elmx_error* error) {
  const elmx_error result = read_content(description, object, reader, *name);
  const Member* m = chosen_member(description, choice_of(description, object));
  if (result != 0 || m == nullptr || m->form == Form::object) *error = result;
  return result == 0;
}

bool stands_on_member(const ClassDescription& description, lmx::c_xml_reader& reader) {
  const int event = reader.current_event;
  if (event != lmx::event_start && event != lmx::event_unknown && event < first_classified) {
    return false;
  }
  reader.tokenise(description.element_map, lmx::current_element);
  const auto members = description.elements;
  if (std::any_of(members.begin(), members.end(),
                  [&](const Member& m) { return m.event == reader.current_event; })) {
    return true;
  }
  reader.current_event = event;
  return false;
}

}  // namespace binding
