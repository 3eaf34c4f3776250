#pragma once

#include <string>
#include <vector>

#include "binding/level1bProductBase.h"

// A product view with settable values, in place of a bound annotation. What a test does not set is
// 0 or empty.
struct FakeDocument : level1bProductBase {
  std::string variant = "SSC";
  std::string format = "COSAR";
  std::string map_projection = "UTM";
  std::int32_t layers = 1;
  std::int32_t rows = 100;
  std::int32_t columns = 80;
  double factor = 1.5;
  std::vector<std::string> polarisations = {"HH", "VV"};
  bool* deleted = nullptr;
  mutable int map_projection_reads = 0;

  ~FakeDocument() override {
    if (deleted != nullptr) *deleted = true;
  }

  const char* productVariant() override { return variant.c_str(); }
  const char* imageDataFormat() override { return format.c_str(); }
  std::int32_t numberOfLayers() override { return layers; }
  std::int32_t numberOfRows() override { return rows; }
  std::int32_t numberOfColumns() override { return columns; }
  const char* mapProjection() override {
    ++map_projection_reads;
    return map_projection.c_str();
  }
  double calFactor() override { return factor; }
  const char* lookDirection() override { return ""; }
  const char* projection() override { return ""; }
  std::int32_t sceneStartYear() override { return 0; }
  std::int32_t sceneStartMonth() override { return 0; }
  std::int32_t sceneStartDay() override { return 0; }
  std::int32_t sceneStartHour() override { return 0; }
  std::int32_t sceneStartMinute() override { return 0; }
  float sceneStartSecond() override { return 0; }
  std::int32_t sceneStopHour() override { return 0; }
  std::int32_t sceneStopMinute() override { return 0; }
  float sceneStopSecond() override { return 0; }
  double centerFrequency() override { return 0; }
  float projectedSpacingSlantRange() override { return 0; }
  float projectedSpacingAzimuth() override { return 0; }
  float columnSpacing() override { return 0; }
  float rowSpacing() override { return 0; }
  double rangeSamplingRate() override { return 0; }
  double firstPixelRangeTime() override { return 0; }
  double sceneAverageHeight() override { return 0; }
  std::int32_t firstStateYear() override { return 0; }
  std::int32_t firstStateMonth() override { return 0; }
  std::int32_t firstStateDay() override { return 0; }
  std::int32_t firstStateHour() override { return 0; }
  std::int32_t firstStateMinute() override { return 0; }
  float firstStateSecond() override { return 0; }
  std::uint64_t numStateVectors() override { return 0; }
  const char* quicklookDataStartWith() override { return ""; }
  double stateVectorTimeSpacing() override { return 0; }
  double stateVecPosX(std::uint32_t) override { return 0; }
  double stateVecPosY(std::uint32_t) override { return 0; }
  double stateVecPosZ(std::uint32_t) override { return 0; }
  double stateVecVelX(std::uint32_t) override { return 0; }
  double stateVecVelY(std::uint32_t) override { return 0; }
  double stateVecVelZ(std::uint32_t) override { return 0; }
  std::uint32_t slantToGroundPolynomialDegree() override { return 0; }
  float slantRangeSpacing() override { return 0; }
  double slantToGroundCoefficient(std::uint32_t) override { return 0; }
  const char* imageDataPath(std::uint32_t) override { return "IMAGEDATA"; }
  const char* imageDataFilename(std::uint32_t index) override {
    name = "image" + std::to_string(index);
    return name.c_str();
  }
  const char* polLayer(std::uint32_t index) override {
    return index < polarisations.size() ? polarisations[index].c_str() : "";
  }

  std::string name;
};
