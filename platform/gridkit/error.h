#pragma once

#include <stdexcept>
#include <string>

namespace gridkit {

// A failure of the host API: its text says what failed, where, and why.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace gridkit
