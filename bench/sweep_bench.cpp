#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/complex_product.h"
#include "bench/ratio.h"
#include "gridkit/services/regular_file.h"

// Every block of a complex image through the plug-in's block read, beside reading its file once
// from start to end. The file is in the system's page cache for both.

namespace {

using bench::ComplexProduct;
using bench::Kind;
using bench::OpenLayer;

constexpr std::int32_t image_size = 16384;  // a square of 1 GiB
constexpr std::size_t read_bytes = std::size_t{1024} * 1024;

constexpr Kind magnitude{"magnitude", "X_HH_MAGNITUDE_1", false};
constexpr Kind phase{"phase", "X_HH_PHASE_2", true};

void check_blocks(const ComplexProduct& product, const OpenLayer& layer, const Kind& kind) {
  const std::int32_t size = layer.block_size();
  const auto count = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
  std::vector<std::uint16_t> pixels(count);
  const std::int32_t last_row = layer.rows() - 1;
  const std::int32_t last_column = layer.columns() - 1;
  for (const std::int32_t row : {0, 1, last_row / 2, last_row}) {
    for (const std::int32_t column : {0, 1, last_column / 2, last_column}) {
      const bool came = layer.read(row, column, pixels.data());
      if (!came || pixels != bench::plain_block(product, kind, size, row, column)) {
        throw std::runtime_error(std::string("wrong ") + kind.name + " block " +
                                 std::to_string(row) + ", " + std::to_string(column));
      }
    }
  }
  const std::int64_t expected = std::int64_t{layer.rows()} * layer.columns();
  if (layer.sweep() != expected) throw std::runtime_error("not all blocks came");
}

void read_file(const std::filesystem::path& path) {
  const gridkit::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  static std::vector<char> buffer(read_bytes);
  ssize_t n = 1;
  while (n > 0) n = ::read(file.get(), buffer.data(), buffer.size());
  if (n < 0) throw std::runtime_error(path.string() + ": cannot be read");
  benchmark::DoNotOptimize(buffer.data());
}

// The reads of a sweep and nothing else: one of each line of each block, in the reader's order.
void read_lines(const ComplexProduct& product, std::int32_t size) {
  const gridkit::Descriptor file(::open(product.image().c_str(), O_RDONLY | O_CLOEXEC));
  std::vector<char> line(4 * static_cast<std::size_t>(size));
  for (std::int32_t row = 0; row < image_size; row += size) {
    for (std::int32_t column = 0; column < image_size; column += size) {
      for (std::int32_t j = 0; j < size; ++j) {
        const std::int64_t offset = product.offset_of(row + j, column);
        if (::pread(file.get(), line.data(), line.size(), offset) !=
            static_cast<ssize_t>(line.size())) {
          throw std::runtime_error("a line ends too early");
        }
      }
    }
  }
  benchmark::DoNotOptimize(line.data());
}

// The layer that is open: one at a time, since the block size belongs to the product.
using Open = std::unique_ptr<OpenLayer>;

constexpr const char* sequential_read = "one sequential read of its file, 1 MiB at a time";

bench::Row sweep_row(const ComplexProduct& product, Open& open, const Kind& kind, std::int32_t size,
                     double goal) {
  const std::string blocks = std::to_string(size) + " x " + std::to_string(size);
  bench::Row row;
  row.work = "every " + blocks + " " + kind.name + " block of a 1 GiB image";
  row.yardstick = sequential_read;
  row.goal = goal;
  row.check = [&product, &open, kind, size] {
    open.reset();
    open = std::make_unique<OpenLayer>(product, kind.layer, size);
    check_blocks(product, *open, kind);
  };
  row.timed_work = [&open](benchmark::State& state) {
    for (auto _ : state) open->sweep();
  };
  row.timed_yardstick = [path = product.image()](benchmark::State& state) {
    for (auto _ : state) read_file(path);
  };
  return row;
}

// What a reader of blocks as wide as this one's takes at least, if it reads line by line.
bench::Row lines_row(const ComplexProduct& product, std::int32_t size) {
  bench::Row row;
  row.work = "the reads alone of " + std::to_string(size) + " x " + std::to_string(size) +
             " blocks, a line each";
  row.yardstick = sequential_read;
  row.timed_work = [&product, size](benchmark::State& state) {
    for (auto _ : state) read_lines(product, size);
  };
  row.timed_yardstick = [path = product.image()](benchmark::State& state) {
    for (auto _ : state) read_file(path);
  };
  return row;
}

bench::Figure bytes_figure(const ComplexProduct& product, Open& open) {
  open.reset();
  open = std::make_unique<OpenLayer>(product, magnitude.layer, 64);
  open->sweep();
  const auto size = static_cast<double>(std::filesystem::file_size(product.image()));
  return {"bytes that the stream reads in a sweep of 64 x 64 blocks", "times the file",
          static_cast<double>(open->bytes_read()) / size, 1.05};
}

// Images of zeros that take no room on disk: what grows is the work, not the disk's share.
bench::Figure size_figure(Open& open, std::int32_t size) {
  open.reset();
  const ComplexProduct product(size, size, ComplexProduct::Content::sparse);
  open = std::make_unique<OpenLayer>(product, magnitude.layer, 64);
  double shortest = INFINITY;
  for (int i = 0; i < 2; ++i) {
    const auto start = std::chrono::steady_clock::now();
    open->sweep();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    shortest = std::min(shortest, time.count());
  }
  open.reset();
  const double pixels = std::pow(size, 2);
  return {"magnitude blocks of a sparse image of " + std::to_string(std::lround(pixels / 1e6)) +
              " Mpixel",
          "ns a pixel", shortest / pixels * 1e9, 0};
}

}  // namespace

int main(int argc, char** argv) try {
  const ComplexProduct product(image_size, image_size, ComplexProduct::Content::noise);
  Open open;
  const auto figures = [&] {
    std::vector<bench::Figure> all = {bytes_figure(product, open)};
    for (const std::int32_t size : {1000, 3162, 10000, 31623}) {
      all.push_back(size_figure(open, size));
    }
    return all;
  };
  return bench::run(
      argc, argv,
      {sweep_row(product, open, magnitude, 64, 2.0), sweep_row(product, open, phase, 64, 3.0),
       sweep_row(product, open, magnitude, 1024, 1.8), sweep_row(product, open, phase, 1024, 2.5),
       lines_row(product, 1024)},
      figures);
} catch (const std::exception& error) {
  std::fprintf(stderr, "sweep_bench: %s\n", error.what());
  return 1;
}
