#include "gridkit/image_radiometry.h"

#include <algorithm>
#include <numbers>
#include <string>
#include <utility>

#include "gridkit/error.h"
#include "gridkit/geolocation_grid.h"
#include "gridkit/radiometry/grid_incidence.h"
#include "gridkit/record_decoder.h"
#include "rmdllib/incidence.h"
#include "rmdllib/radar_geometry.h"

namespace gridkit {

namespace {

constexpr double speed_of_light = 299792458.0;  // m/s, by definition of the metre

using rmdllib::RadarGeometry;

// The published geometry, of an image of that size.
std::shared_ptr<const RadarGeometry> geometry_of(const Product& product, std::int64_t lines,
                                                 std::int64_t samples) {
  const std::string model = std::string(":") + RadarGeometry::design;
  const auto names = product.data_names();
  std::optional<NonStandardData> data;
  if (std::find(names.begin(), names.end(), model) != names.end()) data = product.read_data(model);
  if (!data) {
    throw Error(product.path() +
                ": the angles of incidence are not known: it publishes no sensor model, as images "
                "on a map have none");
  }
  auto geometry = std::make_shared<const RadarGeometry>(
      decode_record(data->dictionary, data->type, data->bytes));
  if (geometry->lines() == static_cast<double>(lines) &&
      geometry->samples() == static_cast<double>(samples)) {
    return geometry;
  }
  throw Error(
      product.path() +
      ": the angles of incidence are not known: the image's lines and samples are not those "
      "that the product's sensor model places");
}

// Through the samples, which keep it; else, as where an image file is missing, by itself.
std::shared_ptr<const GeolocationGrid> grid_of(const Product& product) try {
  return product.samples().geolocation_grid().grid;
} catch (const Error&) {
  return find_geolocation_grid(product.plugin(), product.path()).grid;
}

// The published model rounds the scene's start and stop to microseconds; those of the noise's own
// frame are exact. The model tells whether lines run back, and the times of samples.
RasterTimes times_of(std::shared_ptr<const RadarGeometry> geometry, const ImageNoise& noise) {
  RasterTimes times;
  const bool run_back = geometry->radar_of({1, 0}).time < geometry->radar_of({0, 0}).time;
  const double interval = (noise.latest_line - noise.earliest_line) / (geometry->lines() - 1);
  times.first_line = run_back ? noise.latest_line : noise.earliest_line;
  times.line_interval = run_back ? -interval : interval;
  times.range_time = [geometry = std::move(geometry)](double sample) {
    return 2 * geometry->radar_of({0, sample}).range / speed_of_light;
  };
  return times;
}

struct Image {
  std::int64_t lines;
  std::int64_t samples;
  double factor;
  std::optional<std::size_t> sample_image;  // its number, where it is known
};

std::shared_ptr<const Radiometry> radiometry_of_image(const Product& product,
                                                      const Samples* samples, const Image& image,
                                                      const RadiometryRequest& request) {
  Radiometry::Parts parts;
  parts.quantity = request.quantity;
  parts.factor = image.factor;
  parts.lines = image.lines;
  parts.samples = image.samples;
  if (request.quantity != Backscatter::beta0) {
    parts.incidence = incidence_of(product, image.lines, image.samples);
  }
  if (request.subtract_noise) {
    if (samples == nullptr || !image.sample_image) {
      throw Error(product.path() + ": its noise is not known");
    }
    auto geometry = geometry_of(product, image.lines, image.samples);
    try {
      parts.noise = samples->noise(*image.sample_image);
    } catch (const Error& error) {
      throw Error(product.path() +
                  ": the noise cannot be subtracted: " + reason_of(error, product.path()));
    }
    parts.noise->factor = image.factor;
    parts.times = times_of(std::move(geometry), *parts.noise);
  }
  try {
    return std::make_shared<const Radiometry>(std::move(parts));
  } catch (const Error& error) {
    throw led_by(product.path(), error);
  }
}

}  // namespace

std::shared_ptr<const Incidence> incidence_of(const Product& product, std::int64_t lines,
                                              std::int64_t samples) {
  auto geometry = geometry_of(product, lines, samples);
  if (auto grid = grid_of(product); grid != nullptr && grid->has_image_axes()) {
    return std::make_shared<const GridIncidence>(std::move(grid));
  }
  return std::make_shared<const rmdllib::EllipsoidIncidence>(std::move(geometry));
}

ImageIncidence incidence_of(const Product& product) {
  const auto layers = product.layer_names();
  if (layers.empty()) throw Error(product.path() + ": it has no layers");
  const Layer layer = product.open_layer(layers.front());
  ImageIncidence result{incidence_of(product, layer.height(), layer.width()), layer.height(),
                        layer.width(), 0, 0};
  const double middle = static_cast<double>(result.lines - 1) / 2;
  const double first = result.angles->at(middle, 0);
  const double last = result.angles->at(middle, static_cast<double>(result.samples - 1));
  constexpr double degrees = 180 / std::numbers::pi;
  result.near_degrees = std::min(first, last) * degrees;
  result.far_degrees = std::max(first, last) * degrees;
  return result;
}

std::shared_ptr<const Radiometry> radiometry_of(const Product& product, const Samples& samples,
                                                std::size_t number,
                                                const RadiometryRequest& request) {
  const SampleImage& image = samples.images().at(number);
  return radiometry_of_image(
      product, &samples, {image.lines, image.samples, image.calibration_factor, number}, request);
}

std::shared_ptr<const Radiometry> radiometry_of(const Product& product, const Layer& layer,
                                                double factor, const RadiometryRequest& request) {
  const Image image = {layer.height(), layer.width(), factor, std::nullopt};
  if (!request.subtract_noise) return radiometry_of_image(product, nullptr, image, request);
  const Samples samples = product.samples();
  const auto names = product.layer_names();
  const auto place = std::find(names.begin(), names.end(), layer.name()) - names.begin();
  Image of_layer = image;
  const auto& images = samples.images();
  for (std::size_t i = 0; i < images.size(); ++i) {
    if (images[i].magnitude_layer == place) of_layer.sample_image = i;
  }
  return radiometry_of_image(product, &samples, of_layer, request);
}

}  // namespace gridkit
