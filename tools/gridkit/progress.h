#pragma once

#include <cstdint>

// A bar on standard error, where that is a terminal.
class Progress {
 public:
  Progress(std::int32_t lines, bool quiet);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();  // ends the bar's line

  void advance(std::int32_t lines);

 private:
  std::int32_t lines_;
  std::int32_t done_ = 0;
  bool shown_;
};
