#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Takes a fuzzer's input apart. Past its end everything is zero or empty.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size)
      : rest_(reinterpret_cast<const char*>(data), size) {}

  bool empty() const { return rest_.empty(); }

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const auto value = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return value;
  }
  std::uint32_t number() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8U | byte();
    return value;
  }
  // Up to the next zero byte, or the end.
  std::string_view text() {
    const std::size_t end = std::min(rest_.find('\0'), rest_.size());
    const std::string_view taken = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return taken;
  }
  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};
