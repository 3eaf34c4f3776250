#include "gridkit/preference.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <unistd.h>

#include "gridkit/os_error.h"
#include "gridkit/services/fail.h"
#include "gridkit/services/preference_scope.h"
#include "gridkit/services/regular_file.h"

namespace {

constexpr const char* load_word = "gkp_LoadPreferences";

using Key = std::pair<std::string, std::string>;
using KeyView = std::pair<std::string_view, std::string_view>;

// Orders keys and views of keys alike, so that looking one up needs no memory.
struct KeyOrder {
  using is_transparent = void;
  bool operator()(KeyView a, KeyView b) const { return a < b; }
};
using NumberMap = std::map<Key, double, KeyOrder>;

struct Preferences {
  std::mutex mutex;
  NumberMap numbers;
};

// The store is the process's own by the nature of the service.
Preferences& store() {
  static Preferences instance;
  return instance;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::optional<double> number_in(std::string_view text) {
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
  return whole && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

// `group.name = number` as an entry; nothing when the line is not of that form.
std::optional<std::pair<Key, double>> entry_in(std::string_view line) {
  const auto equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  const std::string_view name = trimmed(line.substr(0, equals));
  const auto dot = name.find('.');
  const auto value = number_in(trimmed(line.substr(equals + 1)));
  if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size() || !value) {
    return std::nullopt;
  }
  return std::pair{Key{name.substr(0, dot), name.substr(dot + 1)}, *value};
}

// The whole of a file of at most `limit` bytes; nothing, and a report, where that cannot be had.
std::optional<std::string> small_text(const char* path, std::size_t limit, gke_Report** err) {
  const gridkit::Descriptor file = gridkit::open_regular_file(path, false);
  std::string text(limit + 1, '\0');
  std::size_t got = 0;
  ssize_t n = file.is_open() ? 1 : -1;
  while (n > 0 && got < text.size()) {
    n = ::read(file.get(), text.data() + got, text.size() - got);
    if (n > 0) got += static_cast<std::size_t>(n);
  }
  if (n < 0) {
    gridkit::fail(err, load_word, {path, ": ", gridkit::os_error_in_words(errno)});
    return std::nullopt;
  }
  if (got > limit) {
    gridkit::fail(err, load_word,
                  {path, ": a preferences file has at most ", std::to_string(limit), " bytes"});
    return std::nullopt;
  }
  text.resize(got);
  return text;
}

int32_t load(const char* path, gke_Report** err) {
  constexpr std::size_t largest = 1 << 20;
  const std::optional<std::string> text = small_text(path, largest, err);
  if (!text) return -1;
  NumberMap read;
  std::size_t number = 0;
  for (std::string_view rest = *text; !rest.empty();) {
    const auto end = std::min(rest.find('\n'), rest.size());
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    ++number;
    const std::string_view content = trimmed(line.substr(0, line.find('#')));
    if (content.empty()) continue;
    const auto entry = entry_in(content);
    if (!entry) {
      gridkit::fail(err, load_word,
                    {path, ":", std::to_string(number), ": expected `group.name = number`, found `",
                     content.substr(0, 80), "`"});
      return -1;
    }
    read.insert_or_assign(entry->first, entry->second);
  }
  const std::lock_guard lock(store().mutex);
  read.merge(store().numbers);
  store().numbers.swap(read);
  return 0;
}

}  // namespace

double gkp_GetNumberPreference(const char* group, const char* name, double defaultValue,
                               gke_Report**) {
  if (group == nullptr || name == nullptr) return defaultValue;
  if (const auto here = gridkit::number_of_this_thread(name)) return *here;
  const std::lock_guard lock(store().mutex);
  const auto found = store().numbers.find(KeyView{group, name});
  return found == store().numbers.end() ? defaultValue : found->second;
}

int32_t gkp_SetNumberPreference(const char* group, const char* name, double value,
                                gke_Report** err) try {
  if (group == nullptr || name == nullptr || !std::isfinite(value)) {
    gridkit::fail(err, "gkp_SetNumberPreference", {"no group, no name or no finite value"});
    return -1;
  }
  const std::lock_guard lock(store().mutex);
  // A number that is set already is set anew without memory.
  const auto found = store().numbers.find(KeyView{group, name});
  if (found != store().numbers.end()) {
    found->second = value;
  } else {
    store().numbers.emplace(Key{group, name}, value);
  }
  return 0;
} catch (const std::bad_alloc&) {
  gridkit::fail(err, "gkp_SetNumberPreference", {"out of memory"});
  return -1;
}

void gkp_ClearNumberPreference(const char* group, const char* name) {
  if (group == nullptr || name == nullptr) return;
  const std::lock_guard lock(store().mutex);
  std::erase_if(store().numbers, [&](const auto& entry) {
    return entry.first.first == group && entry.first.second == name;
  });
}

int32_t gkp_LoadPreferences(const char* path, gke_Report** err) try {
  if (path != nullptr) return load(path, err);
  gridkit::fail(err, load_word, {"no path"});
  return -1;
} catch (const std::bad_alloc&) {
  gridkit::fail(err, load_word, {"out of memory"});
  return -1;
}
