#pragma once

#include "lmx/reader.h"

// Stands in the first element's content, ready for a value.
inline lmx::c_xml_reader_memory& enter(lmx::c_xml_reader_memory& reader) {
  lmx::elmx_error error{};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  return reader;
}
