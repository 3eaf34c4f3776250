// Geolocation grids through the shipped companion: what is handed out, and what is said of files
// that are at fault.

#include "gridkit/geolocation_grid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "companion/sample_products.h"
#include "tools/simulate/scene.h"

namespace {

namespace fs = std::filesystem;
using gridkit::FoundGrid;
using simulate::Variant;

constexpr double degree = M_PI / 180;

class Grids : public testing::Test {
 protected:
  static simulate::Options options(Variant variant, const std::string& start_with = {}) {
    simulate::Options options;
    options.variant = variant;
    options.lines = 200;
    options.samples = 150;
    options.empty_images = true;
    options.targets = 1;
    options.relief = variant == Variant::gec ? 0 : 200;
    options.delays = {1.4e-8, 2e-9, -1.8e-4};
    if (!start_with.empty()) options.start_with = start_with;
    return options;
  }

  std::string made(const simulate::Options& options) {
    return simulate::write_product_folder(options,
                                          (products.scratch / std::to_string(++made_)).string());
  }

  FoundGrid find(const std::string& annotation) const {
    return gridkit::find_geolocation_grid(*products.plugin, annotation);
  }

  static fs::path grid_file(const std::string& annotation) {
    return fs::path(annotation).parent_path() / "ANNOTATION" / "GEOREF.xml";
  }

  static std::string content_of(const fs::path& file) {
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
  }

  static void write(const fs::path& file, const std::string& content) {
    std::ofstream(file) << content;
  }

  SampleProducts products;

 private:
  int made_ = 0;
};

// The simulator's scene tells the truth: place, angle and pixel of each point's times.
void expect_truth(const gridkit::GeolocationGrid& grid, const simulate::Scene& scene,
                  double epoch) {
  EXPECT_DOUBLE_EQ(grid.range_delay(), 1.6e-8);
  EXPECT_DOUBLE_EQ(grid.azimuth_shift(), -1.8e-4);
  ASSERT_EQ(grid.points().size(), grid.along() * grid.across());
  for (const gkc_GridPoint& point : grid.points()) {
    const simulate::RasterTimes times = {point.azimuth_time - epoch, point.range_time};
    const simulate::Geodetic place = scene.ground_at(times);
    // 10^-9 degrees are 0.1 mm; times of the day have 10^-11 s, which is 10^-7 m.
    EXPECT_NEAR(point.latitude, place.latitude_radians / degree, 1e-9);
    EXPECT_NEAR(point.longitude, place.longitude_radians / degree, 1e-9);
    EXPECT_NEAR(point.height, place.height, 1e-4);
    EXPECT_NEAR(point.incidence, scene.incidence_at(place) / degree, 1e-8);
    const simulate::Pixel pixel = scene.pixel_at(times);
    EXPECT_NEAR(point.line, pixel.line, 0.501);
    EXPECT_NEAR(point.sample, pixel.sample, 0.501);
  }
}

// Second of the UTC day of the scene's epoch: 05:17:46.25 is the start by default.
double epoch_of(const simulate::Scene& scene, double start) {
  return start - scene.start;
}

TEST_F(Grids, PointsDelaysAndShiftAreThoseOfTheProduct) {
  for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::gec, Variant::eec}) {
    const auto wanted = options(variant);
    const FoundGrid found = find(made(wanted));
    EXPECT_EQ(found.warning, "");
    ASSERT_NE(found.grid, nullptr);
    const simulate::Scene scene = simulate::make_scene(wanted);
    expect_truth(*found.grid, scene, epoch_of(scene, 5 * 3600 + 17 * 60 + 46.25));
    EXPECT_EQ(found.grid->has_image_axes(), variant == Variant::ssc || variant == Variant::mgd);
  }
}

TEST_F(Grids, TimesCountFromTheDayOfTheScenesStart) {
  auto wanted = options(Variant::ssc);
  wanted.start = "2008-12-31T23:59:59.999000";
  const FoundGrid found = find(made(wanted));
  ASSERT_NE(found.grid, nullptr) << found.warning;
  const simulate::Scene scene = simulate::make_scene(wanted);
  expect_truth(*found.grid, scene, epoch_of(scene, 86399.999));
  EXPECT_GT(found.grid->points().back().azimuth_time, 86400);
}

