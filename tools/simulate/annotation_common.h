#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "lmx/datetime.h"
#include "tools/simulate/annotation_source.h"

// Pieces that several branches of the annotation share. The objects are annotation classes of any
// schema version.

namespace simulate {

inline lmx::c_datetime date_time(const Utc& utc, bool with_z = true) {
  lmx::c_datetime value;
  value = utc.text(with_z);
  return value;
}

// Where a polynomial holds, and the point that its argument counts from.
struct Validity {
  double from;
  double reference;
  double to;
};

// The image's slant range times, counted from the middle one.
inline Validity over_range(const Scene& scene) {
  return {scene.near_time, (scene.near_time + scene.far_time) / 2, scene.far_time};
}

// A polynomial of degree coefficients.size() - 1.
template <class Polynom>
void fill_polynomial(const Validity& validity, const std::vector<double>& coefficients,
                     Polynom& target) {
  target.set_validityRangeMin(validity.from);
  target.set_validityRangeMax(validity.to);
  target.set_referencePoint(validity.reference);
  target.set_polynomialDegree(static_cast<std::uint32_t>(coefficients.size() - 1));
  for (std::size_t k = 0; k < coefficients.size(); ++k) {
    target.append_coefficient();
    target.back_coefficient().set_exponent(static_cast<std::uint32_t>(k));
    target.back_coefficient().set_coefficient(coefficients[k]);
  }
}

template <class File>
void fill_file(const std::string& path, const std::string& name, std::int64_t bytes, File& file) {
  file.get_location().set_host(".");
  file.get_location().set_path(path);
  file.get_location().set_filename(name);
  file.set_size(bytes);
}

// A stretch of the data take: `number` from 1.
template <class Segment>
void fill_segment(const AnnotationSource& source, std::int32_t number, const std::string& layer,
                  Segment& segment) {
  const Scene& scene = source.scene;
  segment.set_segmentID(number);
  segment.set_polLayer(layer);
  if (source.has_optional()) segment.set_beamID(source.beam());
  if (source.has_all()) segment.append_DRAoffset("SRA");
  auto& data = segment.get_dataSegment();
  data.set_startTimeUTC(date_time(scene.utc(scene.start)));
  data.set_stopTimeUTC(date_time(scene.utc(scene.stop)));
  data.set_numberOfRows(scene.options.lines);
}

inline constexpr double mechanical_boresight = 33.8 * degree;  // of the antenna, off nadir
inline constexpr double centre_frequency = 9.65e9;             // Hz
inline constexpr double pulse_length = 4.7e-5;                 // s
inline constexpr double calibration_factor = 1.05957369e-5;

inline double pulse_bandwidth(const Scene& scene) {
  return 0.91 * scene.rsf;
}

// Angle at the satellite between nadir and the line of sight to a place, in radians.
inline double look_angle(const Scene& scene, const Geodetic& place) {
  const Vector3 target = to_earth_fixed(place);
  const Vector3 satellite = scene.orbit.at(to_radar(scene.orbit, place).time).position;
  return std::acos(dot(unit(target - satellite), unit(-1 * satellite)));
}

inline float as_float(double value) {
  return static_cast<float>(value);
}
inline double in_degrees(double radians) {
  return radians / degree;
}

}  // namespace simulate
