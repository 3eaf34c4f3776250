#pragma once

#include "binding/description.h"
#include "lmx/error.h"
#include "lmx/reader.h"
#include "lmx/writer.h"

// The document root of a version: a choice among the global elements, some of which it holds as an
// object, some as a text and some as a list of texts. It writes no element of its own.

namespace binding {

// Reads one document: whichever global element stands at its root. Nothing behind that is read.
lmx::elmx_error read_root_document(const class_description& description, choice& held_choice,
                                   lmx::c_xml_reader& reader);

// Reads the global element on which the reader stands. A member held before is not released: a root
// is read once, or reset first.
bool read_root(const class_description& description, choice& held_choice, lmx::c_xml_reader& reader,
               const std::string& name, lmx::elmx_error* error);

// Whether the reader stands on a global element. The event stays as classified when it does, and as
// it was when it does not.
bool is_root_member(const class_description& description, lmx::c_xml_reader& reader);

// Writes the held member; nothing chosen is a fatal assertion.
lmx::elmx_error write_root(const class_description& description, const choice& held_choice,
                           lmx::c_xml_writer& writer);
lmx::elmx_error write_root_content(const class_description& description, const choice& held_choice,
                                   lmx::c_xml_writer& writer);

}  // namespace binding