TEST_F(Grids, IncidenceAndHeightAreThoseOfTheImagesPixels) {
  for (const std::string start : {"EARLYAZNEARRG", "LATEAZFARRG"}) {
    const auto wanted = options(Variant::mgd, start);
    const FoundGrid found = find(made(wanted));
    ASSERT_NE(found.grid, nullptr) << found.warning;
    const simulate::Scene scene = simulate::make_scene(wanted);
    std::vector<double> line(75);
    for (const double l : {0.0, 17.25, 199.0}) {
      found.grid->incidence_of_line(l, 0, 2, line);
      for (std::size_t k = 0; k < line.size(); ++k) {
        const double sample = 2 * static_cast<double>(k);
        EXPECT_DOUBLE_EQ(line[k], found.grid->incidence_at(l, sample));
        // Hills bend little over 32 pixels; the angle at the average height is what they move from.
        const simulate::Geodetic place = scene.to_ground({l, sample});
        EXPECT_NEAR(line[k], scene.incidence_at(place) / degree, 0.01);
        EXPECT_NEAR(found.grid->height_at(l, sample), place.height, 20);
      }
    }
  }
}

TEST_F(Grids, ProductWithoutAGridHasNoneAndNoWarning) {
  auto wanted = options(Variant::ssc);
  wanted.profile = simulate::Profile::minimal;
  const FoundGrid found = find(made(wanted));
  EXPECT_EQ(found.grid, nullptr);
  EXPECT_EQ(found.warning, "");
}

TEST_F(Grids, ImageFilesNeedNotBeThere) {
  const std::string annotation = made(options(Variant::ssc));
  fs::remove_all(fs::path(annotation).parent_path() / "IMAGEDATA");
  EXPECT_NE(find(annotation).grid, nullptr);
}

TEST_F(Grids, SamplesHandOutTheSameOnManyThreads) {
  const auto samples = products.open(made(options(Variant::ssc)));
  std::vector<FoundGrid> found(4);
  {
    std::vector<std::jthread> threads;
    for (FoundGrid& one : found) threads.emplace_back([&] { one = samples.geolocation_grid(); });
  }
  for (const FoundGrid& one : found) {
    ASSERT_NE(one.grid, nullptr);
    EXPECT_EQ(one.grid->points().size(), found[0].grid->points().size());
    EXPECT_EQ(one.grid->points().back().latitude, found[0].grid->points().back().latitude);
  }
}

// What is done to a good file, and the words that follow.
struct Fault {
  const char* name;
  std::function<std::string(const std::string&)> make;
  const char* words;
};

std::function<std::string(const std::string&)> replaced(const char* pattern, const char* text) {
  return [=](const std::string& content) {
    return std::regex_replace(content, std::regex(pattern), text,
                              std::regex_constants::format_first_only);
  };
}

// Without what stands from a tag to the end of its element.
std::function<std::string(const std::string&)> without(const char* tag, const char* end) {
  return [=](const std::string& content) {
    const std::size_t from = content.find(tag);
    const std::size_t to = content.find(end, from) + std::string_view(end).size();
    return content.substr(0, from) + content.substr(to);
  };
}

