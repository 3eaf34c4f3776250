#include "lmx/writer.h"

#include <ostream>

#include "lmx/value.h"

namespace lmx {

c_xml_writer::c_xml_writer(std::ostream& stream, int flags, const char* tab, const char* line_end)
    : stream_(stream), tab_(tab), line_end_(line_end) {
  if ((flags & include_xml_decl) != 0) {
    stream_ << R"(<?xml version="1.0" encoding="UTF-8"?>)" << line_end_;
  }
}

std::ostream& c_xml_writer::operator()(bool indent) {
  for (int i = 0; indent && i < depth; ++i) stream_ << tab_;
  return stream_;
}

void c_xml_writer::conditionally_select_ns_map(const s_ns_map* map) {
  if (ns_map_ == nullptr) ns_map_ = map;
}

void c_xml_writer::conditionally_write_ns_attrs(bool write_default) {
  if (ns_attrs_written_ || ns_map_ == nullptr) return;
  ns_attrs_written_ = true;
  for (const s_ns_map* row = ns_map_; row->uri != nullptr; ++row) {
    stream_ << " xmlns";
    if (!write_default) stream_ << ":ns" << row->ns_id;
    stream_ << "=\"" << c_as_xml<std::string>(row->uri) << '"';
  }
}

elmx_error c_xml_writer::handle_error(elmx_error code, const std::string&, const char*, int) {
  return code;
}

}  // namespace lmx
