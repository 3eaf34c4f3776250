#include "tools/gridkit/picture/quicklook.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <span>
#include <utility>

#include "tools/gridkit/picture/colour_map.h"
#include "tools/gridkit/picture/ground_spacing.h"
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

std::string meaning_as_text(const Quicklook& quicklook) {
  if (quicklook.meaning == PixelMeaning::phase) {
    return "direction of the mean phasor, -pi to pi around the circle of colours";
  }
  return "root of the mean intensity, black at " + short_number(quicklook.stretch.low) +
         " and white at " + short_number(quicklook.stretch.high);
}

std::string aspect_as_text(const Quicklook& quicklook) {
  if (!quicklook.spacing) return "the pixels' own";
  const auto& [sample, line] = *quicklook.spacing;
  return "the ground's; pixels of the layer lie " + short_number(sample) +
         " m apart along a line and " + short_number(line) + " m across lines";
}

std::vector<std::pair<std::string, std::string>> texts_of(const Quicklook& quicklook,
                                                          const gridkit::Product& product) {
  std::vector<std::pair<std::string, std::string>> texts = {{"Source", product.path()},
                                                            {"Layer", quicklook.layer},
                                                            {"Shows", meaning_as_text(quicklook)},
                                                            {"Aspect", aspect_as_text(quicklook)}};
  for (const auto& [reason, lines, key] : unread_lines(quicklook.missing)) {
    texts.emplace_back("Lines " + reason, lines);
  }
  for (auto& text : product_metadata(product, polarisation_of_layer(product, quicklook.layer)))
    texts.push_back(std::move(text));
  return texts;
}

}  // namespace

Quicklook make_quicklook(const gridkit::Product& product, const std::string& layer,
                         std::int32_t longest, const std::function<void(std::int32_t)>& advance) {
  Quicklook result;
  result.layer = layer;
  {
    const gridkit::Layer open = product.open_layer(layer);
    result.image = {open.width(), open.height()};
    result.meaning = open.pixel_type() == "s16" ? PixelMeaning::phase : PixelMeaning::magnitude;
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
  result.missing =
      gridkit::read_window(product, layer, {0, 0, result.image.width, result.image.height},
                           [&](std::span<const std::uint16_t> pixels, std::int32_t lines) {
                             looks.add(pixels, lines);
                             for (const std::uint16_t pixel : pixels) ++result.counts[pixel];
                             advance(lines);
                           });
  const FloatPicture reduced = looks.finish(result.missing);
  result.picture.width = size.width;
  result.picture.height = size.height;
  if (result.meaning == PixelMeaning::phase) {
    result.picture.pixels = stretch_phases(reduced.values);
    result.picture.palette = cyclic_map();
  } else {
    result.stretch = percentile_stretch(reduced.values, {});
    result.picture.pixels = stretch_values(reduced.values, result.stretch);
    result.picture.palette = grey_map();
  }
  result.picture.texts = texts_of(result, product);
  return result;
}
