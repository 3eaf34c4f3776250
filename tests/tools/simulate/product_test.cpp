// Complete simulated products, written to disk.

#include "tools/simulate/product.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>

#include "tests/support/scratch_folder.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"

namespace {

using namespace simulate;
namespace fs = std::filesystem;

std::string bytes_of(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::uint32_t word_at(const std::string& bytes, std::size_t offset) {
  std::uint32_t word = 0;
  for (std::size_t i = 0; i < 4; ++i)
    word = word << 8U | static_cast<unsigned char>(bytes[offset + i]);
  return word;
}

std::int16_t half_at(const std::string& bytes, std::size_t offset) {
  return static_cast<std::int16_t>(static_cast<unsigned char>(bytes[offset]) << 8 |
                                   static_cast<unsigned char>(bytes[offset + 1]));
}

class Product : public testing::Test {
 protected:
  void SetUp() override {
    options.lines = 100;
    options.samples = 120;
  }
  fs::path write() { return annotation = write_product_folder(options, folder); }
  fs::path image(const std::string& name) { return annotation.parent_path() / "IMAGEDATA" / name; }
  const ScratchFolder scratch;
  const fs::path& folder = scratch.path();
  fs::path annotation;
  Options options;
};

TEST_F(Product, BindsInEveryVersionProfileModeAndVariant) {
  for (const char* text : {"3.4", "3.5", "3.6", "3.7", "4.0", "4.1", "4.11"}) {
    for (const Profile profile : {Profile::minimal, Profile::typical, Profile::maximal}) {
      for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::gec, Variant::eec}) {
        options.version_text = text;
        options.profile = profile;
        options.variant = variant;
        options.mode = variant == Variant::mgd ? Mode::scansar : Mode::spotlight;
        if (variant == Variant::ssc) options.mode = Mode::stripmap;
        const CheckResult check = check_annotation(write());
        EXPECT_EQ(check.error, 0) << text << ' ' << check.text();
        EXPECT_TRUE(std::string(text).starts_with(*check.version));
        fs::remove_all(annotation.parent_path());
      }
    }
  }
}

TEST_F(Product, LaysItsFirstLinesOutForRecognition) {
  std::ifstream in(write());
  std::vector<std::string> lines(7);
  for (std::string& line : lines) std::getline(in, line);
  EXPECT_TRUE(lines[0].starts_with("<level1Product xmlns:xsi=")) << lines[0];
  EXPECT_NE(lines[0].find("xsi:noNamespaceSchemaLocation=\"SUPPORT/level1Product.xsd\""),
            std::string::npos);
  EXPECT_NE(lines[1].find("<generalHeader fileName="), std::string::npos);
  EXPECT_NE(lines[2].find("Level 1B Product"), std::string::npos);
  EXPECT_NE(lines[3].find("TSX-1"), std::string::npos);
  EXPECT_NE(lines[6].find("generationSystem version=\"4.1\""), std::string::npos);
}

TEST_F(Product, HasTheFoldersAndFilesItsAnnotationNames) {
  options.polarisations = {"HH", "VV"};
  write();
  for (const char* part : {"IMAGEDATA", "ANNOTATION", "PREVIEW", "AUXRASTER", "SUPPORT"}) {
    EXPECT_TRUE(fs::is_directory(annotation.parent_path() / part)) << part;
  }
}

// Every file that the annotation names lies there, with the size it tells; its own is -1.
TEST_F(Product, HoldsEveryFileThatItsAnnotationNames) {
  const std::regex file(
      R"(<path>([^<]*)</path>\s*<filename>([^<]*)</filename>\s*</location>\s*<size>([^<]*)<)");
  options.polarisations = {"HH", "VV"};
  for (const Profile profile : {Profile::minimal, Profile::typical, Profile::maximal}) {
    for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::eec}) {
      options.profile = profile;
      options.variant = variant;
      const std::string text = bytes_of(write());
      std::size_t named = 0;
      for (std::sregex_iterator at(text.begin(), text.end(), file), end; at != end; ++at) {
        ++named;
        const fs::path path = annotation.parent_path() / (*at)[1].str() / (*at)[2].str();
        ASSERT_TRUE(fs::exists(path)) << path;
        const auto size = std::stoll((*at)[3].str());
        if (fs::weakly_canonical(path) == fs::weakly_canonical(annotation)) {
          EXPECT_EQ(size, -1);
        } else {
          EXPECT_EQ(size, static_cast<long long>(fs::file_size(path))) << path;
          EXPECT_GT(size, 0) << path;
        }
      }
      EXPECT_GE(named, 8U) << "itself, two images, two quicklooks and three previews";
    }
  }
}

TEST_F(Product, DrawsItsPreviewsFromTheScene) {
  write();
  const fs::path quicklook = annotation.parent_path() / "PREVIEW" / "QL_HH_SRA_strip_005.tif";
  const std::string seen = bytes_of(quicklook);
  options.empty_images = true;
  write();
  const std::string empty = bytes_of(quicklook);
  ASSERT_EQ(seen.size(), empty.size());
  EXPECT_NE(seen, empty);
}

