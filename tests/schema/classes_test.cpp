// The annotation classes by themselves: what every member shape does.

#include <gtest/gtest.h>

#include <sstream>

#include "binding/document.h"
#include "binding/engine.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct40/version40.h"
#include "tests/schema/general_header.h"

namespace {

using namespace version40;
using lmx::elmx_error;

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

TEST(ObjectListDeathTest, AnEmptyListHasNoLastAndNothingToDelete) {
  c_dblPolynom p;
  p.clear_coefficient();
  EXPECT_EQ(p.size_coefficient(), 0U) << "there is nothing to clear, and no harm in it";
  EXPECT_DEATH(p.back_coefficient(), "assertion failed: !m_coefficient.empty\\(\\)");
  p.append_coefficient();
  EXPECT_DEATH(p.delete_coefficient(1), "a_index < m_coefficient.size\\(\\)");
  EXPECT_EQ(p.size_coefficient(), 1U);
}

TEST(StringListDeathTest, AnEmptyListHasNothingToDeleteOrToGet) {
  c_imagingMode mode;
  mode.clear_imagingMode();
  EXPECT_DEATH(mode.delete_imagingMode(0), "a_index < m_imagingMode.size\\(\\)");
  EXPECT_DEATH(mode.get_imagingMode(0), "a_index < m_imagingMode.size\\(\\)");
  EXPECT_DEATH(mode.getenum_imagingMode(0), "a_index < m_imagingMode.size\\(\\)");
  EXPECT_FALSE(mode.is_occurs_ok()) << "clearing sets no flag";
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
  binding::Choice dangling{0, nullptr};
  binding::ClassDescription description = ModeInfo::s_description;
  description.choice_offset = 0;
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(binding::write_content(description, &dangling, writer), 45);
}

TEST(Choice, AnElementWhoseChosenMemberHasNoObjectIsFortyFiveToo) {
  ModeInfo info;
  const binding::ClassDescription& description = ModeInfo::s_description;
  binding::part_of<binding::Choice>(&info, description.choice_offset) = {0, nullptr};
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  EXPECT_EQ(binding::write_element(description, &info, writer, "imagingModeSpecificInfo"), 45);
  EXPECT_EQ(out.str(), "<imagingModeSpecificInfo>") << "it ends where the member should stand";
}

}  // namespace
