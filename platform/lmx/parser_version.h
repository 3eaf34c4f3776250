#pragma once

#include <string>

namespace lmx {

// The version of the XML parser that runs, such as "2.5.0", whichever one was built with.
std::string parser_version();

}  // namespace lmx
