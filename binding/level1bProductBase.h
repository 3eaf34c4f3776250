#pragma once

#include <cstdint>

// The one view through which all logic reads the annotation of a product, whatever the schema
// version. Each document class implements it by a walk down its element tree; no accessor differs
// by version, holds state or caches anything.
//
// Texts are zero-ended, never null, owned by the document and valid while it lives and the element
// is not replaced. Indices count from 0. Accessors are not const: a missing element on the way is
// created with its default values, and an index past the end of a list grows the list, so reading
// can change the document and one document is not safe for concurrent readers. Four texts are
// preconditions instead: productVariant, mapProjection, projection and quicklookDataStartWith end
// the process when the element has no token, and so does slantToGroundCoefficient at index 256.
//
// Times are UTC; seconds are single precision.
class level1bProductBase {
 public:
  virtual ~level1bProductBase() = default;

  // Product
  virtual const char* productVariant() = 0;    // "SSC", "MGD", "GEC" or "EEC"
  virtual const char* imageDataFormat() = 0;   // "COSAR" or "GEOTIFF"
  virtual std::int32_t numberOfLayers() = 0;   // image files
  virtual std::int32_t numberOfRows() = 0;     // lines
  virtual std::int32_t numberOfColumns() = 0;  // samples per line
  virtual const char* mapProjection() = 0;     // geocoded products only
  virtual double calFactor() = 0;              // of the first calibration constant

  // Acquisition and scene
  virtual const char* lookDirection() = 0;
  virtual const char* projection() = 0;
  virtual std::int32_t sceneStartYear() = 0;
  virtual std::int32_t sceneStartMonth() = 0;
  virtual std::int32_t sceneStartDay() = 0;
  virtual std::int32_t sceneStartHour() = 0;
  virtual std::int32_t sceneStartMinute() = 0;
  virtual float sceneStartSecond() = 0;
  virtual std::int32_t sceneStopHour() = 0;
  virtual std::int32_t sceneStopMinute() = 0;
  virtual float sceneStopSecond() = 0;
  virtual double centerFrequency() = 0;  // Hz

  // Sampling
  virtual float projectedSpacingSlantRange() = 0;  // m, complex image
  virtual float projectedSpacingAzimuth() = 0;     // m, complex image
  virtual float columnSpacing() = 0;               // along a column, m (complex images: s)
  virtual float rowSpacing() = 0;                  // along a row, m (complex images: s)
  virtual double rangeSamplingRate() = 0;          // Hz
  virtual double firstPixelRangeTime() = 0;        // two-way slant range time, s
  virtual double sceneAverageHeight() = 0;         // m

  // Orbit: state vectors in the Earth-fixed frame
  virtual std::int32_t firstStateYear() = 0;
  virtual std::int32_t firstStateMonth() = 0;
  virtual std::int32_t firstStateDay() = 0;
  virtual std::int32_t firstStateHour() = 0;
  virtual std::int32_t firstStateMinute() = 0;
  virtual float firstStateSecond() = 0;
  virtual std::uint64_t numStateVectors() = 0;
  virtual const char* quicklookDataStartWith() = 0;
  virtual double stateVectorTimeSpacing() = 0;           // s
  virtual double stateVecPosX(std::uint32_t index) = 0;  // m
  virtual double stateVecPosY(std::uint32_t index) = 0;
  virtual double stateVecPosZ(std::uint32_t index) = 0;
  virtual double stateVecVelX(std::uint32_t index) = 0;  // m/s
  virtual double stateVecVelY(std::uint32_t index) = 0;
  virtual double stateVecVelZ(std::uint32_t index) = 0;

  // Slant to ground range, detected ground-range products
  virtual std::uint32_t slantToGroundPolynomialDegree() = 0;
  virtual float slantRangeSpacing() = 0;  // m; the same element as projectedSpacingSlantRange
  virtual double slantToGroundCoefficient(std::uint32_t index) = 0;

  // Image files, by image
  virtual const char* imageDataPath(std::uint32_t index) = 0;
  virtual const char* imageDataFilename(std::uint32_t index) = 0;
  virtual const char* polLayer(std::uint32_t index) = 0;
};
