#include "companion/failure.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace companion {

namespace {

// Whether the caller's struct has room for a member that ends there.
template <class Member>
bool holds(const gkc_Error& error, const Member& member) {
  const auto* end = reinterpret_cast<const char*>(&member) + sizeof(Member);
  return static_cast<std::size_t>(end - reinterpret_cast<const char*>(&error)) <= error.size;
}

template <class Number, class Value>
void store(const gkc_Error& error, Number& member, Value value) {
  if (holds(error, member)) member = static_cast<Number>(value);
}

constexpr bool continues_a_character(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

template <std::size_t size>
void store(const gkc_Error& error, char (&member)[size], std::string_view text) {
  if (!holds(error, member)) return;
  std::size_t length = std::min(text.size(), size - 1);
  if (length < text.size()) {
    while (length > 0 && continues_a_character(text[length])) --length;
  }
  std::memcpy(member, text.data(), length);
  member[length] = '\0';
}

void store_all(gkc_Error* error, gkc_ErrorCode code, std::uint64_t text_line,
               std::int64_t image_line, std::string_view path, std::string_view element,
               std::string_view message) noexcept {
  if (error == nullptr) return;
  store(*error, error->code, code);
  store(*error, error->reserved, 0);
  store(*error, error->text_line, text_line);
  store(*error, error->image_line, image_line);
  store(*error, error->path, path);
  store(*error, error->element, element);
  store(*error, error->message, message);
}

}  // namespace

std::string take_report(gke_Report* report) {
  std::string text;
  for (const gke_Report* one = report; one != nullptr; one = gke_ReportPrevious(one)) {
    if (!text.empty()) text += "; ";
    text += gke_ReportMessage(one);
  }
  gke_DeleteErrorReportEx(&report);
  return text;
}

void tell(gkc_Error* error, const Failure& failure) noexcept {
  store_all(error, failure.code, failure.text_line, failure.image_line, failure.path,
            failure.element, failure.message);
}

void tell(gkc_Error* error, gkc_ErrorCode code, const char* message) noexcept {
  store_all(error, code, 0, -1, "", "", message);
}

}  // namespace companion
