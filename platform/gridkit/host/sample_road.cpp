#include "gridkit/host/sample_road.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "gridkit/host/first_refused.h"
#include "gridkit/host/sampled_layer.h"

namespace gridkit {

namespace {

// A window that would be zeros for too long is found out before a line of it is handed out: the
// file ends once, so the first line past its end is sought by halves.
void check_extent(const SampleRoad& road, const Window& window) {
  if (std::int64_t{window.width} * window.height <= most_empty_pixels) return;
  const std::int64_t line =
      first_refused(window.line, std::int64_t{window.line} + window.height, [&](std::int64_t l) {
        std::uint16_t pixel = 0;
        try {
          road.samples.read(road.image, {l, window.column, 1, 1}, {road.form}, {&pixel});
          return true;
        } catch (const SampleError& error) {
          if (error.code() == gkc_CutShort) return false;
          throw;
        }
      });
  if ((std::int64_t{window.line} + window.height - line) * window.width <= most_empty_pixels)
    return;
  throw Error("the image should have " + std::to_string(road.samples.images()[road.image].lines) +
              " lines but its data end about line " + std::to_string(line) +
              "; read what is there as a smaller window");
}

}  // namespace

std::optional<SampleRoad> sample_road_to(const Product& product, const Layer& layer) try {
  Samples samples = product.samples();
  if (product.is_over_samples()) {
    const SampledLayer sampled = find_sampled_layer(samples, product.path(), layer.name());
    return SampleRoad{std::move(samples), sampled.image, sampled.form};
  }
  const auto names = product.layer_names();
  const auto place = std::find(names.begin(), names.end(), layer.name()) - names.begin();
  const auto& images = samples.images();
  for (std::size_t i = 0; i < images.size(); ++i) {
    const SampleImage& image = images[i];
    const bool is_phase = image.phase_layer == place;
    if (!image.is_complex() || (!is_phase && image.magnitude_layer != place)) continue;
    if (image.lines != layer.height() || image.samples != layer.width()) continue;
    return SampleRoad{std::move(samples), i,
                      is_phase ? SampleForm::phase16 : SampleForm::magnitude16};
  }
  return std::nullopt;
} catch (const Error&) {
  return std::nullopt;
}

std::vector<LineRange> read_over_samples(const SampleRoad& road, const Window& window,
                                         const MarkedLineSink& sink) {
  check_extent(road, window);
  const SampleWindow lines{window.line, window.column, window.height, window.width};
  const std::int64_t whole = read_in_order(
      road.samples, road.image, lines, {road.form},
      [&](std::span<const std::byte> samples, std::int64_t count, bool complete) {
        const auto* pixels = reinterpret_cast<const std::uint16_t*>(samples.data());
        sink({pixels, samples.size() / sizeof *pixels}, static_cast<std::int32_t>(count), complete);
      });
  if (whole == window.height) return {};
  return {{static_cast<std::int32_t>(window.line + whole), window.line + window.height - 1}};
}

}  // namespace gridkit
