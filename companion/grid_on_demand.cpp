#include "companion/grid_on_demand.h"

#include <utility>

#include "companion/failure.h"

namespace companion {

GridOnDemand::GridOnDemand(std::string annotation, ProductFacts facts)
    : annotation_(std::move(annotation)), facts_(std::move(facts)) {}

const GeolocationGrid& GridOnDemand::grid() const {
  std::call_once(once_, [this] { read(); });
  return grid_;
}

const std::string& GridOnDemand::warning() const {
  grid();
  return warning_;
}

// A grid that cannot be had is no reason to refuse anything else.
void GridOnDemand::read() const {
  const auto& files = facts_.scene.grid_files;
  if (files.empty()) return;
  if (files.size() > 1) {
    warning_ = annotation_ + ": its productComponents name " + std::to_string(files.size()) +
               " geolocation grids, and only one can be meant";
    return;
  }
  try {
    grid_ = read_geolocation_grid(files.front(), facts_);
  } catch (const Failure& failure) {
    warning_ = failure.message;
  }
}

}  // namespace companion
