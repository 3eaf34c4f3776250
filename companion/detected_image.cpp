#include "companion/detected_image.h"

#include <cstddef>
#include <utility>

#include "companion/failure.h"
#include "conversion/conversion.h"
#include "gridkit/instance.h"

namespace companion {

namespace {

constexpr std::int64_t pixels_at_once = std::int64_t{32} * 1024;

LayerHandle open_layer(const std::string& path) {
  gke_Report* report = nullptr;
  const std::string name = "1:" + path;
  LayerHandle layer(
      gkl_LayerOpen(name.c_str(), gki_GetInit(nullptr), &report, gkl_OptionReadOnly, 0));
  if (layer != nullptr) return layer;
  Failure failure(gkc_BadImage, take_report(report));
  failure.path = path;
  throw failure;
}

PartLimits limits_for(const gkc_Window& window) {
  const std::int64_t span = (window.samples - 1) * window.sample_step + 1;
  if (span > pixels_at_once) return {1, (pixels_at_once - 1) / window.sample_step + 1};
  return {window.line_step == 1 ? pixels_at_once / span : 1, window.samples};
}

}  // namespace

DetectedImage::DetectedImage(const std::string& path) : path_(path) {
  LayerHandle layer = open_layer(path);
  std::int32_t width = 0;
  std::int32_t height = 0;
  gkl_LayerSize(layer.get(), &width, &height);
  lines_ = height;
  samples_ = width;
  give_back(std::move(layer));
}

LayerHandle DetectedImage::borrow() {
  {
    const std::lock_guard lock(mutex_);
    if (!idle_.empty()) {
      LayerHandle layer = std::move(idle_.back());
      idle_.pop_back();
      return layer;
    }
  }
  return open_layer(path_);
}

void DetectedImage::give_back(LayerHandle layer) {
  const std::lock_guard lock(mutex_);
  idle_.push_back(std::move(layer));
}

void DetectedImage::read(const gkc_Window& window, Progress& progress) {
  std::vector<double> values(pixels_at_once);
  std::vector<std::uint16_t> pixels(pixels_at_once);
  LayerHandle layer = borrow();
  const auto read_part = [&](const Part& part, std::int64_t&) {
    const std::int64_t span = (part.samples - 1) * window.sample_step + 1;
    const auto width = static_cast<std::int32_t>(span);
    const auto height = static_cast<std::int32_t>(part.lines);
    const std::int64_t line = window.first_line + part.line * window.line_step;
    const std::int64_t sample = window.first_sample + part.sample * window.sample_step;
    gkl_PixelRect rect{values.data(),  std::int64_t{sizeof(double)} * width,
                       sizeof(double), width,
                       height,         gkl_PixelF64};
    gke_Report* report = nullptr;
    gkl_LayerRead(layer.get(), static_cast<std::int32_t>(sample), static_cast<std::int32_t>(line),
                  width, height, &rect, &report);
    if (report != nullptr) {
      throw Failure(gkc_CannotRead, path_,
                    "line " + std::to_string(line) + " cannot be read: " + take_report(report));
    }
    conversion::narrow(values.data(), pixels.data(), static_cast<std::size_t>(span * part.lines));
    for (std::int64_t k = 0; k < part.lines; ++k) {
      deliver(window, part.line + k, part.sample,
              reinterpret_cast<const char*>(pixels.data() + k * span), part.samples,
              sizeof(std::uint16_t));
    }
  };
  read_in_parts(window, limits_for(window), progress, read_part);
  give_back(std::move(layer));
}

}  // namespace companion
