#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "gridkit/c/border.h"
#include "gridkit/geolocation_grid.h"
#include "gridkit/gridkit.h"
#include "gridkit/host/sample_road.h"
#include "gridkit/image_radiometry.h"
#include "gridkit/product.h"
#include "gridkit/samples.h"
#include "rmdllib/placement.h"

namespace gridkit::c {

// A layer as its product lists it.
struct LayerFacts {
  std::string name;
  std::string pixel_type;
  std::string layer_type;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t block_width = 0;
  std::int32_t block_height = 0;
};

// What stands behind a handle. What is found out only when it is asked for is found out once; any
// number of threads may ask.
class OpenProduct {
 public:
  explicit OpenProduct(Product product) : product_(std::move(product)) {}

  const Product& product() const { return product_; }
  const std::string& path() const { return product_.path(); }

  // Throws the fault gridkit_NotThere for a product of a format without a companion, and what the
  // companion says.
  const Samples& samples();

  // Throws Error.
  const std::vector<LayerFacts>& layers();

  // The layer of that number. Throws Error, and the fault gridkit_WrongUse where there is none.
  const LayerFacts& layer(std::int32_t number);

  // Where a layer's pixels can be read as samples; nothing where it is read block by block.
  const std::optional<SampleRoad>& road_to(std::size_t layer);

  // The radiometry of an image. Throws the fault gridkit_NotThere.
  std::shared_ptr<const Radiometry> radiometry(std::size_t image, const RadiometryRequest& request);

  // The product's geolocation grid; null where it tells none.
  std::shared_ptr<const GeolocationGrid> geolocation_grid();

  // The corrections of signal delays that the product tells of its own radar geometry; nothing
  // where it tells none.
  const std::optional<rmdllib::SignalCorrections>& corrections();

  // A placement for one thread alone, with the corrections or without, given back by give_back.
  // Throws the fault gridkit_NotThere.
  std::unique_ptr<rmdllib::Placement> borrow_placement(bool with_delays);
  void give_back(std::unique_ptr<rmdllib::Placement> placement, bool with_delays);

 private:
  Product product_;
  std::mutex mutex_;  // of what follows
  std::optional<Samples> samples_;
  std::optional<std::vector<LayerFacts>> layers_;
  std::vector<std::optional<std::optional<SampleRoad>>> roads_;
  std::map<std::tuple<std::size_t, Backscatter, bool>, std::shared_ptr<const Radiometry>>
      radiometries_;
  std::optional<std::shared_ptr<const GeolocationGrid>> grid_;
  std::optional<std::optional<rmdllib::SignalCorrections>> corrections_;
  std::array<std::vector<std::unique_ptr<rmdllib::Placement>>, 2> idle_placements_;  // by delays
};

// A new handle for an open product. Handles are numbers that are never used twice, so that one that
// was closed is known as such.
gridkit_product* handle_of(std::shared_ptr<OpenProduct> product);

// What stands behind a handle, which stays open as long as the result lives. Throws the fault
// gridkit_WrongUse for null and for one that was closed.
std::shared_ptr<OpenProduct> product_of(const gridkit_product* handle);

// Ends a handle; false where there was none.
bool close_handle(const gridkit_product* handle) noexcept;

// Does the work of a function on a product. An Error of it has the code `kind` and the path of the
// product.
template <class Work>
std::int32_t contain(const gridkit_product* handle, gridkit_error** error, gridkit_Code kind,
                     Work work) noexcept {
  return contain(error, kind, [&] {
    const auto product = product_of(handle);
    try {
      work(*product);
    } catch (const SampleError&) {
      throw;
    } catch (const Cancelled&) {
      throw;
    } catch (const Error& failure) {
      throw Fault(kind, failure.sentence(), product->path());
    }
  });
}

}  // namespace gridkit::c