TEST_F(Grids, FilesAtFaultAreToldAndNothingElseIsRefused) {
  const Fault faults[] = {
      {"empty", [](const std::string&) { return std::string(); }, "no element found"},
      {"other root", replaced("geoReference", "georeference"), "expected <geoReference>"},
      {"cut", [](const std::string& c) { return c.substr(0, c.size() / 2); }, "GEOREF.xml:"},
      {"entity", [](const std::string& c) { return "<!DOCTYPE a [<!ENTITY b \"c\">]>\n" + c; },
       "document type declaration"},
      {"counts that are none", replaced("<azimuth>\\d+<", "<azimuth>-7<"),
       "found \"-7\", expected a number from 2 to 1e+06"},
      {"absurd counts",
       [](const std::string& c) {
         return replaced("<total>\\d+</total>\\s*<azimuth>\\d+</azimuth>\\s*<range>\\d+<",
                         "<total>1000000</total><azimuth>1000</azimuth><range>1000<")(c);
       },
       "expected no more points than a file of "},
      {"total of others", replaced("<total>\\d+<", "<total>12<"),
       "expected numbers of points whose product is the total"},
      {"no counts", without("<numberOfGridPoints>", "</numberOfGridPoints>"),
       "/geoReference/geolocationGrid: a required element is missing"},
      {"no reference", without("<gridReferenceTime>", "</gridReferenceTime>"),
       "expected gridReferenceTime ahead of the points"},
      {"no delays", without("<signalPropagationEffects>", "</signalPropagationEffects>"),
       "expected signalPropagationEffects"},
      {"a point lacks", without("<gridPoint iaz=\"2\" irg=\"2\">", "</gridPoint>"),
       " points, of which "},
      {"a point twice", replaced("iaz=\"2\" irg=\"2\"", "iaz=\"2\" irg=\"1\""), " once"},
      {"a point of elsewhere", replaced("iaz=\"2\" irg=\"2\"", "iaz=\"2\" irg=\"4000000000\""),
       " once"},
      {"a point without number", replaced(" irg=\"2\"", ""), "expected irg"},
      {"an attribute twice", replaced(" irg=\"2\"", " irg=\"2\" irg=\"2\""), "attribute"},
      {"not a number", replaced("<lat>[^<]*<", "<lat>NaN<"),
       "/geolocationGrid/gridPoint/lat: the value is not of its type: found \"NaN\""},
      {"infinite", replaced("<tau>[^<]*<", "<tau>INF<"), "found \"INF\""},
      {"incidence of a wall", replaced("<inc>[^<]*<", "<inc>90.1<"), "a number from 0 to 90"},
      {"a value twice", replaced("<inc>", "<inc>30</inc><inc>"), "/gridPoint"},
      {"a value lacks", replaced("<height>[^<]*</height>", ""), "expected height"},
      {"a value within a value", replaced("<height>", "<height><a/>"), "<a>"},
      {"no time", replaced("<tReferenceTimeUTC>[^<]*<", "<tReferenceTimeUTC>yesterday<"),
       "expected a date and time"},
      {"another day", replaced("<tReferenceTimeUTC>2008-03-12", "<tReferenceTimeUTC>2008-03-13"),
       "does not belong to this scene: its points have azimuth times from 105466.2"},
      {"another range", replaced("<tauReferenceTime>[^<]*<", "<tauReferenceTime>0.01<"),
       "does not belong to this scene: its points have range times from 0.01"},
      // The rows are taken for those of a raster that begins with the last line: 4710 - 199.
      {"rows of another image", replaced("<row>1<", "<row>4711<"),
       "does not belong to this image: the rows of its points are up to 4511.0 off"},
      {"columns of another image", replaced("<col>1<", "<col>-99<"),
       "does not belong to this image: the columns of its points are up to 100.0 off"},
      {"absurd delay", replaced("(<coefficient exponent=\"0\">)[^<]*<", "$011e-3<"),
       "its range delays add up to 0.001 s; no signal has more than 1e-06 s"},
      {"delay that is none", replaced("(<coefficient exponent=\"0\">)[^<]*<", "$01NaN<"),
       "found \"NaN\""},
      {"delay that changes",
       replaced("(<coefficient exponent=\"0\">)", "<coefficient exponent=\"1\">1</coefficient>$01"),
       "over the swath; only such that stay the same are applied"},
      {"exponent that is none", replaced("exponent=\"0\"", "exponent=\"-1\""),
       "a whole number above 0"},
      {"exponent too high", replaced("exponent=\"0\"", "exponent=\"4294967295\""),
       "each exponent once, from 0 to 15"},
  };
  const std::string annotation = made(options(Variant::ssc));
  const fs::path file = grid_file(annotation);
  const std::string good = content_of(file);
  for (const Fault& fault : faults) {
    const std::string bad = fault.make(good);
    ASSERT_NE(bad, good) << fault.name;
    write(file, bad);
    const FoundGrid found = find(annotation);
    EXPECT_EQ(found.grid, nullptr) << fault.name;
    EXPECT_NE(found.warning.find(fault.words), std::string::npos)
        << fault.name << ": " << found.warning;
    EXPECT_EQ(found.warning.find(file.string()), 0U) << fault.name << ": " << found.warning;
    EXPECT_EQ(products.open(annotation).images().size(), 1U) << fault.name;
  }
}

