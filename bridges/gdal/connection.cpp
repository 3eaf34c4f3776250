#include "bridges/gdal/connection.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace gridkit_gdal {

namespace {

constexpr std::string_view prefix = "GRIDKIT:";
constexpr std::array<std::pair<std::string_view, Quantity>, 6> words = {
    {{"AMPLITUDE", Quantity::amplitude},
     {"PHASE", Quantity::phase},
     {"INTENSITY", Quantity::intensity},
     {"BETA0", Quantity::beta0},
     {"SIGMA0", Quantity::sigma0},
     {"GAMMA0", Quantity::gamma0}}};

char capital(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool same_but_for_case(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return capital(x) == capital(y); });
}

[[noreturn]] void refuse(std::string_view name, const std::string& why) {
  throw std::invalid_argument(std::string(name) + ": " + why +
                              "; names are GRIDKIT:\"PATH\", GRIDKIT:\"PATH\":IMAGE and "
                              "GRIDKIT:\"PATH\":IMAGE:QUANTITY");
}

// No image or layer is called like a path.
bool can_be_part(std::string_view text) {
  return !text.empty() && text.find('/') == std::string_view::npos;
}

// What comes after a path: nothing, ":PART" or ":PART:QUANTITY".
Connection with_rest(std::string path, std::string_view rest, std::string_view name) {
  Connection connection{std::move(path), {}, Quantity::samples};
  if (rest.empty()) return connection;
  if (rest.front() != ':') refuse(name, "a colon is missing after the path");
  rest.remove_prefix(1);
  const std::size_t colon = rest.find(':');
  if (!can_be_part(rest.substr(0, colon))) refuse(name, "the name of an image is missing");
  connection.part = rest.substr(0, colon);
  if (colon == std::string_view::npos) return connection;
  const std::string_view word = rest.substr(colon + 1);
  const auto quantity = quantity_named(word);
  if (!quantity) {
    refuse(name, '"' + std::string(word) +
                     "\" is none of AMPLITUDE, PHASE, INTENSITY, BETA0, SIGMA0 and GAMMA0");
  }
  connection.quantity = *quantity;
  return connection;
}

Connection quoted(std::string_view text, std::string_view name) {
  std::string path;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '"') {
      if (path.empty()) refuse(name, "the path is missing");
      return with_rest(std::move(path), text.substr(i + 1), name);
    }
    const bool hides =
        text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\');
    if (hides) ++i;
    path += text[i];
  }
  refuse(name, "the quote after the path is missing");
}

std::vector<Connection> unquoted(std::string_view text) {
  std::vector<Connection> readings{{std::string(text), {}, Quantity::samples}};
  const std::size_t last = text.rfind(':');
  if (last == std::string_view::npos || last == 0) return readings;
  const std::string_view after = text.substr(last + 1);
  const std::string_view before = text.substr(0, last);
  if (can_be_part(after)) {
    readings.push_back({std::string(before), std::string(after), Quantity::samples});
  }
  const std::size_t first = before.rfind(':');
  const auto quantity = quantity_named(after);
  if (!quantity || first == std::string_view::npos || first == 0) return readings;
  const std::string_view part = before.substr(first + 1);
  if (can_be_part(part)) {
    readings.push_back({std::string(before.substr(0, first)), std::string(part), *quantity});
  }
  return readings;
}

}  // namespace

std::string_view word_of(Quantity quantity) {
  const auto found = std::find_if(words.begin(), words.end(),
                                  [&](const auto& word) { return word.second == quantity; });
  return found == words.end() ? std::string_view{} : found->first;
}

std::optional<Quantity> quantity_named(std::string_view word) {
  const auto found = std::find_if(words.begin(), words.end(), [&](const auto& known) {
    return same_but_for_case(known.first, word);
  });
  if (found == words.end()) return std::nullopt;
  return found->second;
}

bool has_prefix(std::string_view name) {
  return same_but_for_case(name.substr(0, prefix.size()), prefix);
}

std::vector<Connection> readings_of(std::string_view name) {
  const std::string_view text = name.substr(std::min(name.size(), prefix.size()));
  if (text.empty()) refuse(name, "the path is missing");
  if (text.front() == '"') return {quoted(text, name)};
  return unquoted(text);
}

std::string name_of(const Connection& connection) {
  std::string name(prefix);
  name += '"';
  for (const char letter : connection.path) {
    if (letter == '"' || letter == '\\') name += '\\';
    name += letter;
  }
  name += '"';
  if (!connection.part.empty()) name += ':' + connection.part;
  const std::string_view word = word_of(connection.quantity);
  if (!word.empty()) name.append(":").append(word);
  return name;
}

}  // namespace gridkit_gdal
