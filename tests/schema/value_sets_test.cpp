// The value sets of every enumerated member in every version, and the numbers of their texts: which
// member takes which texts, in which order they are compared, and whether it is a list.

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/schema/cases.h"

namespace {

using binding::Member;

// By number, from 1.
constexpr const char* texts_by_number[] = {"UP",
                                           "DOWN",
                                           "UPDOWN",
                                           "HH",
                                           "HV",
                                           "VH",
                                           "VV",
                                           "UNDEFINED",
                                           "SRA",
                                           "DRA",
                                           "LEFT",
                                           "RIGHT",
                                           "SM",
                                           "SL",
                                           "SC",
                                           "HS",
                                           "SINGLE",
                                           "DUAL",
                                           "TWIN",
                                           "QUAD",
                                           "MAIN",
                                           "GEOREF",
                                           "GEOCODE",
                                           "OTHER",
                                           "DRAFore",
                                           "DRAAft",
                                           "operational",
                                           "preoperational",
                                           "instrument",
                                           "test",
                                           "AUTO_APPROVED",
                                           "OPERATOR_APPROVED",
                                           "NOT_APPROVED",
                                           "ASCENDING",
                                           "DESCENDING",
                                           "SSC",
                                           "MGD",
                                           "GEC",
                                           "EEC",
                                           "SLANTRANGE",
                                           "GROUNDRANGE",
                                           "MAP",
                                           "UTM",
                                           "UPS",
                                           "SE",
                                           "RE",
                                           "CALIBRATED",
                                           "NOTCALIBRATED",
                                           "RELCALIBRATED",
                                           "COMPLEX",
                                           "DETECTED",
                                           "GEOTIFF",
                                           "COSAR",
                                           "ROWBYROW",
                                           "COLBYCOL",
                                           "s",
                                           "m",
                                           "RAW",
                                           "ZERODOPPLER",
                                           "EARLYAZNEARRG",
                                           "EARLYAZFARRG",
                                           "LATEAZNEARRG",
                                           "LATEAZFARRG",
                                           "REFE",
                                           "PRED",
                                           "QUKL",
                                           "RAPD",
                                           "SCIE",
                                           "TIME",
                                           "CENTERCOORDS",
                                           "AUTO",
                                           "DEFAULTS",
                                           "ANALYSIS",
                                           "short",
                                           "long",
                                           "IDEAL",
                                           "NOMINAL",
                                           "REPLICA",
                                           "MODEL",
                                           "CUSTOM",
                                           "left",
                                           "right",
                                           "I",
                                           "Q",
                                           "H2V",
                                           "V2H",
                                           "L1",
                                           "L2",
                                           "Main",
                                           "Redundant",
                                           "PROP",
                                           "GPSS",
                                           "GPSD",
                                           "YES",
                                           "NO",
                                           "NA",
                                           "AOCS",
                                           "STD",
                                           "RREF",
                                           "LREF"};

struct Set {
  const char* member;
  const char* classes;
  const char* texts;  // in their order
  bool is_list;
};
constexpr Set sets[] = {
    {"DRAoffset",
     "c_SARAntennaPosition c_antennaPattern c_calibrationConstant c_correctedInstrumentDelay "
     "c_dopplerCentroid c_imageData c_imageDataQuality c_imageDataScaling c_noise c_quicklooks "
     "c_segmentInfoType c_settings",
     "SRA DRAFore DRAAft", true},
    {"GPSreceiver", "c_GPSAntennaPosition", "L1 L2", false},
    {"accuracy", "c_orbitHeader", "REFE PRED QUKL RAPD SCIE", false},
    {"accuracy", "c_attitudeHeader", "STD RREF LREF REFE UNDEFINED", false},
    {"antennaMode", "c_absCalFactor", "SRA DRAFore DRAAft", true},
    {"antennaReceiveConfiguration", "c_acquisitionInfo c_antennaReceiveConfiguration c_orderInfo",
     "SRA DRA UNDEFINED", true},
    {"appliedCorrectionID", "c_rawDataStatisticsAndCorrection", "DEFAULTS ANALYSIS UNDEFINED",
     true},
    {"channel", "c_I_Q_Characteristics", "I Q", false},
    {"chirpDesignator", "c_referenceChirp", "IDEAL NOMINAL REPLICA MODEL CUSTOM UNDEFINED", true},
    {"chirpSlope", "c_chirpSlope c_referenceChirp", "UP DOWN UPDOWN", false},
    {"dopplerCentroidCoordinateType", "c_doppler", "RAW ZERODOPPLER UNDEFINED", false},
    {"groundOperationsType", "c_generationInfo",
     "operational preoperational instrument test UNDEFINED", true},
    {"imageCoordinateType", "c_complexImageInfo", "RAW ZERODOPPLER UNDEFINED", false},
    {"imageDataFormat", "c_imageDataInfo", "GEOTIFF COSAR UNDEFINED", false},
    {"imageDataStartWith", "c_complexImageInfo",
     "EARLYAZNEARRG EARLYAZFARRG LATEAZNEARRG LATEAZFARRG UNDEFINED", true},
    {"imageDataType", "c_imageDataInfo", "COMPLEX DETECTED", true},
    {"imageStorageOrder", "c_geocodedImageInfo_mappingGridInfo c_imageDataInfo c_mappingGridInfo",
     "ROWBYROW COLBYCOL UNDEFINED", true},
    {"imagingMode", "c_acquisitionInfo c_imagingMode c_orderInfo", "SM SL SC HS UNDEFINED", true},
    {"instrumentInfoCoordinateType", "c_instrument", "RAW ZERODOPPLER UNDEFINED", false},
    {"lookDirection", "c_acquisitionInfo c_lookDirection c_orderInfo", "LEFT RIGHT UNDEFINED",
     false},
    {"lookDirection", "c_absCalFactor", "left right", true},
    {"maneuver", "c_attitudeData c_stateVec", "YES NO NA", false},
    {"mapProjection", "c_productVariantInfo", "UTM UPS UNDEFINED", true},
    {"mapProjection", "c_geocodingOrder", "UTM UPS UNDEFINED AUTO", true},
    {"orbitAccuracy", "c_inputData", "REFE PRED QUKL RAPD SCIE", false},
    {"orbitAccuracy", "c_orderInfo", "REFE PRED QUKL RAPD SCIE UNDEFINED", false},
    {"orbitDirection", "c_missionInfo", "ASCENDING DESCENDING UNDEFINED", true},
    {"polLayer",
     "c_antennaPattern c_calibrationConstant c_correctedInstrumentDelay c_dopplerCentroid "
     "c_imageData c_imageDataQuality c_imageDataScaling c_noise c_polLayer c_polList "
     "c_polarisationList c_quicklooks c_segmentInfoType c_settings",
     "HH HV VH VV UNDEFINED", false},
    {"polarisation", "c_crosstalk", "H2V V2H", false},
    {"polarisationChannel", "c_internalDelay", "HH VV HV VH", false},
    {"polarisationChannel", "c_absCalFactor", "HH VV HV VH", true},
    {"polarisationMode", "c_acquisitionInfo c_orderInfo c_polarisationMode",
     "SINGLE DUAL TWIN QUAD", true},
    {"processingInfoCoordinateType", "c_processingParameter", "RAW ZERODOPPLER UNDEFINED", false},
    {"productVariant", "c_orderInfo c_productVariantInfo", "SSC MGD GEC EEC UNDEFINED", true},
    {"projection", "c_orderInfo", "GROUNDRANGE SLANTRANGE UNDEFINED MAP", true},
    {"projection", "c_productVariantInfo", "SLANTRANGE UNDEFINED GROUNDRANGE MAP", true},
    {"qualityInspection", "c_qualityInfo", "AUTO_APPROVED OPERATOR_APPROVED NOT_APPROVED UNDEFINED",
     false},
    {"quicklookDataStartWith", "c_complexImageInfo",
     "EARLYAZNEARRG EARLYAZFARRG LATEAZNEARRG LATEAZFARRG UNDEFINED", true},
    {"radiometricCorrection", "c_productVariantInfo",
     "CALIBRATED NOTCALIBRATED UNDEFINED RELCALIBRATED", false},
    {"resolutionVariant", "c_orderInfo c_productVariantInfo", "SE RE UNDEFINED", true},
    {"sceneSpecification", "c_orderInfo", "TIME CENTERCOORDS UNDEFINED", true},
    {"sensor", "c_attitudeHeader", "AOCS", false},
    {"sensor", "c_orbitHeader", "PROP GPSS GPSD", false},
    {"signalDataCoordinateType", "c_signalDataAnalysis", "RAW ZERODOPPLER UNDEFINED", false},
    {"timeEffect", "c_amplCorrection c_phaseCorrection", "short long", false},
    {"type", "c_annotation", "MAIN GEOREF GEOCODE OTHER UNDEFINED", false},
    {"unit", "c_GPSAntennaPosition", "Main Redundant", false},
    {"units", "c_columnSpacing c_rowSpacing", "s m", true},
};

std::vector<std::string> words(const char* text) {
  std::istringstream in(text);
  std::vector<std::string> result;
  for (std::string word; in >> word;) result.push_back(word);
  return result;
}

int number_of(const std::string& text) {
  for (int i = 0; i < 100; ++i) {
    if (text == texts_by_number[i]) return i + 1;
  }
  return 0;
}

std::string leaf(const std::string& qualified) {
  const auto colon = qualified.rfind(':');
  return colon == std::string::npos ? qualified : qualified.substr(colon + 1);
}

using Place = std::pair<std::string, std::string>;  // class and member

std::map<Place, const Set*> expected_places() {
  std::map<Place, const Set*> places;
  for (const Set& set : sets) {
    for (const std::string& name : words(set.classes)) places[{name, set.member}] = &set;
  }
  return places;
}

void check_member(const std::string& where, const Member& m, const Set& set) {
  const std::vector<std::string> texts = words(set.texts);
  ASSERT_EQ(m.values.size(), texts.size()) << where;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(m.values[i].text, texts[i]) << where;
    EXPECT_EQ(m.values[i].number, number_of(texts[i])) << where << ' ' << texts[i];
  }
  EXPECT_EQ(m.form == binding::Form::token_list, set.is_list) << where;
}