TEST_F(Product, EmptyImagesHaveTheSizeOfFullOnes) {
  options.lines = 20000;
  options.samples = 18000;
  options.empty_images = true;
  write();
  EXPECT_EQ(fs::file_size(image("IMAGE_HH_SRA_strip_005.cos")), 20004ULL * 18002 * 4);
}

// Nodes every 100 pixels, each two big-endian 32-bit floating numbers.
TEST_F(Product, TellsTimesOnItsMappingGrid) {
  options.variant = Variant::mgd;
  options.lines = 150;
  write();
  const std::string grid = bytes_of(annotation.parent_path() / "AUXRASTER" / "MAPPING_GRID.bin");
  ASSERT_EQ(grid.size(), 2U * 2U * 8U);
  const auto at = [&](std::size_t n) { return std::bit_cast<float>(word_at(grid, 4 * n)); };
  const auto truth = nlohmann::json::parse(bytes_of(annotation.parent_path() / "truth.json"));
  const double line_time = (truth["stop"].get<double>() - truth["start"].get<double>()) / 149;
  EXPECT_EQ(at(0), 0);
  EXPECT_NEAR(at(1), 0, 1e-15);
  EXPECT_NEAR(at(4), 100 * line_time, 1e-8);
  double ground = 0;
  for (std::size_t k = 6; k-- > 0;) {
    ground = ground * at(3) + truth["slantToGround"]["coefficients"][k].get<double>();
  }
  EXPECT_NEAR(ground, 275, 1e-3) << "a float's last bit is worth 0.02 mm here";
}

TEST_F(Product, WritesCosarByteByByte) {
  write();
  const std::string bytes = bytes_of(image("IMAGE_HH_SRA_strip_005.cos"));
  constexpr std::size_t record = 4 * (120 + 2);
  ASSERT_EQ(bytes.size(), record * (100 + 4));
  EXPECT_EQ(word_at(bytes, 0), bytes.size()) << "bytes in burst";
  EXPECT_EQ(word_at(bytes, 8), 120U) << "range samples";
  EXPECT_EQ(word_at(bytes, 12), 100U) << "azimuth samples";
  EXPECT_EQ(word_at(bytes, 20), record) << "bytes per range line";
  EXPECT_EQ(word_at(bytes, 24), 104U) << "lines with annotation";
  EXPECT_EQ(bytes.substr(28, 4), "CSAR");
  EXPECT_EQ(word_at(bytes, 32), 1U) << "version of the format";
  // Each sample's first and last valid line, from 1, as the heads of the lines tell them.
  for (std::size_t s = 1; s <= 120; ++s) {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    for (std::uint32_t line = 1; line <= 100; ++line) {
      if (word_at(bytes, (line + 3) * record) > s) continue;
      if (first == 0) first = line;
      last = line;
    }
    EXPECT_EQ(word_at(bytes, record + 4 + 4 * s), 1U) << "index of the burst's first line";
    EXPECT_EQ(word_at(bytes, 2 * record + 4 + 4 * s), first) << s;
    EXPECT_EQ(word_at(bytes, 3 * record + 4 + 4 * s), last) << s;
  }
  for (std::size_t line = 0; line < 100; ++line) {
    const std::size_t start = (line + 4) * record;
    const std::uint32_t first_valid = word_at(bytes, start);
    EXPECT_EQ(word_at(bytes, start + 4), 120U);
    for (std::uint32_t s = 1; s < first_valid; ++s) {
      EXPECT_EQ(word_at(bytes, start + 4 + 4 * s), 0U) << "invalid samples are zero";
    }
  }
}

// Values of a tag of a little-endian classic TIFF file's first directory.
template <class T>
std::vector<T> tag_of(const std::string& tiff, std::uint16_t wanted) {
  const auto at = [&]<class U>(std::size_t offset, U value) {
    std::memcpy(&value, tiff.data() + offset, sizeof value);
    return value;
  };
  const std::size_t directory = at(4, std::uint32_t{});
  for (std::size_t i = 0; i < at(directory, std::uint16_t{}); ++i) {
    const std::size_t entry = directory + 2 + 12 * i;
    if (at(entry, std::uint16_t{}) != wanted) continue;
    std::vector<T> values(at(entry + 4, std::uint32_t{}));
    const std::size_t bytes = values.size() * sizeof(T);
    const std::size_t place = bytes <= 4 ? entry + 8 : at(entry + 8, std::uint32_t{});
    std::memcpy(values.data(), tiff.data() + place, bytes);
    return values;
  }
  return {};
}

