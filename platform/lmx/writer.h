#pragma once

#include <iosfwd>
#include <string>

#include "lmx/error.h"
#include "lmx/event.h"
#include "lmx/export.h"

namespace lmx {

// The stream writer of annotation documents. The annotation classes keep its depth; it writes
// indentation, line ends and the declaration, and holds nothing of the document.
class LMX_API c_xml_writer {
 public:
  // Flag: the line `<?xml version="1.0" encoding="UTF-8"?>` precedes the output.
  static const int include_xml_decl = 1;

  // `tab` is the indent of one depth, `line_end` ends every line. Both are kept by pointer.
  c_xml_writer(std::ostream& stream, int flags, const char* tab, const char* line_end);
  virtual ~c_xml_writer() = default;

  // The stream; with `indent` true after the tab text, once for each depth.
  std::ostream& operator()(bool indent);

  int depth = 0;  // of the element being written, never below 0

  virtual const char* line_end() { return line_end_; }

  // Selects the map of namespaces unless one is selected already.
  void conditionally_select_ns_map(const s_ns_map* map);

  // Writes the selected map's namespace attributes once, at the outermost element.
  void conditionally_write_ns_attrs(bool write_default);

  // The policy point for faults of writing: returns the code unchanged.
  elmx_error handle_error(elmx_error code, const std::string& name, const char* source_tag,
                          int position);

 private:
  std::ostream& stream_;
  const char* tab_;
  const char* line_end_;
  const s_ns_map* ns_map_ = nullptr;
  bool ns_attrs_written_ = false;
};

}  // namespace lmx
