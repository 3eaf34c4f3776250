#pragma once

#include <stdexcept>

// A command line that asks for what cannot be, as seen from the command line alone: its text says
// what, in one sentence without the program's name.
class WrongUse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};
