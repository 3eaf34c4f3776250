// COSAR files of every kind that can be asked for.

#include "tools/simulate/cosar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>

#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

using namespace simulate;
namespace fs = std::filesystem;

class Cosar : public testing::Test {
 protected:
  void SetUp() override {
    options.lines = 101;
    options.samples = 90;
  }

  // Writes the product and reads its image and truth.
  void write() {
    const fs::path annotation = write_product_folder(options, scratch.path());
    image = *fs::directory_iterator(annotation.parent_path() / "IMAGEDATA");
    std::ifstream in(image, std::ios::binary);
    bytes = {std::istreambuf_iterator<char>(in), {}};
    std::ifstream told(annotation.parent_path() / "truth.json");
    truth = nlohmann::json::parse(told);
  }

  std::uint32_t word(std::size_t offset) const {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      word = word << 8U | static_cast<unsigned char>(bytes.at(offset + i));
    }
    return word;
  }
  std::int16_t half(std::size_t offset) const {
    return static_cast<std::int16_t>(static_cast<unsigned char>(bytes.at(offset)) << 8 |
                                     static_cast<unsigned char>(bytes.at(offset + 1)));
  }

  std::string reason() {
    try {
      write();
    } catch (const std::invalid_argument& error) {
      return error.what();
    }
    return "none";
  }

  const ScratchFolder scratch;
  Options options;
  fs::path image;
  std::string bytes;
  nlohmann::json truth;
};

// 101 lines in three: they begin at 0, 33 and 67; a share's eighth is 101 / 24 = 4 lines.
TEST_F(Cosar, BurstsFollowEachOtherAndOverlap) {
  options.cosar.bursts = 3;
  options.mode = Mode::scansar;
  write();
  const std::size_t record = 4 * (90 + 2);
  constexpr std::size_t first_lines[] = {0, 33, 67};
  constexpr std::size_t lines[] = {33 + 4, 34 + 4, 34};
  std::size_t at = 0;
  for (std::size_t burst = 0; burst < 3; ++burst) {
    EXPECT_EQ(word(at), (lines[burst] + 4) * record) << "bytes in burst";
    EXPECT_EQ(word(at + 8), 90U) << "range samples";
    EXPECT_EQ(word(at + 12), lines[burst]) << "azimuth samples";
    EXPECT_EQ(word(at + 16), burst + 1) << "burst index";
    EXPECT_EQ(word(at + 20), record) << "bytes per range line";
    EXPECT_EQ(word(at + 24), lines[burst] + 4) << "lines with annotation";
    EXPECT_EQ(bytes.substr(at + 28, 4), "CSAR");
    for (std::size_t s = 0; s < 90; ++s) {
      EXPECT_EQ(word(at + record + 8 + 4 * s), first_lines[burst] + 1) << "in the scene, from 1";
    }
    const auto& told = truth["cosar"]["bursts"][burst];
    EXPECT_EQ(told["index"], burst + 1);
    EXPECT_EQ(told["offset"], at);
    EXPECT_EQ(told["lines"], lines[burst]);
    EXPECT_EQ(told["firstLine"], first_lines[burst]);
    EXPECT_NEAR(told["startTime"].get<double>(),
                truth["start"].get<double>() +
                    static_cast<double>(first_lines[burst]) * truth["lineSpacing"].get<double>(),
                1e-12);
    at += (lines[burst] + 4) * record;
  }
  EXPECT_EQ(bytes.size(), at);
}

TEST_F(Cosar, LinesThatTwoBurstsShowAreTheSceneTwice) {
  write();
  const std::size_t record = 4 * (90 + 2);
  const std::string whole = bytes;
  options.cosar.bursts = 3;
  options.mode = Mode::scansar;
  write();
  for (const auto& burst : truth["cosar"]["bursts"]) {
    for (std::size_t line = 0; line < burst["lines"]; ++line) {
      const std::size_t in_scene = burst["firstLine"].get<std::size_t>() + line;
      const std::size_t at = burst["offset"].get<std::size_t>() + (line + 4) * record;
      // The first samples are valid or not by the line's place in its burst.
      EXPECT_EQ(bytes.substr(at + 24, record - 24),
                whole.substr((in_scene + 4) * record + 24, record - 24));
    }
  }
}

TEST_F(Cosar, ScanSarAnnotationsCountTheBursts) {
  options.cosar.bursts = 3;
  options.mode = Mode::scansar;
  options.profile = Profile::maximal;
  const fs::path annotation = write_product_folder(options, scratch.path());
  std::ifstream in(annotation);
  const std::string text{std::istreambuf_iterator<char>(in), {}};
  for (const char* told :
       {"<numberOfBeams>1<", "<numberOfBursts>3<", "<burstIndexFirst>1<", "<burstIndexLast>3<"}) {
    EXPECT_NE(text.find(told), std::string::npos) << told;
  }
}

TEST_F(Cosar, PaddedRecordsHoldTheSameSamplesAndFill) {
  write();
  const std::string narrow = bytes;
  options.cosar.record_padding = 7;
  write();
  const std::size_t narrow_record = 4 * (90 + 2);
  const std::size_t record = 4 * (90 + 2 + 7);
  EXPECT_EQ(truth["cosar"]["recordBytes"], record);
  ASSERT_EQ(bytes.size(), record * (101 + 4));
  EXPECT_EQ(word(0), bytes.size());
  EXPECT_EQ(word(8), 90U);
  EXPECT_EQ(word(20), record);
  for (std::size_t r = 0; r < 101 + 4; ++r) {
    if (r > 0) {
      EXPECT_EQ(bytes.substr(r * record, narrow_record),
                narrow.substr(r * narrow_record, narrow_record));
    }
    EXPECT_EQ(bytes.substr(r * record + narrow_record, 28), std::string(28, '\x55'));
  }
}

