// Where pixels lie on Earth, and the way back.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "gridkit/c/open_product.h"
#include "gridkit/c/place_work.h"
#include "gridkit/record_decoder.h"
#include "gridkit/record_json.h"
#include "rmdllib/radar_generic_model.h"
#include "rmdllib/rational_model.h"

namespace {

using gridkit::c::BorrowedPlacement;
using gridkit::c::Fault;
using gridkit::c::OpenProduct;
using gridkit::c::require;
using rmdllib::Placement;

constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

const rmdllib::RadarGeometry& radar_of(const OpenProduct& product, const Placement& placement) {
  if (placement.radar() != nullptr) return *placement.radar();
  throw Fault(gridkit_NotThere, product.path() + ": lies on a map and has no geometry of the radar",
              product.path());
}

std::vector<gridkit::DecodedField> model_of(const OpenProduct& product) {
  const auto data = gridkit::read_listed_data(product.product(),
                                              std::string(":") + rmdllib::RadarGeometry::design);
  if (!data) throw Fault(gridkit_NotThere, product.path() + ": publishes no sensor model");
  return gridkit::decode_record(data->dictionary, data->type, data->bytes);
}

template <class T>
T field(const std::vector<gridkit::DecodedField>& model, const std::string& name) {
  for (const gridkit::DecodedField& one : model) {
    if (one.name != name) continue;
    if (const T* value = std::get_if<T>(&one.value)) return *value;
  }
  throw gridkit::Error("the sensor model has no field " + name + " of its type");
}

gridkit_geometry radar_geometry(OpenProduct& product, const Placement& placement) {
  const auto model = model_of(product);
  const auto& orbit = radar_of(product, placement).orbit();
  gridkit_geometry filled{};
  filled.kind = gridkit_RadarGeometry;
  filled.look_side = field<double>(model, "look_side") < 0 ? gridkit_LookLeft : gridkit_LookRight;
  filled.is_ground_range = field<std::int32_t>(model, "projection") == rmdl_slant_range ? 0 : 1;
  filled.year = field<std::int32_t>(model, "year");
  filled.month = field<std::int32_t>(model, "month");
  filled.day = field<std::int32_t>(model, "day");
  filled.average_height = placement.radar()->average_height();
  filled.semimajor = field<double>(model, "semimajor");
  filled.semiminor = field<double>(model, "semiminor");
  filled.first_state_time = orbit.first_time();
  filled.state_interval = orbit.interval();
  filled.state_vector_count =
      static_cast<std::int64_t>(field<std::vector<double>>(model, "rsx").size());
  filled.has_delays = product.corrections() ? 1 : 0;
  filled.sample_spacing = field<double>(model, "range_pix_spacing");
  return filled;
}

// [count][3], from three arrays of a model that were found to be equally long.
void interleave(const std::vector<gridkit::DecodedField>& model,
                const std::array<const char*, 3>& names, double* target) {
  if (target == nullptr) return;
  for (std::size_t axis = 0; axis < names.size(); ++axis) {
    const auto values = field<std::vector<double>>(model, names[axis]);
    for (std::size_t i = 0; i < values.size(); ++i) target[names.size() * i + axis] = values[i];
  }
}

gridkit_rational_model flattened(const rmdllib::FittedRationalModel& fitted) {
  const auto& [model, heights, line_error, sample_error] = fitted;
  gridkit_rational_model filled{};
  filled.line_offset = model.line.offset;
  filled.line_scale = model.line.scale;
  filled.sample_offset = model.sample.offset;
  filled.sample_scale = model.sample.scale;
  filled.latitude_offset = model.latitude.offset;
  filled.latitude_scale = model.latitude.scale;
  filled.longitude_offset = model.longitude.offset;
  filled.longitude_scale = model.longitude.scale;
  filled.height_offset = model.height.offset;
  filled.height_scale = model.height.scale;
  std::copy_n(model.line_function.numerator.begin(), rmdllib::rational_terms,
              filled.line_numerator);
  std::copy_n(model.line_function.denominator.begin(), rmdllib::rational_terms,
              filled.line_denominator);
  std::copy_n(model.sample_function.numerator.begin(), rmdllib::rational_terms,
              filled.sample_numerator);
  std::copy_n(model.sample_function.denominator.begin(), rmdllib::rational_terms,
              filled.sample_denominator);
  filled.lowest_height = heights.lowest;
  filled.highest_height = heights.highest;
  filled.largest_line_error = line_error;
  filled.largest_sample_error = sample_error;
  return filled;
}

// A map takes no notice of heights.
double default_height(const Placement& placement) {
  return placement.radar() != nullptr ? placement.radar()->average_height() : 0;
}

}  // namespace

