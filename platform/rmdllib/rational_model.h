#pragma once

#include <array>
#include <cstddef>

#include "gridkit/export.h"
#include "rmdllib/ellipsoid.h"
#include "rmdllib/radar_geometry.h"

namespace rmdllib {

// A quantity counted from an offset in units of a scale, so that it runs from -1 to 1.
struct Normalisation {
  double offset = 0;
  double scale = 1;

  double normalised(double value) const { return (value - offset) / scale; }
  double restored(double value) const { return offset + scale * value; }
};

inline constexpr std::size_t rational_terms = 20;
using CubicTerms = std::array<double, rational_terms>;

// A quotient of two cubic polynomials.
struct RationalFunction {
  CubicTerms numerator{};
  CubicTerms denominator{};
};

// Places on Earth to pixels by rational polynomials, in the form RPC00B: with longitude L, latitude
// P and height H, each normalised, the normalised line and sample are quotients of cubics in them,
// their terms in the order
//   1 L P H LP LH PH L2 P2 H2 PLH L3 LP2 LH2 L2P P3 PH2 L2H P2H H3
// Whole lines and samples are centres of pixels, as everywhere here and in what GDAL makes of such
// coefficients; heights are above the ellipsoid.
struct GRIDKIT_API RationalModel {
  Normalisation line;       // pixels
  Normalisation sample;     // pixels
  Normalisation latitude;   // degrees
  Normalisation longitude;  // degrees
  Normalisation height;     // metres
  RationalFunction line_function;
  RationalFunction sample_function;

  // Longitudes may be a turn off.
  Pixel pixel_of(const Geodetic& place) const;
};

// Metres above the ellipsoid.
struct HeightRange {
  double lowest = -500;
  double highest = 9000;
};

// A model, and how well it does.
struct FittedRationalModel {
  RationalModel model;
  HeightRange heights;
  // The largest differences from the range-Doppler geometry on a grid of pixels and heights that
  // the fit has not seen, and which reaches to the image's edges and to both ends of the heights.
  double largest_line_error = 0;    // pixels
  double largest_sample_error = 0;  // pixels
};

// Fits a model to the geometry of a whole image, see docs/geometry.md. Throws gridkit::Error for
// heights that are no range, for an image around a pole, which longitude does not order, and where
// the geometry gives its pixels no places at such heights.
GRIDKIT_API FittedRationalModel fit_rational_model(const RadarGeometry& geometry,
                                                   HeightRange heights = {});

}  // namespace rmdllib