TEST_F(Grids, UnknownElementsArePassedOver) {
  const std::string annotation = made(options(Variant::ssc));
  const fs::path file = grid_file(annotation);
  const std::string good = content_of(file);
  write(file,
        replaced("<inc>", "<later a=\"1\">text <b>more<c/></b> and more</later><d/><inc>")(good));
  EXPECT_NE(find(annotation).grid, nullptr) << find(annotation).warning;
}

TEST_F(Grids, AHugeFileIsRefusedUnread) {
  const std::string annotation = made(options(Variant::ssc));
  fs::resize_file(grid_file(annotation), (std::uintmax_t{1} << 30) + 1);
  EXPECT_EQ(find(annotation).warning, grid_file(annotation).string() +
                                          ": is longer than 1 GiB, which no geolocation grid is");
}

TEST_F(Grids, AMissingFileIsTold) {
  const std::string annotation = made(options(Variant::ssc));
  fs::remove(grid_file(annotation));
  EXPECT_EQ(find(annotation).warning, grid_file(annotation).string() + ": no such file or folder");
}

TEST_F(Grids, FilesOutsideTheProductAreNotOpened) {
  const std::string annotation = made(options(Variant::ssc));
  fs::copy_file(grid_file(annotation), products.scratch / "GEOREF.xml");
  write(annotation,
        replaced("<path>ANNOTATION</path>", "<path>../..</path>")(content_of(annotation)));
  const FoundGrid found = find(annotation);
  EXPECT_EQ(found.grid, nullptr);
  EXPECT_NE(found.warning.find("GEOREF.xml"), std::string::npos) << found.warning;
  EXPECT_EQ(found.warning.find("no such file"), std::string::npos) << found.warning;
}

// Two points each way: a plane in the corners' values is told exactly.
gridkit::GeolocationGrid plane(double first_line, double last_line) {
  const auto point = [](double line, double sample) {
    gkc_GridPoint made{};
    made.line = line;
    made.sample = sample;
    made.incidence = 30 + line / 100 + sample / 50;
    made.height = line * sample;
    return made;
  };
  return {
      2,
      2,
      {point(first_line, 10), point(first_line, 60), point(last_line, 10), point(last_line, 60)},
      0,
      0};
}

TEST(Grid, IsBilinearBetweenItsPointsAndEndsACellBeyondThem) {
  for (const auto& grid : {plane(0, 100), plane(100, 0)}) {
    ASSERT_TRUE(grid.has_image_axes());
    EXPECT_DOUBLE_EQ(grid.incidence_at(25, 20), 30.65);
    EXPECT_DOUBLE_EQ(grid.height_at(25, 20), 500);
    EXPECT_DOUBLE_EQ(grid.incidence_at(-10, 0), 29.9);
    EXPECT_DOUBLE_EQ(grid.incidence_at(200, 110), 34.2);
    EXPECT_DOUBLE_EQ(grid.incidence_at(5000, 110), 34.2);
    EXPECT_DOUBLE_EQ(grid.incidence_at(0, -5000), 29.2);
    EXPECT_TRUE(std::isnan(grid.incidence_at(NAN, 0)));
  }
}

TEST(Grid, PointsOffTheLinesAndColumnsGiveNoAxes) {
  const auto grid = plane(0, 100);
  std::vector<gkc_GridPoint> points(grid.points().begin(), grid.points().end());
  points[1].line += 3;
  const gridkit::GeolocationGrid skewed(2, 2, points, 0, 0);
  EXPECT_FALSE(skewed.has_image_axes());
  EXPECT_TRUE(std::isnan(skewed.incidence_at(1, 20)));
  std::vector<double> angles(3);
  skewed.incidence_of_line(1, 20, 1, angles);
  EXPECT_TRUE(std::isnan(angles[2]));
  EXPECT_FALSE(plane(50, 50).has_image_axes());
  EXPECT_THROW(gridkit::GeolocationGrid(2, 3, points, 0, 0), gridkit::Error);
  EXPECT_THROW(gridkit::GeolocationGrid(4, 1, points, 0, 0), gridkit::Error);
}

}  // namespace
