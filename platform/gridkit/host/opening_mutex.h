#pragma once

#include <mutex>
#include <string>

namespace gridkit {

// What is held while the product at a path is opened or closed: a plug-in gives a second open the
// record of the first, which must not end in between.
std::mutex& opening_mutex(const std::string& path);

}  // namespace gridkit
