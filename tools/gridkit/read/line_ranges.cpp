#include "tools/gridkit/read/line_ranges.h"

std::string lines_as_text(const std::vector<gridkit::LineRange>& ranges) {
  std::string text;
  for (const gridkit::LineRange& range : ranges) {
    if (!text.empty()) text += ", ";
    text += std::to_string(range.first);
    if (range.last > range.first) text += '-' + std::to_string(range.last);
  }
  return text;
}
