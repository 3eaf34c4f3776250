// What reading does with a document full of faults under a policy: which faults are told when each
// is tolerated, that the read comes to an end, and that any one of them can end it.

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "binding/document.h"
#include "binding/engine.h"
#include "level1bProduct40/version40.h"

namespace {

using namespace version40;
using Codes = std::vector<int>;

struct Case {
  const char* name;
  std::function<lmx::elmx_error(lmx::c_xml_reader&)> read;
  std::string document;
  Codes codes;  // in the order in which they are told when all are tolerated
};

void PrintTo(const Case& c, std::ostream* out) {
  *out << c.document;
}

template <class Class>
lmx::elmx_error into(lmx::c_xml_reader& reader) {
  Class object;
  return binding::read_document(Class::s_description, &object, reader);
}

lmx::elmx_error into_root(lmx::c_xml_reader& reader) {
  return c_version40().unmarshal(reader);
}

using Coefficient = c_dblPolynom::c_dblPolynom_coefficient;
using ModeInfo = c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo;
using BeamList = ModeInfo::c_scanSAR::c_beamList;
using Statistics = c_level1Product::c_processing::c_signalDataAnalysis::c_rawDataInfo::
    c_rawDataStatisticsAndCorrection;
using Center = c_level1Product::c_productInfo::c_sceneInfo::c_sceneCenterCoord;
using Region = c_level1Product::c_calibration::c_calibrationData::c_antennaPattern::
    c_elevationLookAngles::c_coverageRegionMin;

// 10: the end tag does not stand where it should, 16: another root, 21: element missing, 25:
// attribute missing, 29: element unreadable, 31: no choice, 35: no value of its type, 37: too low,
// 38: not in its set, 39: unknown attribute, 101: the document ends early, 106: text between
// elements. A floatVector is x, y, z. Whatever could not be read stays where it is, so the next
// step meets it again: members after it are missing, and its own end tag is not the end expected.
const Case cases[] = {
    // No root; then nothing inside it, x, y, z and its end missing.
    {"NoDocument", into<c_floatVector>, "", {101, 16, 101, 21, 21, 21, 10}},
    {"TextInsteadOfElements",
     into<c_floatVector>,
     "<floatVector>text</floatVector>",
     {106, 21, 21, 21, 10}},
    // The value after the refused attribute is then a text between elements.
    {"AttributeOfASimpleElement",
     into<c_floatVector>,
     "<floatVector><x a='1'>5</x><y>2</y><z>3</z></floatVector>",
     {39, 106, 21, 21, 10}},
    // The end that stands at the close is that of x.
    {"AttributeOfAnEmptySimpleElement",
     into<c_floatVector>,
     "<floatVector><x a='1'/><y>2</y><z>3</z></floatVector>",
     {39, 21, 21, 10}},
    {"ElementInANumber",
     into<c_floatVector>,
     "<floatVector><x><w/></x><y>2</y><z>3</z></floatVector>",
     {29, 21, 21, 10}},
    {"ElementAfterTheLast",
     into<c_floatVector>,
     "<floatVector><x>1</x><y>2</y><z>3</z><w/></floatVector>",
     {10}},
    {"TextBetweenElements",
     into<c_floatVector>,
     "<floatVector><x>1</x>text<y>2</y><z>3</z></floatVector>",
     {106, 21, 21, 10}},
    {"EndOfTheDocumentBetweenElements",
     into<c_floatVector>,
     "<floatVector><x>1</x><y>2</y><z>3</z>",
     {101, 10}},
    {"ElementInATextOfTokens", into<c_imagingMode>, "<imagingMode><x/></imagingMode>", {29, 10}},
    {"EndOfTheDocumentInATextOfTokens", into<c_imagingMode>, "<imagingMode>SM", {29, 101, 10}},
    {"AttributeOfATextOfTokens", into<c_imagingMode>, "<imagingMode a='1'>SM</imagingMode>", {39}},
    {"ElementInANumberWithAttributes",
     into<Coefficient>,
     "<coefficient exponent='1'><x/></coefficient>",
     {29, 10}},
    {"MissingAttribute", into<Region>, "<coverageRegionMin>1</coverageRegionMin>", {25}},
    {"BadAttributeAndBadNumber",
     into<Coefficient>,
     "<coefficient exponent='-1'>one</coefficient>",
     {37, 35}},
    {"NoTime",
     into<Center>,
     "<sceneCenterCoord><lat>1</lat><lon>1</lon><azimuthTimeUTC>noon</azimuthTimeUTC>"
     "<rangeTime>1</rangeTime><incidenceAngle>1</incidenceAngle></sceneCenterCoord>",
     {35}},
    // Not a number is on neither side of a bound.
    {"NotANumber",
     into<Center>,
     "<sceneCenterCoord><lat>NaN</lat><lon>1</lon><azimuthTimeUTC>2008-03-10T13:32:20Z"
     "</azimuthTimeUTC><rangeTime>1</rangeTime><incidenceAngle>1</incidenceAngle>"
     "</sceneCenterCoord>",
     {37, 36}},
    // An unread beam does not count, so the list comes short of its one.
    {"ElementInAnEntryOfAList",
     into<BeamList>,
     "<beamList><beamID><x/></beamID></beamList>",
     {29, 21, 10}},
    // The reader stands on no element any more, so the list is over.
    {"EndOfTheDocumentInAnEntryOfAList",
     into<BeamList>,
     "<beamList><beamID>a</beamID><beamID>b",
     {29, 101, 10}},
    {"EndOfTheDocumentBetweenEntriesOfAList",
     into<BeamList>,
     "<beamList><beamID>a</beamID>",
     {101, 10}},
    // Ten elements stand before the statistics and one after them; the end is theirs.
    {"AttributeOfRawMarkup",
     into<Statistics>,
     "<rawDataStatisticsAndCorrection><quantisationStatistics a='1'/>"
     "</rawDataStatisticsAndCorrection>",
     {21, 21, 21, 21, 21, 21, 21, 21, 21, 21, 39, 21, 10}},
    {"ElementInAListOfTokens",
     into<Statistics>,
     "<rawDataStatisticsAndCorrection><appliedCorrectionID><x/></appliedCorrectionID>"
     "</rawDataStatisticsAndCorrection>",
     {21, 21, 21, 21, 21, 21, 21, 21, 21, 21, 29, 10}},
    {"NoChoice",
     into<ModeInfo>,
     "<imagingModeSpecificInfo><other/></imagingModeSpecificInfo>",
     {31, 10}},
    {"TextAfterAChoice",
     into<ModeInfo>,
     "<imagingModeSpecificInfo><stripMap><azimuthBeamID>a</azimuthBeamID></stripMap>text"
     "</imagingModeSpecificInfo>",
     {106, 10}},
    {"NoDocumentForARoot", into_root, "", {101, 31}},
    // What cannot be read is not stored, so it is not compared either.
    {"ElementInATextOfARoot", into_root, "<chirpSlope><x/></chirpSlope>", {29}},
    {"AttributeOfATextOfARoot", into_root, "<chirpSlope a='1'>UP</chirpSlope>", {39}},
    {"ForeignTextOfARoot", into_root, "<chirpSlope>up</chirpSlope>", {38}},
    {"ElementInAListOfARoot", into_root, "<imagingMode><x/></imagingMode>", {29}},
    {"ForeignTokenInAListOfARoot", into_root, "<imagingMode>SM x SL</imagingMode>", {38}},
};

class Tolerance : public testing::TestWithParam<Case> {};

struct Told {
  int result;
  Codes codes;
};

// Reads, tolerating that many faults; the next one ends the read.
Told tolerating(std::size_t faults, const Case& c) {
  Told told{};
  lmx::c_xml_reader_memory reader(c.document.data(), c.document.size());
  reader.set_policy([&](const lmx::Diagnostic& fault) {
    told.codes.push_back(fault.code);
    return told.codes.size() > faults ? fault.code : lmx::error_none;
  });
  told.result = c.read(reader);
  return told;
}

TEST_P(Tolerance, TellsEveryFaultInOrderAndComesToAnEnd) {
  constexpr std::size_t enough = 100;
  const Told told = tolerating(enough, GetParam());
  EXPECT_EQ(told.codes, GetParam().codes);
  EXPECT_EQ(told.result, 0);
}

TEST_P(Tolerance, AnyFaultCanEndTheReadWithItsCode) {
  const Codes& all = GetParam().codes;
  for (std::size_t n = 0; n < all.size(); ++n) {
    const Told told = tolerating(n, GetParam());
    EXPECT_EQ(told.result, all[n]) << "fault " << n;
    EXPECT_EQ(told.codes, Codes(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(n) + 1));
  }
}

INSTANTIATE_TEST_SUITE_P(Reading, Tolerance, testing::ValuesIn(cases),
                         [](const auto& set) { return std::string(set.param.name); });

// An unreadable value of a root leaves the member chosen, and nothing in it.
TEST(Root, StoresNothingThatCannotBeRead) {
  const auto read = [](c_version40& root, const std::string& document) {
    lmx::c_xml_reader_memory reader(document.data(), document.size());
    reader.set_policy([](const lmx::Diagnostic&) { return lmx::error_none; });
    reader.value_text = "UP";  // of whatever was read before
    EXPECT_EQ(root.unmarshal(reader), 0);
  };
  c_version40 text;
  read(text, "<chirpSlope>D<x/>OWN</chirpSlope>");
  EXPECT_EQ(text.getchosen(), c_version40::e_chirpSlope);
  EXPECT_EQ(text.get_chirpSlope(), "");
  c_version40 list;
  read(list, "<imagingMode>SM <x/>SL</imagingMode>");
  EXPECT_EQ(list.getchosen(), c_version40::e_imagingMode);
  EXPECT_EQ(list.size_imagingMode(), 0U);
}

// An attribute that is asked for where no start tag has been entered has no value to give.
TEST(Attribute, WithoutAValueIsTwentyEight) {
  Coefficient object;
  const std::string document = "<coefficient exponent='4'>1</coefficient>";
  for (const bool tolerated : {false, true}) {
    lmx::c_xml_reader_memory reader(document.data(), document.size());
    Codes codes;
    reader.set_policy([&](const lmx::Diagnostic& fault) {
      codes.push_back(fault.code);
      return tolerated ? lmx::error_none : fault.code;
    });
    reader.attribute_name = "exponent";
    lmx::elmx_error error{};
    EXPECT_EQ(
        binding::read_attribute(Coefficient::s_description, &object, reader, "coefficient", &error),
        tolerated);
    EXPECT_EQ(error, tolerated ? 0 : 28);
    EXPECT_EQ(codes, Codes{28});
    EXPECT_EQ(object.get_exponent(), 0U) << "nothing is stored";
  }
}

}  // namespace