int32_t gridkit_get_geometry(const gridkit_product* product, gridkit_geometry* geometry,
                             gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_NotThere, [&](OpenProduct& open) {
    gridkit::c::check_filled(geometry, "geometry");
    const BorrowedPlacement placement(open, false);
    gridkit_geometry filled{};
    filled.kind = gridkit_MapGeometry;
    if (placement->radar() != nullptr) filled = radar_geometry(open, *placement);
    filled.lines = placement->lines();
    filled.samples = placement->samples();
    gridkit::c::fill(geometry, filled);
  });
}

int32_t gridkit_state_vectors(const gridkit_product* product, size_t count, double* times,
                              double* positions, double* velocities, gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_NotThere, [&](OpenProduct& open) {
    const BorrowedPlacement placement(open, false);
    const gridkit_geometry geometry =
        (radar_of(open, *placement), radar_geometry(open, *placement));
    if (count != static_cast<std::size_t>(geometry.state_vector_count)) {
      throw Fault(gridkit_WrongUse,
                  open.path() + ": has " + std::to_string(geometry.state_vector_count) +
                      " state vectors, not " + std::to_string(count),
                  open.path());
    }
    const auto model = model_of(open);
    for (std::size_t i = 0; times != nullptr && i < count; ++i) {
      times[i] = geometry.first_state_time + static_cast<double>(i) * geometry.state_interval;
    }
    interleave(model, {"rsx", "rsy", "rsz"}, positions);
    interleave(model, {"vsx", "vsy", "vsz"}, velocities);
  });
}

int32_t gridkit_locate(const gridkit_product* product, const gridkit_place_options* options,
                       size_t count, const double* line, const double* sample, const double* height,
                       double* latitude, double* longitude, double* height_taken, size_t* without,
                       gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_NotThere, [&](OpenProduct& open) {
    if (without != nullptr) *without = 0;
    if (count > 0) {
      for (const void* array :
           {static_cast<const void*>(line), static_cast<const void*>(sample),
            static_cast<const void*>(latitude), static_cast<const void*>(longitude)}) {
        require(array, "an array of lines, samples, latitudes or longitudes");
      }
    }
    const auto place = [&](const Placement& placement, std::size_t i) {
      const double wanted = height == nullptr ? default_height(placement) : height[i];
      const rmdllib::Pixel pixel{line[i], sample[i]};
      latitude[i] = longitude[i] = not_a_number;
      if (height_taken != nullptr) height_taken[i] = not_a_number;
      if (!std::isfinite(pixel.line + pixel.sample + wanted)) return false;
      const rmdllib::Geodetic ground = placement.ground_of(pixel, wanted);
      latitude[i] = ground.latitude_degrees;
      longitude[i] = ground.longitude_degrees;
      if (height_taken != nullptr) height_taken[i] = wanted;
      return true;
    };
    gridkit::c::for_each_place(open, options, count, place, without);
  });
}

