#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "binding/level1bProductBase.h"

namespace level1bProduct {

// The product view over a document root: every accessor walks from `level1Product` down the
// generated getters and returns the last value. All versions have the walked elements in common, so
// one walk serves them.
//
// The walk goes through the getters for writing: a missing single child is marked present and reads
// as its defaults, an index past a list's end grows the list. An absent text among productVariant,
// mapProjection, projection and quicklookDataStartWith is a fatal assertion, and so is an index of
// 256 or above in slantToGroundCoefficient.
template <class Root>
class ProductView : public level1bProductBase {
 public:
  const char* productVariant() override { return text(variant_info().get_productVariant(0)); }
  const char* imageDataFormat() override { return text(image_info().get_imageDataFormat()); }
  std::int32_t numberOfLayers() override { return image_info().get_numberOfLayers(); }
  std::int32_t numberOfRows() override { return raster().get_numberOfRows(); }
  std::int32_t numberOfColumns() override { return raster().get_numberOfColumns(); }
  const char* mapProjection() override { return text(variant_info().get_mapProjection(0)); }
  double calFactor() override {
    return product().get_calibration().get_calibrationConstant(0).get_calFactor().get_calFactor();
  }
  const char* lookDirection() override {
    return text(info().get_acquisitionInfo().get_lookDirection());
  }
  const char* projection() override { return text(variant_info().get_projection(0)); }
  std::int32_t sceneStartYear() override { return start().year; }
  std::int32_t sceneStartMonth() override { return start().month; }
  std::int32_t sceneStartDay() override { return start().day; }
  std::int32_t sceneStartHour() override { return start().hour; }
  std::int32_t sceneStartMinute() override { return start().minute; }
  float sceneStartSecond() override { return start().seconds; }
  std::int32_t sceneStopHour() override { return stop().hour; }
  std::int32_t sceneStopMinute() override { return stop().minute; }
  float sceneStopSecond() override { return stop().seconds; }
  double centerFrequency() override {
    return product().get_instrument().get_radarParameters().get_centerFrequency();
  }
  float projectedSpacingSlantRange() override { return slant_range_spacing(); }
  float projectedSpacingAzimuth() override { return complex_info().get_projectedSpacingAzimuth(); }
  float columnSpacing() override { return raster().get_columnSpacing().get_columnSpacing(); }
  float rowSpacing() override { return raster().get_rowSpacing().get_rowSpacing(); }
  double rangeSamplingRate() override {
    return product().get_instrument().get_settings(0).get_RSF().get_RSF();
  }
  double firstPixelRangeTime() override {
    return info().get_sceneInfo().get_rangeTime().get_firstPixel();
  }
  double sceneAverageHeight() override { return info().get_sceneInfo().get_sceneAverageHeight(); }
  std::int32_t firstStateYear() override { return first_state().year; }
  std::int32_t firstStateMonth() override { return first_state().month; }
  std::int32_t firstStateDay() override { return first_state().day; }
  std::int32_t firstStateHour() override { return first_state().hour; }
  std::int32_t firstStateMinute() override { return first_state().minute; }
  float firstStateSecond() override { return first_state().seconds; }
  std::uint64_t numStateVectors() override {
    return orbit().get_orbitHeader().get_numStateVectors();
  }
  const char* quicklookDataStartWith() override {
    return text(complex_info().get_quicklookDataStartWith(0));
  }
  double stateVectorTimeSpacing() override {
    return orbit().get_orbitHeader().get_stateVectorTimeSpacing();
  }
  double stateVecPosX(std::uint32_t i) override { return orbit().get_stateVec(i).get_posX(); }
  double stateVecPosY(std::uint32_t i) override { return orbit().get_stateVec(i).get_posY(); }
  double stateVecPosZ(std::uint32_t i) override { return orbit().get_stateVec(i).get_posZ(); }
  double stateVecVelX(std::uint32_t i) override { return orbit().get_stateVec(i).get_velX(); }
  double stateVecVelY(std::uint32_t i) override { return orbit().get_stateVec(i).get_velY(); }
  double stateVecVelZ(std::uint32_t i) override { return orbit().get_stateVec(i).get_velZ(); }
  std::uint32_t slantToGroundPolynomialDegree() override {
    return slant_to_ground().get_polynomialDegree();
  }
  float slantRangeSpacing() override { return slant_range_spacing(); }
  double slantToGroundCoefficient(std::uint32_t i) override {
    return slant_to_ground().get_coefficient(i).get_coefficient();
  }
  const char* imageDataPath(std::uint32_t i) override { return text(location(i).get_path()); }
  const char* imageDataFilename(std::uint32_t i) override {
    return text(location(i).get_filename());
  }
  const char* polLayer(std::uint32_t i) override { return text(image_data(i).get_polLayer()); }

 private:
  static const char* text(const std::string& value) { return value.c_str(); }

  auto& product() { return static_cast<Root*>(this)->get_level1Product(); }
  auto& info() { return product().get_productInfo(); }
  auto& variant_info() { return info().get_productVariantInfo(); }
  auto& image_info() { return info().get_imageDataInfo(); }
  auto& raster() { return image_info().get_imageRaster(0); }
  const auto& start() { return info().get_sceneInfo().get_start().get_timeUTC(); }
  const auto& stop() { return info().get_sceneInfo().get_stop().get_timeUTC(); }
  auto& complex_info() { return product().get_productSpecific().get_complexImageInfo(0); }
  float slant_range_spacing() {
    return complex_info().get_projectedSpacingRange().get_slantRange();
  }
  auto& slant_to_ground() {
    return product()
        .get_productSpecific()
        .get_projectedImageInfo()
        .get_slantToGroundRangeProjection();
  }
  auto& orbit() { return product().get_platform().get_orbit(); }
  const auto& first_state() {
    return orbit().get_orbitHeader().get_firstStateTime().get_firstStateTimeUTC();
  }
  auto& image_data(std::uint32_t i) { return product().get_productComponents().get_imageData(i); }
  auto& location(std::uint32_t i) { return image_data(i).get_file().get_location(); }
};

}  // namespace level1bProduct
