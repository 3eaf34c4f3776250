#pragma once

#include <filesystem>
#include <memory>

#include "gridkit/companion.h"

namespace gridkit {

// A companion's table, which keeps its library loaded. Throws Error where the library is missing,
// does not load, or gives no table of the version that this host knows.
std::shared_ptr<const gkc_Companion> load_companion(const std::filesystem::path& library);

}  // namespace gridkit
