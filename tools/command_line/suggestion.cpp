#include "tools/command_line/suggestion.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <vector>

namespace {

char lower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Letters to change, insert, leave out or swap with their neighbour.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> before(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = lower(a[i - 1]) == lower(b[j - 1]);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
      const bool swapped = i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
                           lower(a[i - 2]) == lower(b[j - 1]);
      if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(row);
  }
  return last[b.size()];
}

bool begins_with(std::string_view text, std::string_view start) {
  return text.size() >= start.size() &&
         std::equal(start.begin(), start.end(), text.begin(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

// The beginning of a name is as good as one wrong letter.
std::size_t cost(std::string_view word, std::string_view candidate) {
  const std::size_t letters = distance(word, candidate);
  return word.size() >= 2 && begins_with(candidate, word) ? std::min<std::size_t>(letters, 1)
                                                          : letters;
}

}  // namespace

std::string did_you_mean(std::string_view word, std::span<const std::string> candidates) {
  constexpr std::size_t longest = 100;  // beyond it is no misspelt word
  if (word.size() > longest) return {};
  const std::string* best = nullptr;
  std::size_t best_cost =
      word.size() / 3 + 2;  // one letter in three, and at least one, may be wrong
  for (const std::string& candidate : candidates) {
    const std::size_t this_cost = cost(word, candidate);
    if (this_cost >= best_cost) continue;
    best = &candidate;
    best_cost = this_cost;
  }
  return best == nullptr ? std::string() : "; did you mean \"" + *best + "\"?";
}
