#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "gridkit/image_reader.h"
#include "gridkit/raster_writer.h"
#include "tools/gridkit/read/calibration.h"

// In which form the pixels of a layer leave: as samples of an output file.
class PixelForm {
 public:
  virtual ~PixelForm() = default;

  virtual gridkit::SampleType type() const = 0;

  // The samples of lines; `complete` tells that all of their pixels came, else those of value 0 may
  // be missing. They stay until the next call.
  virtual std::span<const std::byte> operator()(std::span<const std::uint16_t> pixels,
                                                bool complete) = 0;

  // The value that stands for no data in the samples. `is_mapped`: 0 surrounds the scene of an
  // image on a map; `has_gaps`: pixels are missing, so that 0 is in any case no measurement.
  virtual std::optional<double> no_data(bool is_mapped, bool has_gaps) const = 0;
};

// The pixels' own values, 16 bits.
std::unique_ptr<PixelForm> own_values(bool is_phase);

// 8 bits for the eye: phases over a full turn, magnitudes from 0 to three times their mean, for
// which the window is read once before.
std::unique_ptr<PixelForm> stretched(const gridkit::Product& product, const std::string& layer,
                                     const gridkit::Window& window, bool is_phase);

// Backscatter, 32-bit floating point; NaN where there is no data, which is a digital number of 0 on
// a map, and in decibels of what is not above 0. The window's lines come in their order, each once.
std::unique_ptr<PixelForm> calibrated(const Calibration& calibration, const gridkit::Window& window,
                                      bool is_mapped);