// Pixel scale, tie point of the first pixel's outer corner, and the system's code in the keys: four
// words a key, of which 3072 is the projected system's.
TEST_F(Product, GeoreferencesMapProjectedImages) {
  constexpr std::uint16_t scale_tag = 33550;
  constexpr std::uint16_t tie_tag = 33922;
  constexpr std::uint16_t keys_tag = 34735;
  options.latitude = -10;
  options.longitude = -179.999;
  for (const bool empty : {false, true}) {
    for (const Variant variant : {Variant::gec, Variant::eec}) {
      options.empty_images = empty;
      options.variant = variant;
      write();
      const std::string tiff = bytes_of(image("IMAGE_HH_SRA_strip_005.tif"));
      ASSERT_EQ(tiff.substr(0, 4), std::string("II*\0", 4));
      const auto truth = nlohmann::json::parse(bytes_of(annotation.parent_path() / "truth.json"));
      const double easting = truth["map"]["upperLeftEasting"];
      const double northing = truth["map"]["upperLeftNorthing"];
      EXPECT_EQ(tag_of<double>(tiff, scale_tag), (std::vector<double>{2.5, 2.5, 0}));
      EXPECT_EQ(tag_of<double>(tiff, tie_tag),
                (std::vector<double>{0, 0, 0, easting - 1.25, northing + 1.25, 0}));
      const auto keys = tag_of<std::uint16_t>(tiff, keys_tag);
      int system = 0;
      for (std::size_t k = 4; k + 3 < keys.size(); k += 4) {
        if (keys[k] == 3072) system = keys[k + 3];
      }
      EXPECT_EQ(system, 32701) << "zone 1 south";
    }
  }
}

TEST_F(Product, DrawsEachTargetWhereTheTruthSays) {
  options.lines = options.samples = 300;
  write();
  const std::string bytes = bytes_of(image("IMAGE_HH_SRA_strip_005.cos"));
  const auto truth = nlohmann::json::parse(bytes_of(annotation.parent_path() / "truth.json"));
  ASSERT_EQ(truth["targets"].size(), 9U);
  const auto power = [&](int line, int sample) {
    const std::size_t at = static_cast<std::size_t>(((line + 4) * 302 + 2 + sample) * 4);
    const double i = half_at(bytes, at);
    const double q = half_at(bytes, at + 2);
    return i * i + q * q;
  };
  for (const auto& target : truth["targets"]) {
    const int line = static_cast<int>(std::lround(target["line"].get<double>()));
    const int sample = static_cast<int>(std::lround(target["sample"].get<double>()));
    double most = 0;
    int at_line = 0;
    int at_sample = 0;
    for (int l = line - 20; l <= line + 20; ++l) {
      for (int s = sample - 20; s <= sample + 20; ++s) {
        if (power(l, s) <= most) continue;
        most = power(l, s);
        at_line = l;
        at_sample = s;
      }
    }
    EXPECT_EQ(at_line, line) << target["name"];
    EXPECT_EQ(at_sample, sample) << target["name"];
    EXPECT_GT(std::sqrt(most), 3000) << "well above the clutter of about 110";
  }
}

TEST_F(Product, ComesOutTheSameForASeedAndDiffersForAnother) {
  write();
  const std::string first = bytes_of(image("IMAGE_HH_SRA_strip_005.cos"));
  const std::string text = bytes_of(annotation);
  write();
  EXPECT_EQ(bytes_of(image("IMAGE_HH_SRA_strip_005.cos")), first);
  EXPECT_EQ(bytes_of(annotation), text);
  options.seed = 2;
  write();
  EXPECT_NE(bytes_of(image("IMAGE_HH_SRA_strip_005.cos")), first);
}

TEST_F(Product, PolarisationsHaveSpeckleOfTheirOwn) {
  options.polarisations = {"HH", "VV"};
  write();
  EXPECT_NE(bytes_of(image("IMAGE_HH_SRA_strip_005.cos")),
            bytes_of(image("IMAGE_VV_SRA_strip_005.cos")));
}

TEST_F(Product, GrowsItsAnnotationToTheSizeAskedFor) {
  options.annotation_megabytes = 3;
  write();
  EXPECT_NEAR(static_cast<double>(fs::file_size(annotation)), 3e6, 2e5);
  EXPECT_EQ(check_annotation(annotation).error, 0);
}

// The centre and corners of the annotation lie where its own state vectors, times and ranges put
// them.
TEST_F(Product, AnnotatesCornersThatItsGeometrySees) {
  write();
  version40::c_version40 root;
  ASSERT_EQ(root.unmarshal(annotation.c_str()), 0);
  const auto truth = nlohmann::json::parse(bytes_of(annotation.parent_path() / "truth.json"));
  auto& info = root.get_level1Product().get_productInfo().get_sceneInfo();
  ASSERT_EQ(info.size_sceneCornerCoord(), 4U);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(info.get_sceneCornerCoord(i).get_lat(), truth["corners"][i]["latitude"], 5e-6);
    EXPECT_NEAR(info.get_sceneCornerCoord(i).get_lon(), truth["corners"][i]["longitude"], 5e-6);
    EXPECT_EQ(info.get_sceneCornerCoord(i).get_rangeTime(), truth["corners"][i]["rangeTime"]);
  }
}

TEST_F(Product, RefusesAVersionTextThatNoSchemaServes) {
  options.version_text = "2.0";
  EXPECT_THROW(write(), std::invalid_argument);
}

}  // namespace
