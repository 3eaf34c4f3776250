#pragma once

#include <cstdint>

// A heap array of copies of `count` texts into `target`; 0 when all were copied. Otherwise -1, with
// nothing left allocated and the target null. A null text among the sources is a null entry.
std::int32_t tsx_StringListCopy(char*** target, const char* const* source, std::int32_t count);

// Frees `count` texts of the array, the array itself, and clears the pointer. Null is nothing.
void tsx_StringListFree(char*** target, std::int32_t count);
