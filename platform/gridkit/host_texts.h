#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "gridkit/memory.h"

namespace gridkit {

// Takes over a text that a plug-in handed out: an empty one for null.
inline std::string take_text(char* text) {
  std::string copy = text == nullptr ? "" : text;
  gkm_HeapFree(text);
  return copy;
}

// Takes over a list of texts, null entries read as empty.
inline std::vector<std::string> take_texts(char** texts, std::int32_t count) {
  std::vector<std::string> copies;
  for (std::int32_t i = 0; texts != nullptr && i < count; ++i)
    copies.push_back(take_text(texts[i]));
  gkm_HeapFree(texts);
  return copies;
}

}  // namespace gridkit
