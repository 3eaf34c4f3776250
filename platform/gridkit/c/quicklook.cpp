// Pictures of layers for the eye.

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "gridkit/c/open_product.h"
#include "gridkit/image_reader.h"
#include "picture/ground_spacing.h"
#include "picture/multilook.h"
#include "picture/stretch.h"

namespace {

using gridkit::c::Fault;
using gridkit::c::LayerFacts;
using gridkit::c::OpenProduct;

constexpr std::int32_t smallest_picture = 16;
constexpr std::int32_t largest_picture = 8192;

// A product that cannot be placed has the pixels' own aspect.
GroundSpacing spacing_of(const OpenProduct& product, PictureSize image) try {
  return ground_spacing(product.product(), image);
} catch (const gridkit::Error&) {
  return {};
}

FloatPicture reduced(const OpenProduct& product, const LayerFacts& layer, PixelMeaning meaning,
                     std::int32_t longest) {
  const PictureSize image{layer.width, layer.height};
  Multilook looks(meaning, image, fitting_size(image, spacing_of(product, image), longest));
  const auto missing = gridkit::read_window(
      product.product(), layer.name, {0, 0, image.width, image.height},
      [&](std::span<const std::uint16_t> pixels, std::int32_t lines) { looks.add(pixels, lines); });
  return looks.finish(missing);
}

}  // namespace

int32_t gridkit_quicklook(const gridkit_product* product, int32_t number, int32_t longest,
                          gridkit_picture* picture, gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    gridkit::c::check_filled(picture, "picture");
    if (longest < smallest_picture || longest > largest_picture) {
      throw Fault(gridkit_WrongUse, "the picture's longer side is " + std::to_string(longest) +
                                        " pixels; it must be 16 to 8192");
    }
    const LayerFacts& layer = open.layer(number);
    if (layer.width < 1 || layer.height < 1) {
      throw gridkit::Error(open.path() + ": the layer " + layer.name + " has no pixels");
    }
    const bool is_phase = layer.pixel_type == "s16";
    const FloatPicture values =
        reduced(open, layer, is_phase ? PixelMeaning::phase : PixelMeaning::magnitude, longest);
    const std::vector<std::uint8_t> numbers =
        is_phase ? stretch_phases(values.values)
                 : stretch_values(values.values, percentile_stretch(values.values, {}));
    gridkit_picture filled{};
    filled.width = values.size.width;
    filled.height = values.size.height;
    filled.numbers = static_cast<unsigned char*>(gridkit::c::allocate(numbers.size()));
    std::copy(numbers.begin(), numbers.end(), filled.numbers);
    gridkit::c::fill(picture, filled);
  });
}
