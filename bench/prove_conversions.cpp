// Compares magnitude and phase with the plain sequences for all pairs of I and Q, on every
// instruction set of this machine. A line of verdict for each conversion and set; 0 when none of
// them differs anywhere.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <numeric>
#include <thread>
#include <utility>
#include <vector>

#include "conversion/kernels.h"
#include "tests/support/plain_conversion.h"

namespace {

constexpr int values = 65536;
using Row = std::vector<std::uint16_t>;

struct Differences {
  std::atomic<std::uint64_t> magnitude{0};
  std::atomic<std::uint64_t> phase{0};
};

std::uint64_t differences(const Row& a, const Row& b) {
  return std::transform_reduce(a.begin(), a.end(), b.begin(), std::uint64_t{0}, std::plus<>(),
                               [](std::uint16_t x, std::uint16_t y) { return x != y ? 1U : 0U; });
}

// Rows of one I and every Q, until none is left.
void prove(std::atomic<int>& next, std::vector<Differences>& found) {
  const auto kernels = conversion::available_kernels();
  std::vector<std::int16_t> i(values);
  std::vector<std::int16_t> q(values);
  std::iota(q.begin(), q.end(), std::int16_t{-32768});
  Row magnitude(values);
  Row phase(values);
  Row pixels(values);
  for (int row = next++; row < values; row = next++) {
    i.assign(values, static_cast<std::int16_t>(row - 32768));
    for (std::size_t k = 0; k < values; ++k) {
      magnitude[k] = plain_magnitude(i[k], q[k]);
      phase[k] = plain_phase(i[k], q[k]);
    }
    for (std::size_t set = 0; set < kernels.size(); ++set) {
      kernels[set]->magnitude(i.data(), q.data(), pixels.data(), values);
      found[set].magnitude += differences(pixels, magnitude);
      kernels[set]->phase(i.data(), q.data(), pixels.data(), values);
      found[set].phase += differences(pixels, phase);
    }
    if ((row + 1) % (values / 16) == 0) {
      std::fprintf(stderr, "%3d %% of all pairs\n", 100 * (row + 1) / values);
    }
  }
}

}  // namespace

int main() {
  const auto start = std::chrono::steady_clock::now();
  const auto kernels = conversion::available_kernels();
  std::vector<Differences> found(kernels.size());
  std::atomic<int> next{0};
  {
    std::vector<std::jthread> threads;
    const unsigned cores = std::max(1U, std::thread::hardware_concurrency());
    for (unsigned core = 0; core < cores; ++core) {
      threads.emplace_back([&] { prove(next, found); });
    }
  }
  bool all_equal = true;
  for (std::size_t set = 0; set < kernels.size(); ++set) {
    for (const auto& [conversion, count] : {std::pair{"magnitude", found[set].magnitude.load()},
                                            std::pair{"phase", found[set].phase.load()}}) {
      std::printf("%s, %s: %llu of 4294967296 pairs differ\n", conversion, kernels[set]->name,
                  static_cast<unsigned long long>(count));
      all_equal = all_equal && count == 0;
    }
  }
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  std::printf("%s after %.0f s\n", all_equal ? "proven" : "NOT the same", passed.count());
  return all_equal ? 0 : 1;
}
