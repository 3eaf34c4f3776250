#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/complex_product.h"
#include "bench/ratio.h"
#include "gridkit/plugin.h"
#include "gridkit/samples.h"
#include "gridkit/services/regular_file.h"
#include "tests/support/plain_conversion.h"

// A complex image through the companion and the host's conversions, beside reading its file and
// filling the target. The file is in the system's page cache, and the target was touched before.

namespace {

using bench::ComplexProduct;
using gridkit::SampleForm;
using gridkit::SampleWindow;

constexpr std::int32_t image_size = 16384;  // a square of 1 GiB
constexpr std::size_t read_bytes = std::size_t{1024} * 1024;

struct Bench {
  ComplexProduct product{image_size, image_size, ComplexProduct::Content::noise};
  gridkit::Samples samples =
      gridkit::Samples::open(*gridkit::Plugin::load(TSX_PLUGIN), product.annotation());
  std::vector<float> target = std::vector<float>(2 * std::size_t{image_size} * image_size, 1);
};

// Reads a part of the file, from one byte up to another.
void read_file(const std::filesystem::path& path, std::int64_t from, std::int64_t until) {
  const gridkit::Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::vector<char> buffer(read_bytes);
  while (from < until) {
    const auto wanted = std::min<std::int64_t>(until - from, std::ssize(buffer));
    const ssize_t got = ::pread(file.get(), buffer.data(), static_cast<std::size_t>(wanted), from);
    if (got <= 0) throw std::runtime_error(path.string() + ": cannot be read");
    from += got;
  }
  benchmark::DoNotOptimize(buffer.data());
}

void read_whole_file(const Bench& bench) {
  read_file(bench.product.image(), 0,
            static_cast<std::int64_t>(std::filesystem::file_size(bench.product.image())));
}

void fill(float* target, std::size_t count) {
  std::fill_n(target, count, 2.0F);
  benchmark::DoNotOptimize(target);
  benchmark::ClobberMemory();
}

// A window goes to its own place in an array of the whole image.
void read_window(Bench& bench, const SampleWindow& window, SampleForm form) {
  const auto bytes =
      static_cast<std::int64_t>(gridkit::form_bytes(form, gridkit::NativeType::complex_int16));
  auto* data = reinterpret_cast<std::byte*>(bench.target.data()) +
               (window.line * image_size + window.sample) * bytes;
  bench.samples.read(0, window, {form}, {data, image_size * bytes, bytes});
}

void read_whole(Bench& bench, SampleForm form) {
  read_window(bench, {0, 0, image_size, image_size}, form);
}

void read_windows(Bench& bench, std::int64_t size) {
  for (std::int64_t line = 0; line < image_size; line += size) {
    for (std::int64_t sample = 0; sample < image_size; sample += size) {
      read_window(bench, {line, sample, size, size}, SampleForm::complex_float);
    }
  }
}

// Both halves of the image, each on a thread of its own.
template <class Half>
void on_two_threads(Half half) {
  std::jthread second([&] { half(image_size / 2); });
  half(0);
}

void read_on_two_threads(Bench& bench) {
  on_two_threads([&](std::int64_t line) {
    read_window(bench, {line, 0, image_size / 2, image_size}, SampleForm::complex_float);
  });
}

// The yardstick of complex floats: the file is read, and the target filled.
void read_and_fill(Bench& bench, std::int64_t first_line, std::int64_t lines) {
  read_file(bench.product.image(), bench.product.offset_of(first_line, 0),
            bench.product.offset_of(first_line + lines - 1, image_size));
  fill(bench.target.data() + 2 * first_line * image_size,
       2 * static_cast<std::size_t>(lines) * image_size);
}

// Calls `compare(line, sample, i, q)` for samples of all parts of the image, as the file's bytes
// have them.
template <class Compare>
void check(const Bench& bench, Compare compare) {
  const gridkit::Descriptor file(::open(bench.product.image().c_str(), O_RDONLY | O_CLOEXEC));
  for (std::int64_t line = 0; line < image_size; line += 997) {
    for (std::int64_t sample = 0; sample < image_size; sample += 499) {
      unsigned char bytes[4];
      if (::pread(file.get(), bytes, sizeof bytes, bench.product.offset_of(line, sample)) != 4) {
        throw std::runtime_error("the file ends early");
      }
      const auto number = [&](int at) {
        return static_cast<std::int16_t>(
            static_cast<std::uint16_t>(bytes[at] << 8U | bytes[at + 1]));
      };
      if (!compare(static_cast<std::size_t>(line * image_size + sample), number(0), number(2))) {
        throw std::runtime_error("wrong sample " + std::to_string(line) + ", " +
                                 std::to_string(sample));
      }
    }
  }
}

void check_floats(const Bench& bench) {
  check(bench, [&](std::size_t place, std::int16_t i, std::int16_t q) {
    return bench.target[2 * place] == static_cast<float>(i) &&
           bench.target[2 * place + 1] == static_cast<float>(q);
  });
}

void check_integers(const Bench& bench) {
  const auto* pairs = reinterpret_cast<const std::int16_t*>(bench.target.data());
  check(bench, [&](std::size_t place, std::int16_t i, std::int16_t q) {
    return pairs[2 * place] == i && pairs[2 * place + 1] == q;
  });
}

void check_pixels(const Bench& bench, std::uint16_t (*plain)(std::int16_t, std::int16_t)) {
  const auto* pixels = reinterpret_cast<const std::uint16_t*>(bench.target.data());
  check(bench, [&](std::size_t place, std::int16_t i, std::int16_t q) {
    return pixels[place] == plain(i, q);
  });
}

using Goal = bench::Row::Goal;

bench::Row row(const std::string& work, const std::string& yardstick, Goal kind, double goal,
               const std::function<void()>& check_answer, const std::function<void()>& timed_work,
               const std::function<void()>& timed_yardstick) {
  const auto loop = [](const std::function<void()>& once) {
    return [once](benchmark::State& state) {
      for (auto _ : state) once();
    };
  };
  return {work, yardstick, kind, goal, check_answer, loop(timed_work), loop(timed_yardstick)};
}

// Clears the target, reads and checks.
std::function<void()> checked(Bench& bench, const std::function<void()>& read,
                              const std::function<void()>& is_right) {
  return [&bench, read, is_right] {
    std::fill(bench.target.begin(), bench.target.end(), 0.5F);
    read();
    is_right();
  };
}

std::vector<bench::Row> rows(Bench& bench) {
  const auto whole = [&bench](SampleForm form) {
    return [&bench, form] { read_whole(bench, form); };
  };
  const auto floats = whole(SampleForm::complex_float);
  const auto integers = whole(SampleForm::native);
  const auto magnitudes = whole(SampleForm::magnitude16);
  const auto phases = whole(SampleForm::phase16);
  const auto windows = [&bench] { read_windows(bench, 1024); };
  const auto on_two = [&bench] { read_on_two_threads(bench); };
  const auto read_file = [&bench] { read_whole_file(bench); };
  const auto read_fill = [&bench] { read_and_fill(bench, 0, image_size); };
  const auto read_fill_on_two = [&bench] {
    on_two_threads([&](std::int64_t line) { read_and_fill(bench, line, image_size / 2); });
  };
  const auto are_floats = [&bench] { check_floats(bench); };
  const auto sequential = "a sequential read of the file";
  const auto most = Goal::time_at_most;
  const auto least = Goal::speed_at_least;
  return {row("1 GiB image to complex 32-bit floats", "a sequential read of the file and a fill",
              most, 1.5, checked(bench, floats, are_floats), floats, read_fill),
          row("1 GiB image to 16-bit magnitudes", sequential, most, 2.2,
              checked(bench, magnitudes, [&bench] { check_pixels(bench, plain_magnitude); }),
              magnitudes, read_file),
          row("1 GiB image to 16-bit phases", sequential, most, 0,
              checked(bench, phases, [&bench] { check_pixels(bench, plain_phase); }), phases,
              read_file),
          row("1 GiB image to complex integers as they are", sequential, most, 0,
              checked(bench, integers, [&bench] { check_integers(bench); }), integers, read_file),
          row("windows of 1024 x 1024 to complex floats", "the whole image at once", most, 1.4,
              checked(bench, windows, are_floats), windows, floats),
          row("complex floats on two threads", "on one thread", least, 1.8,
              checked(bench, on_two, are_floats), on_two, floats),
          row("a read of the file and a fill on two threads", "on one thread", least, 0, {},
              read_fill_on_two, read_fill)};
}

}  // namespace

int main(int argc, char** argv) try {
  Bench bench;
  return bench::run(argc, argv, rows(bench));
} catch (const std::exception& error) {
  std::fprintf(stderr, "samples_bench: %s\n", error.what());
  return 1;
}
