#include "tools/annotation/map_text.h"

#include <cctype>
#include <charconv>

namespace {

std::string plain(const std::string& text) {
  std::string kept;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isspace(byte) == 0) kept += static_cast<char>(std::toupper(byte));
  }
  return kept;
}

double number(const gridkit::MapProjection& projection, std::size_t index) {
  const auto& text = projection.value(index);
  double value = 0;
  if (text) std::from_chars(text->data(), text->data() + text->size(), value);
  return value;
}

bool holds(const gridkit::MapProjection& projection, std::size_t index, double value) {
  return projection.value(index) && number(projection, index) == value;
}

const char* hemisphere(bool south) {
  return south ? "S" : "N";
}

std::string utm_text(int zone, bool south, const std::string& datum) {
  return "UTM zone " + std::to_string(zone) + ' ' + hemisphere(south) + ", " + plain(datum);
}

std::string ups_text(bool south, const std::string& datum) {
  return std::string("UPS ") + hemisphere(south) + ", " + plain(datum);
}

}  // namespace

// The numbers of the values are those of gridkit/map_projection.h.
std::string map_text(const gridkit::MapProjection& projection) {
  const std::string datum = projection.value(2).value_or("unknown datum");
  const bool south = projection.value(5) == "S";
  if (projection.name == "UTM" && holds(projection, 6, 0.9996) && holds(projection, 8, 500000) &&
      holds(projection, 9, south ? 10000000 : 0)) {
    return utm_text(static_cast<int>(number(projection, 4)), south, datum);
  }
  if (projection.name == "Polar Stereographic" && holds(projection, 4, 0) &&
      holds(projection, 7, 0.994) && holds(projection, 8, 2000000) &&
      holds(projection, 9, 2000000)) {
    return ups_text(south, datum);
  }
  if (projection.name == "UTM") return "UTM with constants of its own, " + plain(datum);
  return projection.name + ", " + plain(datum);
}

std::optional<std::string> map_text(const AnnotatedMap& map) {
  const auto system = map_system(map);
  if (!system) return std::nullopt;
  return system->zone == 0 ? ups_text(system->south, system->datum)
                           : utm_text(system->zone, system->south, system->datum);
}

std::optional<MapSystem> map_system(const AnnotatedMap& map) {
  const std::string projection = plain(map.projection);
  if (projection == "UPS") return MapSystem{0, map.centre_latitude < 0, plain(map.datum)};
  if (projection != "UTM") return std::nullopt;
  const std::string zone_text = plain(map.zone);
  int zone = 0;
  std::from_chars(zone_text.data(), zone_text.data() + zone_text.size(), zone);
  if (zone < 1 || zone > 60) return std::nullopt;
  // A place north of the equator has a northing of more than ten million only in a southern zone;
  // one south of it has a positive northing only there.
  const double least = map.centre_latitude < 0 ? 0 : 10000000;
  return MapSystem{zone, map.centre_northing >= least, plain(map.datum)};
}
