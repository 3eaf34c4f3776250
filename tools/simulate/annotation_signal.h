#pragma once

#include <numbers>
#include <string>

#include "tools/simulate/annotation_common.h"

// The part signalDataAnalysis of the branch processing.

namespace simulate {

template <class Channels, class Value>
void fill_channels(Value i, Value q, Channels& channels) {
  channels.set_IChannel(i);
  channels.set_QChannel(q);
}

// How often each of the sixteen values of a four-bit quantiser occurs among Gaussian samples whose
// deviation is a quarter of its range; the outermost values take what lies beyond.
inline std::string quantiser_occurrences(std::int64_t samples) {
  constexpr int values = 16;
  const auto share_below = [](int value) {
    if (value <= 0) return 0.0;
    if (value >= values) return 1.0;
    return 0.5 * std::erfc((values / 2.0 - value) / (values / 4.0) / std::numbers::sqrt2);
  };
  std::string text;
  for (int value = 0; value < values; ++value) {
    const double share = share_below(value + 1) - share_below(value);
    text += (value == 0 ? "" : " ") +
            std::to_string(std::llround(share * static_cast<double>(samples)));
  }
  return text;
}

// As elements, of both channels; products of later versions have them.
inline std::string quantisation_statistics(std::int64_t samples) {
  const std::string counts = quantiser_occurrences(samples);
  std::string text = "<quantisation bits=\"4\">";
  for (const char* channel : {"I", "Q"}) {
    text += std::string("<occurrences channel=\"") + channel + "\">" + counts + "</occurrences>";
  }
  return text + "</quantisation>";
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
  if (source.has_all() || (source.has_optional() && source.options().version_text[0] >= '4')) {
    statistics.set_quantisationStatistics(quantisation_statistics(samples));
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
  chirp.set_pulseLength(as_float(pulse_length));
  chirp.set_resolution(1.17);
  chirp.set_PSLR(-13.3F);
  chirp.set_ISLR(-9.8F);
  analysis.append_pulseCorrection();
  auto& correction = analysis.back_pulseCorrection();
  fill_segment(source, 1, layer, correction.get_segmentInfo());
  correction.append_amplCorrection();
  correction.back_amplCorrection().set_timeEffect("short");
  fill_polynomial(over_range(source.scene), {1.0, 0.0}, correction.back_amplCorrection());
  correction.append_phaseCorrection();
  correction.back_phaseCorrection().set_timeEffect("long");
  fill_polynomial(over_range(source.scene), {0.0, 0.0}, correction.back_phaseCorrection());
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

}  // namespace simulate
