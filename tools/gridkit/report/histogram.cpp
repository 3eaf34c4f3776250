#include "tools/gridkit/report/histogram.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>

#include "tools/gridkit/report/html.h"

namespace report {

namespace {

constexpr std::size_t most_bins = 128;
constexpr double percent = 100;

// Shares of `bins` equal parts of the counts' first `values`, as the middles of the parts.
Series shares(const std::vector<std::uint64_t>& counts, std::size_t values, double first,
              double step, std::uint64_t total) {
  const std::size_t width = std::max<std::size_t>(1, (values + most_bins - 1) / most_bins);
  Series result{"", {}};
  for (std::size_t from = 0; from < values; from += width) {
    const std::size_t until = std::min(from + width, values);
    std::uint64_t count = 0;
    for (std::size_t i = from; i < until; ++i) count += counts[i];
    const double middle = first + step * (static_cast<double>(from + until - 1) / 2);
    result.points.push_back(
        {middle, percent * static_cast<double>(count) / static_cast<double>(total) /
                     (static_cast<double>(until - from) / static_cast<double>(width))});
  }
  return result;
}

}  // namespace

Plot histogram(const Quicklook& quicklook) {
  const auto& counts = quicklook.counts;
  const auto total = std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
  Plot plot;
  plot.filled = true;
  plot.y_label = "share of the pixels, %";
  plot.title = quicklook.layer;
  if (total == 0) return plot;
  if (quicklook.meaning == PixelMeaning::phase) {
    // Phases are signed: the upper half of the 16-bit values comes first.
    std::vector<std::uint64_t> turned(counts.begin() + 32768, counts.end());
    turned.insert(turned.end(), counts.begin(), counts.begin() + 32768);
    plot.x_label = "phase, °";
    plot.series.push_back(shares(turned, turned.size(), -180, 180.0 / 32768, total));
    return plot;
  }
  plot.x_label = "digital number";
  if (counts.front() == total) return plot;  // no pixel holds data
  std::uint64_t below = 0;
  std::size_t values = 0;
  while (values < counts.size() && below < total - total / 200) below += counts[values++];
  plot.series.push_back(shares(counts, values, 0, 1, total));
  return plot;
}

}  // namespace report
