#include "support/own_allocations.h"

#include <execinfo.h>
#include <link.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace own_allocations {
namespace {

// Where the code of a loaded library lies.
struct CodeRange {
  std::uintptr_t first = 0;
  std::uintptr_t end = 0;
  bool holds(const void* place) const {
    const auto address = reinterpret_cast<std::uintptr_t>(place);
    return address >= first && address < end;
  }
};

struct Places {
  std::vector<CodeRange> own;
  std::vector<CodeRange> language;  // the C++ library, which allocates for whoever calls it
};
Places places;

std::vector<CodeRange> ranges_of(std::string_view file_name) {
  struct Search {
    std::string_view name;
    std::vector<CodeRange> found;
  } search{file_name, {}};
  ::dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* context) {
        auto& wanted = *static_cast<Search*>(context);
        const std::string_view path = info->dlpi_name;
        if (!path.substr(path.rfind('/') + 1).starts_with(wanted.name)) return 0;
        for (int i = 0; i < info->dlpi_phnum; ++i) {
          const auto& segment = info->dlpi_phdr[i];
          if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0) continue;
          const std::uintptr_t first = info->dlpi_addr + segment.p_vaddr;
          wanted.found.push_back({first, first + segment.p_memsz});
        }
        return 0;
      },
      &search);
  return search.found;
}

bool holds(const std::vector<CodeRange>& ranges, const void* place) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [place](const CodeRange& range) { return range.holds(place); });
}

}  // namespace

bool find(const std::vector<std::string_view>& names) {
  std::array<void*, 1> warm{};
  ::backtrace(warm.data(), 1);  // loads its library with the first call
  places = {{}, ranges_of("libstdc++.so")};
  for (const std::string_view name : names) {
    const std::vector<CodeRange> found = ranges_of(name);
    if (found.empty()) return false;
    places.own.insert(places.own.end(), found.begin(), found.end());
  }
  return !places.language.empty();
}

bool counts(const void* caller, bool) {
  if (!holds(places.language, caller)) return holds(places.own, caller);
  std::array<void*, 12> frames{};
  const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
  const auto* const end = frames.begin() + count;
  const auto* frame = std::find(frames.cbegin(), end, caller);
  frame = std::find_if_not(frame, end, [](void* f) { return holds(places.language, f); });
  return frame != end && holds(places.own, *frame);
}

}  // namespace own_allocations
