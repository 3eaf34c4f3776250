// Samples through the plug-in and its companion as they are shipped.

#include "gridkit/samples.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <complex>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

#include "companion/sample_products.h"
#include "gridkit/product.h"
#include "support/plain_conversion.h"

namespace {

using gridkit::Conversion;
using gridkit::NativeType;
using gridkit::SampleForm;
using gridkit::SampleWindow;
using simulate::Variant;

class Samples : public testing::Test {
 protected:
  SampleProducts products;
};

// I in the low half, Q in the high one, as pairs of 16-bit numbers lie in a little-endian machine's
// memory and are compared by their memory below.
using Pair = std::array<std::uint16_t, 2>;

std::vector<Pair> read_pairs(const gridkit::Samples& samples, std::size_t image,
                             const SampleWindow& window) {
  std::vector<Pair> pairs(static_cast<std::size_t>(window.lines * window.samples));
  samples.read(image, window, {}, {pairs.data()});
  return pairs;
}

Pair pair_of(std::int64_t burst, std::int64_t line, std::int64_t sample) {
  const PlainSample plain = plain_sample(burst, line, sample);
  return {plain.i, plain.q};
}

void expect_window(const gridkit::Samples& samples, std::size_t image, std::int64_t burst,
                   const SampleWindow& w) {
  const auto pairs = read_pairs(samples, image, w);
  for (std::int64_t l = 0; l < w.lines; ++l) {
    for (std::int64_t s = 0; s < w.samples; ++s) {
      const std::int64_t line = w.line + l * w.line_step;
      const std::int64_t sample = w.sample + s * w.sample_step;
      ASSERT_EQ(pairs[static_cast<std::size_t>(l * w.samples + s)], pair_of(burst, line, sample))
          << "line " << line << ", sample " << sample;
    }
  }
}

// A window of an image of that size, with steps up to a third of it.
SampleWindow random_window(std::mt19937& random, std::int64_t lines, std::int64_t samples) {
  const auto up_to = [&](std::int64_t most) {
    return std::uniform_int_distribution<std::int64_t>(0, most)(random);
  };
  SampleWindow w;
  w.line = up_to(lines - 1);
  w.sample = up_to(samples - 1);
  w.line_step = 1 + (up_to(1) == 0 ? 0 : up_to(lines / 3));
  w.sample_step = 1 + (up_to(1) == 0 ? 0 : up_to(samples / 3));
  w.lines = 1 + up_to((lines - 1 - w.line) / w.line_step);
  w.samples = 1 + up_to((samples - 1 - w.sample) / w.sample_step);
  return w;
}

TEST_F(Samples, OfRandomWindowsAreTheFiles) {
  // The second image's lines are longer than what is read at once.
  for (const BurstLayout& layout : {BurstLayout{83, 97}, BurstLayout{9, 40000}}) {
    const auto samples = products.open(products.with_bursts({layout}));
    std::mt19937 random(5);
    for (int k = 0; k < 60; ++k) {
      const SampleWindow window = random_window(random, layout.lines, layout.samples);
      ASSERT_NO_FATAL_FAILURE(expect_window(samples, 0, 0, window)) << k;
    }
    expect_window(samples, 0, 0, {0, 0, layout.lines, layout.samples});
  }
}

TEST_F(Samples, DescribeAComplexImage) {
  const std::string annotation = products.with_bursts({{70, 80}});
  const auto samples = products.open(annotation);
  ASSERT_EQ(samples.images().size(), 1U);
  const auto& image = samples.images()[0];
  EXPECT_EQ(image.name, "HH");
  EXPECT_EQ(image.polarisation, "HH");
  EXPECT_EQ(image.file, SampleProducts::image_of(annotation));
  EXPECT_EQ(image.lines, 70);
  EXPECT_EQ(image.samples, 80);
  EXPECT_EQ(image.type, NativeType::complex_int16);
  EXPECT_EQ(image.burst, std::nullopt);
  EXPECT_EQ(image.first_line_utc.substr(0, 19), "2008-03-12T05:17:46");
  EXPECT_GT(image.calibration_factor, 0);
  EXPECT_EQ(image.magnitude_layer, 0);
  EXPECT_EQ(image.phase_layer, 1);
}

TEST_F(Samples, OfEachPolarisationHaveItsName) {
  const auto samples = products.open(products.simulated(Variant::ssc, 64, 64, {"HH", "VV"}));
  ASSERT_EQ(samples.images().size(), 2U);
  EXPECT_EQ(samples.find("VV"), 1U);
  EXPECT_EQ(samples.images()[1].image_file, 1);
  EXPECT_EQ(samples.images()[1].magnitude_layer, 2);
  EXPECT_EQ(samples.images()[1].phase_layer, 3);
  try {
    samples.find("HV");
    FAIL();
  } catch (const gridkit::Error& error) {
    EXPECT_NE(std::string(error.what()).find(": no image HV; there are HH, VV"), std::string::npos)
        << error.what();
  }
}

TEST_F(Samples, OfWiderRecordsLieWhereTheirHeaderSays) {
  const auto samples = products.open(products.with_bursts({{71, 95, 7}}));
  EXPECT_EQ(samples.images()[0].magnitude_layer, std::nullopt);
  std::mt19937 random(6);
  for (int k = 0; k < 40; ++k) {
    ASSERT_NO_FATAL_FAILURE(expect_window(samples, 0, 0, random_window(random, 71, 95)));
  }
}

TEST_F(Samples, OfBurstsAreImagesOfTheirOwn) {
  const std::vector<BurstLayout> bursts = {{12, 40}, {30, 25, 3}, {1, 60}};
  const auto samples = products.open(products.with_bursts(bursts));
  ASSERT_EQ(samples.images().size(), 3U);
  std::mt19937 random(7);
  for (std::size_t b = 0; b < 3; ++b) {
    const auto& image = samples.images()[b];
    EXPECT_EQ(image.name, "HH_B" + std::to_string(b + 1));
    EXPECT_EQ(image.burst, static_cast<std::int32_t>(b + 1));
    EXPECT_EQ(image.lines, bursts[b].lines);
    EXPECT_EQ(image.samples, bursts[b].samples);
    EXPECT_EQ(image.magnitude_layer, std::nullopt);
    for (int k = 0; k < 20; ++k) {
      ASSERT_NO_FATAL_FAILURE(expect_window(samples, b, static_cast<std::int64_t>(b),
                                            random_window(random, image.lines, image.samples)));
    }
  }
}

TEST_F(Samples, KnowWhichOfThemAreMarkedAsValid) {
  const auto samples = products.open(products.with_bursts({{12, 40}, {7, 9, 2}}));
  const auto valid = samples.read_valid_samples(1, 2, 5);
  ASSERT_EQ(valid.size(), 5U);
  for (std::int64_t l = 2; l < 7; ++l) {
    // The file counts from 1: l % 3 + 2 to 9 - l % 2.
    EXPECT_EQ(valid[static_cast<std::size_t>(l - 2)].first, l % 3 + 1) << l;
    EXPECT_EQ(valid[static_cast<std::size_t>(l - 2)].last, 8 - l % 2) << l;
  }
  EXPECT_THROW(samples.read_valid_samples(1, 2, 6), gridkit::SampleError);
}

TEST_F(Samples, GoWhereTheStridesSay) {
  const auto samples = products.open(products.with_bursts({{6, 5}}));
  // Transposed and upside down, with a pair between two of them.
  std::vector<Pair> pairs(5 * 6 * 2, Pair{1, 1});
  samples.read(0, {0, 0, 6, 5}, {}, {&pairs[5 * 2], -8, 6 * 2 * 4});
  for (std::int64_t l = 0; l < 6; ++l) {
    for (std::int64_t s = 0; s < 5; ++s) {
      const auto at = static_cast<std::size_t>(s * 12 + (5 - l) * 2);
      ASSERT_EQ(pairs[at], pair_of(0, l, s)) << l << ' ' << s;
      ASSERT_EQ(pairs[at + 1], (Pair{1, 1}));
    }
  }
  std::vector<float> floats(5 * 6 * 3, 7);
  samples.read(0, {0, 0, 6, 5}, {SampleForm::magnitude}, {floats.data(), 4 * 3, 4 * 18});
  for (std::size_t l = 0; l < 6; ++l) {
    for (std::size_t s = 0; s < 5; ++s) {
      const PlainSample plain =
          plain_sample(0, static_cast<std::int64_t>(l), static_cast<std::int64_t>(s));
      const float i = static_cast<std::int16_t>(plain.i);
      const float q = static_cast<std::int16_t>(plain.q);
      ASSERT_EQ(floats[s * 18 + l * 3], std::sqrt(i * i + q * q));
      ASSERT_EQ(floats[s * 18 + l * 3 + 1], 7);
    }
  }
}

template <class T>
std::vector<T> read_form(const gridkit::Samples& samples, const SampleWindow& w,
                         const Conversion& conversion, std::size_t numbers = 1) {
  std::vector<T> values(static_cast<std::size_t>(w.lines * w.samples) * numbers);
  samples.read(0, w, conversion, {values.data()});
  return values;
}

std::int64_t steps_between(float a, float b) {
  return std::abs(std::int64_t{std::bit_cast<std::int32_t>(a)} - std::bit_cast<std::int32_t>(b));
}

TEST_F(Samples, ConvertToEveryForm) {
  const auto samples = products.open(products.with_bursts({{70, 300}}));
  const SampleWindow w{3, 2, 33, 290, 2, 1};
  const double factor = 1.25e-5;
  const auto complex = read_form<float>(samples, w, {SampleForm::complex_float}, 2);
  const auto magnitudes = read_form<float>(samples, w, {SampleForm::magnitude});
  const auto phases = read_form<float>(samples, w, {SampleForm::phase});
  const auto powers = read_form<float>(samples, w, {SampleForm::power, factor});
  const auto decibels = read_form<float>(samples, w, {SampleForm::decibels, factor});
  const auto pixels = read_form<std::uint16_t>(samples, w, {SampleForm::magnitude16});
  const auto angles = read_form<std::uint16_t>(samples, w, {SampleForm::phase16});
  std::size_t k = 0;
  for (std::int64_t l = 0; l < w.lines; ++l) {
    for (std::int64_t s = 0; s < w.samples; ++s, ++k) {
      const PlainSample plain = plain_sample(0, w.line + l * 2, w.sample + s);
      const auto i = static_cast<std::int16_t>(plain.i);
      const auto q = static_cast<std::int16_t>(plain.q);
      const auto fi = static_cast<float>(i);
      const auto fq = static_cast<float>(q);
      ASSERT_EQ(complex[2 * k], fi);
      ASSERT_EQ(complex[2 * k + 1], fq);
      ASSERT_EQ(magnitudes[k], std::sqrt(fi * fi + fq * fq));
      ASSERT_LE(steps_between(phases[k], static_cast<float>(std::atan2(double{fq}, double{fi}))),
                1);
      const double power = factor * (double{fi} * fi + double{fq} * fq);
      ASSERT_EQ(powers[k], static_cast<float>(power));
      ASSERT_LE(steps_between(decibels[k], static_cast<float>(10 * std::log10(power))), 1);
      ASSERT_EQ(pixels[k], plain_magnitude(i, q));
      ASSERT_EQ(angles[k], plain_phase(i, q));
    }
  }
}

// The halves' bits are taken for numbers: 0x3C00 is 1, 0xC000 is -2.
TEST_F(Samples, OfHalfPrecisionAreNumbersAndNoPixels) {
  const std::string annotation = products.with_bursts({{2, 3, 0, 2}});
  {
    BigEndianFile file(SampleProducts::image_of(annotation));
    file.header(true_header({2, 3, 0, 2}, 1));
    file.zeros(4 * 20 - 36);
    for (int line = 0; line < 2; ++line) {
      file.word(1);
      file.word(3);
      for (int sample = 0; sample < 3; ++sample) {
        file.half(0x3C00);
        file.half(0xC000);
      }
    }
  }
  const auto samples = products.open(annotation);
  EXPECT_EQ(samples.images()[0].type, NativeType::complex_half);
  EXPECT_EQ(samples.images()[0].magnitude_layer, std::nullopt);
  EXPECT_EQ(read_pairs(samples, 0, {1, 2, 1, 1})[0], (Pair{0x3C00, 0xC000}));
  const auto complex = read_form<float>(samples, {0, 0, 2, 3}, {SampleForm::complex_float}, 2);
  EXPECT_EQ(complex[10], 1);
  EXPECT_EQ(complex[11], -2);
  EXPECT_EQ(read_form<float>(samples, {0, 0, 2, 3}, {SampleForm::power, 3})[5], 15) << "3 (1 + 4)";
  for (const auto form : {SampleForm::magnitude16, SampleForm::phase16}) {
    try {
      read_form<std::uint16_t>(samples, {0, 0, 2, 3}, {form});
      FAIL();
    } catch (const gridkit::Error& error) {
      EXPECT_NE(std::string(error.what())
                    .find(": its samples are half-precision numbers, which have no 16-bit pixels; "
                          "ask for floats"),
                std::string::npos)
          << error.what();
    }
  }
}

// A layer's pixels by the exports alone: every block that comes, as far as it lies in the image.
// Where no block came there is nothing.
std::vector<std::optional<std::uint16_t>> read_blocks(const gridkit::Product& product,
                                                      const std::string& name) {
  const gridkit::Layer layer = product.open_layer(name);
  const std::int32_t size = layer.block_width();
  std::vector<std::optional<std::uint16_t>> all(static_cast<std::size_t>(layer.width()) *
                                                static_cast<std::size_t>(layer.height()));
  std::vector<std::uint16_t> block;
  for (std::int32_t row = 0; row * size < layer.height(); ++row) {
    for (std::int32_t column = 0; column * size < layer.width(); ++column) {
      if (!layer.read_block(row, column, block)) continue;
      for (std::int32_t k = 0; k < size * size; ++k) {
        const std::int32_t line = row * size + k / size;
        const std::int32_t sample = column * size + k % size;
        if (line >= layer.height() || sample >= layer.width()) continue;
        all[static_cast<std::size_t>(line * layer.width() + sample)] =
            block[static_cast<std::size_t>(k)];
      }
    }
  }
  return all;
}

// That the pixels are those of all blocks that came, and how many pixels these had.
int expect_blocks(const std::vector<std::uint16_t>& pixels,
                  const std::vector<std::optional<std::uint16_t>>& blocks) {
  EXPECT_EQ(pixels.size(), blocks.size());
  int compared = 0;
  for (std::size_t k = 0; k < pixels.size(); ++k) {
    if (!blocks[k]) continue;
    EXPECT_EQ(pixels[k], *blocks[k]) << k;
    ++compared;
  }
  return compared;
}

TEST_F(Samples, OfComplexImagesMakeThePluginsLayers) {
  const std::string annotation = products.simulated(Variant::ssc, 128, 200, {"HH", "VV"});
  const auto samples = products.open(annotation);
  const gridkit::Product product = products.plugin->open(annotation);
  const char* const layers[2][2] = {{"X_HH_MAGNITUDE_1", "X_HH_PHASE_2"},
                                    {"X_VV_MAGNITUDE_3", "X_VV_PHASE_4"}};
  for (std::size_t image = 0; image < 2; ++image) {
    for (const bool is_phase : {false, true}) {
      std::vector<std::uint16_t> pixels(128 * 200);
      samples.read(image, {0, 0, 128, 200},
                   {is_phase ? SampleForm::phase16 : SampleForm::magnitude16}, {pixels.data()});
      EXPECT_GT(expect_blocks(pixels, read_blocks(product, layers[image][is_phase ? 1 : 0])),
                128 * 150);
    }
  }
}

TEST_F(Samples, OfDetectedImagesAreThePluginsLayers) {
  for (const Variant variant : {Variant::mgd, Variant::gec, Variant::eec}) {
    const std::string annotation = products.simulated(variant, 150, 170);
    const auto samples = products.open(annotation);
    const auto& image = samples.images()[0];
    EXPECT_EQ(image.type, NativeType::uint16);
    EXPECT_EQ(image.magnitude_layer, 0);
    EXPECT_EQ(image.phase_layer, std::nullopt);
    const auto blocks = read_blocks(products.plugin->open(annotation), "X_HH_MAGNITUDE_1");
    const auto layer = read_form<std::uint16_t>(samples, {0, 0, image.lines, image.samples}, {});
    EXPECT_EQ(expect_blocks(layer, blocks), image.lines * image.samples);
    std::mt19937 random(8);
    for (int k = 0; k < 20; ++k) {
      const SampleWindow w = random_window(random, image.lines, image.samples);
      const auto pixels = read_form<std::uint16_t>(samples, w, {SampleForm::magnitude16});
      const auto powers = read_form<float>(samples, w, {SampleForm::power, 0.5});
      std::size_t at = 0;
      for (std::int64_t l = 0; l < w.lines; ++l) {
        for (std::int64_t s = 0; s < w.samples; ++s, ++at) {
          const std::int64_t place =
              (w.line + l * w.line_step) * image.samples + w.sample + s * w.sample_step;
          const std::uint16_t pixel = layer[static_cast<std::size_t>(place)];
          ASSERT_EQ(pixels[at], pixel) << k;
          ASSERT_EQ(powers[at], static_cast<float>(0.5 * (double{1} * pixel * pixel))) << k;
        }
      }
    }
    try {
      read_form<float>(samples, {0, 0, 1, 1}, {SampleForm::phase});
      FAIL();
    } catch (const gridkit::Error& error) {
      EXPECT_NE(std::string(error.what())
                    .find(": its samples are detected amplitudes, which have no phase"),
                std::string::npos);
    }
  }
}

TEST_F(Samples, OutsideTheImageAreRefused) {
  const auto samples = products.open(products.with_bursts({{20, 30}}));
  const std::int64_t huge = INT64_MAX;
  const SampleWindow windows[] = {{0, 0, 21, 1},
                                  {0, 0, 1, 31},
                                  {-1, 0, 1, 1},
                                  {0, -1, 1, 1},
                                  {20, 0, 1, 1},
                                  {0, 30, 1, 1},
                                  {0, 0, 0, 1},
                                  {0, 0, 1, 0},
                                  {0, 0, 2, 1, 0, 1},
                                  {0, 0, 1, 2, 1, 0},
                                  {0, 0, 2, 1, 20, 1},
                                  {0, 0, 1, 2, 1, 30},
                                  {huge, 0, 1, 1},
                                  {0, 0, huge, 1},
                                  {1, 1, huge, huge, huge, huge},
                                  {0, 0, 2, 2, huge, huge}};
  for (const SampleWindow& window : windows) {
    for (const SampleForm form : {SampleForm::native, SampleForm::magnitude}) {
      float untouched[4] = {1, 2, 3, 4};
      try {
        samples.read(0, window, {form}, {untouched});
        FAIL();
      } catch (const gridkit::SampleError& error) {
        EXPECT_EQ(error.code(), gkc_WrongUse);
      }
      EXPECT_EQ(untouched[0], 1);
    }
  }
  // One line and one sample need no step.
  EXPECT_EQ(read_pairs(samples, 0, {19, 29, 1, 1, huge, huge})[0], pair_of(0, 19, 29));
  try {
    read_pairs(samples, 0, {5, 6, 16, 7});
    FAIL();
  } catch (const gridkit::SampleError& error) {
    EXPECT_STREQ(error.what(),
                 "HH: the window of 16 lines x 7 samples at line 5, sample 6, in steps of 1 and 1, "
                 "does not lie in the image of 20 lines x 30 samples");
  }
}

TEST_F(Samples, OfAPluginWithoutACompanionCannotBeReached) {
  const auto folder = products.scratch / "plugins";
  std::filesystem::create_directory(folder);
  std::filesystem::copy(TSX_PLUGIN, folder / "tsx.so");
  const auto alone = gridkit::Plugin::load(folder / "tsx.so");
  try {
    gridkit::Samples::open(*alone, "any.xml");
    FAIL();
  } catch (const gridkit::Error& error) {
    EXPECT_EQ(error.what(), "the plug-in has no companion (" +
                                (folder / "companions/tsx.so").string() +
                                "), so that samples cannot be reached; its layers can");
  }
  std::filesystem::create_directory(folder / "companions");
  std::filesystem::copy(TSX_PLUGIN, folder / "companions/tsx.so");
  try {
    gridkit::Samples::open(*alone, "any.xml");
    FAIL();
  } catch (const gridkit::Error& error) {
    EXPECT_EQ(error.what(), (folder / "companions/tsx.so").string() +
                                ": is no companion: it lacks gkc_GetCompanion");
  }
}

TEST_F(Samples, FolderOfCompanionsIsNoFolderOfPlugins) {
  const auto loaded = gridkit::load_plugins(std::filesystem::path(TSX_PLUGIN).parent_path());
  EXPECT_EQ(loaded.plugins.size(), 1U);
  EXPECT_TRUE(loaded.refused.empty());
  EXPECT_TRUE(std::filesystem::exists(gridkit::companion_path(*loaded.plugins[0])));
}

std::string text_of(const std::string& annotation) {
  std::ifstream file(annotation);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The simulator's minimal annotation has one record, of this day and hour.
TEST_F(Samples, TellTheNoiseOfTheirPolarisation) {
  const std::string annotation = products.simulated(Variant::ssc, 64, 70, {"HH", "VV"});
  const std::string text = text_of(annotation);
  const std::string until_seconds = "<timeUTC>2008-03-12T05:17:";
  const std::size_t record = text.find(until_seconds, text.find("<imageNoise>"));
  const double seconds = std::stod(text.substr(record + until_seconds.size()));
  const auto samples = products.open(annotation);
  for (std::size_t image = 0; image < 2; ++image) {
    const gridkit::ImageNoise noise = samples.noise(image);
    EXPECT_EQ(noise.factor, samples.images()[image].calibration_factor);
    ASSERT_EQ(noise.records.size(), 1U);
    const auto& [time, polynomials] = noise.records.front();
    EXPECT_NEAR(time, (5 * 60 + 17) * 60 + seconds, 1e-9);
    ASSERT_EQ(polynomials.size(), 1U);
    EXPECT_EQ(polynomials.front().coefficients, (std::vector<double>{520, -1e5, 2e9}));
    EXPECT_LT(polynomials.front().range_time_min, polynomials.front().reference_time);
    EXPECT_LT(polynomials.front().reference_time, polynomials.front().range_time_max);
  }
}

TEST_F(Samples, TellNoNoiseOnAScaleThatIsNotKnown) {
  const std::string annotation = products.simulated(Variant::ssc, 64, 70);
  std::string text = text_of(annotation);
  const std::string known = ">BETA NOUGHT<";
  text.replace(text.find(known), known.size(), ">SIGMA<");
  std::ofstream(annotation) << text;
  const auto samples = products.open(annotation);
  try {
    samples.noise(0);
    FAIL() << "was told";
  } catch (const gridkit::SampleError& error) {
    EXPECT_EQ(error.code(), gkc_BadDescription);
    EXPECT_EQ(error.element(), "/level1Product/noise/noiseLevelRef");
    EXPECT_STREQ(error.what(),
                 "/level1Product/noise/noiseLevelRef: \"SIGMA\" is no scale that is known; BETA "
                 "NOUGHT is");
  }
}

}  // namespace
