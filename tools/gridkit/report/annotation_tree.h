#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace report {

// An annotation as nested <details>, which the page's script searches.
struct AnnotationTree {
  std::string html;
  std::size_t elements = 0;  // shown
  std::size_t left_out = 0;  // beyond what a page can hold
};

// A page holds so many elements, and elements nested so deep; the rest is counted.
inline constexpr std::size_t most_elements = 100'000;
inline constexpr std::size_t deepest_element = 48;

// Reads a well-formed annotation of whatever schema. Values get the unit that the element's
// attribute `units` names, else that of tools/gridkit/report/units.tsv. All texts are escaped.
// Throws gridkit::Error for a file that cannot be read to its end.
AnnotationTree annotation_tree(const std::string& path);

// The unit of an element by its path, with names joined by slashes; empty where none is known.
std::string_view unit_of(std::string_view path);

}  // namespace report
