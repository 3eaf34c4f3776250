#pragma once

#include <numbers>

#include "tools/simulate/annotation_doppler.h"
#include "tools/simulate/annotation_signal.h"

// The branch processing: its parameters and flags, and the parts kept in headers of their own.

namespace simulate {

template <class Compression>
void fill_range_compression(const AnnotationSource& source, Compression& compression) {
  const Scene& scene = source.scene;
  const double bandwidth = pulse_bandwidth(scene);
  fill_segment(source, 1, scene.options.polarisations.front(), compression.get_segmentInfo());
  compression.get_chirps().append_referenceChirp();
  auto& chirp = compression.get_chirps().back_referenceChirp();
  chirp.set_pulseCode(0);
  chirp.set_pulseType("TX_NORMAL");
  chirp.append_chirpDesignator("NOMINAL");
  chirp.set_chirpSlope("DOWN");
  chirp.set_pulseLength(pulse_length);
  chirp.set_pulseBandwidth(bandwidth);
  chirp.set_centerFrequency(centre_frequency);
  const Validity pulse{-pulse_length / 2, 0, pulse_length / 2};
  const double curvature = -std::numbers::pi * bandwidth / pulse_length;  // rad/s2, of a down chirp
  fill_polynomial(pulse, {1.0, 0.0, 0.0, 0.0}, chirp.get_amplitude());
  fill_polynomial(pulse, {0.0, 0.0, curvature, 0.0}, chirp.get_phase());
  if (!source.has_all()) return;
  auto& replica = chirp.get_replica();
  replica.set_replicaQualityTooLowFlag(false);
  replica.set_totalPower(1.0F);
  replica.set_meanAmplitude(0.9F);
  replica.set_peakLocation(0.0);
  replica.set_pulseLength(as_float(pulse_length));
  replica.set_resolution(1.17F);
  replica.set_PSLR(-13.3F);
  replica.set_ISLR(-9.8F);
}

template <class Parameter>
void fill_parameter(const AnnotationSource& source, Parameter& parameter) {
  const Scene& scene = source.scene;
  const float number_of_looks = scene.is_complex() ? 1.0F : 2.0F;
  if (source.has_all()) parameter.set_beamID(source.beam());
  parameter.set_processingInfoCoordinateType("ZERODOPPLER");
  parameter.set_rangeLooks(number_of_looks);
  parameter.set_azimuthLooks(number_of_looks);
  parameter.set_rangeLookBandwidth(pulse_bandwidth(scene));
  parameter.set_azimuthLookBandwidth(2765.0);
  parameter.set_totalProcessedRangeBandwidth(pulse_bandwidth(scene));
  parameter.set_totalProcessedAzimuthBandwidth(2765.0);
  parameter.set_rangeWindowID("HAMMING");
  parameter.set_rangeWindowCoefficient(0.6F);
  parameter.set_azimuthWindowID("HAMMING");
  parameter.set_azimuthWindowCoefficient(0.6F);
  parameter.append_rangeCompression();
  fill_range_compression(source, parameter.back_rangeCompression());
  if constexpr (requires { parameter.append_correctedInstrumentDelay(); }) {
    if (source.has_optional()) {
      parameter.append_correctedInstrumentDelay();
      auto& delay = parameter.back_correctedInstrumentDelay();
      delay.set_polLayer(scene.options.polarisations.front());
      if (source.has_all()) delay.append_DRAoffset("SRA");
      delay.set_totalTimeDelay(1.2e-8);
    }
  }
  if (!source.has_all()) return;
  auto& overlap = parameter.get_scanSARBeamOverlap();
  overlap.set_rangeTimeStart(scene.near_time);
  overlap.set_rangeTimeStop(scene.far_time);
  overlap.set_farRangeBeamBorderTime(scene.far_time);
  overlap.set_mergingMethod("AVERAGE");
  overlap.get_lookWeight().set_lookWeight(0.5F);
}

template <class Flags>
void fill_flags(const AnnotationSource& source, Flags& flags) {
  const bool detected = !source.scene.is_complex();
  flags.set_RXGainCorrectedFlag(true);
  flags.set_DRAChannelSyncFlag(false);
  flags.set_DRAChannelDemixingPerformedFlag(false);
  flags.set_hybridCouplerCorrectedFlag(false);
  flags.set_chirpDriftCorrectedFlag(true);
  flags.set_chirpReplicaUsedFlag(source.has_all());
  flags.set_geometricDopplerUsedFlag(false);
  flags.set_noiseCorrectedFlag(false);
  flags.set_rangeSpreadingLossCorrectedFlag(true);
  flags.set_scanSARBeamCorrectedFlag(false);
  flags.set_spotLightBeamCorrectedFlag(false);
  flags.set_azimuthPatternCorrectedFlag(false);
  flags.set_elevationPatternCorrectedFlag(true);
  flags.set_polarisationCorrectedFlag(false);
  flags.set_detectedFlag(detected);
  flags.set_multiLookedFlag(detected);
  flags.set_propagationEffectsCorrectedFlag(true);
  flags.set_geocodedFlag(source.scene.map.has_value());
  flags.set_incidenceAngleMaskGeneratedFlag(false);
  flags.set_nominalProcessingPerformedFlag(true);
}

template <class Processing>
void fill_processing(const AnnotationSource& source, Processing& processing) {
  if (source.has_optional()) fill_signal_analysis(source, processing.get_signalDataAnalysis());
  fill_geometry(source, processing.get_geometry());
  fill_doppler(source, processing.get_doppler());
  processing.append_processingParameter();
  fill_parameter(source, processing.back_processingParameter());
  fill_flags(source, processing.get_processingFlags());
}

}  // namespace simulate
