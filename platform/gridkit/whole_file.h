#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "gridkit/error.h"
#include "gridkit/export.h"

namespace gridkit {

// Writes a file whole: it grows under a temporary name beside the target, and gets its name once it
// is complete. A file of the name is replaced only where `replace` says so. Throws Error that
// tells the path and why, and leaves nothing then.
GRIDKIT_API void write_whole_file(const std::string& path, std::span<const std::byte> bytes,
                                  bool replace);

}  // namespace gridkit
