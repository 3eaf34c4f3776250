#pragma once

#include <algorithm>
#include <cstdint>
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
  std::string look_direction = "RIGHT";
  std::string projection_text = "SLANTRANGE";
  std::string quicklook_start = "EARLYAZNEARRG";
  struct Time {
    std::int32_t year, month, day, hour, minute;
    float second;
  };
  Time start = {2008, 3, 10, 13, 32, 20.5F};
  Time stop = {2008, 3, 10, 13, 32, 28.25F};
  Time first_state = {2008, 3, 10, 13, 31, 30.0F};
  double center_frequency = 9.65e9;
  double sampling_rate = 1.1e8;
  double first_pixel_time = 3.75e-3;
  double average_height = 123.5;
  float slant_range_spacing = 1.25F;
  float azimuth_spacing = 2.5F;
  float column_spacing = 3.5F;
  float row_spacing = 4.5F;
  std::uint64_t state_vectors = 2;  // vector i holds 1000 i + 0, 1, 2 and velocities + 3, 4, 5
  double state_spacing = 10;
  std::uint32_t degree = 1;
  std::vector<double> polynomial = {0, 2.5e8};
  std::uint32_t coefficients_read = 0;
  int quicklook_reads = 0;
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
  const char* lookDirection() override { return look_direction.c_str(); }
  const char* projection() override { return projection_text.c_str(); }
  std::int32_t sceneStartYear() override { return start.year; }
  std::int32_t sceneStartMonth() override { return start.month; }
  std::int32_t sceneStartDay() override { return start.day; }
  std::int32_t sceneStartHour() override { return start.hour; }
  std::int32_t sceneStartMinute() override { return start.minute; }
  float sceneStartSecond() override { return start.second; }
  std::int32_t sceneStopHour() override { return stop.hour; }
  std::int32_t sceneStopMinute() override { return stop.minute; }
  float sceneStopSecond() override { return stop.second; }
  double centerFrequency() override { return center_frequency; }
  float projectedSpacingSlantRange() override { return slant_range_spacing; }
  float projectedSpacingAzimuth() override { return azimuth_spacing; }
  float columnSpacing() override { return column_spacing; }
  float rowSpacing() override { return row_spacing; }
  double rangeSamplingRate() override { return sampling_rate; }
  double firstPixelRangeTime() override { return first_pixel_time; }
  double sceneAverageHeight() override { return average_height; }
  std::int32_t firstStateYear() override { return first_state.year; }
  std::int32_t firstStateMonth() override { return first_state.month; }
  std::int32_t firstStateDay() override { return first_state.day; }
  std::int32_t firstStateHour() override { return first_state.hour; }
  std::int32_t firstStateMinute() override { return first_state.minute; }
  float firstStateSecond() override { return first_state.second; }
  std::uint64_t numStateVectors() override { return state_vectors; }
  const char* quicklookDataStartWith() override {
    ++quicklook_reads;
    return quicklook_start.c_str();
  }
  double stateVectorTimeSpacing() override { return state_spacing; }
  double stateVecPosX(std::uint32_t i) override { return 1000.0 * i + 0; }
  double stateVecPosY(std::uint32_t i) override { return 1000.0 * i + 1; }
  double stateVecPosZ(std::uint32_t i) override { return 1000.0 * i + 2; }
  double stateVecVelX(std::uint32_t i) override { return 1000.0 * i + 3; }
  double stateVecVelY(std::uint32_t i) override { return 1000.0 * i + 4; }
  double stateVecVelZ(std::uint32_t i) override { return 1000.0 * i + 5; }
  std::uint32_t slantToGroundPolynomialDegree() override { return degree; }
  float slantRangeSpacing() override { return slant_range_spacing; }
  double slantToGroundCoefficient(std::uint32_t index) override {
    coefficients_read = std::max(coefficients_read, index + 1);
    return index < polynomial.size() ? polynomial[index] : 0;
  }
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
