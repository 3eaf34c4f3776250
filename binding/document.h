#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "binding/engine.h"
#include "lmx/reader.h"
#include "lmx/writer.h"

// The document-level entry points, shared by the global elements and the roots: what they read from
// and write to. `Document` offers unmarshal(reader) and marshal(writer, element_name).

namespace binding {

// Reads a document from a file; error_cannot_open when there is none to read.
template <class Document>
lmx::elmx_error read_from(Document& document, const char* file_name) {
  lmx::c_xml_reader_file reader(file_name);
  if (!reader.is_open()) return lmx::elmx_error{lmx::error_cannot_open};
  return document.unmarshal(reader);
}

template <class Document>
lmx::elmx_error read_from(Document& document, const char* data, std::size_t length) {
  lmx::c_xml_reader_memory reader(data, length);
  return document.unmarshal(reader);
}

// The string is the document's text, never a file name.
template <class Document>
lmx::elmx_error read_from(Document& document, const std::string& xml_text) {
  return document.unmarshal(xml_text.data(), xml_text.size());
}

// Writers for the three targets. A file is truncated; one that cannot be opened or written whole
// gives error_cannot_open. A text is replaced only on success.
class document_writer {
 public:
  virtual ~document_writer() = default;
  virtual lmx::elmx_error write(lmx::c_xml_writer& writer) const = 0;

  lmx::elmx_error to_file(const char* file_name) const;
  lmx::elmx_error to_text(std::string* text) const;
  lmx::elmx_error to_stream(std::ostream& stream) const;
};

template <class Document>
class writer_of final : public document_writer {
 public:
  writer_of(const Document& document, const char* element_name)
      : document_(document), element_name_(element_name) {}
  lmx::elmx_error write(lmx::c_xml_writer& writer) const override {
    return document_.marshal(writer, element_name_);
  }

 private:
  const Document& document_;
  const char* element_name_;
};

template <class Document>
lmx::elmx_error write_to(const Document& document, const char* file_name, const char* element) {
  return writer_of<Document>(document, element).to_file(file_name);
}

template <class Document>
lmx::elmx_error write_to(const Document& document, std::string* text, const char* element) {
  return writer_of<Document>(document, element).to_text(text);
}

template <class Document>
lmx::elmx_error write_to(const Document& document, std::ostream& stream, const char* element) {
  return writer_of<Document>(document, element).to_stream(stream);
}

}  // namespace binding
