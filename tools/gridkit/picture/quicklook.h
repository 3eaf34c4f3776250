#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "gridkit/image_reader.h"
#include "gridkit/indexed_png.h"
#include "gridkit/product.h"
#include "gridkit/radiometry.h"
#include "picture/multilook.h"
#include "picture/stretch.h"

// Backscatter that a picture of a magnitude layer shows in place of digital numbers.
struct PictureCalibration {
  std::shared_ptr<const gridkit::Radiometry> radiometry;
  bool in_decibels = false;                                   // greys are even steps of them
  std::vector<std::pair<std::string, std::string>> metadata;  // for the picture's texts
};

// A picture of a layer for the eye, made in one pass over its pixels.
struct Quicklook {
  std::string layer;
  PixelMeaning meaning = PixelMeaning::magnitude;
  PictureSize image;                        // of the layer
  std::optional<GroundSpacing> spacing;     // without it the picture has the pixels' own aspect
  std::string why_no_spacing;               // then
  gridkit::IndexedPicture picture;          // number 0 is no data, black and transparent
  Stretch stretch;                          // what the darkest and the brightest grey stand for:
                                            // digital numbers, roots of powers, or decibels
  std::vector<std::uint64_t> counts;        // of every 16-bit value among all pixels of the layer
  std::vector<gridkit::LineRange> missing;  // lines of the layer that did not come
};

inline constexpr std::int32_t smallest_picture = 16;
inline constexpr std::int32_t largest_picture = 8192;

// Makes the picture of a layer with at most `longest` pixels on its longer side. `advance` is told
// of lines read. Memory: what read_window takes, and the picture. Throws gridkit::Error.
Quicklook make_quicklook(const gridkit::Product& product, const std::string& layer,
                         std::int32_t longest, const std::function<void(std::int32_t)>& advance,
                         const std::optional<PictureCalibration>& calibration = std::nullopt);
