#include "bridges/gdal/place.h"

#include <array>
#include <charconv>
#include <span>

namespace gridkit_gdal {

namespace {

std::string texts_of(std::span<const double> numbers) {
  std::string texts;
  for (const double number : numbers) texts += (texts.empty() ? "" : " ") + number_text(number);
  return texts;
}

// A scene over the date line keeps its longitudes together.
void join_longitudes(std::vector<ControlPoint>& points) {
  for (ControlPoint& point : points) {
    const double way = point.longitude - points.front().longitude;
    if (way > 180) point.longitude -= 360;
    if (way < -180) point.longitude += 360;
  }
}

}  // namespace

std::string number_text(double value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return {text.data(), end};
}

std::vector<ControlPoint> control_points_of(const RasterSource& source,
                                            const PlaceOptions& options) {
  constexpr int steps = control_points_a_side - 1;
  std::vector<ControlPoint> points;
  std::vector<double> lines;
  std::vector<double> samples;
  for (int row = 0; row <= steps; ++row) {
    for (int column = 0; column <= steps; ++column) {
      const double x = static_cast<double>(source.samples) * column / steps;
      const double y = static_cast<double>(source.lines) * row / steps;
      points.push_back({x, y, 0, 0, 0});
      // The host counts pixels by their centres, control points by their corners.
      lines.push_back(y - 0.5);
      samples.push_back(x - 0.5);
    }
  }
  std::vector<double> heights(points.size(), options.height);
  HostError error;
  const bool has_heights =
      options.has_height ||
      gridkit_terrain_heights(source.product.get(), points.size(), lines.data(), samples.data(),
                              heights.data(), error.out()) == gridkit_Done;
  gridkit_place_options wish = sized<gridkit_place_options>();
  wish.delays = options.delays;
  std::vector<double> latitudes(points.size());
  std::vector<double> longitudes(points.size());
  std::vector<double> taken(points.size());
  std::size_t without = 0;
  if (gridkit_locate(source.product.get(), &wish, points.size(), lines.data(), samples.data(),
                     has_heights ? heights.data() : nullptr, latitudes.data(), longitudes.data(),
                     taken.data(), &without, error.out()) != gridkit_Done ||
      without > 0) {
    return {};
  }
  for (std::size_t i = 0; i < points.size(); ++i) {
    points[i].longitude = longitudes[i];
    points[i].latitude = latitudes[i];
    points[i].height = taken[i];
  }
  join_longitudes(points);
  return points;
}

std::vector<std::pair<std::string, std::string>> rational_model_of(const RasterSource& source,
                                                                   const PlaceOptions& options) {
  gridkit_rational_options wish = sized<gridkit_rational_options>();
  wish.delays = options.delays;
  gridkit_rational_model model = sized<gridkit_rational_model>();
  HostError error;
  if (gridkit_fit_rational(source.product.get(), &wish, &model, error.out()) != gridkit_Done) {
    return {};
  }
  return {{"ERR_BIAS", "-1"},  // metres on the ground, which the fit does not tell
          {"ERR_RAND", "-1"},
          {"LINE_OFF", number_text(model.line_offset)},
          {"SAMP_OFF", number_text(model.sample_offset)},
          {"LAT_OFF", number_text(model.latitude_offset)},
          {"LONG_OFF", number_text(model.longitude_offset)},
          {"HEIGHT_OFF", number_text(model.height_offset)},
          {"LINE_SCALE", number_text(model.line_scale)},
          {"SAMP_SCALE", number_text(model.sample_scale)},
          {"LAT_SCALE", number_text(model.latitude_scale)},
          {"LONG_SCALE", number_text(model.longitude_scale)},
          {"HEIGHT_SCALE", number_text(model.height_scale)},
          {"LINE_NUM_COEFF", texts_of(model.line_numerator)},
          {"LINE_DEN_COEFF", texts_of(model.line_denominator)},
          {"SAMP_NUM_COEFF", texts_of(model.sample_numerator)},
          {"SAMP_DEN_COEFF", texts_of(model.sample_denominator)}};
}

}  // namespace gridkit_gdal
