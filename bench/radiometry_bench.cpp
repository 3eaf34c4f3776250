#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/complex_product.h"
#include "bench/ratio.h"
#include "gridkit/image_radiometry.h"
#include "gridkit/plugin.h"

// Sigma nought of a whole image into a GeoTIFF with the command-line tool, beside beta nought of
// the same. Both run as programs, with all that their start costs.

namespace {

using bench::ComplexProduct;

constexpr std::int32_t image_size = 16384;  // a square of 1 GiB
constexpr std::int32_t window_size = 64;
constexpr double goal = 1.3;

std::string quoted(const std::string& text) {
  return "'" + text + "'";
}

void run(const std::string& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

std::string read_command(const ComplexProduct& product, const std::string& source,
                         const std::string& quantity, const std::string& output) {
  return std::string(GRIDKIT_TOOL) + " read --quiet --overwrite " + quoted(product.annotation()) +
         ' ' + source + ' ' + quoted(product.folder() / output) + " --calibrate " + quantity;
}

// A window in the image's middle.
std::vector<float> read_window(const ComplexProduct& product, const std::string& source,
                               const std::string& quantity) {
  const std::string place = std::to_string(image_size / 2);
  const std::string size = std::to_string(window_size);
  run(read_command(product, source, quantity, "window.img") + " --window " + place + ' ' + place +
      ' ' + size + ' ' + size);
  std::vector<float> values(std::size_t{window_size} * window_size);
  std::ifstream file(product.folder() / "window.img", std::ios::binary);
  file.read(reinterpret_cast<char*>(values.data()),
            static_cast<std::streamsize>(values.size() * sizeof(float)));
  if (!file) throw std::runtime_error("the window is too short");
  return values;
}

// Sigma nought is beta nought times the sine of the angle, up to the rounding of both.
void check_window(const ComplexProduct& product, const std::string& source) {
  const auto beta0 = read_window(product, source, "beta0");
  const auto sigma0 = read_window(product, source, "sigma0");
  const gridkit::Product opened = gridkit::Plugin::load(TSX_PLUGIN)->open(product.annotation());
  const auto incidence = gridkit::incidence_of(opened, image_size, image_size);
  constexpr std::size_t first = image_size / 2;
  for (std::size_t k = 0; k < beta0.size(); ++k) {
    const std::size_t line = first + k / window_size;
    const std::size_t sample = first + k % window_size;
    const double angle = incidence->at(static_cast<double>(line), static_cast<double>(sample));
    const double wanted = static_cast<double>(beta0[k]) * std::sin(angle);
    if (!(std::abs(static_cast<double>(sigma0[k]) - wanted) <= 3e-7 * wanted)) {
      throw std::runtime_error(source + ": wrong pixels");
    }
  }
}

bench::Row row_of(const ComplexProduct& product, const std::string& source,
                  const std::string& quantity) {
  const std::string work = read_command(product, source, quantity, "work.tif");
  const std::string yardstick = read_command(product, source, "beta0", "yardstick.tif");
  bench::Row row;
  row.work = "gridkit read " + source + " --calibrate " + quantity;
  row.yardstick = "the same with beta0";
  row.goal = goal;
  row.check = [source, &product] { check_window(product, source); };
  row.timed_work = [work](benchmark::State& state) {
    for (auto _ : state) run(work);
  };
  row.timed_yardstick = [yardstick](benchmark::State& state) {
    for (auto _ : state) run(yardstick);
  };
  return row;
}

}  // namespace

int main(int argc, char** argv) try {
  const ComplexProduct product(image_size, image_size, ComplexProduct::Content::noise);
  return bench::run(
      argc, argv,
      {row_of(product, "HH", "sigma0"), row_of(product, "HH", "sigma0 --subtract-noise"),
       row_of(product, "X_HH_MAGNITUDE_1", "sigma0"),
       row_of(product, "X_HH_MAGNITUDE_1", "sigma0 --subtract-noise")});
} catch (const std::exception& error) {
  std::fprintf(stderr, "radiometry_bench: %s\n", error.what());
  return 1;
}
