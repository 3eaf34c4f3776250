#pragma once

#include "tools/simulate/annotation_doppler.h"

// The branch productQuality.

namespace simulate {

template <class Quality>
void fill_raw_quality(const AnnotationSource& source, Quality& quality) {
  quality.set_instrumentChannel("SRA");
  if (source.has_all()) {
    quality.set_beamID(source.beam());
    if constexpr (requires { quality.set_polarization(""); }) {
      quality.set_polarization(source.options().polarisations.front());
    }
  }
  quality.set_gapSignificanceFlag(false);
  quality.set_missingLinesSignificanceFlag(false);
  quality.set_ADCOverflowSignificanceFlag(false);
  quality.set_bitErrorsSignificanceFlag(false);
  quality.set_IBiasOutsideLimitsFlag(false);
  quality.set_QBiasOutsideLimitsFlag(false);
  quality.set_IQImbalanceOutsideLimitsFlag(false);
  quality.set_IQNonOrthogonalityOutsideLimitsFlag(false);
}

template <class Centroid>
void fill_centroid(Centroid& centroid) {
  centroid.set_nearRange(centroid_at_middle + centroid_fall / 2);
  centroid.set_midRange(centroid_at_middle);
  centroid.set_farRange(centroid_at_middle - centroid_fall / 2);
}

template <class Parameters>
void fill_parameter_quality(Parameters& quality) {
  auto& doppler = quality.get_averageDopplerCentroidInfo();
  fill_centroid(doppler.get_azimuthStart());
  fill_centroid(doppler.get_azimuthCenter());
  fill_centroid(doppler.get_azimuthStop());
  quality.set_dopplerAmbiguityNotZeroFlag(false);
  quality.set_dopplerInconsistencyFlag(false);
  quality.set_dopplerOutsideLimitsFlags(false);
  quality.set_dopplerDriftOutsideLimitsFlags(false);
  quality.set_chirpQualityLowFlag(false);
  quality.set_geolocationQualityLowFlag(false);
}

template <class RawLimits>
void fill_raw_limits(RawLimits& limits) {
  limits.set_instrumentChannel("SRA");
  limits.get_ADCOverflow().get_IChannel().set_IAdcOvlMaxLimit(0.1F);
  limits.get_ADCOverflow().get_IChannel().set_IAdcOvlStdLimit(0.1F);
  limits.get_ADCOverflow().get_QChannel().set_QAdcOvlMaxLimit(0.1F);
  limits.get_ADCOverflow().get_QChannel().set_QAdcOvlStdLimit(0.1F);
  limits.get_echoBufferParityErrorStatistics()
      .get_EBParityErrorRateMaxLimit()
      .set_EBParityErrorRateMaxLimit(0.01F);
  auto& i = limits.get_SARDataStatistics().get_IChannel();
  i.set_IMeanMaxLimit(1.0F);
  i.set_IMeanStdLimit(1.0F);
  i.set_IBiasMaxLimit(1.0F);
  auto& q = limits.get_SARDataStatistics().get_QChannel();
  q.set_QMeanMaxLimit(1.0F);
  q.set_QMeanStdLimit(1.0F);
  q.set_QBiasMaxLimit(1.0F);
  auto& iq = limits.get_SARDataStatistics().get_IQChannel();
  iq.set_IQGainImbalanceMaxLimit(1.1F);
  iq.set_IQGainImbalanceStdLimit(0.1F);
  iq.set_IQNonorthogonalityMaxLimit(1.0F);
  iq.set_IQNonorthogonalityStdLimit(0.1F);
  iq.set_IQCrossCorrelationMaxLimit(0.1F);
  iq.set_IQCrossCorrelationStdLimit(0.1F);
  limits.set_missingLinePercentageLimit(1.0F);
  limits.set_gapDefinition(8);
  limits.set_gapPercentageLimit(1.0F);
}

template <class Limits>
void fill_limits(const AnnotationSource& source, Limits& limits) {
  if (source.has_all()) {
    limits.append_rawData();
    fill_raw_limits(limits.back_rawData());
  }
  auto& processing = limits.get_processing();
  auto& doppler = processing.get_dopplerCentroidInformation();
  doppler.set_fdcNearRangeLimit(500.0F);
  doppler.set_fdcMidRangeLimit(500.0F);
  doppler.set_fdcFarRangeLimit(500.0F);
  doppler.set_fdcLinearRangeDriftMaxLimit(100.0F);
  doppler.set_fdcLinearAzimuthDriftMaxLimit(100.0F);
  processing.set_chirpQualityLimit(0.5F);
  processing.set_geolocationQualityLimit(2.0F);
  const auto fill = [](auto& limit, float expected) {
    limit.set_expected(expected);
    limit.set_minimum(0.0F);
    limit.set_maximum(65535.0F);
  };
  fill(limits.get_imageData().get_imageMean(), 110.0F);
  fill(limits.get_imageData().get_imageSigma(), 60.0F);
}

template <class Quality>
void fill_product_quality(const AnnotationSource& source, Quality& quality) {
  const auto& layers = source.options().polarisations;
  quality.append_rawDataQuality();
  fill_raw_quality(source, quality.back_rawDataQuality());
  auto& auxiliary = quality.get_auxDataQuality();
  auxiliary.set_orbitDataQualityLowFlag(false);
  auxiliary.set_attitudeDataQualityLowFlag(false);
  auxiliary.set_DEMqualityLowFlag(false);
  auxiliary.set_missingAuxDataFlag(false);
  fill_parameter_quality(quality.get_processingParameterQuality());
  for (std::size_t i = 0; i < layers.size(); ++i) {
    quality.append_imageDataQuality();
    auto& image = quality.back_imageDataQuality();
    image.set_layerIndex(static_cast<std::int32_t>(i + 1));
    image.set_polLayer(layers[i]);
    if (source.has_all()) {
      image.set_beamID(source.beam());
      image.append_DRAoffset("SRA");
    }
    image.get_imageDataStatistics().set_mean(110.0);
    image.get_imageDataStatistics().set_max(9000.0);
    image.get_imageDataStatistics().set_min(0.0);
    image.get_imageDataStatistics().set_stdDev(60.0);
    image.set_nominalSNR(10.0F);
    image.set_imageMeanFlag(false);
    image.set_imageStdDevFlag(false);
  }
  fill_limits(source, quality.get_limits());
  if (source.has_all()) quality.set_instrumentStateRemark("nominal");
}

}  // namespace simulate
