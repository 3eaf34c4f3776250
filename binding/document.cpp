#include "binding/document.h"

#include <fstream>
#include <sstream>

namespace binding {

using lmx::elmx_error;

elmx_error document_writer::to_stream(std::ostream& stream) const {
  lmx::c_xml_writer writer(stream, lmx::c_xml_writer::include_xml_decl, "\t", "\n");
  return write(writer);
}

elmx_error document_writer::to_file(const char* file_name) const {
  std::ofstream stream(file_name, std::ios::out | std::ios::trunc | std::ios::binary);
  if (!stream.is_open()) return elmx_error{lmx::error_cannot_open};
  const elmx_error error = to_stream(stream);
  stream.close();
  return error == 0 && stream.fail() ? elmx_error{lmx::error_cannot_open} : error;
}

elmx_error document_writer::to_text(std::string* text) const {
  std::ostringstream stream;
  const elmx_error error = to_stream(stream);
  if (error == 0) *text = std::move(stream).str();
  return error;
}

elmx_error read_document(const class_description& description, void* object,
                         lmx::c_xml_reader& reader) {
  reader.set_ns_map(reader_ns_map);
  const lmx::c_xml_reader_local local(&reader);
  elmx_error error{};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  if (error != 0) {
    error = reader.handle_error(error, reader.current_name, description.source_tag, 0);
    if (error != 0) return error;
  }
  if (reader.get_element_ns_id() != 1 || reader.local_name != description.name) {
    error =
        reader.handle_error(elmx_error{lmx::error_wrong_root}, reader.current_name,
                            description.source_tag, 0, std::string("<") + description.name + ">");
    if (error != 0) return error;
  }
  return read_element(description, object, reader, reader.current_name);
}

}  // namespace binding
