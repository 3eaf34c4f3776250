#include "gridkit/c/open_product.h"

#include <shared_mutex>
#include <unordered_map>

namespace gridkit::c {

namespace {

// The handles that are open are the process's own by their nature.
struct Handles {
  std::shared_mutex mutex;
  std::uintptr_t last = 0;
  std::unordered_map<std::uintptr_t, std::shared_ptr<OpenProduct>> open;
};

Handles& handles() {
  static Handles instance;
  return instance;
}

}  // namespace

const Samples& OpenProduct::samples() {
  const std::lock_guard lock(mutex_);
  if (samples_) return *samples_;
  try {
    return samples_.emplace(product_.samples());
  } catch (const SampleError&) {
    throw;
  } catch (const Error& error) {
    throw Fault(gridkit_NotThere, error.sentence(), path());
  }
}

const std::vector<LayerFacts>& OpenProduct::layers() {
  const std::lock_guard lock(mutex_);
  if (layers_) return *layers_;
  std::vector<LayerFacts> found;
  for (const std::string& name : product_.layer_names()) {
    const Layer layer = product_.open_layer(name);
    found.push_back({name, layer.pixel_type(), layer.layer_type(), layer.width(), layer.height(),
                     layer.block_width(), layer.block_height()});
  }
  roads_.resize(found.size());
  return layers_.emplace(std::move(found));
}

const LayerFacts& OpenProduct::layer(std::int32_t number) {
  const std::vector<LayerFacts>& all = layers();
  if (number >= 0 && static_cast<std::size_t>(number) < all.size()) {
    return all[static_cast<std::size_t>(number)];
  }
  throw Fault(
      gridkit_WrongUse,
      path() + ": no layer " + std::to_string(number) + "; it has " + std::to_string(all.size()),
      path());
}

const std::optional<SampleRoad>& OpenProduct::road_to(std::size_t number) {
  const std::string& name = layers().at(number).name;
  const std::lock_guard lock(mutex_);
  auto& road = roads_.at(number);
  if (!road) road = sample_road_to(product_, product_.open_layer(name));
  return *road;
}

std::shared_ptr<const Radiometry> OpenProduct::radiometry(std::size_t image,
                                                          const RadiometryRequest& request) {
  const Samples& all = samples();
  const std::lock_guard lock(mutex_);
  auto& known = radiometries_[{image, request.quantity, request.subtract_noise}];
  if (known != nullptr) return known;
  try {
    return known = radiometry_of(product_, all, image, request);
  } catch (const Error& error) {
    throw Fault(gridkit_NotThere, error.sentence(), path());
  }
}

std::shared_ptr<const GeolocationGrid> OpenProduct::geolocation_grid() {
  const std::lock_guard lock(mutex_);
  if (!grid_) grid_ = find_geolocation_grid(product_.plugin(), path()).grid;
  return *grid_;
}

const std::optional<rmdllib::SignalCorrections>& OpenProduct::corrections() {
  const auto grid = geolocation_grid();
  const std::lock_guard lock(mutex_);
  if (corrections_) return *corrections_;
  std::optional<rmdllib::SignalCorrections> told;
  if (grid != nullptr) told = rmdllib::corrections_of(*grid);
  return corrections_.emplace(told);
}

std::unique_ptr<rmdllib::Placement> OpenProduct::borrow_placement(bool with_delays) {
  {
    const std::lock_guard lock(mutex_);
    auto& idle = idle_placements_[with_delays ? 1 : 0];
    if (!idle.empty()) {
      auto placement = std::move(idle.back());
      idle.pop_back();
      return placement;
    }
  }
  try {
    auto placement = std::make_unique<rmdllib::Placement>(product_);
    if (with_delays && placement->radar() != nullptr && corrections()) {
      placement->apply(*corrections());
    }
    return placement;
  } catch (const Error& error) {
    throw Fault(gridkit_NotThere, error.sentence(), path());
  }
}

void OpenProduct::give_back(std::unique_ptr<rmdllib::Placement> placement, bool with_delays) {
  const std::lock_guard lock(mutex_);
  idle_placements_[with_delays ? 1 : 0].push_back(std::move(placement));
}

gridkit_product* handle_of(std::shared_ptr<OpenProduct> product) {
  const std::unique_lock lock(handles().mutex);
  // Spaced like addresses, and never one: the first page of memory is nobody's.
  constexpr std::uintptr_t spacing = 16;
  const std::uintptr_t number = handles().last + spacing;
  handles().open.emplace(number, std::move(product));
  handles().last = number;
  // Never followed, so nothing is lost for the compiler.
  return reinterpret_cast<gridkit_product*>(number);  // NOLINT(performance-no-int-to-ptr)
}

std::shared_ptr<OpenProduct> product_of(const gridkit_product* handle) {
  require(handle, "the product");
  const std::shared_lock lock(handles().mutex);
  const auto found = handles().open.find(reinterpret_cast<std::uintptr_t>(handle));
  if (found != handles().open.end()) return found->second;
  throw Fault(gridkit_WrongUse, "the product is closed, or was never open");
}

bool close_handle(const gridkit_product* handle) noexcept {
  std::shared_ptr<OpenProduct> closed;  // ends after the lock
  const std::unique_lock lock(handles().mutex);
  const auto found = handles().open.find(reinterpret_cast<std::uintptr_t>(handle));
  if (found == handles().open.end()) return false;
  closed = std::move(found->second);
  handles().open.erase(found);
  return true;
}

}  // namespace gridkit::c
