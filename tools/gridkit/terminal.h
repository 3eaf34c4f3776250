#pragma once

#include <cstdint>
#include <string>

// How a command talks to somebody at a terminal.

enum class Style { bold, red, yellow };

// The text in that style where the stream is a terminal whose user has not set NO_COLOR; as it is
// elsewhere.
std::string on_output(const std::string& text, Style style);
std::string on_errors(const std::string& text, Style style);

// One line on standard error: "gridkit: warning: MESSAGE".
void warn(const std::string& message);

// A bar on standard error, where that is a terminal; nothing elsewhere or where quiet is wanted.
class Progress {
 public:
  explicit Progress(bool quiet);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { clear(); }

  // Shows the share that is done, 0 to 1.
  void show(double done);

  // Takes the bar away, so that a message can be written.
  void clear();

 private:
  bool shown_;
  int percent_ = -1;
};
