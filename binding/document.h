#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>

#include "binding/engine.h"

// The document-level entry points, the same for global elements and roots: what a document is read
// from and written to.

namespace binding {

// Fetches the document's root element and reads it. A class's element must stand there, or any of
// the members of a document's root. Nothing is read after it.
lmx::elmx_error read_document(const ClassDescription& description, void* object,
                              lmx::c_xml_reader& reader);

// The same from a file, error_cannot_open when there is none to read, and from a text in memory.
lmx::elmx_error read_file(const ClassDescription& description, void* object, const char* file_name);
lmx::elmx_error read_memory(const ClassDescription& description, void* object, const char* data,
                            std::size_t length);

// Writes the object as a document. A file is truncated; one that cannot be opened or written whole
// gives error_cannot_open. A text is replaced only on success.
lmx::elmx_error write_file(const ClassDescription& description, const void* object,
                           const char* file_name);
lmx::elmx_error write_text(const ClassDescription& description, const void* object,
                           std::string* text);
lmx::elmx_error write_stream(const ClassDescription& description, const void* object,
                             std::ostream& stream);

// Reads the global element on which the reader stands into a document's root. `*error` gets what
// the read gave, but stays untouched where a text or a list was read without a fault. True on
// success.
bool read_current_member(const ClassDescription& description, void* object,
                         lmx::c_xml_reader& reader, std::string* name, lmx::elmx_error* error);

// Whether the reader stands on a member of a document's root. The event stays as classified when it
// does, and as it was when it does not.
bool stands_on_member(const ClassDescription& description, lmx::c_xml_reader& reader);

}  // namespace binding
