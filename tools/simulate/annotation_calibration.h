#pragma once

#include "tools/simulate/annotation_common.h"

// The branches calibration and noise.

namespace simulate {

constexpr double peak_gain = 48;  // dB

// Two-way gain of a uniformly lit aperture, in decibels, some degrees off its axis.
inline double pattern_gain(double off_axis, double beam_width) {
  const double x = off_axis / beam_width * 2.78;
  const double response = std::abs(x) < 1e-9 ? 1 : std::sin(x) / x;
  return std::max(-60.0, 20 * std::log10(std::abs(response) + 1e-9));
}

template <class Pattern>
void fill_pattern(const AnnotationSource& source, const std::string& layer, Pattern& pattern) {
  const Scene& scene = source.scene;
  const double axis = in_degrees(look_angle(scene, scene.centre) - mechanical_boresight);
  const int elevation_gains = source.has_optional() ? 1200 * source.repeats : 1;
  const int azimuth_gains = source.has_optional() ? 600 : 1;
  pattern.set_polLayer(layer);
  if (source.has_all()) pattern.append_DRAoffset("SRA");
  pattern.append_elevationPattern();
  auto& elevation = pattern.back_elevationPattern();
  elevation.set_beamID(source.beam());
  elevation.set_referenceGain(0.0F);
  for (int i = 0; i < elevation_gains; ++i) {
    const double angle = axis + 6 * (2.0 * i / elevation_gains - 1);
    elevation.append_gainExt();
    elevation.back_gainExt().set_angle(as_float(angle));
    elevation.back_gainExt().set_gainExt(as_float(peak_gain + pattern_gain(angle - axis, 2.3)));
  }
  if (source.has_all()) elevation.set_description("two-way, uniform aperture");
  auto& azimuth = pattern.get_azimuthPattern();
  azimuth.set_azimuthBeamID("boresightAzimuth");
  azimuth.set_referenceGain(0.0F);
  for (int i = 0; i < azimuth_gains; ++i) {
    const double angle = -1 + 2.0 * i / azimuth_gains;
    azimuth.append_gainExt();
    azimuth.back_gainExt().set_angle(as_float(angle));
    azimuth.back_gainExt().set_gainExt(as_float(peak_gain + pattern_gain(angle, 0.33)));
  }
  if (source.has_all()) azimuth.set_description("two-way, uniform aperture");
  pattern.set_azimuthSteeringAngle(0.0F);
  auto& angles = pattern.get_elevationLookAngles();
  const double middle = (scene.start + scene.stop) / 2;
  const auto fill_edge = [&](double delay, auto&& set_incidence, auto&& set_look) {
    const Geodetic place =
        to_ground(scene.orbit, {middle, range_of(delay)}, scene.options.height, scene.centre);
    set_incidence(as_float(in_degrees(scene.incidence_at(place))));
    set_look(as_float(in_degrees(look_angle(scene, place))));
  };
  auto& near = angles.get_coverageRegionMin();
  auto& far = angles.get_coverageRegionMax();
  fill_edge(
      scene.near_time, [&](float a) { near.set_incidenceAngle(a); },
      [&](float a) { near.set_coverageRegionMin(a); });
  fill_edge(
      scene.far_time, [&](float a) { far.set_incidenceAngle(a); },
      [&](float a) { far.set_coverageRegionMax(a); });
  angles.set_fullPerformance(true);
  pattern.append_beamPointingVector();
  auto& pointing = pattern.back_beamPointingVector();
  pointing.set_beamID(source.beam());
  pointing.get_x().set_error(0.0);
  pointing.get_x().set_x(0.0);
  pointing.get_y().set_error(0.0);
  pointing.get_y().set_y(std::sin(axis * degree));
  pointing.get_z().set_error(0.0);
  pointing.get_z().set_z(std::cos(axis * degree));
}

template <class Characteristics>
void fill_characteristics(const AnnotationSource& source, Characteristics& info) {
  for (const std::string& layer : source.options().polarisations) {
    info.append_absCalFactor();
    auto& factor = info.back_absCalFactor();
    factor.set_imagingMode(source.mode_name());
    factor.set_beamID(source.beam());
    factor.append_polarisationChannel(layer);
    factor.append_lookDirection(source.options().look == Look::right ? "right" : "left");
    factor.append_antennaMode("SRA");
    factor.set_absCalFactor(as_float(10 * std::log10(calibration_factor)));
  }
  auto& delay = info.get_totalInstrumentTimeDelay();
  delay.set_instrCESystematicTimeDelay(1.0e-8F);
  delay.append_internalDelay();
  delay.back_internalDelay().set_polarisationChannel(source.options().polarisations.front());
  delay.back_internalDelay().set_internalDelay(2.0e-9F);
  if (!source.has_all()) return;
  for (const char* channel : {"I", "Q"}) {
    auto& digital = info.get_ADCandIQCharacteristics();
    digital.append_I_Q_Characteristics();
    auto& iq = digital.back_I_Q_Characteristics();
    iq.set_channel(channel);
    iq.set_bias(0.0);
    iq.set_imbalance(1.0);
    iq.set_non_orthogonality(0.0);
  }
  auto& correction = info.get_polarimetricChannelCorrection();
  correction.set_channelImbalance(1.0F);
  for (const char* direction : {"H2V", "V2H"}) {
    correction.append_crosstalk();
    correction.back_crosstalk().set_polarisation(direction);
    correction.back_crosstalk().set_crosstalk(-30.0F);
  }
  info.append_DRAChannelParameters();
  info.back_DRAChannelParameters().set_num(1);
  info.back_DRAChannelParameters().append_dummy();
  info.back_DRAChannelParameters().back_dummy().set_num(1);
  info.back_DRAChannelParameters().back_dummy().set_dummy(0.0);
}

template <class Calibration>
void fill_calibration(const AnnotationSource& source, Calibration& calibration) {
  const auto& layers = source.options().polarisations;
  auto& data = calibration.get_calibrationData();
  data.get_radiometricDEMID().set_radiometricDEMID("none");
  data.set_numberOfAntennaPatterns(static_cast<std::int32_t>(layers.size()));
  for (const std::string& layer : layers) {
    data.append_antennaPattern();
    fill_pattern(source, layer, data.back_antennaPattern());
  }
  fill_characteristics(source, data.get_calibrationInfoAndInstrumentCharacteristics());
  auto& performance = calibration.get_nominalGeometricPerformance();
  constexpr float azimuth_resolutions[] = {3.0F, 2.0F, 18.0F};  // m, by mode
  constexpr float swath_widths[] = {30000.0F, 10000.0F, 100000.0F};
  const auto mode = static_cast<std::size_t>(source.options().mode);
  performance.set_azimuthRes(azimuth_resolutions[mode]);
  performance.set_slantRangeRes(as_float(range_of(1 / pulse_bandwidth(source.scene))));
  performance.set_nominalSwathWidth(swath_widths[mode]);
  for (std::size_t i = 0; i < layers.size(); ++i) {
    calibration.append_calibrationConstant();
    auto& constant = calibration.back_calibrationConstant();
    if (source.has_optional()) {
      constant.set_layerIndex(std::to_string(i + 1));
      constant.set_polLayer(layers[i]);
    }
    if (source.has_all()) {
      constant.set_beamID(source.beam());
      constant.append_DRAoffset("SRA");
    }
    constant.get_calFactor().set_calFactor(calibration_factor *
                                           (1 + 0.01 * static_cast<double>(i)));
  }
}

template <class Noise>
void fill_noise(const AnnotationSource& source, std::size_t index, Noise& noise) {
  const int count = source.has_optional() ? 5 : 1;
  const Scene& scene = source.scene;
  noise.set_layerIndex(static_cast<std::int32_t>(index + 1));
  noise.set_polLayer(source.options().polarisations[index]);
  if (source.has_all()) {
    noise.set_beamID(source.beam());
    noise.append_DRAoffset("SRA");
  }
  noise.set_noiseModelID("POLYNOMIAL");
  noise.set_noiseLevelRef("BETA NOUGHT");
  noise.set_numberOfNoiseRecords(count);
  noise.set_averageNoiseRecordAzimuthSpacing(as_float((scene.stop - scene.start) / count));
  for (int i = 0; i < count; ++i) {
    noise.append_imageNoise();
    auto& record = noise.back_imageNoise();
    record.set_timeUTC(date_time(source.time_at(i, count)));
    record.append_noiseEstimate();
    fill_polynomial(over_range(scene), {520.0, -1.0e5, 2.0e9}, record.back_noiseEstimate());
    record.set_noiseEstimateConfidence(0.9F);
  }
}

}  // namespace simulate