// On line r of 101, with a taper of 20: r % 4 + 20 (100 - r) / 100 samples are not valid at the
// near end, 20 r / 100 at the far one, rounded down each.
TEST_F(Cosar, ATaperMakesTheValidAreaLean) {
  options.cosar.edge_taper = 20;
  write();
  const std::size_t record = 4 * (90 + 2);
  std::map<std::uint32_t, std::uint32_t> first_lines;
  std::map<std::uint32_t, std::uint32_t> last_lines;
  for (std::uint32_t r = 0; r < 101; ++r) {
    const std::size_t at = (r + 4) * record;
    const std::uint32_t first = 1 + r % 4 + 20 * (100 - r) / 100;
    const std::uint32_t last = 90 - 20 * r / 100;
    EXPECT_EQ(word(at), first);
    EXPECT_EQ(word(at + 4), last);
    for (std::uint32_t s = 1; s <= 90; ++s) {
      if (s < first || s > last) {
        EXPECT_EQ(word(at + 4 + 4 * s), 0U) << "line " << r << ", sample " << s;
      } else {
        first_lines.try_emplace(s, r + 1);
        last_lines[s] = r + 1;
      }
    }
  }
  for (std::uint32_t s = 1; s <= 90; ++s) {
    EXPECT_EQ(word(2 * record + 4 + 4 * s), first_lines[s]) << "0 where no line has it: " << s;
    EXPECT_EQ(word(3 * record + 4 + 4 * s), last_lines[s]) << s;
  }
  EXPECT_EQ(first_lines[45], 1U);
  EXPECT_EQ(last_lines[45], 101U);
  EXPECT_EQ(last_lines[85], 30U) << "20 r / 100 is 5, rounded down, up to r = 29";
}

TEST_F(Cosar, HalfFloatsAreTheScenesSamplesBeforeTheyAreRounded) {
  write();
  const std::string integers = bytes;
  options.cosar.sample_type = SampleType::half;
  write();
  EXPECT_EQ(truth["cosar"]["sampleType"], "half");
  ASSERT_EQ(bytes.size(), integers.size());
  EXPECT_EQ(word(32), 2U) << "version of the format";
  const std::size_t record = 4 * (90 + 2);
  int fractions = 0;
  for (std::size_t line = 0; line < 101; ++line) {
    for (std::size_t at = (line + 4) * record + 8; at < (line + 5) * record; at += 2) {
      const auto bits = static_cast<std::uint16_t>(half(at));
      const int exponent = bits >> 10 & 31;
      const double magnitude = exponent == 0 ? std::ldexp(bits & 1023, -24)
                                             : std::ldexp(1024 + (bits & 1023), exponent - 25);
      const double value = bits >> 15 != 0 ? -magnitude : magnitude;
      const double integer =
          static_cast<std::int16_t>(static_cast<unsigned char>(integers[at]) << 8 |
                                    static_cast<unsigned char>(integers[at + 1]));
      // Half a unit of the integer and half a place of the half.
      EXPECT_NEAR(value, integer, 0.5 + std::abs(value) / 2048);
      if (value != std::round(value)) ++fractions;
    }
  }
  EXPECT_GT(fractions, 10000) << "of 18180 numbers, most below 1024";
}

TEST_F(Cosar, EmptyFilesOfEveryKindAreAsLargeAsFullOnes) {
  options.cosar = {SampleType::half, 3, 5, 10};
  options.mode = Mode::scansar;
  write();
  const std::string full = bytes;
  options.empty_images = true;
  write();
  ASSERT_EQ(bytes.size(), full.size());
  for (const auto& burst : truth["cosar"]["bursts"]) {
    const std::size_t at = burst["offset"];
    const std::size_t annotation = 4 * truth["cosar"]["recordBytes"].get<std::size_t>();
    EXPECT_EQ(bytes.substr(at, annotation), full.substr(at, annotation));
  }
}

TEST_F(Cosar, WhatCannotBeLaidOutIsRefused) {
  options.cosar.bursts = 3;
  EXPECT_EQ(reason(), "several bursts need ScanSAR mode");
  options.mode = Mode::scansar;
  options.cosar.bursts = 4;
  EXPECT_EQ(reason(), "bursts must be 1 or more, several of at least 32 lines each");
  options.cosar.bursts = 0;
  EXPECT_EQ(reason(), "bursts must be 1 or more, several of at least 32 lines each");
  options.cosar = {};
  options.cosar.edge_taper = 23;
  EXPECT_EQ(reason(), "the edge taper must be 0 to 1000 samples and a quarter of a line at most");
  options.cosar.edge_taper = 22;
  EXPECT_EQ(reason(), "none");
  options.cosar = {};
  options.cosar.record_padding = 10001;
  EXPECT_EQ(reason(), "record padding must be 0 to 10000 samples");
  options.cosar.record_padding = 1;
  options.variant = Variant::mgd;
  EXPECT_EQ(reason(),
            "only SSC images have a sample type, bursts, record padding and an edge taper");
}

}  // namespace
