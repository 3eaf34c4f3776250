#pragma once

#include "tools/simulate/annotation_common.h"

// The branch processing: signal analysis, geometry, Doppler, processing parameters and flags.

namespace simulate {

template <class Channels, class Value>
void fill_channels(Value i, Value q, Channels& channels) {
  channels.set_IChannel(i);
  channels.set_QChannel(q);
}

template <class RawData>
void fill_raw_data(const AnnotationSource& source, RawData& raw) {
  const Scene& scene = source.scene;
  raw.set_numberOfRawDataBlocks(1);
  raw.append_rawDataStatisticsAndCorrection();
  auto& statistics = raw.back_rawDataStatisticsAndCorrection();
  auto& block = statistics.get_blockInfo();
  block.set_blockID(1);
  block.set_instrumentChannel("SRA");
  if (source.has_all()) block.set_beamID(source.beam());
  auto& data = block.get_dataBlock();
  data.set_startTimeUTC(date_time(scene.utc(scene.start)));
  data.set_stopTimeUTC(date_time(scene.utc(scene.stop)));
  data.set_rangeTimeFirst(scene.near_time);
  data.set_rangeTimeLast(scene.far_time);
  data.set_numberOfLines(scene.options.lines);
  data.set_numberOfSamples(scene.options.samples);
  fill_channels(0.01F, -0.02F, statistics.get_IQbias());
  fill_channels(23.5F, 23.4F, statistics.get_IQstdDeviation());
  statistics.set_IQGainImbalance(1.002F);
  statistics.set_IQNonOrthogonality(0.1F);
  const auto samples = std::int64_t{scene.options.lines} * scene.options.samples;
  fill_channels(samples, samples, statistics.get_totalNumberOfValidSamples());
  fill_channels(0.0F, 0.0F, statistics.get_ADCMaxSaturation());
  fill_channels(0.0F, 0.0F, statistics.get_ADCMinSaturation());
  fill_channels(0, 0, statistics.get_bitErrorRate());
  fill_channels(0, 0, statistics.get_totalBitErrorCounter());
  if (source.has_all()) {
    statistics.set_quantisationStatistics("<histogram bins=\"4\">1 2 2 1</histogram>");
  }
  statistics.append_appliedCorrectionID("ANALYSIS");
}

template <class Calibration>
void fill_cal_pulses(const AnnotationSource& source, Calibration& analysis) {
  const std::string& layer = source.options().polarisations.front();
  analysis.set_totalNumberOfCalPulses(64);
  analysis.set_numberOfCalSequences(1);
  analysis.append_calSequence();
  fill_segment(source, 1, layer, analysis.back_calSequence().get_segmentInfo());
  analysis.back_calSequence().set_numberOfCalPulses(64);
  analysis.back_calSequence().set_calSequenceType("STARTUP");
  analysis.append_chirpAnalysis();
  auto& chirp = analysis.back_chirpAnalysis();
  fill_segment(source, 1, layer, chirp.get_segmentInfo());
  chirp.set_pulseCode("1");
  chirp.set_totalPower(1.0F);
  chirp.set_meanAmplitude(0.9F);
  chirp.set_peakLocation(0.0);
  chirp.set_pulseLength(4.7e-5F);
  chirp.set_resolution(1.17);
  chirp.set_PSLR(-13.3F);
  chirp.set_ISLR(-9.8F);
  analysis.append_pulseCorrection();
  auto& correction = analysis.back_pulseCorrection();
  fill_segment(source, 1, layer, correction.get_segmentInfo());
  correction.append_amplCorrection();
  correction.back_amplCorrection().set_timeEffect("short");
  fill_polynomial(source.scene, {1.0, 0.0}, correction.back_amplCorrection());
  correction.append_phaseCorrection();
  correction.back_phaseCorrection().set_timeEffect("long");
  fill_polynomial(source.scene, {0.0, 0.0}, correction.back_phaseCorrection());
}

template <class Signal>
void fill_signal_analysis(const AnnotationSource& source, Signal& signal) {
  const Scene& scene = source.scene;
  const std::string& layer = scene.options.polarisations.front();
  signal.set_signalDataCoordinateType("RAW");
  signal.get_dataGapInfo().set_numberOfGaps(source.has_all() ? 1 : 0);
  if (source.has_all()) {
    signal.get_dataGapInfo().append_dataGap();
    auto& gap = signal.get_dataGapInfo().back_dataGap();
    fill_segment(source, 1, layer, gap.get_segmentInfo());
    gap.set_numberOfMissingISPs(0);
    gap.set_ISPdesignator("ECHO");
  }
  fill_raw_data(source, signal.get_rawDataInfo());
  fill_cal_pulses(source, signal.get_calPulseAnalysis());
  auto& noise = signal.get_noiseAnalysis();
  noise.set_numberOfNoiseSequences(1);
  noise.set_totalNumberOfNoisePulses(128);
  noise.append_noiseSequence();
  fill_segment(source, 1, layer, noise.back_noiseSequence().get_segmentInfo());
  noise.back_noiseSequence().set_numberOfNoisePulses(128);
  noise.back_noiseSequence().set_averageNoisePower(2.5F);
  if (!source.has_all()) return;
  auto& bursts = signal.get_burstInfo();
  bursts.set_numberOfBursts(1);
  bursts.append_burstSequence();
  auto& burst = bursts.back_burstSequence();
  burst.set_burstIndex(1);
  burst.set_beamID(source.beam());
  burst.set_polChannel(layer);
  burst.set_startTimeUTC(date_time(scene.utc(scene.start)));
  burst.set_stopTimeUTC(date_time(scene.utc(scene.stop)));
  burst.set_numberOfPulses(scene.options.lines);
}

constexpr int usual_records = 5;

template <class Geometry>
void fill_geometry(const AnnotationSource& source, Geometry& geometry) {
  const Scene& scene = source.scene;
  const int count = source.has_optional() ? usual_records : 1;
  // Doppler rate of a point at the scene's middle range: -2 v^2 / (wavelength R).
  const double range = to_radar(scene.orbit, scene.centre).range;
  const double speed = std::sqrt(length(scene.orbit.at(0).velocity) * scene.ground_velocity);
  const double rate = -2 * speed * speed * 9.65e9 / speed_of_light / range;
  geometry.set_geometryCoordinateType("ZERODOPPLER");
  for (int i = 0; i < count; ++i) {
    geometry.append_velocityParameter();
    auto& velocity = geometry.back_velocityParameter();
    velocity.set_timeUTC(date_time(source.time_at(i, count)));
    if (source.has_all()) velocity.set_beamID(source.beam());
    fill_polynomial(scene, {speed, 0.0, 0.0}, velocity.get_velocityParameterPolynomial());
  }
  if constexpr (requires { geometry.append_zeroDopplerVelocity(); }) {
    if (source.has_optional()) {
      geometry.append_zeroDopplerVelocity();
      if (source.has_all()) geometry.back_zeroDopplerVelocity().set_beamID(source.beam());
      geometry.back_zeroDopplerVelocity().set_velocity(speed);
    }
  }
  for (int i = 0; i < count; ++i) {
    geometry.append_dopplerRate();
    auto& doppler_rate = geometry.back_dopplerRate();
    doppler_rate.set_timeUTC(date_time(source.time_at(i, count)));
    if (source.has_all()) doppler_rate.set_beamID(source.beam());
    fill_polynomial(scene, {rate, -2 * rate / (scene.near_time + scene.far_time)},
                    doppler_rate.get_dopplerRatePolynomial());
  }
}

template <class Estimate>
void fill_doppler_estimate(const AnnotationSource& source, const Utc& time, Estimate& estimate) {
  estimate.set_timeUTC(date_time(time));
  estimate.set_dopplerAtMidRange(28.0);
  fill_polynomial(source.scene, {28.0, -1500.0}, estimate.get_basebandDoppler());
  estimate.set_geometricDopplerFlag(source.has_all());
  if (source.has_all()) {
    fill_polynomial(source.scene, {27.0, -1400.0}, estimate.get_geometricDoppler());
  }
  estimate.set_dopplerAmbiguity(0);
  estimate.set_dopplerConsistencyFlag(true);
  estimate.set_dopplerEstimateConfidence(0.95F);
  fill_polynomial(source.scene, {28.0, -1500.0}, estimate.get_combinedDoppler());
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

template <class Compression>
void fill_range_compression(const AnnotationSource& source, Compression& compression) {
  const Scene& scene = source.scene;
  fill_segment(source, 1, scene.options.polarisations.front(), compression.get_segmentInfo());
  compression.get_chirps().append_referenceChirp();
  auto& chirp = compression.get_chirps().back_referenceChirp();
  chirp.set_pulseCode(0);
  chirp.set_pulseType("TX_NORMAL");
  chirp.append_chirpDesignator("NOMINAL");
  chirp.set_chirpSlope("DOWN");
  chirp.set_pulseLength(4.7e-5);
  chirp.set_pulseBandwidth(scene.rsf * 0.91);
  chirp.set_centerFrequency(9.65e9);
  fill_polynomial(scene, {1.0, 0.0, 0.0, 0.0}, chirp.get_amplitude());
  fill_polynomial(scene, {0.0, 0.0, -6.7e12, 0.0}, chirp.get_phase());
  if (!source.has_all()) return;
  auto& replica = chirp.get_replica();
  replica.set_replicaQualityTooLowFlag(false);
  replica.set_totalPower(1.0F);
  replica.set_meanAmplitude(0.9F);
  replica.set_peakLocation(0.0);
  replica.set_pulseLength(4.7e-5F);
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
  parameter.set_rangeLookBandwidth(scene.rsf * 0.91);
  parameter.set_azimuthLookBandwidth(2765.0);
  parameter.set_totalProcessedRangeBandwidth(scene.rsf * 0.91);
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
