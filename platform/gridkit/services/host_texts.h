#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "gridkit/memory.h"

namespace gridkit {

// What a plug-in handed out, owned until it is copied.
struct HeapDeleter {
  void operator()(void* block) const { gkm_HeapFree(block); }
};
using HeapBlock = std::unique_ptr<void, HeapDeleter>;
using HeapText = std::unique_ptr<char, HeapDeleter>;

// Takes over a text that a plug-in handed out: an empty one for null.
inline std::string take_text(char* text) {
  const HeapText owned(text);
  return text == nullptr ? "" : text;
}

// Takes over a list of texts, null entries read as empty.
inline std::vector<std::string> take_texts(char** texts, std::int32_t count) {
  if (texts == nullptr) return {};
  const auto free_all = [count](char** list) {
    for (std::int32_t i = 0; i < count; ++i) gkm_HeapFree(list[i]);
    gkm_HeapFree(list);
  };
  const std::unique_ptr<char*, decltype(free_all)> owned(texts, free_all);
  std::vector<std::string> copies;
  copies.reserve(static_cast<std::size_t>(std::max(count, 0)));
  for (std::int32_t i = 0; i < count; ++i) {
    copies.emplace_back(texts[i] == nullptr ? "" : texts[i]);
  }
  return copies;
}

}  // namespace gridkit
