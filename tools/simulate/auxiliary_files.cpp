#include "tools/simulate/auxiliary_files.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <fstream>
#include <memory>
#include <span>
#include <stdexcept>

#include "gridkit/raster_writer.h"

namespace simulate {

namespace {

constexpr double white = 400;  // amplitude, of 8-bit previews

using Writer = std::unique_ptr<gridkit::RasterWriter>;

std::uint8_t grey(double amplitude) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(amplitude / white, 0.0, 1.0) * 255));
}

// Mean amplitudes of a line's squares.
void reduce(const Synthesis& image, bool is_complex, std::int32_t line, std::vector<float>& pixels,
            std::vector<double>& means) {
  if (is_complex) {
    std::vector<Sample> samples(pixels.size());
    image.complex_line(line, samples);
    std::transform(samples.begin(), samples.end(), pixels.begin(),
                   [](const Sample& s) { return std::hypot(s.i, s.q); });
  } else {
    image.detected_line(line, pixels);
  }
  for (std::size_t p = 0; p < means.size(); ++p) {
    double sum = 0;
    for (std::size_t k = 0; k < preview_reduction; ++k) sum += pixels[p * preview_reduction + k];
    means[p] = sum / preview_reduction;
  }
}

template <class Pixel>
void write_line(const Writer& writer, const std::vector<Pixel>& pixels) {
  writer->write_lines(std::as_bytes(std::span<const Pixel>(pixels)), 1);
}

void append_big_endian(std::string& bytes, double value) {
  const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(value));
  for (const unsigned shift : {24U, 16U, 8U, 0U}) bytes.push_back(static_cast<char>(bits >> shift));
}

std::ofstream open(const std::string& path) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw std::runtime_error(path + ": cannot be written");
  return out;
}

void finish(const std::string& path, std::ofstream& out) {
  out.close();
  if (!out) throw std::runtime_error(path + ": cannot be written");
}

}  // namespace

std::string quicklook_name(const std::string& polarisation, const std::string& beam) {
  return "QL_" + polarisation + "_SRA_" + beam + ".tif";
}

void write_previews(const std::string& folder, const Scene& scene, const std::string& beam,
                    const std::vector<Synthesis>& images) {
  const Options& o = scene.options;
  const std::int32_t height = preview_size(o.lines);
  const std::int32_t width = preview_size(o.samples);
  const gridkit::RasterOptions words;
  gridkit::RasterOptions bytes;
  bytes.type = gridkit::SampleType::u8;
  std::vector<Writer> quicklooks;
  for (const std::string& layer : o.polarisations) {
    const std::string path = folder + '/' + quicklook_name(layer, beam);
    quicklooks.push_back(gridkit::create_geotiff(path, width, height, words));
  }
  std::vector<Writer> composites;
  for (const char* name : {"COMPOSITE_QL.tif", "BROWSE.tif"}) {
    composites.push_back(gridkit::create_geotiff(folder + '/' + name, width, height, bytes));
  }
  composites.push_back(gridkit::create_png(folder + "/MAP_PLOT.png", width, height, bytes));
  std::vector<float> pixels(static_cast<std::size_t>(o.samples));
  std::vector<double> means(static_cast<std::size_t>(width));
  for (std::int32_t line = 0; line < height; ++line) {
    std::vector<double> sums(means.size());
    for (std::size_t i = 0; i < quicklooks.size(); ++i) {
      if (!images.empty()) {
        reduce(images[i], scene.is_complex(), line * preview_reduction + preview_reduction / 2,
               pixels, means);
      }
      std::vector<std::uint16_t> quicklook(means.size());
      std::transform(means.begin(), means.end(), quicklook.begin(), [](double mean) {
        return static_cast<std::uint16_t>(std::lround(std::min(mean, 65535.0)));
      });
      write_line(quicklooks[i], quicklook);
      std::transform(sums.begin(), sums.end(), means.begin(), sums.begin(), std::plus<>());
    }
    std::vector<std::uint8_t> composite(sums.size());
    std::transform(sums.begin(), sums.end(), composite.begin(),
                   [&](double sum) { return grey(sum / static_cast<double>(quicklooks.size())); });
    for (const Writer& writer : composites) write_line(writer, composite);
  }
  for (const Writer& writer : quicklooks) writer->finish();
  for (const Writer& writer : composites) writer->finish();
}

void write_mapping_grid(const std::string& path, const Scene& scene) {
  std::ofstream out = open(path);
  for (std::int32_t row = 0; row < grid_size(scene.options.lines); ++row) {
    std::string line;
    for (std::int32_t column = 0; column < grid_size(scene.options.samples); ++column) {
      const RasterTimes times = scene.times_of(
          {static_cast<double>(row) * grid_step, static_cast<double>(column) * grid_step});
      append_big_endian(line, times.azimuth - scene.start);
      append_big_endian(line, times.range - scene.near_time);
    }
    out << line;
  }
  finish(path, out);
}

}  // namespace simulate