class ValueSets : public testing::TestWithParam<const char*> {};

TEST_P(ValueSets, AreThoseOfTheirMembersAndOfNoOther) {
  const auto places = expected_places();
  std::set<Place> met;
  const auto versions = cases::all_versions();
  for (const auto& [name, description] : versions.at(GetParam()).all()) {
    const auto check = [&, owner = leaf(name)](const Member& m) {
      if (m.values.empty()) return;
      const auto found = places.find({owner, m.name});
      ASSERT_NE(found, places.end()) << owner << ' ' << m.name << " is not enumerated";
      check_member(owner + ' ' + m.name, m, *found->second);
      met.insert(found->first);
    };
    for (const Member& m : description->attributes) check(m);
    for (const Member& m : description->elements) check(m);
    if (description->text != nullptr) check(*description->text);
  }
  for (const auto& [place, set] : places) {
    const bool is_later =
        place.first == "c_correctedInstrumentDelay" && GetParam() != std::string("4.0");
    EXPECT_EQ(met.contains(place), !is_later) << place.first << ' ' << place.second;
  }
}

INSTANTIATE_TEST_SUITE_P(Versions, ValueSets, testing::Values("3.4", "3.5", "4.0"));

// The numbers as callers spell them, at the ends of the list and where sets share a text.
TEST(Numbers, AreThoseOfTheirNames) {
  EXPECT_EQ(version34::e_no_match, 0);
  EXPECT_EQ(version34::e_UP, 1);
  EXPECT_EQ(version35::e_UNDEFINED, 8);
  EXPECT_EQ(version35::e_LEFT, 11);
  EXPECT_EQ(version40::e_REFE, 64);
  EXPECT_EQ(version40::e_left, 81);
  EXPECT_EQ(version40::e_LREF, 100);
}

}  // namespace
