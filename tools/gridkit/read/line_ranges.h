#pragma once

#include <string>
#include <vector>

#include "gridkit/image_reader.h"

// Lines of an image that did not come for one reason, in words.
struct UnreadLines {
  std::string reason;  // "without data" or "that cannot be reached"
  std::string lines;   // "3, 7-12"
  std::string key;     // under which metadata tell them: "LINES_WITHOUT_DATA", "LINES_OUT_OF_REACH"
};

// One entry a reason.
std::vector<UnreadLines> unread_lines(const std::vector<gridkit::LineRange>& ranges);
