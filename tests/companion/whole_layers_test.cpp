// Whole layers, which the host makes of samples where it can: every pixel that the file holds.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <span>
#include <string>
#include <vector>

#include "companion/sample_products.h"
#include "gridkit/image_reader.h"
#include "gridkit/product.h"
#include "support/plain_conversion.h"

namespace {

namespace fs = std::filesystem;
using gridkit::LineRange;

constexpr std::uint32_t longest = 700;
constexpr std::uint32_t shortest = 64;

// What a reading of a layer gave.
struct Whole {
  std::vector<std::uint16_t> pixels;
  std::vector<LineRange> missing;
  std::vector<std::int32_t> incomplete;  // lines that came so marked
};

Whole read_layer(const gridkit::Product& product, const std::string& name) {
  const gridkit::Layer layer = product.open_layer(name);
  Whole whole;
  std::int32_t next = 0;
  whole.missing = gridkit::read_window(
      product, name, {0, 0, layer.width(), layer.height()},
      [&](std::span<const std::uint16_t> pixels, std::int32_t lines, bool complete) {
        whole.pixels.insert(whole.pixels.end(), pixels.begin(), pixels.end());
        for (std::int32_t line = next; !complete && line < next + lines; ++line) {
          whole.incomplete.push_back(line);
        }
        next += lines;
      });
  return whole;
}

class WholeLayers : public testing::Test {
 protected:
  SampleProducts products;
};

std::string text_of(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// A product whose image gets lower from test to test: its annotation is rewritten, and its image
// file has the same first lines and another header.
class Lowering {
 public:
  Lowering(const SampleProducts& products, std::uint32_t samples)
      : annotation_(products.with_bursts({{longest, samples}})),
        text_(text_of(annotation_)),
        image_(text_of(SampleProducts::image_of(annotation_))),
        samples_(samples) {}

  // The path of the annotation.
  const std::string& lower_to(std::uint32_t lines) const {
    const std::string told = "<numberOfRows>" + std::to_string(longest) + "<";
    std::string text = text_;
    text.replace(text.find(told), told.size(), "<numberOfRows>" + std::to_string(lines) + "<");
    std::ofstream(annotation_, std::ios::binary) << text;
    const fs::path file = SampleProducts::image_of(annotation_);
    const BurstHeader header = true_header({lines, samples_}, 1);
    {
      BigEndianFile out(file);
      out.header(header);
    }
    std::ofstream out(file, std::ios::binary | std::ios::app);
    out.write(image_.data() + 36, std::streamsize{header.record_bytes} * (lines + 4) - 36);
    return annotation_;
  }

 private:
  std::string annotation_;
  std::string text_;
  std::string image_;
  std::uint32_t samples_;
};

TEST_F(WholeLayers, OfEveryHeightHaveEveryPixel) {
  for (const std::uint32_t samples : {64U, 333U, 1000U}) {
    const Lowering product(products, samples);
    std::vector<std::uint16_t> magnitudes;
    std::vector<std::uint16_t> phases;
    for (std::uint32_t l = 0; l < longest; ++l) {
      for (std::uint32_t s = 0; s < samples; ++s) {
        const PlainSample plain = plain_sample(0, l, s);
        const auto i = static_cast<std::int16_t>(plain.i);
        const auto q = static_cast<std::int16_t>(plain.q);
        magnitudes.push_back(plain_magnitude(i, q));
        phases.push_back(plain_phase(i, q));
      }
    }
    for (std::uint32_t lines = shortest; lines <= longest; ++lines) {
      const gridkit::Product open = products.plugin->open(product.lower_to(lines));
      for (const bool is_phase : {false, true}) {
        const Whole whole = read_layer(open, is_phase ? "X_HH_PHASE_2" : "X_HH_MAGNITUDE_1");
        const auto& expected = is_phase ? phases : magnitudes;
        ASSERT_TRUE(whole.missing.empty()) << samples << " x " << lines;
        ASSERT_EQ(whole.pixels.size(), std::size_t{samples} * lines);
        ASSERT_EQ(std::memcmp(whole.pixels.data(), expected.data(), 2 * whole.pixels.size()), 0)
            << samples << " x " << lines;
      }
    }
  }
}

// 100 lines of 70 samples, of which the file holds 40 and of the next one 30 samples.
TEST_F(WholeLayers, OfACutFileHaveItsLastSamples) {
  const std::string annotation = products.with_bursts({{100, 70}});
  const gridkit::Product open = products.plugin->open(annotation);
  fs::resize_file(SampleProducts::image_of(annotation), 4 * 72 * 44 + 8 + 4 * 30);
  const Whole whole = read_layer(open, "X_HH_MAGNITUDE_1");
  ASSERT_EQ(whole.pixels.size(), 7000U);
  ASSERT_EQ(whole.missing.size(), 1U);
  EXPECT_EQ(whole.missing[0].first, 40);
  EXPECT_EQ(whole.missing[0].last, 99);
  EXPECT_EQ(whole.incomplete.size(), 60U);
  EXPECT_EQ(whole.incomplete.front(), 40);
  for (std::int64_t k = 0; k < 7000; ++k) {
    const PlainSample plain = plain_sample(0, k / 70, k % 70);
    const std::uint16_t expected = k < 40 * 70 + 30
                                       ? plain_magnitude(static_cast<std::int16_t>(plain.i),
                                                         static_cast<std::int16_t>(plain.q))
                                       : 0;
    ASSERT_EQ(whole.pixels[static_cast<std::size_t>(k)], expected) << k;
  }
}

// The plug-in goes by the annotation alone, so its layers of wider records are not those samples;
// they stay what the exports make of the file.
TEST_F(WholeLayers, OfFilesThatLieOtherwiseStayWithTheExports) {
  const std::string annotation = products.with_bursts({{128, 100, 6}});
  const gridkit::Product open = products.plugin->open(annotation);
  const Whole whole = read_layer(open, "X_HH_MAGNITUDE_1");
  std::vector<std::uint16_t> block;
  ASSERT_TRUE(open.open_layer("X_HH_MAGNITUDE_1").read_block(0, 0, block));
  for (std::size_t line = 0; line < 64; ++line) {
    for (std::size_t sample = 0; sample < 64; ++sample) {
      ASSERT_EQ(whole.pixels[line * 100 + sample], block[line * 64 + sample]);
    }
  }
}

// What the sink throws ends the reading, and every thread of it.
TEST_F(WholeLayers, EndWithTheirSink) {
  struct Enough {};
  const gridkit::Product open = products.plugin->open(products.with_bursts({{2000, 1000}}));
  int strips = 0;
  EXPECT_THROW(gridkit::read_window(open, "X_HH_PHASE_2", {0, 0, 1000, 2000},
                                    [&](std::span<const std::uint16_t>, std::int32_t) {
                                      if (++strips == 2) throw Enough();
                                    }),
               Enough);
  EXPECT_EQ(strips, 2);
}

}  // namespace
