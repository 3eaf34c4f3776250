#pragma once

#include <cstdint>
#include <string>

#include "lmx/error.h"
#include "lmx/export.h"

namespace lmx {

// The first fault of a read: what, where, and what was expected. It is kept beside the code and
// changes nothing in what the reading classes return.
struct LMX_API Diagnostic {
  elmx_error code = error_none;
  std::string name;          // element or class name that the fault was reported with
  std::uint64_t offset = 0;  // bytes before the place
  std::uint64_t line = 0;    // from 1
  std::uint64_t column = 0;  // from 1, in characters
  std::string path;          // of the element concerned, such as /level1Product/generalHeader
  std::string found;         // what stands there, may be empty
  std::string expected;      // what should, may be empty

  // One sentence: the meaning of the code, what was found and what was expected.
  std::string message() const;
};

}  // namespace lmx
