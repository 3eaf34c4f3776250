#pragma once

#include <string>

// Throws gridkit::Error where a file of the name is there already, unless it is to be overwritten.
// What else is in the way of writing is told by the writing itself.
void check_existing(const std::string& path, bool overwrite);
