// Magnitude and phase per pixel, of samples and pixels that stay in the cache, on every instruction
// set of this machine.

#include <cmath>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/ratio.h"
#include "conversion/kernels.h"
#include "tests/support/plain_conversion.h"

namespace {

constexpr std::size_t count = 4096;  // a block of 64 x 64

struct Samples {
  std::vector<std::int16_t> i = std::vector<std::int16_t>(count);
  std::vector<std::int16_t> q = std::vector<std::int16_t>(count);
  std::vector<std::uint16_t> pixels = std::vector<std::uint16_t>(count);

  // Even over all values, or like a dim image: normally distributed by the deviation.
  explicit Samples(double deviation) {
    std::mt19937 random(1);
    std::uniform_int_distribution<> even(-32768, 32767);
    std::normal_distribution<> dim(0, deviation);
    for (auto* plane : {&i, &q}) {
      for (auto& value : *plane) {
        value = static_cast<std::int16_t>(deviation == 0 ? even(random) : std::lround(dim(random)));
      }
    }
  }
};

using Convert = void (*)(const std::int16_t*, const std::int16_t*, std::uint16_t*, std::size_t);

template <std::uint16_t (*plain)(std::int16_t, std::int16_t)>
void convert_plainly(const std::int16_t* i, const std::int16_t* q, std::uint16_t* pixels,
                     std::size_t n) {
  for (std::size_t k = 0; k < n; ++k) pixels[k] = plain(i[k], q[k]);
}

std::function<void(benchmark::State&)> timed(Samples& samples, Convert convert) {
  return [&samples, convert](benchmark::State& state) {
    for (auto _ : state) {
      convert(samples.i.data(), samples.q.data(), samples.pixels.data(), count);
      benchmark::ClobberMemory();
    }
  };
}

bench::Row row(const std::string& work, const std::string& yardstick, Samples& samples,
               Convert convert, Convert plain, double goal) {
  const auto check = [&samples, work, convert, plain] {
    convert(samples.i.data(), samples.q.data(), samples.pixels.data(), count);
    const auto pixels = samples.pixels;
    plain(samples.i.data(), samples.q.data(), samples.pixels.data(), count);
    if (pixels != samples.pixels) throw std::runtime_error(work + ": pixels differ");
  };
  return {work,
          yardstick,
          bench::Row::Goal::speed_at_least,
          goal,
          check,
          timed(samples, convert),
          timed(samples, plain)};
}

}  // namespace

int main(int argc, char** argv) {
  Samples bright(0);
  Samples dim(30);
  constexpr Convert plain_magnitudes = convert_plainly<plain_magnitude>;
  constexpr Convert plain_phases = convert_plainly<plain_phase>;
  std::vector<bench::Row> rows;
  for (const conversion::Kernels* set : conversion::available_kernels()) {
    const std::string name = set->name;
    // The narrowest set is to reach half of what the wider ones are to.
    const bool is_widest = name == "AVX-512";
    const bool is_wide = is_widest || name == "AVX2";
    rows.push_back(row("phase of a pixel in cache, " + name, "scalar sequence with atan2", bright,
                       set->phase, plain_phases,
                       is_widest ? 30
                       : is_wide ? 18
                                 : 9));
    rows.push_back(row("phase of a dim image's pixel, " + name, "scalar sequence with atan2", dim,
                       set->phase, plain_phases, 0));
    rows.push_back(row("magnitude of a pixel in cache, " + name, "scalar sequence", bright,
                       set->magnitude, plain_magnitudes, is_wide ? 5.5 : 2.75));
  }
  return bench::run(argc, argv, rows);
}
