// The table of the companion, and the border between C and C++.

#include "gridkit/companion.h"

#include <cstddef>
#include <cstring>
#include <string>

#include "companion/cosar_reader.h"
#include "companion/failure.h"
#include "companion/product.h"
#include "gridkit/export.h"

namespace {

using companion::contain;
using companion::Failure;
using companion::Image;
using companion::Progress;

const Image& image_of(const gkc_Product* product, std::int32_t number) {
  if (product == nullptr) throw Failure(gkc_WrongUse, "no product");
  const auto& images = product->images;
  if (images.empty()) throw Failure(gkc_WrongUse, "the product was opened without images");
  if (number < 0 || static_cast<std::size_t>(number) >= images.size()) {
    throw Failure(gkc_WrongUse, "no image " + std::to_string(number) + ": there are images 0 to " +
                                    std::to_string(images.size() - 1));
  }
  return images[static_cast<std::size_t>(number)];
}

// Fills as much of a caller's struct as it is large; the size stays.
template <class Struct>
void fill(Struct* target, const Struct& filled) {
  if (target == nullptr || target->size < sizeof target->size) return;
  const std::size_t size = target->size;
  std::memcpy(target, &filled, size < sizeof filled ? size : sizeof filled);
  target->size = size;
}

std::int32_t open(const char* path, const gkc_OpenOptions* options, gkc_Product** product,
                  gkc_Error* error) {
  if (product != nullptr) *product = nullptr;
  return contain(error, [&] {
    if (path == nullptr || product == nullptr) throw Failure(gkc_WrongUse, "no path or no place");
    const bool without_images = options != nullptr &&
                                GKC_HAS(options, gkc_OpenOptions, without_images) &&
                                options->without_images != 0;
    const bool lenient =
        options != nullptr && GKC_HAS(options, gkc_OpenOptions, lenient) && options->lenient != 0;
    const auto reading = lenient ? companion::Reading::lenient : companion::Reading::strict;
    *product = companion::open_product(path, reading, without_images).release();
  });
}

void close(gkc_Product* product) {
  delete product;
}

std::int32_t image_count(const gkc_Product* product) {
  return product == nullptr ? 0 : static_cast<std::int32_t>(product->images.size());
}

std::int32_t type_of(const Image& image) {
  if (image.detected != nullptr) return gkc_Uint16;
  return image.cosar_burst->version == 1 ? gkc_ComplexInt16 : gkc_ComplexHalf;
}

std::int32_t describe_image(const gkc_Product* product, std::int32_t number, gkc_Image* description,
                            gkc_Error* error) {
  return contain(error, [&] {
    const Image& image = image_of(product, number);
    gkc_Image filled{};
    filled.name = image.name.c_str();
    filled.polarisation = image.polarisation.c_str();
    filled.file = image.path().c_str();
    filled.lines = image.lines();
    filled.samples = image.samples();
    filled.sample_type = type_of(image);
    filled.burst = image.burst;
    filled.first_line_utc = image.first_line_utc.c_str();
    filled.calibration_factor = image.calibration_factor;
    filled.magnitude_layer = image.magnitude_layer;
    filled.phase_layer = image.phase_layer;
    filled.image_file = image.image_file;
    filled.magnitude_layer_name = image.magnitude_layer_name.c_str();
    filled.phase_layer_name = image.phase_layer_name.c_str();
    fill(description, filled);
  });
}

// Calls a read and tells how far it came, however it ended.
template <class Read>
std::int32_t contain_read(gkc_Delivered* delivered, gkc_Error* error, Read read) {
  Progress progress;
  const std::int32_t code = contain(error, [&] { read(progress); });
  fill(delivered, {0, progress.lines, progress.samples});
  return code;
}

std::int32_t read(const gkc_Product* product, std::int32_t number, const gkc_Window* window,
                  gkc_Delivered* delivered, gkc_Error* error) {
  return contain_read(delivered, error, [&](Progress& progress) {
    const Image& image = image_of(product, number);
    const gkc_Window checked =
        companion::checked_window(window, image.path(), image.lines(), image.samples());
    if (image.detected != nullptr) {
      image.detected->read(checked, progress);
    } else {
      companion::read_cosar(*image.cosar, *image.cosar_burst, checked, progress);
    }
  });
}

std::int32_t read_valid_samples(const gkc_Product* product, std::int32_t number,
                                std::int64_t first_line, std::int64_t lines,
                                gkc_ValidSamples* valid, gkc_Delivered* delivered,
                                gkc_Error* error) {
  return contain_read(delivered, error, [&](Progress& progress) {
    const Image& image = image_of(product, number);
    if (valid == nullptr || first_line < 0 || lines < 1 || first_line >= image.lines() ||
        lines > image.lines() - first_line) {
      throw Failure(gkc_WrongUse, image.path() + ": no place for the answer, or lines " +
                                      std::to_string(first_line) + " and " + std::to_string(lines) +
                                      " in all, which the image of " +
                                      std::to_string(image.lines()) + " lines does not have");
    }
    if (image.cosar != nullptr) {
      companion::read_valid_samples(*image.cosar, *image.cosar_burst, first_line, lines, valid,
                                    progress);
      return;
    }
    for (; progress.lines < lines; ++progress.lines) {
      valid[progress.lines] = {0, image.samples() - 1};
    }
  });
}

std::int32_t describe_grid(const gkc_Product* product, gkc_GeolocationGrid* grid,
                           gkc_Error* error) {
  return contain(error, [&] {
    if (product == nullptr) throw Failure(gkc_WrongUse, "no product");
    const companion::GridOnDemand& found = *product->grid;
    const companion::GeolocationGrid& read = found.grid();
    gkc_GeolocationGrid filled{};
    filled.points_along = read.points_along;
    filled.points_across = read.points_across;
    filled.point_size = sizeof(gkc_GridPoint);
    filled.points = read.points.empty() ? nullptr : read.points.data();
    filled.range_delay = read.range_delay;
    filled.azimuth_shift = read.azimuth_shift;
    filled.warning = found.warning().c_str();
    fill(grid, filled);
  });
}

std::int32_t describe_noise(const gkc_Product* product, std::int32_t number, gkc_Noise* noise,
                            gkc_Error* error) {
  return contain(error, [&] {
    const Image& image = image_of(product, number);
    const companion::NoiseFacts& facts = *image.noise;
    if (facts.polynomials.empty()) {
      Failure failure(gkc_BadDescription, facts.element + ": " + facts.fault);
      failure.element = facts.element;
      throw failure;
    }
    gkc_Noise filled{};
    filled.factor = image.calibration_factor;
    filled.count = static_cast<std::int32_t>(facts.polynomials.size());
    filled.polynomial_size = sizeof(gkc_NoisePolynomial);
    filled.polynomials = facts.polynomials.data();
    filled.coefficients = facts.coefficients.data();
    filled.earliest_line = facts.earliest_line;
    filled.latest_line = facts.latest_line;
    fill(noise, filled);
  });
}

std::int32_t remark_count(const gkc_Product* product) {
  return product == nullptr ? 0 : static_cast<std::int32_t>(product->passed_over.size());
}

std::int32_t describe_remark(const gkc_Product* product, std::int32_t remark, gkc_Error* told) {
  if (remark < 0 || remark >= remark_count(product)) {
    companion::tell(told, gkc_WrongUse, "no remark of that number");
    return gkc_WrongUse;
  }
  companion::tell(told, product->passed_over[static_cast<std::size_t>(remark)]);
  return gkc_NoError;
}

std::int32_t describe_product(const gkc_Product* product, gkc_ProductFacts* facts,
                              gkc_Error* error) {
  return contain(error, [&] {
    if (product == nullptr) throw Failure(gkc_WrongUse, "no product");
    fill(facts, product->facts->told());
  });
}

constexpr gkc_Companion table = {sizeof(gkc_Companion),
                                 GKC_VERSION,
                                 0,
                                 open,
                                 close,
                                 image_count,
                                 describe_image,
                                 read,
                                 read_valid_samples,
                                 describe_grid,
                                 describe_noise,
                                 remark_count,
                                 describe_remark,
                                 describe_product};

}  // namespace

extern "C" GRIDKIT_API const gkc_Companion* gkc_GetCompanion() {
  return &table;
}
