// The checks of simple values where a policy lets the read go on: which faults are told, in which
// order, and what is stored all the same.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "level1bProduct40/version40.h"
#include "tests/schema/cases.h"

namespace {

using namespace version40;

// Reads under a policy that tolerates everything; gives the codes in order.
template <class Class>
std::vector<int> tolerated(Class& object, const std::string& document) {
  std::vector<int> codes;
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  reader.set_policy([&](const lmx::Diagnostic& fault) {
    codes.push_back(fault.code);
    return lmx::error_none;
  });
  EXPECT_EQ(binding::read_document(Class::s_description, &object, reader), 0);
  return codes;
}

using Codes = std::vector<int>;
using MissionInfo = c_level1Product::c_productInfo::c_missionInfo;
using QualityInfo = c_level1Product::c_productInfo::c_generationInfo::c_qualityInfo;
using Center = c_level1Product::c_productInfo::c_sceneInfo::c_sceneCenterCoord;
using Lookangles =
    c_level1Product::c_calibration::c_calibrationData::c_antennaPattern::c_elevationLookAngles;

std::string mission(const std::string& orbit, const std::string& phase = "1") {
  return "<missionInfo><mission>m</mission><orbitPhase>" + phase +
         "</orbitPhase><orbitCycle>1</orbitCycle><absOrbit>" + orbit +
         "</absOrbit><relOrbit>1</relOrbit><numOrbitsInCycle>1</numOrbitsInCycle>"
         "<orbitDirection>ASCENDING</orbitDirection></missionInfo>";
}

TEST(ToleratedValue, AnOverlongTextIsMeasuredThenComparedThenKept) {
  QualityInfo info;
  const std::string text(256, 'x');
  EXPECT_EQ(tolerated(info, "<qualityInfo><qualityInspection>" + text +
                                "</qualityInspection></qualityInfo>"),
            (Codes{19, 38}));
  EXPECT_EQ(info.get_qualityInspection(), text);
}

TEST(ToleratedValue, AnIntegerIsCheckedForItsFormThenItsBoundsThenKept) {
  MissionInfo info;
  EXPECT_EQ(tolerated(info, mission("-2")), Codes{37});
  EXPECT_EQ(info.get_absOrbit(), -2);
  MissionInfo high;
  EXPECT_EQ(tolerated(high, mission("2147483648")), Codes{36});
  EXPECT_EQ(high.get_absOrbit(), -2147483647 - 1) << "the low 32 bits";
  MissionInfo word;
  EXPECT_EQ(tolerated(word, mission("7", "7x")).front(), 35);
  EXPECT_EQ(word.get_orbitPhase(), 7) << "as far as the digits go";
  EXPECT_TRUE(word.is_occurs_ok());
}

std::string center(const std::string& lat) {
  return "<sceneCenterCoord><lat>" + lat +
         "</lat><lon>1</lon><azimuthTimeUTC>2008-03-10T13:32:20Z</azimuthTimeUTC>"
         "<rangeTime>1</rangeTime><incidenceAngle>1</incidenceAngle></sceneCenterCoord>";
}

TEST(ToleratedValue, NotANumberFailsBothBounds) {
  Center c;
  EXPECT_EQ(tolerated(c, center("NaN")), (Codes{37, 36}));
  EXPECT_TRUE(std::isnan(c.get_lat()));
  Center word;
  EXPECT_EQ(tolerated(word, center("north")), Codes{35});
  EXPECT_EQ(word.get_lat(), 0);
}

// 90.000001 lies above 90, but the nearest single-precision number is 90 itself.
TEST(Value, BoundsAreComparedInTheTypeOfTheMember) {
  Center c;
  EXPECT_EQ(tolerated(c, center("90.000001")), Codes{});
  EXPECT_EQ(c.get_lat(), 90);
  EXPECT_EQ(tolerated(c, center("90.00001")), Codes{36});
  EXPECT_EQ(tolerated(c, center("-90.00001")), Codes{37});
}

TEST(ToleratedValue, AnInvalidBooleanReadsAsFalse) {
  const auto document = [](const std::string& flag) {
    return "<elevationLookAngles><coverageRegionMin incidenceAngle='1'>1</coverageRegionMin>"
           "<coverageRegionMax incidenceAngle='1'>1</coverageRegionMax><fullPerformance>" +
           flag + "</fullPerformance></elevationLookAngles>";
  };
  const struct {
    const char* text;
    Codes codes;
    bool value;
  } cases[] = {{"1", {}, true},        {"true", {}, true},   {" true\n", {}, true},
               {"0", {}, false},       {"false", {}, false}, {"TRUE", {35}, false},
               {"true 1", {35}, false}};
  for (const auto& set : cases) {
    Lookangles angles;
    EXPECT_EQ(tolerated(angles, document(set.text)), set.codes) << set.text;
    EXPECT_EQ(angles.get_fullPerformance(), set.value) << set.text;
  }
}

TEST(ToleratedValue, ABadTokenStaysInItsList) {
  c_imagingMode mode;
  EXPECT_EQ(tolerated(mode, "<imagingMode>SM none SL</imagingMode>"), Codes{38});
  ASSERT_EQ(mode.size_imagingMode(), 3U);
  EXPECT_EQ(mode.get_imagingMode(1), "none");
}

TEST(ToleratedValue, AnAttributeThatStandsTwiceInAnObjectOverwrites) {
  c_dblPolynom::c_dblPolynom_coefficient coefficient;
  const auto document = [](const char* exponent) {
    return std::string("<coefficient exponent='") + exponent + "'>2.5</coefficient>";
  };
  EXPECT_EQ(tolerated(coefficient, document("4")), Codes{});
  EXPECT_EQ(tolerated(coefficient, document("5")), Codes{3});
  EXPECT_EQ(coefficient.get_exponent(), 5U);
}

TEST(ToleratedFault, AnUnknownAttributeIsPassedOver) {
  c_chirpSlope slope;
  EXPECT_EQ(tolerated(slope, "<chirpSlope a='1' b='2'>UP</chirpSlope>"), (Codes{39, 39}));
  EXPECT_EQ(slope.get_chirpSlope(), "UP");
}

// A required member is told and passed over; what follows is read at its place.
TEST(ToleratedFault, AMissingMemberIsPassedOver) {
  MissionInfo info;
  EXPECT_EQ(
      tolerated(info, "<missionInfo><mission>m</mission><orbitCycle>5</orbitCycle></missionInfo>"),
      (Codes{21, 21, 21, 21, 21}));
  EXPECT_EQ(info.get_orbitCycle(), 5);
}

TEST(ToleratedFault, AnotherRootIsReadAllTheSame) {
  c_floatVector vector;
  EXPECT_EQ(tolerated(vector, "<other><x>1</x><y>2</y><z>3</z></other>"), Codes{16});
  EXPECT_EQ(vector.get_z(), 3);
}

TEST(ToleratedFault, AnEmptyElementReadsNothing) {
  c_floatVector vector;
  EXPECT_EQ(tolerated(vector, "<floatVector/>"), Codes{32});
  EXPECT_FALSE(vector.is_occurs_ok());
}

TEST(Value, AStoredTextKeepsItsBlanks) {
  c_generalHeader h;
  EXPECT_EQ(
      h.unmarshal(std::string(
          "<generalHeader fileName=' f '><itemName> i\n</itemName><mission/><source>s</source>"
          "<destination>d</destination><generationSystem version='1'> g </generationSystem>"
          "<generationTime> 2008-03-10T13:32:20Z </generationTime></generalHeader>")),
      0);
  EXPECT_EQ(h.get_fileName(), " f ");
  EXPECT_EQ(h.get_itemName(), " i\n");
  EXPECT_EQ(h.get_mission(), "");
  EXPECT_EQ(h.get_generationSystem().get_generationSystem(), " g ");
}

template <class Class>
Class read_of(const std::string& document) {
  Class object;
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  EXPECT_EQ(binding::read_document(Class::s_description, &object, reader), 0) << document;
  return object;
}

TEST(Value, EveryIntegerTypeHoldsItsEnds) {
  const auto size_of = [](const std::string& size) {
    c_file file;
    EXPECT_EQ(file.unmarshal("<file><location><host/><path/><filename/></location><size>" + size +
                             "</size></file>"),
              0);
    return file.get_size();
  };
  EXPECT_EQ(size_of("9223372036854775807"), INT64_MAX);
  EXPECT_EQ(size_of("-9223372036854775808"), INT64_MIN);
  EXPECT_EQ(size_of("\t+00012\n"), 12);
  using Coefficient = c_dblPolynom::c_dblPolynom_coefficient;
  EXPECT_EQ(
      read_of<Coefficient>("<coefficient exponent='4294967295'>1</coefficient>").get_exponent(),
      4294967295U);
  EXPECT_EQ(read_of<MissionInfo>(mission("1", "-2147483648")).get_orbitPhase(), INT32_MIN);
  EXPECT_EQ(read_of<MissionInfo>(mission("1", "2147483647")).get_orbitPhase(), INT32_MAX);
  using StateVector = c_level1Product::c_platform::c_orbit::c_stateVec;
  const auto vector = read_of<StateVector>(
      "<stateVec num='18446744073709551615' maneuver='NO' qualInd='1'>"
      "<timeUTC>2008-03-10T13:32:20Z</timeUTC><timeGPS>18446744073709551614</timeGPS>"
      "<timeGPSFraction>0.5</timeGPSFraction><posX>1.5e6</posX><posY>-2.25</posY><posZ>INF</posZ>"
      "<velX>1</velX><velY>2</velY><velZ>3</velZ></stateVec>");
  EXPECT_EQ(vector.get_num(), 18446744073709551615U);
  EXPECT_EQ(vector.get_qualInd(), 1);
  EXPECT_EQ(vector.get_timeGPS(), 18446744073709551614U);
  EXPECT_EQ(vector.get_posX(), 1.5e6);
  EXPECT_EQ(vector.get_posY(), -2.25);
  EXPECT_TRUE(std::isinf(vector.get_posZ()));
  // An unsigned byte is written as a number, not as a character.
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(vector.marshal(writer, "stateVec"), 0);
  EXPECT_NE(out.str().find(" qualInd=\"1\""), std::string::npos) << out.str();
}

TEST(Value, OneThatFailsItsCheckIsNotPresent) {
  c_generalHeader h;
  const std::string document =
      "<generalHeader fileName='f' status='" + std::string(21, 'x') + "'></generalHeader>";
  EXPECT_EQ(h.unmarshal(document), 19);
  EXPECT_FALSE(h.isset_status());
  EXPECT_EQ(h.get_status(), "");
}

TEST(Value, AFailedReadKeepsWhatWasReadBefore) {
  MissionInfo info;
  const std::string document = mission("x");
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  EXPECT_EQ(binding::read_document(MissionInfo::s_description, &info, reader), 35);
  EXPECT_EQ(info.get_mission(), "m");
  EXPECT_EQ(info.get_orbitCycle(), 1);
  EXPECT_FALSE(info.is_occurs_ok());
}

}  // namespace
