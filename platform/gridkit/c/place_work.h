#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "gridkit/c/open_product.h"
#include "gridkit/gridkit.h"
#include "rmdllib/placement.h"

namespace gridkit::c {

// A placement of a product, for one thread alone, as long as it lives.
class BorrowedPlacement {
 public:
  BorrowedPlacement(OpenProduct& product, bool with_delays)
      : product_(product),
        with_delays_(with_delays),
        placement_(product.borrow_placement(with_delays)) {}
  BorrowedPlacement(const BorrowedPlacement&) = delete;
  BorrowedPlacement& operator=(const BorrowedPlacement&) = delete;
  ~BorrowedPlacement();

  const rmdllib::Placement& operator*() const { return *placement_; }
  const rmdllib::Placement* operator->() const { return placement_.get(); }

 private:
  OpenProduct& product_;
  bool with_delays_;
  std::unique_ptr<rmdllib::Placement> placement_;
};

// Works on one place of many; false, or an Error, where there is no answer.
using OnePlace = std::function<bool(const rmdllib::Placement& placement, std::size_t number)>;

// The options of functions that have none of their own: without delays, on the calling thread.
inline constexpr gridkit_place_options uncorrected{sizeof(gridkit_place_options), gridkit_No, 0,
                                                   nullptr, nullptr};

// Works on every place, on as many threads as the options (null: the defaults) ask for, and counts
// those without an answer. Throws Cancelled.
void for_each_place(OpenProduct& product, const gridkit_place_options* options, std::size_t count,
                    const OnePlace& one, std::size_t* without);

}  // namespace gridkit::c
