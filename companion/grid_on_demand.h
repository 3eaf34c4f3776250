#pragma once

#include <mutex>
#include <string>

#include "companion/geolocation_grid.h"
#include "companion/product_facts.h"

namespace companion {

// A product's geolocation grid, read when it is first asked for, on any thread; others that ask
// meanwhile wait for it.
class GridOnDemand {
 public:
  // `annotation` is the path of the product's annotation.
  GridOnDemand(std::string annotation, ProductFacts facts);

  // The grid, without points where there is none.
  const GeolocationGrid& grid() const;

  // Why the product's grid was not taken, in one sentence; empty where it was, or where the
  // product has none.
  const std::string& warning() const;

 private:
  void read() const;

  std::string annotation_;
  ProductFacts facts_;
  mutable std::once_flag once_;
  mutable GeolocationGrid grid_;
  mutable std::string warning_;
};

}  // namespace companion
