// What simulated annotations say and look like.

#include "tools/simulate/annotation.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>

#include "tests/support/scratch_folder.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/product_writer.h"
#include "tools/simulate/annotation_doppler.h"
#include "tools/simulate/annotation_info.h"
#include "tools/simulate/annotation_layout.h"
#include "tools/simulate/annotation_platform.h"

namespace {

using namespace simulate;

std::string annotation_of(const Options& options) {
  const Scene scene = make_scene(options);
  AnnotationSource source{scene, "TSX1_SIMULATED", scene.epoch.after(3600).whole_second()};
  std::ostringstream out;
  write_annotation(source, out);
  return out.str();
}

// A stripmap of 50 km, 8 s.
Options stripmap() {
  Options o;
  o.lines = 29000;
  o.samples = 13000;
  return o;
}

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++found;
  }
  return found;
}

std::vector<std::string> lines_of(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The annotation as the classes of schema 4.0 write what they read from it.
std::string read_and_written(const std::string& annotation, const ScratchFolder& folder) {
  const auto path = folder / "annotation.xml";
  std::ofstream(path, std::ios::binary) << annotation;
  version40::c_version40 root;
  EXPECT_EQ(root.unmarshal(path.c_str()), 0);
  std::ostringstream out;
  EXPECT_EQ(write_product(root.get_level1Product(), out), 0);
  return out.str();
}

TEST(Annotation, OfAStripmapHasTheRecordsOfARealOne) {
  const std::string text = annotation_of(stripmap());
  EXPECT_GT(text.size(), 250000U);
  EXPECT_LT(text.size(), 350000U);
  EXPECT_EQ(count(text, "<stateVec "), 12U);
  EXPECT_EQ(count(text, "<attitudeData "), 131U);
  EXPECT_NE(text.find("<numRecords>131<"), std::string::npos);
  EXPECT_EQ(count(text, "<gainExt "), 1800U);
  EXPECT_EQ(count(text, "<software>"), 40U);
  EXPECT_EQ(count(text, "<velocityParameter>"), 5U);
  EXPECT_EQ(count(text, "<dopplerRate>"), 5U);
  EXPECT_EQ(count(text, "<imageNoise>"), 5U);
  EXPECT_EQ(count(text, "<dopplerEstimate>"), 10U);
  EXPECT_EQ(count(text, "<sceneCornerCoord>"), 4U);
}

TEST(Annotation, HasItsElevenBranchesInEveryProfile) {
  for (const Profile profile : {Profile::minimal, Profile::typical, Profile::maximal}) {
    Options o = stripmap();
    o.profile = profile;
    const std::string text = annotation_of(o);
    for (const char* branch :
         {"generalHeader", "productComponents", "productInfo", "productSpecific", "setup",
          "processing", "instrument", "calibration", "noise", "platform", "productQuality"}) {
      EXPECT_GE(count(text, "</" + std::string(branch) + ">"), 1U) << branch;
    }
  }
}

TEST(Annotation, HasTimesWithAndWithoutZAndOptionalTextsThatAreEmpty) {
  const std::string text = annotation_of(stripmap());
  EXPECT_TRUE(std::regex_search(text, std::regex(R"(<timeUTC>[-0-9]{10}T[:0-9]{8}\.\d{6}Z<)")));
  EXPECT_TRUE(std::regex_search(text, std::regex(R"(<timeUTC>[-0-9]{10}T[:0-9]{8}\.\d{6}<)")));
  EXPECT_NE(text.find("<remark></remark>"), std::string::npos);
  EXPECT_NE(text.find("<referenceDocument>Simulated"), std::string::npos);
}

TEST(Annotation, NeedsLittleMoreThanRepeatsToGrow) {
  Options o = stripmap();
  const Scene scene = make_scene(o);
  AnnotationSource source{scene, "TSX1_SIMULATED", scene.epoch};
  source.repeats = 3;
  std::ostringstream out;
  write_annotation(source, out);
  EXPECT_NE(out.str().find("<numRecords>391<"), std::string::npos);
  EXPECT_EQ(count(out.str(), "<attitudeData "), 391U) << "130 s in steps of 0.333333 s";
  EXPECT_EQ(count(out.str(), "<settingRecord>"), 3U);
}

TEST(Layout, KeepsEveryValue) {
  const ScratchFolder folder;
  for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::gec}) {
    Options o = stripmap();
    o.variant = variant;
    o.profile = Profile::maximal;
    const std::string plain = annotation_of(o);
    std::ostringstream laid_out;
    lay_out_like_ground_segment(plain, version40::c_level1Product::s_description, 5, laid_out);
    EXPECT_NE(laid_out.str(), plain);
    EXPECT_EQ(read_and_written(laid_out.str(), folder), plain);
  }
}

