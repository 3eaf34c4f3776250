#pragma once

#include <cstdint>

// A bar on standard error, where that is a terminal, for work that goes through an image by lines.
class LineProgress {
 public:
  LineProgress(std::int32_t lines, bool quiet);
  LineProgress(const LineProgress&) = delete;
  LineProgress& operator=(const LineProgress&) = delete;
  ~LineProgress();  // ends the bar's line

  void advance(std::int32_t lines);

 private:
  std::int32_t lines_;
  std::int32_t done_ = 0;
  bool shown_;
};
