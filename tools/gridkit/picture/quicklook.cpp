#include "tools/gridkit/picture/quicklook.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <span>
#include <utility>

#include "picture/ground_spacing.h"
#include "tools/gridkit/picture/colour_map.h"
#include "tools/gridkit/product/product_metadata.h"
#include "tools/gridkit/read/line_ranges.h"

namespace {

constexpr std::size_t pixel_values = 65536;

// "12.5" and the like.
std::string short_number(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.4g", value);
  return text.data();
}

std::string meaning_as_text(const Quicklook& quicklook,
                            const std::optional<PictureCalibration>& calibration) {
  if (quicklook.meaning == PixelMeaning::phase) {
    return "direction of the mean phasor, -pi to pi around the circle of colours";
  }
  const std::string low = short_number(quicklook.stretch.low);
  const std::string high = short_number(quicklook.stretch.high);
  if (!calibration) return "root of the mean intensity, black at " + low + " and white at " + high;
  const std::string quantity = name_of(calibration->radiometry->quantity());
  if (!calibration->in_decibels) {
    return "root of the mean " + quantity + ", black at " + low + " and white at " + high;
  }
  return "mean " + quantity + " in decibels, black at " + low + " dB and white at " + high + " dB";
}

std::string aspect_as_text(const Quicklook& quicklook) {
  if (!quicklook.spacing) return "the pixels' own";
  const auto& [sample, line] = *quicklook.spacing;
  return "the ground's; pixels of the layer lie " + short_number(sample) +
         " m apart along a line and " + short_number(line) + " m across lines";
}

std::vector<std::pair<std::string, std::string>> texts_of(
    const Quicklook& quicklook, const gridkit::Product& product,
    const std::optional<PictureCalibration>& calibration) {
  std::vector<std::pair<std::string, std::string>> texts = {
      {"Source", product.path()},
      {"Layer", quicklook.layer},
      {"Shows", meaning_as_text(quicklook, calibration)},
      {"Aspect", aspect_as_text(quicklook)}};
  for (const auto& [reason, lines, key] : unread_lines(quicklook.missing)) {
    texts.emplace_back("Lines " + reason, lines);
  }
  if (calibration) {
    texts.insert(texts.end(), calibration->metadata.begin(), calibration->metadata.end());
  }
  for (auto& text : product_metadata(product, polarisation_of_layer(product, quicklook.layer)))
    texts.push_back(std::move(text));
  return texts;
}

// Backscatter of a layer's lines as they come, from the first on.
class CalibratedLines {
 public:
  explicit CalibratedLines(const std::shared_ptr<const gridkit::Radiometry>& radiometry)
      : weighing_(radiometry) {}

  std::span<const float> operator()(std::span<const std::uint16_t> pixels, std::int32_t lines) {
    values_.resize(pixels.size());
    const std::size_t width = pixels.size() / static_cast<std::size_t>(lines);
    for (std::size_t at = 0; at < pixels.size(); at += width, ++next_line_) {
      weighing_.weigh(next_line_, 0, pixels.subspan(at, width), false,
                      std::span(values_).subspan(at, width));
    }
    return values_;
  }

 private:
  gridkit::RadiometricLines weighing_;
  std::int64_t next_line_ = 0;
  std::vector<float> values_;
};

// Greys of mean powers: stretched between percentiles of those above 0, in even steps of their
// roots, or of decibels. What is below 0 is as dark as the darkest.
void stretch_powers(std::vector<float> values, bool in_decibels, Quicklook& result) {
  const auto root = [](float power) { return std::sqrt(std::max(power, 0.0F)); };
  for (float& value : values) value = std::isnan(value) ? value : root(value);
  result.stretch = percentile_stretch(values, {});
  if (in_decibels) {
    const auto lowest = static_cast<float>(result.stretch.low);
    const auto level = [](double value) { return 20 * std::log10(value); };
    for (float& value : values) {
      if (!std::isnan(value)) value = static_cast<float>(level(std::max(value, lowest)));
    }
    if (lowest > 0) result.stretch = {level(result.stretch.low), level(result.stretch.high)};
  }
  result.picture.pixels = stretch_values(values, result.stretch);
}

}  // namespace

Quicklook make_quicklook(const gridkit::Product& product, const std::string& layer,
                         std::int32_t longest, const std::function<void(std::int32_t)>& advance,
                         const std::optional<PictureCalibration>& calibration) {
  Quicklook result;
  result.layer = layer;
  {
    const gridkit::Layer open = product.open_layer(layer);
    result.image = {open.width(), open.height()};
    result.meaning = open.pixel_type() == "s16" ? PixelMeaning::phase
                     : calibration              ? PixelMeaning::power
                                                : PixelMeaning::magnitude;
  }
  if (result.image.width < 1 || result.image.height < 1) {
    throw gridkit::Error(product.path() + ": the layer " + layer + " has no pixels");
  }
  try {
    result.spacing = ground_spacing(product, result.image);
  } catch (const gridkit::Error& error) {
    result.why_no_spacing = error.sentence();
  }
  const PictureSize size =
      fitting_size(result.image, result.spacing.value_or(GroundSpacing{}), longest);
  result.counts.resize(pixel_values);
  Multilook looks(result.meaning, result.image, size);
  std::optional<CalibratedLines> calibrate;
  if (result.meaning == PixelMeaning::power) calibrate.emplace(calibration->radiometry);
  result.missing =
      gridkit::read_window(product, layer, {0, 0, result.image.width, result.image.height},
                           [&](std::span<const std::uint16_t> pixels, std::int32_t lines) {
                             if (calibrate) {
                               looks.add((*calibrate)(pixels, lines), lines);
                             } else {
                               looks.add(pixels, lines);
                             }
                             for (const std::uint16_t pixel : pixels) ++result.counts[pixel];
                             advance(lines);
                           });
  const FloatPicture reduced = looks.finish(result.missing);
  result.picture.width = size.width;
  result.picture.height = size.height;
  if (result.meaning == PixelMeaning::phase) {
    result.picture.pixels = stretch_phases(reduced.values);
    result.picture.palette = cyclic_map();
  } else if (result.meaning == PixelMeaning::power) {
    stretch_powers(reduced.values, calibration->in_decibels, result);
    result.picture.palette = grey_map();
  } else {
    result.stretch = percentile_stretch(reduced.values, {});
    result.picture.pixels = stretch_values(reduced.values, result.stretch);
    result.picture.palette = grey_map();
  }
  result.picture.texts = texts_of(result, product, calibration);
  return result;
}
