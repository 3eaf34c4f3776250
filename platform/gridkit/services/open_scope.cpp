#include "gridkit/services/open_scope.h"

#include <climits>
#include <cstring>
#include <filesystem>
#include <utility>

#include "gridkit/preference.h"

namespace gridkit {

namespace {

namespace fs = std::filesystem;

thread_local OpenScope* current = nullptr;

// As it is spelled, from the root on. Without a current folder, which may have been removed, a
// relative path stays one.
fs::path spelled_out(std::string_view path) {
  std::error_code ignored;
  const fs::path absolute = fs::absolute(path, ignored);
  return (ignored ? fs::path(path) : absolute).lexically_normal();
}

std::string folder_of(const std::string& product) {
  std::string folder = spelled_out(product).parent_path().string();
  if (!folder.ends_with('/')) folder += '/';
  return folder;
}

bool allows_outside_files() {
  return gkp_GetNumberPreference("gridkit", "allow_outside_files", 0, nullptr) != 0;
}

}  // namespace

OpenScope::OpenScope(const std::string& product)
    : folder_(folder_of(product)), before_(std::exchange(current, this)) {}

OpenScope::~OpenScope() {
  current = before_;
}

bool OpenScope::holds(std::string_view path) const {
  return spelled_out(path).string().starts_with(folder_);
}

std::string refusal_to_open(const char* path) {
  if (current == nullptr || path == nullptr) return {};
  // No file has a longer path, so the system refuses it.
  if (std::strlen(path) >= PATH_MAX) return {};
  if (current->holds(path) || allows_outside_files()) return {};
  std::string refusal = shown_path(path) + ": outside the product's folder " +
                        shown_path(current->folder_) +
                        " and not opened; the preference gridkit.allow_outside_files = 1 "
                        "allows it";
  if (current->refusal_.empty()) current->refusal_ = refusal;
  return refusal;
}

std::string shown_path(std::string_view path) {
  constexpr std::size_t longest = 1000;
  if (path.size() <= longest) return std::string(path);
  return std::string(path.substr(0, longest)) + "... (" + std::to_string(path.size()) + " bytes)";
}

}  // namespace gridkit