int32_t gridkit_find(const gridkit_product* product, const gridkit_place_options* options,
                     size_t count, const double* latitude, const double* longitude,
                     const double* height, double* line, double* sample, size_t* without,
                     gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_NotThere, [&](OpenProduct& open) {
    if (without != nullptr) *without = 0;
    if (count > 0) {
      for (const void* array :
           {static_cast<const void*>(latitude), static_cast<const void*>(longitude),
            static_cast<const void*>(line), static_cast<const void*>(sample)}) {
        require(array, "an array of latitudes, longitudes, lines or samples");
      }
    }
    const auto find = [&](const Placement& placement, std::size_t i) {
      const double wanted = height == nullptr ? default_height(placement) : height[i];
      const rmdllib::Geodetic place{latitude[i], longitude[i], wanted};
      line[i] = sample[i] = not_a_number;
      if (!std::isfinite(place.latitude_degrees + place.longitude_degrees + wanted)) return false;
      const rmdllib::Pixel pixel = placement.pixel_of(place);
      line[i] = pixel.line;
      sample[i] = pixel.sample;
      return true;
    };
    gridkit::c::for_each_place(open, options, count, find, without);
  });
}

int32_t gridkit_radar_coordinates(const gridkit_product* product, size_t count, const double* line,
                                  const double* sample, double* time, double* slant_range,
                                  size_t* without, gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_NotThere, [&](OpenProduct& open) {
    if (without != nullptr) *without = 0;
    if (count > 0) {
      for (const void* array :
           {static_cast<const void*>(line), static_cast<const void*>(sample),
            static_cast<const void*>(time), static_cast<const void*>(slant_range)}) {
        require(array, "an array of lines, samples, times or slant ranges");
      }
    }
    const auto convert = [&](const Placement& placement, std::size_t i) {
      const rmdllib::Pixel pixel{line[i], sample[i]};
      time[i] = slant_range[i] = not_a_number;
      if (!std::isfinite(pixel.line + pixel.sample)) return false;
      const rmdllib::RadarPoint point = radar_of(open, placement).radar_of(pixel);
      time[i] = point.time;
      slant_range[i] = point.range;
      return true;
    };
    radar_of(open, *BorrowedPlacement(open, false));
    gridkit::c::for_each_place(open, &gridkit::c::uncorrected, count, convert, without);
  });
}

int32_t gridkit_terrain_heights(const gridkit_product* product, size_t count, const double* line,
                                const double* sample, double* height, gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_NotThere, [&](OpenProduct& open) {
    if (count > 0) {
      for (const void* array : {static_cast<const void*>(line), static_cast<const void*>(sample),
                                static_cast<const void*>(height)}) {
        require(array, "an array of lines, samples or heights");
      }
    }
    const auto grid = open.geolocation_grid();
    if (grid == nullptr || !grid->has_image_axes()) {
      throw Fault(gridkit_NotThere, open.path() + ": tells no heights of the terrain", open.path());
    }
    for (std::size_t i = 0; i < count; ++i) {
      const bool is_place = std::isfinite(line[i] + sample[i]);
      height[i] = is_place ? grid->height_at(line[i], sample[i]) : not_a_number;
    }
  });
}

int32_t gridkit_fit_rational(const gridkit_product* product,
                             const gridkit_rational_options* options, gridkit_rational_model* model,
                             gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_NotThere, [&](OpenProduct& open) {
    gridkit::c::check_filled(model, "model");
    const auto wanted = gridkit::c::taken(options, "options");
    const bool with_delays = gridkit::c::chosen(wanted.delays, true, "delays");
    rmdllib::HeightRange heights;
    if (wanted.lowest_height != 0 || wanted.highest_height != 0) {
      heights = {wanted.lowest_height, wanted.highest_height};
      if (!(heights.lowest < heights.highest) || !std::isfinite(heights.highest - heights.lowest)) {
        throw Fault(gridkit_WrongUse, "the heights are no range");
      }
    }
    const BorrowedPlacement placement(open, with_delays);
    gridkit::c::fill(model,
                     flattened(rmdllib::fit_rational_model(radar_of(open, *placement), heights)));
  });
}
