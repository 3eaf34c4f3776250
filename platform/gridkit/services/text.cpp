#include "gridkit/text.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>

#include "gridkit/memory.h"
#include "gridkit/services/fail.h"
#include "gridkit/services/plain_locale.h"

namespace {

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char* format_new(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  char* text = nullptr;
  if (length >= 0) {
    const std::size_t size = static_cast<std::size_t>(length) + 1;
    text = static_cast<char*>(gkm_HeapMalloc(size));
    if (text != nullptr) std::vsnprintf(text, size, format, again);
  }
  va_end(again);
  return text;
}

}  // namespace

char* gks_Duplicate(const char* text) {
  return text == nullptr ? nullptr : static_cast<char*>(gkm_MemDup(text, std::strlen(text) + 1));
}

char* gks_Sprintf(char* buffer, const char* format, gke_Report** err, ...) {
  if (format == nullptr) {
    gridkit::fail(err, "gks_Sprintf", {"no format was given"});
    return nullptr;
  }
  const gridkit::PlainLocale plain;
  std::va_list arguments;
  va_start(arguments, err);
  char* text = buffer;
  if (buffer == nullptr) {
    text = format_new(format, arguments);
  } else if (std::vsprintf(buffer, format, arguments) < 0) {
    text = nullptr;
  }
  va_end(arguments);
  if (text == nullptr) {
    gridkit::fail(err, "gks_Sprintf", {"cannot format \"", format, "\""});
  }
  return text;
}

const char* gks_SubString(const char* text, const char* pattern) {
  return text == nullptr || pattern == nullptr ? nullptr : std::strstr(text, pattern);
}

void gks_GetPathPart(const char* path, char* buffer, size_t size) {
  if (buffer == nullptr || size == 0) return;
  const char* separator = path == nullptr ? nullptr : std::strrchr(path, '/');
  std::size_t length = separator == nullptr ? 0 : static_cast<std::size_t>(separator - path) + 1;
  if (length >= size) length = 0;
  std::copy_n(path, length, buffer);
  buffer[length] = '\0';
}

int32_t gks_Eqnic(const char* a, const char* b, size_t length) {
  if (a == nullptr || b == nullptr) return a == b ? 1 : 0;
  for (std::size_t i = 0; i < length; ++i) {
    if (lower(a[i]) != lower(b[i])) return 0;
    if (a[i] == '\0') break;
  }
  return 1;
}

int32_t gkt_Text_strcmp(const char* a, const char* b) {
  if (a == b) return 0;
  if (a == nullptr || b == nullptr) return a == nullptr ? -1 : 1;
  return std::strcmp(a, b);
}

size_t gkt_Text_strlen(const char* text) {
  return text == nullptr ? 0 : std::strlen(text);
}

const char* gkt_Text_strrchr(const char* text, int32_t character) {
  return text == nullptr ? nullptr : std::strrchr(text, character);
}

int32_t gkt_Text_atol(const char* text) {
  constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();
  constexpr std::int64_t lowest = std::numeric_limits<std::int32_t>::min();
  if (text == nullptr) return 0;
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  const bool negative = *text == '-';
  if (*text == '+' || *text == '-') ++text;
  std::int64_t value = 0;
  for (; *text >= '0' && *text <= '9'; ++text)
    value = std::min(value * 10 + (*text - '0'), -lowest);
  return static_cast<std::int32_t>(negative ? -value : std::min(value, highest));
}
