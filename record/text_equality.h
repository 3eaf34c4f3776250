#pragma once

#include "gridkit/text.h"

// Two texts are equal when they are the same pointer, or when neither is null and the characters
// agree, case included. A null text equals nothing but itself.
inline bool tsx_TextEqual(const char* a, const char* b) {
  if (a == b) return true;
  return a != nullptr && b != nullptr && gkt_Text_strcmp(a, b) == 0;
}
