#pragma once

#include <string_view>
#include <vector>

// Which allocations are those of this project's libraries, for CountedNew::counts: those that their
// code asks for, and those that the C++ library asks for on their behalf. What GDAL, PROJ and other
// libraries allocate for themselves is left alone.
namespace own_allocations {

// Looks for the code of the loaded libraries whose file names begin with one of these; false where
// one of the names has none. Libraries that are loaded later are not counted.
bool find(const std::vector<std::string_view>& names);

// Allocates nothing itself.
bool counts(const void* caller, bool may_throw);

}  // namespace own_allocations
