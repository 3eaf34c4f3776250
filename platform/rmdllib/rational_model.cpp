#include "rmdllib/rational_model.h"

#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "gridkit/error.h"

namespace rmdllib {

namespace {

// How the fit is made.
struct FitSettings {
  int nodes_along_an_edge = 15;  // of the image, both ways
  int nodes_in_height = 7;
  int rounds = 3;  // of weighting by the denominator
  // Size of the penalty on each coefficient, beside a residual of 1 at every node.
  double damping = 1e-7;
};

// How the fit is judged. Even numbers, so that no node of the fit, of which there are odd numbers,
// is met again in the middle.
struct CheckSettings {
  int nodes_along_an_edge = 30;
  int nodes_in_height = 10;
};

// A pixel, and its place at some height.
struct TiePoint {
  Pixel pixel;
  Geodetic place;
};

// Pixels and heights are taken from -1 to 1 over the image and the heights.
struct Grid {
  std::vector<double> across;  // both lines and samples
  std::vector<double> heights;
};

// The zeros of Chebyshev's polynomial, where a fit of any degree below keeps calm between the
// nodes.
std::vector<double> chebyshev_nodes(int count) {
  std::vector<double> nodes;
  nodes.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) nodes.push_back(std::cos(std::numbers::pi * (i + 0.5) / count));
  return nodes;
}

// Equally far apart, both ends included.
std::vector<double> even_nodes(int count) {
  std::vector<double> nodes;
  nodes.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) nodes.push_back(-1 + 2.0 * i / (count - 1));
  return nodes;
}

std::vector<TiePoint> tie_points(const RadarGeometry& geometry, const RationalModel& model,
                                 const Grid& grid) {
  std::vector<TiePoint> points;
  for (const double line : grid.across) {
    for (const double sample : grid.across) {
      for (const double height : grid.heights) {
        const Pixel pixel = {model.line.restored(line), model.sample.restored(sample)};
        points.push_back({pixel, geometry.ground_of(pixel, model.height.restored(height))});
      }
    }
  }
  return points;
}

Normalisation spanning(double lowest, double highest) {
  const double half = (highest - lowest) / 2;
  return {(lowest + highest) / 2, half > 0 ? half : 1};
}

// Longitudes are counted from that of the first point, so that the date line is no border.
void normalise_places(RationalModel& model, const std::vector<TiePoint>& points) {
  const double first = points.front().place.longitude_degrees;
  double south = 90;
  double north = -90;
  double west = 180;
  double east = -180;
  for (const TiePoint& point : points) {
    const double way = std::remainder(point.place.longitude_degrees - first, 360);
    south = std::min(south, point.place.latitude_degrees);
    north = std::max(north, point.place.latitude_degrees);
    west = std::min(west, way);
    east = std::max(east, way);
  }
  if (east - west >= 180) {
    throw gridkit::Error(
        "the image lies around a pole, where latitude and longitude carry no rational model");
  }
  model.latitude = spanning(south, north);
  model.longitude = spanning(first + west, first + east);
  model.longitude.offset = std::remainder(model.longitude.offset, 360);
}

double sum(const CubicTerms& coefficients, const CubicTerms& terms) {
  double result = 0;
  for (std::size_t i = 0; i < rational_terms; ++i) result += coefficients[i] * terms[i];
  return result;
}

double quotient(const RationalFunction& function, const CubicTerms& terms) {
  return sum(function.numerator, terms) / sum(function.denominator, terms);
}

CubicTerms terms_at(const RationalModel& model, const Geodetic& place) {
  const double l =
      std::remainder(place.longitude_degrees - model.longitude.offset, 360) / model.longitude.scale;
  const double p = model.latitude.normalised(place.latitude_degrees);
  const double h = model.height.normalised(place.height);
  return {1,         l,         p,         h,         l * p,     l * h,     p * h,
          l * l,     p * p,     h * h,     p * l * h, l * l * l, l * p * p, l * h * h,
          l * l * p, p * p * p, p * h * h, l * l * h, p * p * h, h * h * h};
}

