#pragma once

#include <cstdint>

// A bar on standard error of work that goes through images by lines, where that is a terminal;
// nothing elsewhere or where quiet is wanted. It is also where such work is stopped.
class Progress {
 public:
  // `share_of_lines` of the bar is for the lines, the rest for what follows them.
  Progress(std::int64_t lines, bool quiet, double share_of_lines = 1);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { clear(); }

  // So many lines more are done. Throws Interrupted when the program is to end.
  void advance(std::int32_t lines);

  // Of what follows the lines so much is done, 0 to 1. False when the program is to end.
  bool follow(double done);

  // Takes the bar away, so that a message can be written.
  void clear();

 private:
  void show(double done);

  bool shown_;
  int percent_ = -1;
  std::int64_t lines_;
  std::int64_t lines_done_ = 0;
  double share_of_lines_;
};
