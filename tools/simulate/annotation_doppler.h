#pragma once

#include "tools/simulate/annotation_common.h"

// The parts geometry and doppler of the branch processing.

namespace simulate {

// Doppler centroid, in hertz: what is left under zero-Doppler steering, falling along range.
inline constexpr double centroid_at_middle = 28;
inline constexpr double centroid_fall = 2;  // from the nearest to the farthest pixel

inline std::vector<double> centroid_polynomial(const Scene& scene) {
  return {centroid_at_middle, -centroid_fall / (scene.far_time - scene.near_time)};
}

// The square of the speed that focuses a point, satellite's times ground point's, along range at a
// time: a parabola through the nearest, middle and farthest range.
inline std::vector<double> velocity_polynomial(const Scene& scene, double time) {
  const Validity range = over_range(scene);
  const auto square_at = [&](double delay) {
    const auto place = [&](double t) {
      return to_earth_fixed(
          to_ground(scene.orbit, {t, range_of(delay)}, scene.options.height, scene.centre));
    };
    constexpr double step = 0.5;  // s
    const double ground_speed = length(place(time + step) - place(time - step)) / (2 * step);
    return ground_speed * length(scene.orbit.at(time).velocity);
  };
  const double near = square_at(range.from);
  const double middle = square_at(range.reference);
  const double far = square_at(range.to);
  const double half = range.to - range.reference;
  return {middle, (far - near) / (2 * half), (far - 2 * middle + near) / (2 * half * half)};
}

// Doppler rate, -2 v^2 / (wavelength R), expanded about the middle range to the third order.
inline std::vector<double> rate_polynomial(const Scene& scene, double time) {
  const double delay = over_range(scene).reference;
  const double wavelength = speed_of_light / centre_frequency;
  const std::vector<double> v2 = velocity_polynomial(scene, time);
  std::vector<double> rate(4);
  const double factor = -2 / (wavelength * range_of(delay));
  for (std::size_t k = 0; k < rate.size(); ++k) {
    // The series of 1 / (delay + d) times the parabola.
    for (std::size_t j = 0; j <= std::min<std::size_t>(k, 2); ++j) {
      rate[k] += factor * v2[j] * std::pow(-1 / delay, static_cast<double>(k - j));
    }
  }
  return rate;
}

template <class Geometry>
void fill_geometry(const AnnotationSource& source, Geometry& geometry) {
  const Scene& scene = source.scene;
  const int count = source.has_optional() ? 5 : 1;
  geometry.set_geometryCoordinateType("ZERODOPPLER");
  for (int i = 0; i < count; ++i) {
    const Utc time = source.time_at(i, count);
    geometry.append_velocityParameter();
    auto& velocity = geometry.back_velocityParameter();
    velocity.set_timeUTC(date_time(time));
    if (source.has_all()) velocity.set_beamID(source.beam());
    fill_polynomial(over_range(scene), velocity_polynomial(scene, time.since(scene.epoch)),
                    velocity.get_velocityParameterPolynomial());
  }
  if constexpr (requires { geometry.append_zeroDopplerVelocity(); }) {
    if (source.has_optional()) {
      geometry.append_zeroDopplerVelocity();
      if (source.has_all()) geometry.back_zeroDopplerVelocity().set_beamID(source.beam());
      geometry.back_zeroDopplerVelocity().set_velocity(scene.ground_velocity);
    }
  }
  for (int i = 0; i < count; ++i) {
    const Utc time = source.time_at(i, count);
    geometry.append_dopplerRate();
    auto& rate = geometry.back_dopplerRate();
    rate.set_timeUTC(date_time(time));
    if (source.has_all()) rate.set_beamID(source.beam());
    fill_polynomial(over_range(scene), rate_polynomial(scene, time.since(scene.epoch)),
                    rate.get_dopplerRatePolynomial());
  }
}

template <class Estimate>
void fill_doppler_estimate(const AnnotationSource& source, const Utc& time, Estimate& estimate) {
  const Scene& scene = source.scene;
  estimate.set_timeUTC(date_time(time));
  estimate.set_dopplerAtMidRange(centroid_at_middle);
  fill_polynomial(over_range(scene), centroid_polynomial(scene), estimate.get_basebandDoppler());
  estimate.set_geometricDopplerFlag(source.has_all());
  if (source.has_all()) {
    fill_polynomial(over_range(scene), centroid_polynomial(scene), estimate.get_geometricDoppler());
  }
  estimate.set_dopplerAmbiguity(0);
  estimate.set_dopplerConsistencyFlag(true);
  estimate.set_dopplerEstimateConfidence(0.95F);
  fill_polynomial(over_range(scene), centroid_polynomial(scene), estimate.get_combinedDoppler());
}

template <class Doppler>
void fill_doppler(const AnnotationSource& source, Doppler& doppler) {
  doppler.set_dopplerBasebandEstimationMethod("correlation");
  doppler.set_dopplerGeometricEstimationMethod("attitude");
  doppler.set_dopplerCentroidCoordinateType("RAW");
  const auto& layers = source.options().polarisations;
  const int count = source.has_optional() ? 10 * source.repeats : 1;
  for (std::size_t layer = 0; layer < layers.size(); ++layer) {
    doppler.append_dopplerCentroid();
    auto& centroid = doppler.back_dopplerCentroid();
    centroid.set_layerIndex(static_cast<std::int32_t>(layer + 1));
    centroid.set_polLayer(layers[layer]);
    if (source.has_all()) {
      centroid.append_DRAoffset("SRA");
      centroid.set_beamID(source.beam());
      centroid.set_scanSARDopplerOffset(0.0);
      centroid.get_spotlightDopplerProgression().set_dopplerMidRangeFirst(0.0);
      centroid.get_spotlightDopplerProgression().set_dopplerMidRangeLast(0.0);
      centroid.set_polLayerDopplerOffset(0.0);
    }
    centroid.set_numberOfBlocks(count);
    centroid.set_numberOfRejectedBlocks(0);
    centroid.set_numberOfDopplerRecords(count);
    const Scene& scene = source.scene;
    centroid.set_dopplerRecordAzimuthSpacing(as_float((scene.stop - scene.start) / count));
    for (int i = 0; i < count; ++i) {
      centroid.append_dopplerEstimate();
      fill_doppler_estimate(source, source.time_at(i, count), centroid.back_dopplerEstimate());
    }
  }
}

}  // namespace simulate