// value = N / D is linear in the coefficients once it is multiplied by D: N - value (D - 1) =
// value, D's constant term being 1. Divided by the D of the round before, the residual is that of
// the quotient itself. Numerator and denominator of a smooth function can share almost any factor,
// so the system is nearly singular by nature; the damping rows below it choose, of all quotients
// that do as well, one with small coefficients, whose denominator has no zero near.
RationalFunction fit(const std::vector<CubicTerms>& terms, const std::vector<double>& values,
                     const FitSettings& settings) {
  constexpr Eigen::Index own = rational_terms;
  constexpr Eigen::Index unknowns = 2 * own - 1;
  const auto count = static_cast<Eigen::Index>(terms.size());
  Eigen::MatrixXd matrix = Eigen::MatrixXd::Zero(count + unknowns, unknowns);
  Eigen::VectorXd right = Eigen::VectorXd::Zero(count + unknowns);
  matrix.bottomRows(unknowns).diagonal().setConstant(settings.damping *
                                                     std::sqrt(static_cast<double>(count)));
  RationalFunction function;
  function.denominator[0] = 1;
  for (int round = 0; round < settings.rounds; ++round) {
    for (Eigen::Index i = 0; i < count; ++i) {
      const CubicTerms& row = terms[static_cast<std::size_t>(i)];
      const double value = values[static_cast<std::size_t>(i)];
      const double weight = 1 / sum(function.denominator, row);
      const Eigen::Map<const Eigen::RowVectorXd> mapped(row.data(), own);
      matrix.row(i).head(own) = weight * mapped;
      matrix.row(i).tail(own - 1) = -weight * value * mapped.tail(own - 1);
      right(i) = weight * value;
    }
    const Eigen::VectorXd solution = matrix.colPivHouseholderQr().solve(right);
    std::copy_n(solution.data(), rational_terms, function.numerator.begin());
    std::copy_n(solution.data() + rational_terms, rational_terms - 1,
                function.denominator.begin() + 1);
  }
  return function;
}

// A quotient without a value is infinitely wrong.
double larger(double largest, double difference) {
  if (std::isnan(difference)) return std::numeric_limits<double>::infinity();
  return std::max(largest, std::abs(difference));
}

}  // namespace

Pixel RationalModel::pixel_of(const Geodetic& place) const {
  const CubicTerms terms = terms_at(*this, place);
  return {line.restored(quotient(line_function, terms)),
          sample.restored(quotient(sample_function, terms))};
}

FittedRationalModel fit_rational_model(const RadarGeometry& geometry, HeightRange heights) {
  if (!std::isfinite(heights.lowest) || !std::isfinite(heights.highest) ||
      heights.lowest >= heights.highest) {
    throw gridkit::Error("the heights of a rational model must rise from a lowest to a highest");
  }
  FittedRationalModel fitted{{}, heights, 0, 0};
  RationalModel& model = fitted.model;
  model.line = spanning(0, geometry.lines() - 1);
  model.sample = spanning(0, geometry.samples() - 1);
  model.height = spanning(heights.lowest, heights.highest);

  const FitSettings settings;
  const auto points = tie_points(
      geometry, model,
      {chebyshev_nodes(settings.nodes_along_an_edge), chebyshev_nodes(settings.nodes_in_height)});
  normalise_places(model, points);
  std::vector<CubicTerms> terms;
  std::vector<double> lines;
  std::vector<double> samples;
  for (const auto& [pixel, place] : points) {
    terms.push_back(terms_at(model, place));
    lines.push_back(model.line.normalised(pixel.line));
    samples.push_back(model.sample.normalised(pixel.sample));
  }
  model.line_function = fit(terms, lines, settings);
  model.sample_function = fit(terms, samples, settings);

  const CheckSettings check;
  for (const auto& [pixel, place] :
       tie_points(geometry, model,
                  {even_nodes(check.nodes_along_an_edge), even_nodes(check.nodes_in_height)})) {
    const Pixel seen = model.pixel_of(place);
    fitted.largest_line_error = larger(fitted.largest_line_error, seen.line - pixel.line);
    fitted.largest_sample_error = larger(fitted.largest_sample_error, seen.sample - pixel.sample);
  }
  return fitted;
}

}  // namespace rmdllib
