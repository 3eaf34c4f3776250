// Any number of threads on one open product. Under ThreadSanitizer it shows that they share nothing
// but what is guarded.

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>

#include "companion/sample_products.h"

namespace {

using gridkit::SampleForm;
using gridkit::SampleWindow;
using simulate::Variant;

constexpr std::int64_t lines = 150;
constexpr std::int64_t width = 170;

// Random windows of all images on several threads, each compared with a reading of the whole that
// was done before there were threads.
void read_side_by_side(const gridkit::Samples& samples, SampleForm form) {
  const auto bytes = static_cast<std::int64_t>(form_bytes(form, samples.images()[0].type));
  std::vector<std::vector<std::byte>> whole;
  for (std::size_t image = 0; image < samples.images().size(); ++image) {
    whole.emplace_back(static_cast<std::size_t>(lines * width * bytes));
    samples.read(image, {0, 0, lines, width}, {form}, {whole.back().data()});
  }
  std::atomic<int> wrong = 0;
  const auto read_windows = [&](unsigned seed) {
    std::mt19937 random(seed);
    const auto below = [&](std::int64_t limit) {
      return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(limit));
    };
    std::vector<std::byte> part(static_cast<std::size_t>(lines * width * bytes));
    for (int k = 0; k < 30; ++k) {
      const auto image = static_cast<std::size_t>(below(std::ssize(whole)));
      SampleWindow w{below(lines), below(width), 0, 0};
      w.lines = 1 + below(lines - w.line);
      w.samples = 1 + below(width - w.sample);
      samples.read(image, w, {form}, {part.data()});
      for (std::int64_t l = 0; l < w.lines; ++l) {
        const auto from = static_cast<std::size_t>(((w.line + l) * width + w.sample) * bytes);
        if (std::memcmp(&part[static_cast<std::size_t>(l * w.samples * bytes)], &whole[image][from],
                        static_cast<std::size_t>(w.samples * bytes)) != 0) {
          ++wrong;
        }
      }
    }
  };
  {
    std::vector<std::jthread> threads;
    for (unsigned t = 0; t < 4; ++t) threads.emplace_back(read_windows, t);
  }
  EXPECT_EQ(wrong, 0);
}

TEST(SampleThreads, ReadOneComplexProduct) {
  const SampleProducts products;
  const auto samples = products.open(products.simulated(Variant::ssc, lines, width, {"HH", "VV"}));
  for (const SampleForm form :
       {SampleForm::native, SampleForm::complex_float, SampleForm::phase16, SampleForm::decibels}) {
    read_side_by_side(samples, form);
  }
}

TEST(SampleThreads, ReadOneDetectedProduct) {
  const SampleProducts products;
  const auto samples = products.open(products.simulated(Variant::mgd, lines, width));
  read_side_by_side(samples, SampleForm::native);
  read_side_by_side(samples, SampleForm::power);
}

TEST(SampleThreads, HandLinesOnInTheirOrder) {
  const SampleProducts products;
  const auto samples = products.open(products.with_bursts({{3000, 1000}}));
  std::int64_t next = 0;
  const std::int64_t whole = gridkit::read_in_order(
      samples, 0, {0, 0, 3000, 1000}, {},
      [&](std::span<const std::byte> bytes, std::int64_t count, bool complete) {
        ASSERT_TRUE(complete);
        for (std::int64_t l = 0; l < count; ++l, ++next) {
          const PlainSample plain = plain_sample(0, next, 999);
          std::uint16_t found[2];
          std::memcpy(found, &bytes[static_cast<std::size_t>((l * 1000 + 999) * 4)], sizeof found);
          ASSERT_EQ(found[0], plain.i) << next;
          ASSERT_EQ(found[1], plain.q) << next;
        }
      });
  EXPECT_EQ(whole, 3000);
  EXPECT_EQ(next, 3000);
}

}  // namespace