TEST(Layout, LooksLikeTheGroundSegments) {
  Options o = stripmap();
  const std::string text = annotation_of(o);
  EXPECT_TRUE(std::regex_search(text, std::regex(R"(<posX>-?\d\.\d{17}E[-+]\d\d</posX>)")));
  EXPECT_NE(text.find("<numberOfRows>29000<"), std::string::npos) << "integers stay";
  EXPECT_TRUE(std::regex_search(text, std::regex("<stateVec num=")));
  EXPECT_TRUE(std::regex_search(text, std::regex("<stateVec (maneuver|qualInd)=")));
  std::size_t indents[3] = {};  // of state vectors, 4, 6 or 8 blanks
  for (const std::string& line : lines_of(text)) {
    const std::size_t indent = line.find('<');
    if (line.compare(indent, 14, "<attitudeData ") == 0) ++indents[indent / 2 - 2];
  }
  EXPECT_GT(indents[0], 0U);
  EXPECT_GT(indents[1], 80U);
  EXPECT_GT(indents[2], 0U);
}

TEST(Layout, LeavesTheLinesOfRecognitionAlone) {
  Options o = stripmap();
  const auto typical = lines_of(annotation_of(o));
  o.profile = Profile::maximal;
  const auto plain = lines_of(annotation_of(o));
  for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(typical[i], plain[i]) << i;
}

TEST(Layout, DependsOnTheSeedAlone) {
  Options o = stripmap();
  const std::string first = annotation_of(o);
  EXPECT_EQ(annotation_of(o), first);
  o.seed = 2;
  EXPECT_NE(annotation_of(o), first);
}

Vector3 turned(const std::array<double, 4>& q, Vector3 v) {
  const Vector3 axis{q[1], q[2], q[3]};
  return v + 2 * cross(axis, cross(axis, v) + q[0] * v);
}

TEST(Attitude, PointsTheAntennaAtTheScene) {
  for (const double latitude : {-70.0, -20.0, 10.0, 48.0}) {
    for (const Look look : {Look::right, Look::left}) {
      Options o;
      o.latitude = latitude;
      o.look = look;
      const Scene scene = make_scene(o);
      const State state = scene.orbit.at(0);
      const auto [q] = zero_doppler_attitude(state, look, mechanical_boresight);
      EXPECT_NEAR(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3], 1, 1e-12);
      EXPECT_LT(length(turned(q, {1, 0, 0}) - unit(state.velocity)), 1e-12);
      const Vector3 boresight = turned(q, {0, 0, 1});
      const Vector3 sight = unit(to_earth_fixed(scene.centre) - state.position);
      EXPECT_NEAR(dot(boresight, sight),
                  std::cos(look_angle(scene, scene.centre) - mechanical_boresight), 1e-3);
    }
  }
}

// The rate is -2 v^2 / (wavelength R) at every range, of the velocity parameter told.
TEST(Doppler, RateFollowsTheVelocityParameter) {
  const Scene scene = make_scene(stripmap());
  const auto v2 = velocity_polynomial(scene, 1.5);
  const auto rate = rate_polynomial(scene, 1.5);
  const auto at = [](const std::vector<double>& c, double x) {
    double sum = 0;
    for (std::size_t k = c.size(); k-- > 0;) sum = sum * x + c[k];
    return sum;
  };
  for (const double delay : {scene.near_time, scene.far_time}) {
    const double d = delay - over_range(scene).reference;
    const double expected = -2 * at(v2, d) * 9.65e9 / 299792458.0 / (delay * 299792458.0 / 2);
    EXPECT_NEAR(at(rate, d) / expected, 1, 1e-6);
  }
}

// One orbit takes 11 days / 167 = 5691 s.
TEST(Orbits, AreCountedInCyclesOf167) {
  const OrbitCount first = count_orbits(Utc::parse("2008-03-05T03:54:00"));
  EXPECT_EQ(first.cycle, 25);
  EXPECT_EQ(first.absolute, 4009);
  EXPECT_EQ(first.relative, 1);
  const OrbitCount before = count_orbits(Utc::parse("2008-03-05T03:53:59"));
  EXPECT_EQ(before.cycle, 24);
  EXPECT_EQ(before.absolute, 4008);
  EXPECT_EQ(before.relative, 167);
  const OrbitCount later = count_orbits(Utc::parse("2008-03-16T03:54:00"));
  EXPECT_EQ(later.cycle, 26);
  EXPECT_EQ(later.relative, 1);
}

}  // namespace
