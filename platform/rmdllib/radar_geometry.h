#pragma once

#include <span>
#include <vector>

#include "gridkit/export.h"
#include "gridkit/record_decoder.h"
#include "rmdllib/ellipsoid.h"
#include "rmdllib/orbit_track.h"
#include "rmdllib/range_doppler.h"

namespace rmdllib {

// A place in an image. Whole numbers are the centres of pixels; line 0 and sample 0 are the first.
struct Pixel {
  double line = 0;
  double sample = 0;
};

// By how much the times of an image's raster exceed those of its geometry: the signal takes longer
// than light in a vacuum, and the processor's clock has an error. A place is seen at zero Doppler
// at the raster's azimuth time less the shift, and at its two-way range time less the delay.
struct SignalCorrections {
  double range_delay = 0;    // s, both ways
  double azimuth_shift = 0;  // s
};

// Where the pixels of an image in radar geometry lie on Earth, from the generic sensor model that
// its format publishes, and from nothing else unless corrections are handed in. Lines are equally
// spaced in time from the start to the end of the image; samples are equally spaced in slant range,
// or in ground range, which the model's polynomial turns into slant range. Either may run
// backwards.
class GRIDKIT_API RadarGeometry {
 public:
  // The design of such a model.
  static constexpr const char* design = "RADAR_Generic_v2.2";

  // From a decoded record of that design. Throws gridkit::Error for a record that gives no
  // geometry.
  explicit RadarGeometry(std::span<const gridkit::DecodedField> model);

  // The same with the raster's times corrected by so much instead of what they were corrected by
  // before. Throws gridkit::Error for numbers that are not finite.
  RadarGeometry with(const SignalCorrections& corrections) const;

  double lines() const { return lines_; }
  double samples() const { return samples_; }
  // Average height of the scene above the ellipsoid, in metres.
  double average_height() const { return average_height_; }
  const Ellipsoid& earth() const { return earth_; }
  const OrbitTrack& orbit() const { return orbit_; }

  const SignalCorrections& corrections() const { return corrections_; }

  // When and how far away the raster itself has a pixel, without corrections: half the way of light
  // in its range time.
  RadarPoint raster_of(Pixel pixel) const;

  // The zero-Doppler coordinates of such a point.
  RadarPoint corrected(RadarPoint raster) const;

  // Between an image place and its zero-Doppler coordinates. Throws gridkit::Error where the
  // ground-range polynomial has no answer.
  RadarPoint radar_of(Pixel pixel) const { return corrected(raster_of(pixel)); }
  Pixel pixel_of(RadarPoint point) const;

  // The place at a height that is seen at a pixel. Throws gridkit::Error as rmdllib::to_ground
  // does.
  Geodetic ground_of(Pixel pixel, double height) const;

  // Where a place is seen, also outside the image. Throws gridkit::Error as rmdllib::to_radar does,
  // and for a place on the far side of the Earth, beyond the satellite's horizon, or on the side of
  // the track that the radar does not look to.
  Pixel pixel_of(const Geodetic& place) const;

 private:
  double slant_range(double ground_range) const;
  double ground_range(double slant_range) const;

  double lines_;
  double samples_;
  double start_;
  double line_interval_;
  double near_range_;
  double range_spacing_;
  bool is_ground_range_;
  bool lines_run_back_;
  bool samples_run_back_;
  std::vector<double> ground_to_slant_;
  LookSide side_;
  double average_height_;
  Ellipsoid earth_;
  OrbitTrack orbit_;
  SignalCorrections corrections_;
};

}  // namespace rmdllib
