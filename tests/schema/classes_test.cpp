// The annotation classes by themselves: what every member shape does, and the document's root.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "binding/document.h"
#include "binding/engine.h"
#include "binding/root.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"
#include "tests/support/scratch_folder.h"

namespace {

using namespace version40;
using lmx::elmx_error;

template <class Class>
elmx_error read(Class& object, const std::string& text) {
  return object.unmarshal(text);
}

const std::string general_header =
    "<generalHeader fileName=\"f\"><itemName>i</itemName><mission>m</mission><source>s</source>"
    "<destination>d</destination><generationSystem version=\"1\">g</generationSystem>"
    "<generationTime>2008-03-10T13:32:20Z</generationTime></generalHeader>";

c_generalHeader header() {
  c_generalHeader made;
  EXPECT_EQ(read(made, general_header), 0);
  return made;
}

// --- Scalars -------------------------------------------------------------------------------------

TEST(Scalar, UnsetKeepsTheValue) {
  c_generalHeader h;
  EXPECT_FALSE(h.isset_remark());
  EXPECT_EQ(h.get_remark(), "");
  EXPECT_EQ(h.set_remark("old"), 0);
  EXPECT_TRUE(h.isset_remark());
  h.unset_remark();
  EXPECT_FALSE(h.isset_remark());
  EXPECT_EQ(h.get_remark(), "old");
}

TEST(Scalar, SetChecksNothing) {
  c_generalHeader h = header();
  EXPECT_EQ(h.set_mission(std::string(500, 'x')), 0);
  std::string text;
  EXPECT_EQ(h.marshal(&text), 0) << "values are not checked on writing";
  c_generalHeader back;
  EXPECT_EQ(read(back, text), lmx::error_too_long);
}

TEST(Enumerated, NumberOfAForeignTextIsNone) {
  c_chirpSlope slope;
  EXPECT_TRUE(slope.setenum_chirpSlope(e_UPDOWN));
  EXPECT_EQ(slope.getenum_chirpSlope(), 3);
  EXPECT_FALSE(slope.setenum_chirpSlope(e_HH)) << "4 is no chirp slope";
  EXPECT_FALSE(slope.setenum_chirpSlope(e_no_match));
  EXPECT_EQ(slope.get_chirpSlope(), "UPDOWN");
  EXPECT_EQ(slope.set_chirpSlope("SIDEWAYS"), 0);
  EXPECT_EQ(slope.getenum_chirpSlope(), 0);
}

TEST(Nested, AskingForAWritableObjectMarksItPresent) {
  c_generalHeader h;
  h.set_fileName("f");
  h.set_itemName("i");
  h.set_mission("m");
  h.set_source("s");
  h.set_destination("d");
  lmx::c_datetime time;
  time = "2008-03-10T13:32:20Z";
  h.set_generationTime(time);
  EXPECT_FALSE(h.is_occurs_ok());
  h.get_generationSystem();
  EXPECT_TRUE(h.is_occurs_ok());
}

// --- Lists ---------------------------------------------------------------------------------------

TEST(ObjectList, StopsAtItsMaximum) {
  c_dblPolynom polynomial;
  for (int i = 0; i < 256; ++i) ASSERT_EQ(polynomial.append_coefficient(), 0);
  EXPECT_EQ(polynomial.append_coefficient(), 26);
  EXPECT_EQ(polynomial.insert_coefficient(0), 26);
  EXPECT_EQ(polynomial.insert_coefficient(300), 26);
  EXPECT_EQ(polynomial.size_coefficient(), 256U);
}

TEST(ObjectList, GrowsToTheIndexAskedFor) {
  c_dblPolynom polynomial;
  polynomial.get_coefficient(3).set_coefficient(7);
  EXPECT_EQ(polynomial.size_coefficient(), 4U);
  EXPECT_EQ(std::as_const(polynomial).get_coefficient(3).get_coefficient(), 7);
  EXPECT_EQ(std::as_const(polynomial).get_coefficient(0).get_coefficient(), 0);
}

TEST(ObjectList, InsertsBeforeAndAppendsPastTheEnd) {
  c_dblPolynom p;
  p.insert_coefficient(9);
  p.back_coefficient().set_coefficient(1);
  p.insert_coefficient(0);
  p.get_coefficient(0).set_coefficient(2);
  EXPECT_EQ(std::as_const(p).get_coefficient(0).get_coefficient(), 2);
  EXPECT_EQ(std::as_const(p).get_coefficient(1).get_coefficient(), 1);
  p.delete_coefficient(0);
  EXPECT_EQ(p.size_coefficient(), 1U);
  EXPECT_EQ(p.back_coefficient().get_coefficient(), 1);
  p.clear_coefficient();
  EXPECT_EQ(p.size_coefficient(), 0U);
}

TEST(ObjectListDeathTest, AssertsWithTheMembersText) {
  c_dblPolynom p;
  EXPECT_DEATH(p.get_coefficient(300), "level1bProduct40: assertion failed: a_index < 256");
  EXPECT_DEATH(std::as_const(p).get_coefficient(0), "a_index < m_coefficient.size\\(\\)");
  EXPECT_DEATH(p.delete_coefficient(0), "a_index < m_coefficient.size\\(\\)");
  version34::c_level1Product product;
  EXPECT_DEATH(product.get_productQuality().get_rawDataQuality(4),
               "level1bProduct34: assertion failed: a_index < 4");
}

TEST(TokenList, ClearLeavesTheFlag) {
  c_imagingMode mode;
  EXPECT_FALSE(mode.is_occurs_ok());
  EXPECT_EQ(mode.append_imagingMode("SM"), 0);
  EXPECT_TRUE(mode.is_occurs_ok());
  mode.clear_imagingMode();
  EXPECT_EQ(mode.size_imagingMode(), 0U);
  EXPECT_TRUE(mode.is_occurs_ok());
}

TEST(TokenList, OptionalOnesTellPresenceApartFromTokens) {
  c_segmentInfoType segment;
  segment.append_DRAoffset("SRA");
  segment.clear_DRAoffset();
  EXPECT_TRUE(segment.isset_DRAoffset());
  segment.unset_DRAoffset();
  EXPECT_FALSE(segment.isset_DRAoffset());
}

TEST(TokenList, AForeignNumberLeavesTheFlagAndAKnownOneSetsIt) {
  using Change = bool (*)(c_segmentInfoType & segment, elmx_enums number);
  const Change changes[] = {
      [](c_segmentInfoType& s, elmx_enums number) { return s.appendenum_DRAoffset(number); },
      [](c_segmentInfoType& s, elmx_enums number) { return s.insertenum_DRAoffset(0, number); },
      [](c_segmentInfoType& s, elmx_enums number) { return s.setenum_DRAoffset(0, number); }};
  for (const Change change : changes) {
    c_segmentInfoType segment;
    EXPECT_FALSE(change(segment, e_HH));
    EXPECT_FALSE(segment.isset_DRAoffset());
    EXPECT_EQ(segment.size_DRAoffset(), 0U);
    EXPECT_TRUE(change(segment, e_DRAFore));
    EXPECT_TRUE(segment.isset_DRAoffset());
    EXPECT_EQ(segment.getenum_DRAoffset(0), e_DRAFore);
    EXPECT_FALSE(change(segment, e_HH));
    EXPECT_TRUE(segment.isset_DRAoffset()) << "as it was";
  }
}

TEST(TokenList, WorksByNumbersToo) {
  c_imagingMode mode;
  EXPECT_TRUE(mode.appendenum_imagingMode(e_SM));
  EXPECT_TRUE(mode.insertenum_imagingMode(0, e_SL));
  EXPECT_FALSE(mode.appendenum_imagingMode(e_HH));
  EXPECT_TRUE(mode.setenum_imagingMode(5, e_HS)) << "past the end it appends";
  EXPECT_EQ(mode.size_imagingMode(), 3U);
  EXPECT_EQ(mode.getenum_imagingMode(0), e_SL);
  EXPECT_EQ(mode.get_imagingMode(2), "HS");
  EXPECT_TRUE(mode.setenum_imagingMode(1, e_SC)) << "in the place of what stood there";
  EXPECT_EQ(mode.size_imagingMode(), 3U);
  EXPECT_EQ(mode.get_imagingMode(1), "SC");
  mode.set_imagingMode(0, "foreign");
  EXPECT_EQ(mode.getenum_imagingMode(0), 0);
}

TEST(StringList, SetsInsertsAndDeletesByIndex) {
  c_level1Product product;
  auto& list = product.get_productInfo().get_acquisitionInfo().get_polarisationList();
  EXPECT_FALSE(list.is_occurs_ok());
  list.set_polLayer(7, "HH");
  list.insert_polLayer(0, "VV");
  list.insert_polLayer(9, "HV");
  ASSERT_EQ(list.size_polLayer(), 3U);
  EXPECT_EQ(list.get_polLayer(0), "VV");
  EXPECT_EQ(list.get_polLayer(2), "HV");
  list.delete_polLayer(1);
  EXPECT_EQ(list.get_polLayer(1), "HV");
  EXPECT_TRUE(list.is_occurs_ok());
}

// --- Copies --------------------------------------------------------------------------------------

using BeamList = c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo::
    c_scanSAR::c_beamList;

TEST(Copy, LeavesOutATextOutsideItsEnumeration) {
  c_chirpSlope slope;
  slope.set_chirpSlope("SIDEWAYS");
  const c_chirpSlope copy(slope);
  EXPECT_EQ(copy.get_chirpSlope(), "");
  EXPECT_FALSE(copy.is_occurs_ok());
}

TEST(Copy, MarksRequiredMembersPresentWhetherOrNotTheyWere) {
  const c_generalHeader empty;
  const c_generalHeader copy(empty);
  EXPECT_FALSE(empty.is_occurs_ok());
  EXPECT_TRUE(copy.is_occurs_ok());
  EXPECT_FALSE(copy.isset_remark());
}

TEST(Copy, IsDeep) {
  c_dblPolynom p;
  p.append_coefficient();
  p.back_coefficient().set_exponent(2);
  c_dblPolynom copy(p);
  copy.get_coefficient(0).set_exponent(5);
  EXPECT_EQ(std::as_const(p).get_coefficient(0).get_exponent(), 2U);
  EXPECT_TRUE(std::as_const(p).get_coefficient(0).isset_exponent());
  p = copy;
  EXPECT_EQ(std::as_const(p).get_coefficient(0).get_exponent(), 5U);
}

TEST(Copy, OfAListDropsForeignTokensAndKeepsAnOptionalFlag) {
  c_segmentInfoType segment;
  segment.append_DRAoffset("SRA");
  segment.append_DRAoffset("foreign");
  const c_segmentInfoType copy(segment);
  EXPECT_EQ(copy.size_DRAoffset(), 1U);
  segment.clear_DRAoffset();
  const c_segmentInfoType emptied(segment);
  EXPECT_TRUE(emptied.isset_DRAoffset());
}

TEST(Copy, OfAListWithoutAValueSetKeepsEveryText) {
  BeamList beams;
  beams.append_beamID("strip_003");
  beams.append_beamID("any text");
  const BeamList copy(beams);
  beams.set_beamID(0, "changed");
  ASSERT_EQ(copy.size_beamID(), 2U);
  EXPECT_EQ(copy.get_beamID(0), "strip_003");
  EXPECT_EQ(copy.get_beamID(1), "any text");
}

TEST(Swap, ExchangesValuesAndFlags) {
  c_generalHeader a = header();
  c_generalHeader b;
  a.set_remark("a");
  a.swap(b);
  EXPECT_FALSE(a.is_occurs_ok());
  EXPECT_EQ(b.get_remark(), "a");
  EXPECT_EQ(b.get_generationTime().year, 2008);
  b.reset();
  EXPECT_FALSE(b.isset_remark());
  EXPECT_EQ(b.get_remark(), "");
}

// --- Choices -------------------------------------------------------------------------------------

using ModeInfo = c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo;

TEST(Choice, HoldsOneMemberAndReleasesTheOther) {
  ModeInfo info;
  EXPECT_EQ(info.getchosen(), ModeInfo::e_nothing_chosen);
  EXPECT_EQ(ModeInfo::e_nothing_chosen, 3);
  EXPECT_FALSE(info.is_occurs_ok());
  info.get_stripMap().set_azimuthBeamID("x");
  EXPECT_EQ(info.getchosen(), ModeInfo::e_stripMap);
  EXPECT_EQ(info.get_stripMap().get_azimuthBeamID(), "x") << "the held object";
  info.get_spotLight();
  EXPECT_EQ(info.getchosen(), ModeInfo::e_spotLight);
  ModeInfo copy(info);
  EXPECT_EQ(copy.getchosen(), ModeInfo::e_spotLight);
  copy.reset();
  EXPECT_EQ(copy.getchosen(), ModeInfo::e_nothing_chosen);
}

TEST(ChoiceDeathTest, ReadingAMemberThatIsNotChosenIsFatal) {
  const ModeInfo info;
  EXPECT_DEATH(info.get_stripMap(), "chosen == e_stripMap");
}

// A class with a choice whose parts tests can reach.
struct OpenModeInfo : ModeInfo {
  using ModeInfo::marshal_child_elements;
};

TEST(Choice, WritingNothingChosenIsSeven) {
  const OpenModeInfo info;
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(info.marshal_child_elements(writer), 7);
  EXPECT_EQ(out.str(), "");
}

TEST(Choice, WritingAChosenMemberWithoutItsObjectIsFortyFive) {
  binding::choice dangling{0, nullptr};
  binding::class_description description = ModeInfo::s_description;
  description.choice_offset = 0;
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(binding::write_content(description, &dangling, writer), 45);
}

TEST(Choice, AnElementWhoseChosenMemberHasNoObjectIsFortyFiveToo) {
  ModeInfo info;
  const binding::class_description& description = ModeInfo::s_description;
  binding::part_of<binding::choice>(&info, description.choice_offset) = {0, nullptr};
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(binding::write_element(description, &info, writer, "imagingModeSpecificInfo"), 45);
  EXPECT_EQ(out.str(), "<imagingModeSpecificInfo>") << "it ends where the member should stand";
}

// --- Reading and writing -------------------------------------------------------------------------

TEST(Reading, OutOfOrderNamesTheExpectedElement) {
  c_generalHeader h;
  const std::string text = "<generalHeader fileName=\"f\"><mission>m</mission></generalHeader>";
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  EXPECT_EQ(h.unmarshal(reader), 21);
  EXPECT_EQ(reader.diagnostic()->name, "itemName");
  EXPECT_EQ(reader.diagnostic()->path, "/generalHeader");
  EXPECT_EQ(reader.diagnostic()->found, "<mission>");
  EXPECT_EQ(reader.diagnostic()->expected, "<itemName>");
}

// After each child the reader knows the names from that child on: one that is past is unknown, the
// child's own is not.
TEST(Reading, ForgetsTheNamesThatArePast) {
  const auto event_behind = [](const std::string& children) {
    c_generalHeader h;
    const std::string text = "<generalHeader fileName='f'>" + children + "</generalHeader>";
    lmx::c_xml_reader_memory reader(text.data(), text.size());
    EXPECT_EQ(h.unmarshal(reader), 21);
    return reader.current_event;
  };
  const std::string name = "<itemName>i</itemName>";
  EXPECT_EQ(event_behind(name + "<mission>m</mission>" + name), 1);
  EXPECT_GE(event_behind(name + name), 12);
}

TEST(Reading, ValueFaultsNameTheWholePath) {
  c_dblPolynom p;
  const std::string text = "<dblPolynom>\n  <validityRangeMin>x</validityRangeMin></dblPolynom>";
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  const auto error = binding::read_document(c_dblPolynom::s_description, &p, reader);
  EXPECT_EQ(error, 35);
  EXPECT_EQ(reader.diagnostic()->path, "/dblPolynom/validityRangeMin");
  EXPECT_EQ(reader.diagnostic()->line, 2U);
  EXPECT_EQ(reader.diagnostic()->column, 3U);
  EXPECT_EQ(reader.diagnostic()->found, "\"x\"");
}

TEST(Reading, AnotherRootIsSixteen) {
  c_generalHeader h;
  EXPECT_EQ(read(h, "<file/>"), 16);
  EXPECT_EQ(read(h, "<generalHeader xmlns='urn:x' fileName='f'/>"), 16);
}

TEST(Reading, AFileNameGivenAsTextIsParsedAsXml) {
  c_generalHeader h;
  EXPECT_EQ(h.unmarshal(std::string("/etc/hostname")), lmx::error_malformed);
  EXPECT_EQ(h.unmarshal("/nonexistent.xml"), 1);
}

TEST(Reading, ConstructorsGiveTheResult) {
  elmx_error error{};
  const c_generalHeader missing("/nonexistent.xml", &error);
  EXPECT_EQ(error, 1);
  const c_generalHeader text(general_header, &error);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(text.get_mission(), "m");
  const c_generalHeader memory(general_header.data(), general_header.size(), &error);
  EXPECT_EQ(error, 0);
}

TEST(Reading, AppendsToAUsedObjectAndFindsItsAttributesTwice) {
  c_generalHeader h = header();
  EXPECT_EQ(read(h, general_header), 3) << "the flag of fileName is set already";
  c_imagingMode mode;
  EXPECT_EQ(read(mode, "<imagingMode>SM</imagingMode>"), 0);
  EXPECT_EQ(read(mode, "<imagingMode>SL</imagingMode>"), 0);
  EXPECT_EQ(mode.size_imagingMode(), 2U);
}

TEST(Reading, ATolerantPolicyGoesOnAndKeepsTheValue) {
  c_chirpSlope slope;
  const std::string text = "<chirpSlope>SIDEWAYS</chirpSlope>";
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  reader.set_policy([](const lmx::diagnostic&) { return lmx::error_none; });
  EXPECT_EQ(slope.unmarshal(reader), 0);
  EXPECT_EQ(slope.get_chirpSlope(), "SIDEWAYS");
  EXPECT_TRUE(slope.is_occurs_ok());
}

TEST(Reading, AMissingBeamIsReportedTwiceUnderATolerantPolicy) {
  const std::string text = "<beamList><other/></beamList>";
  lmx::c_xml_reader_memory reader(text.data(), text.size());
  std::vector<std::string> names;
  reader.set_policy([&](const lmx::diagnostic& fault) {
    names.push_back(fault.name);
    return lmx::error_none;
  });
  c_level1Product product;
  auto& list = product.get_productInfo()
                   .get_acquisitionInfo()
                   .get_imagingModeSpecificInfo()
                   .get_scanSAR()
                   .get_beamList();
  binding::read_document(list.s_description, &list, reader);
  ASSERT_GE(names.size(), 2U);
  EXPECT_EQ(names[0], "beamID");
  EXPECT_EQ(names[1], "beamList");
}

TEST(WritingDeathTest, AMissingRequiredMemberIsFatal) {
  const c_generalHeader h;
  std::string text;
  EXPECT_DEATH(h.marshal(&text), "is_occurs_ok\\(\\)");
}

TEST(Writing, LaysElementsOutByTabs) {
  c_generalHeader h = header();
  h.set_remark("a<b");
  std::string text;
  ASSERT_EQ(h.marshal(&text), 0);
  EXPECT_EQ(text,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<generalHeader fileName=\"f\">\n"
            "\t<itemName>i</itemName>\n"
            "\t<mission>m</mission>\n"
            "\t<source>s</source>\n"
            "\t<destination>d</destination>\n"
            "\t<generationSystem version=\"1\">g</generationSystem>\n"
            "\t<generationTime>2008-03-10T13:32:20Z</generationTime>\n"
            "\t<remark>a&lt;b</remark>\n"
            "</generalHeader>\n");
}

TEST(Writing, ToAFileThatCannotBeOpenedIsOne) {
  EXPECT_EQ(header().marshal("/nonexistent/x.xml"), 1);
}

TEST(Writing, ToAFullDeviceIsOne) {
  EXPECT_EQ(header().marshal("/dev/full"), 1);
}

TEST(Writing, ToAFileReplacesWhatItHeld) {
  const ScratchFolder folder;
  const auto path = folder / "header.xml";
  c_generalHeader h = header();
  h.set_remark(std::string(500, 'x'));
  EXPECT_EQ(h.marshal(path.c_str()), 0);
  h.unset_remark();
  std::string text;
  EXPECT_EQ(h.marshal(&text), 0);
  EXPECT_EQ(h.marshal(path.c_str()), 0);
  EXPECT_EQ(std::filesystem::file_size(path), text.size());
}

TEST(Writing, AFailureLeavesTheTextAsItWas) {
  struct Failing : binding::document_writer {
    elmx_error write(lmx::c_xml_writer& writer) const override {
      writer(false) << "half";
      return lmx::error_nothing_chosen;
    }
  };
  std::string text = "old";
  EXPECT_EQ(Failing().to_text(&text), 7);
  EXPECT_EQ(text, "old");
}

TEST(Writing, ToAStreamIsTheSameText) {
  std::ostringstream out;
  std::string text;
  EXPECT_EQ(header().marshal(out), 0);
  EXPECT_EQ(header().marshal(&text), 0);
  EXPECT_EQ(out.str(), text);
}

TEST(Writing, ToAFileReadsBack) {
  const ScratchFolder folder;
  const auto path = folder / "header.xml";
  EXPECT_EQ(header().marshal(path.c_str()), 0);
  c_generalHeader back;
  EXPECT_EQ(back.unmarshal(path.c_str()), 0);
  EXPECT_EQ(back.get_destination(), "d");
}

TEST(Writing, ATextOfTokensIsTheirsWithABlankBetween) {
  c_imagingMode mode;
  mode.append_imagingMode("SM");
  mode.append_imagingMode("SL");
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(mode.marshal(writer, "imagingMode"), 0);
  EXPECT_EQ(out.str(), "<imagingMode>SM SL</imagingMode>");
}

TEST(AnyContent, IsTakenAndGivenBackAsItStands) {
  using Statistics = c_level1Product::c_processing::c_signalDataAnalysis::c_rawDataInfo::
      c_rawDataStatisticsAndCorrection;
  Statistics s;
  s.set_quantisationStatistics("<h n=\"1\">&amp;</h>");
  const Statistics copy(s);
  EXPECT_EQ(copy.get_quantisationStatistics(), "<h n=\"1\">&amp;</h>");
}

// --- The root ------------------------------------------------------------------------------------

TEST(Root, HoldsWhicheverGlobalElementTheDocumentHas) {
  c_version40 root;
  EXPECT_EQ(root.getchosen(), 9);
  EXPECT_EQ(root.unmarshal(std::string("<chirpSlope>UP</chirpSlope>")), 0);
  EXPECT_EQ(root.getchosen(), c_version40::e_chirpSlope);
  EXPECT_EQ(root.getenum_chirpSlope(), 1);
  EXPECT_TRUE(root.is_occurs_ok());
  root.reset();
  EXPECT_EQ(root.getchosen(), 9);
}

TEST(Root, AnUnknownRootIsThirtyOne) {
  version34::c_version34 root;
  EXPECT_EQ(root.unmarshal(std::string("<productInfo/>")), 31);
  EXPECT_EQ(root.unmarshal("/nonexistent.xml"), 1);
}

TEST(Root, KeepsATextOutsideItsSetUntilItEnds) {
  version34::c_version34 root;
  EXPECT_EQ(root.unmarshal(std::string("<chirpSlope>up</chirpSlope>")), 38);
  EXPECT_EQ(root.get_chirpSlope(), "up");
}

TEST(Root, TakesAnEmptyList) {
  c_version40 root;
  EXPECT_EQ(root.unmarshal(std::string("<imagingMode/>")), 0);
  EXPECT_EQ(root.getchosen(), 6);
  EXPECT_EQ(root.size_imagingMode(), 0U);
  std::string text = "old";
  EXPECT_EQ(root.marshal(&text), 0);
  EXPECT_EQ(text, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") << "an empty list writes nothing";
  const c_version40 copy(root);
  EXPECT_EQ(copy.getchosen(), 9) << "an empty list is copied as nothing chosen";
}

TEST(Root, ListsWorkWhileTheyAreChosen) {
  c_version40 root;
  EXPECT_EQ(root.append_imagingMode("SM"), 0);
  EXPECT_TRUE(root.appendenum_imagingMode(e_SL));
  EXPECT_EQ(root.size_imagingMode(), 2U);
  EXPECT_EQ(root.get_imagingMode(1), "SL");
  EXPECT_EQ(root.set_imagingMode(9, "SC"), 0);
  root.delete_imagingMode(0);
  EXPECT_EQ(root.getenum_imagingMode(0), e_SL);
  std::string text;
  EXPECT_EQ(root.marshal(&text), 0);
  EXPECT_TRUE(text.ends_with("<imagingMode>SL SC</imagingMode>\n"));
  root.get_level1Product();
  EXPECT_EQ(root.size_imagingMode(), 0U) << "another member is chosen";
}

TEST(Root, SettingATextReleasesWhatWasHeld) {
  c_version40 root;
  root.get_level1Product();
  EXPECT_FALSE(root.setenum_polLayer(e_SRA));
  EXPECT_FALSE(root.appendenum_imagingMode(e_HH));
  EXPECT_EQ(root.getchosen(), c_version40::e_level1Product) << "a foreign number changes nothing";
  EXPECT_EQ(root.set_polLayer("HV"), 0);
  EXPECT_EQ(root.getchosen(), c_version40::e_polLayer);
  EXPECT_FALSE(root.setenum_polLayer(e_SRA));
  EXPECT_TRUE(root.setenum_polLayer(e_VV));
  const c_version40 copy(root);
  EXPECT_EQ(copy.get_polLayer(), "VV");
  std::string text;
  EXPECT_EQ(root.marshal(&text), 0);
  EXPECT_TRUE(text.ends_with("<polLayer>VV</polLayer>\n"));
}

TEST(Root, ATextOutsideItsSetIsCopiedAsNothingChosen) {
  c_version40 root;
  EXPECT_EQ(root.set_chirpSlope("SIDEWAYS"), 0);
  EXPECT_EQ(root.getenum_chirpSlope(), 0);
  const c_version40 copy(root);
  EXPECT_EQ(copy.getchosen(), 9);
  root.append_imagingMode("foreign");
  const c_version40 second(root);
  EXPECT_EQ(second.getchosen(), 9);
}

TEST(Root, CopiesAndSwapsAnObject) {
  c_version40 root;
  ASSERT_EQ(root.unmarshal(general_header), 0);
  c_version40 copy(root);
  root.reset();
  ASSERT_EQ(copy.getchosen(), 0);
  EXPECT_EQ(std::as_const(copy).get_generalHeader().get_mission(), "m");
  root.swap(copy);
  EXPECT_EQ(copy.getchosen(), 9);
  copy = root;
  EXPECT_EQ(std::as_const(copy).get_generalHeader().get_source(), "s");
}

TEST(Root, WritingAChosenMemberWithoutItsObjectIsFortyFive) {
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  for (const int number :
       {c_version40::e_file, c_version40::e_polLayer, c_version40::e_imagingMode}) {
    EXPECT_EQ(binding::write_root_content(c_version40::s_description, {number, nullptr}, writer),
              45);
  }
  EXPECT_EQ(binding::write_root_content(c_version40::s_description, {9, nullptr}, writer), 7);
  EXPECT_EQ(out.str(), "");
}

TEST(RootDeathTest, AssertsWithTheRootsTexts) {
  c_version40 root;
  EXPECT_DEATH(std::as_const(root).get_level1Product(), "chosen == e_level1Product");
  std::string text;
  EXPECT_DEATH(root.marshal(&text), "is_occurs_ok\\(\\)");
  root.append_imagingMode("SM");
  EXPECT_DEATH(root.get_imagingMode(1), "a_index < u.m_imagingMode->size\\(\\)");
  EXPECT_DEATH(root.delete_imagingMode(1), "a_index < u.m_imagingMode->size\\(\\)");
}

TEST(Root, KnowsItsMembersByTheReadersPlace) {
  const std::string known = "<file/>";
  lmx::c_xml_reader_memory reader(known.data(), known.size());
  elmx_error error{};
  reader.get_element_event(nullptr, &error, &reader.current_name);
  EXPECT_TRUE(c_version40::is_member(reader, "file"));
  EXPECT_EQ(reader.current_event, 29);
  const std::string foreign = "<other/>";
  lmx::c_xml_reader_memory second(foreign.data(), foreign.size());
  second.get_element_event(nullptr, &error, &second.current_name);
  EXPECT_FALSE(c_version40::is_member(second, "other"));
  EXPECT_EQ(second.current_event, 7) << "as it was";
  second.current_event = 6;
  EXPECT_FALSE(c_version40::is_member(second, "other"));
}

// An element's start: not classified yet, unknown, or classified by another map, from 12 on.
TEST(Root, AsksOnlyAtAnElementsStart) {
  const std::string document = "<file/>";
  for (int event = 0; event <= 20; ++event) {
    lmx::c_xml_reader_memory reader(document.data(), document.size());
    elmx_error error{};
    reader.get_element_event(nullptr, &error, &reader.current_name);
    reader.current_event = event;
    const bool at_start = event == 7 || event == 1 || event >= 12;
    EXPECT_EQ(c_version40::is_member(reader, "file"), at_start) << event;
    EXPECT_EQ(reader.current_event, at_start ? 29 : event);
  }
}

// The bracket that ends the start tag of a text or list is indented like the tag, which shows below
// the outermost level only.
TEST(Root, WritesTextsAndListsAtAnyDepth) {
  const auto written = [](const c_version40& root) {
    std::ostringstream out;
    lmx::c_xml_writer writer(out, 0, "\t", "\n");
    writer.depth = 1;
    EXPECT_EQ(root.marshal(writer, "ignored"), 0);
    return out.str();
  };
  c_version40 root;
  root.set_polLayer("HV");
  EXPECT_EQ(written(root), "\t<polLayer\t>HV</polLayer>\n");
  root.append_imagingMode("SM");
  root.append_imagingMode("SL");
  EXPECT_EQ(written(root), "\t<imagingMode\t>SM SL</imagingMode>\n");
}

}  // namespace
