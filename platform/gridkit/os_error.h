#pragma once

#include <string>

#include "gridkit/export.h"

namespace gridkit {

// What an error number of the operating system means, in plain words: "the disk is full".
GRIDKIT_API std::string os_error_in_words(int error);

}  // namespace gridkit
