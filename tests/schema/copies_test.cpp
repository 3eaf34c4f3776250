// Copies of annotation objects: by construction, assignment, assign_ and swap, also with
// themselves.

#include <gtest/gtest.h>

#include <utility>

#include "level1bProduct40/version40.h"
#include "tests/schema/general_header.h"

namespace {

using namespace version40;

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

// --- assign_, in each of its forms
// ----------------------------------------------------------------

using ModeInfo = c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo;
using Specific = c_level1Product::c_productSpecific;

TEST(Assign, ToARequiredObjectCopiesItAndMarksItPresent) {
  c_generalHeader h = header();
  h.reset();
  c_generalHeader::c_generationSystem system;
  system.set_generationSystem("g");
  system.set_version("2");
  c_generalHeader::c_generationSystem& held = h.assign_generationSystem(system);
  system.set_version("3");
  EXPECT_EQ(&held, &h.get_generationSystem()) << "it gives what it assigned to";
  EXPECT_EQ(held.get_version(), "2");
}

TEST(Assign, ToAnOptionalObjectMarksItPresent) {
  Specific specific;
  EXPECT_FALSE(specific.isset_geocodedImageInfo());
  specific.assign_geocodedImageInfo(Specific::c_geocodedImageInfo());
  EXPECT_TRUE(specific.isset_geocodedImageInfo());
}

TEST(Assign, ToAnIndexPastTheEndGrowsTheList) {
  c_dblPolynom::c_dblPolynom_coefficient seven;
  seven.set_coefficient(7);
  c_dblPolynom p;
  c_dblPolynom::c_dblPolynom_coefficient& held = p.assign_coefficient(2, seven);
  EXPECT_EQ(p.size_coefficient(), 3U);
  EXPECT_EQ(&held, &p.get_coefficient(2));
  EXPECT_EQ(std::as_const(p).get_coefficient(2).get_coefficient(), 7);
  EXPECT_EQ(std::as_const(p).get_coefficient(1).get_coefficient(), 0);
  p.assign_coefficient(0, held);
  EXPECT_EQ(p.size_coefficient(), 3U) << "an index that is there is assigned to";
  EXPECT_EQ(std::as_const(p).get_coefficient(0).get_coefficient(), 7);
}

TEST(AssignDeathTest, ToAnIndexAtTheMaximumIsFatal) {
  c_dblPolynom p;
  EXPECT_DEATH(p.assign_coefficient(256, {}), "a_index < 256");
}

TEST(Assign, ToAChoiceReleasesTheOtherAndChooses) {
  ModeInfo info;
  info.get_scanSAR();
  ModeInfo::c_stripMap strip;
  strip.set_azimuthBeamID("b");
  info.assign_stripMap(strip);
  EXPECT_EQ(info.getchosen(), ModeInfo::e_stripMap);
  EXPECT_EQ(std::as_const(info).get_stripMap().get_azimuthBeamID(), "b");
}

TEST(Assign, ToARootReleasesTheOtherAndChooses) {
  c_version40 root;
  root.set_polLayer("HH");
  root.assign_generalHeader(header());
  EXPECT_EQ(root.getchosen(), c_version40::e_generalHeader);
  EXPECT_EQ(std::as_const(root).get_generalHeader().get_mission(), "m");
}

// --- Presence
// -------------------------------------------------------------------------------------

TEST(Unset, LeavesTheObjectInPlaceAndOutOfACopy) {
  using Analysis = c_level1Product::c_processing::c_signalDataAnalysis;
  Analysis analysis;
  analysis.get_rawDataInfo().set_numberOfRawDataBlocks(4);
  analysis.unset_rawDataInfo();
  EXPECT_FALSE(analysis.isset_rawDataInfo());
  EXPECT_EQ(std::as_const(analysis).get_rawDataInfo().get_numberOfRawDataBlocks(), 4);
  const Analysis copy(analysis);
  EXPECT_FALSE(copy.isset_rawDataInfo());
  EXPECT_EQ(copy.get_rawDataInfo().get_numberOfRawDataBlocks(), 0);
  analysis.get_rawDataInfo();
  EXPECT_TRUE(analysis.isset_rawDataInfo()) << "asking for it marks it present again";
  EXPECT_EQ(std::as_const(analysis).get_rawDataInfo().get_numberOfRawDataBlocks(), 4);
}

// --- With itself
// ----------------------------------------------------------------------------------

// An object of every form: values, objects, and lists of each kind.
c_segmentInfoType segment() {
  c_segmentInfoType made;
  made.set_segmentID(7);
  made.append_DRAoffset("SRA");
  made.get_dataSegment().set_numberOfRows(3);
  return made;
}

void expect_segment(const c_segmentInfoType& s) {
  EXPECT_EQ(s.get_segmentID(), 7);
  EXPECT_TRUE(s.isset_DRAoffset());
  ASSERT_EQ(s.size_DRAoffset(), 1U);
  EXPECT_EQ(s.get_DRAoffset(0), "SRA");
  EXPECT_EQ(s.get_dataSegment().get_numberOfRows(), 3);
}

TEST(WithItself, SwapChangesNothing) {
  c_segmentInfoType s = segment();
  s.swap(s);
  expect_segment(s);
  c_dblPolynom p;
  p.get_coefficient(1).set_coefficient(5);
  p.swap(p);
  ASSERT_EQ(p.size_coefficient(), 2U);
  EXPECT_EQ(std::as_const(p).get_coefficient(1).get_coefficient(), 5);
  ModeInfo info;
  info.get_spotLight();
  info.swap(info);
  EXPECT_EQ(info.getchosen(), ModeInfo::e_spotLight);
  c_version40 root;
  root.append_imagingMode("SM");
  root.swap(root);
  EXPECT_EQ(root.get_imagingMode(0), "SM");
}

TEST(WithItself, AssignmentChangesNothing) {
  c_segmentInfoType s = segment();
  const c_segmentInfoType& same = s;
  s = same;
  expect_segment(s);
  c_dblPolynom p;
  p.get_coefficient(1).set_coefficient(5);
  p.assign_coefficient(1, std::as_const(p).get_coefficient(1));
  ASSERT_EQ(p.size_coefficient(), 2U);
  EXPECT_EQ(std::as_const(p).get_coefficient(1).get_coefficient(), 5);
  ModeInfo info;
  info.get_stripMap().set_azimuthBeamID("b");
  info.assign_stripMap(std::as_const(info).get_stripMap());
  EXPECT_EQ(std::as_const(info).get_stripMap().get_azimuthBeamID(), "b");
}

}  // namespace
