#include "tools/gridkit/read/line_ranges.h"

namespace {

std::string lines_as_text(const std::vector<gridkit::LineRange>& ranges, gridkit::Unread why) {
  std::string text;
  for (const gridkit::LineRange& range : ranges) {
    if (range.why != why) continue;
    if (!text.empty()) text += ", ";
    text += std::to_string(range.first);
    if (range.last > range.first) text += '-' + std::to_string(range.last);
  }
  return text;
}

}  // namespace

std::vector<UnreadLines> unread_lines(const std::vector<gridkit::LineRange>& ranges) {
  std::vector<UnreadLines> result;
  const auto add = [&](gridkit::Unread why, const char* reason, const char* key) {
    const std::string lines = lines_as_text(ranges, why);
    if (!lines.empty()) result.push_back({reason, lines, key});
  };
  add(gridkit::Unread::no_data, "without data", "LINES_WITHOUT_DATA");
  add(gridkit::Unread::out_of_reach, "that cannot be reached", "LINES_OUT_OF_REACH");
  return result;
}
