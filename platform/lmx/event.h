#pragma once

#include <cstddef>

namespace lmx {

// Numbers of the reader's events. What a map gives names is 12 or above.
constexpr int event_unknown = 1;  // a name that is in no row of the map
constexpr int event_end = 6;      // the end of the current element
constexpr int event_start = 7;    // the start of an element that no map has classified

// What c_xml_reader::tokenise classifies.
enum elxp_attr_elem : int { current_attribute = 0, current_element = 1 };

// One row of a table that gives names their event numbers; the closing row is {0, nullptr, 0, 1}.
struct s_event_map {
  int ns_id;  // 1: no namespace
  const char* name;
  std::size_t name_length;
  int event;
};

// One row of a table of namespaces; the closing row is all zero.
struct s_ns_map {
  const char* uri;
  int ns_id;
};

}  // namespace lmx
