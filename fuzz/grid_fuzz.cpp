// Geolocation grids through the companion. The input begins with what the annotation says of the
// scene, as "START STOP FIRST_RANGE_TIME LAST_RANGE_TIME LINES SAMPLES" up to a zero byte; the rest
// is the grid's file.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>

#include "companion/failure.h"
#include "companion/geolocation_grid.h"
#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "fuzz/memory_file.h"

namespace {

companion::ProductFacts facts_of(std::string_view words) {
  companion::ProductFacts facts;
  facts.is_complex = true;
  std::istringstream stream{std::string(words)};
  std::string start;
  std::string stop;
  stream >> start >> stop >> facts.scene.first_range_time >> facts.scene.last_range_time >>
      facts.lines >> facts.samples;
  // The annotation's own reader takes no others.
  constexpr const char* some_time = "2008-03-12T05:17:46.250000Z";
  facts.scene.start = lmx::c_datetime::is_valid(start) ? start : some_time;
  facts.scene.stop = lmx::c_datetime::is_valid(stop) ? stop : some_time;
  return facts;
}

void expect_shape(const companion::GeolocationGrid& grid) {
  expect(grid.points_along >= 2 && grid.points_across >= 2, "a grid has points both ways");
  expect(grid.points.size() == static_cast<std::size_t>(grid.points_along) *
                                   static_cast<std::size_t>(grid.points_across),
         "all of its points are there");
  expect(std::abs(grid.range_delay) <= 1e-6 && std::abs(grid.azimuth_shift) <= 1e-2,
         "delays and shift can be");
  for (const gkc_GridPoint& point : grid.points) {
    expect(std::abs(point.latitude) <= 90 && std::abs(point.longitude) <= 360, "places are");
    expect(point.incidence >= 0 && point.incidence <= 90, "angles are");
    expect(std::isfinite(point.azimuth_time) && std::isfinite(point.range_time) &&
               std::isfinite(point.height) && std::isfinite(point.line) &&
               std::isfinite(point.sample),
           "all numbers are finite");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  const companion::ProductFacts facts = facts_of(bytes.text());
  const MemoryFile file(bytes.rest());
  try {
    expect_shape(companion::read_geolocation_grid(file.path(), facts));
  } catch (const companion::Failure& failure) {
    expect(failure.code == gkc_BadDescription, "the file is at fault");
    expect(failure.message.starts_with(file.path()), "a failure names the file");
  }
  return 0;
}
