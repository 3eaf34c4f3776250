// What a second read into the same object does: nothing is cleared first.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "binding/document.h"
#include "level1bProduct40/version40.h"

namespace {

using namespace version40;

std::string polynomial(int coefficients) {
  std::string text =
      "<dblPolynom><validityRangeMin>0</validityRangeMin><validityRangeMax>1</validityRangeMax>"
      "<referencePoint>0</referencePoint><polynomialDegree>1</polynomialDegree>";
  for (int i = 0; i < coefficients; ++i) text += "<coefficient>1</coefficient>";
  return text + "</dblPolynom>";
}

template <class Class>
int read(Class& object, const std::string& document) {
  return binding::read_memory(Class::s_description, &object, document.data(), document.size());
}

TEST(SecondRead, AppendsUpToTheMaximumAndStopsThere) {
  c_dblPolynom p;
  EXPECT_EQ(read(p, polynomial(255)), 0);
  EXPECT_EQ(read(p, polynomial(1)), 0) << "one more fits";
  EXPECT_EQ(p.size_coefficient(), 256U);
  EXPECT_EQ(read(p, polynomial(1)), lmx::error_element_not_ended) << "the next is out of place";
  EXPECT_EQ(p.size_coefficient(), 256U);
  p.set_polynomialDegree(9);
  EXPECT_EQ(read(p, polynomial(0)), 0);
  EXPECT_EQ(p.get_polynomialDegree(), 1U) << "values are overwritten";
}

using ModeInfo = c_level1Product::c_productInfo::c_acquisitionInfo::c_imagingModeSpecificInfo;

std::string strip(const std::string& beam) {
  return "<imagingModeSpecificInfo><stripMap><azimuthBeamID>" + beam +
         "</azimuthBeamID></stripMap></imagingModeSpecificInfo>";
}

// What is lost is the caller's, who deletes it here.
TEST(SecondRead, LosesTheChosenObject) {
  ModeInfo info;
  EXPECT_EQ(read(info, strip("a")), 0);
  const std::unique_ptr<ModeInfo::c_stripMap> lost(&info.get_stripMap());
  EXPECT_EQ(read(info, strip("b")), 0);
  EXPECT_NE(&info.get_stripMap(), lost.get());
  EXPECT_EQ(info.get_stripMap().get_azimuthBeamID(), "b");
  EXPECT_EQ(lost->get_azimuthBeamID(), "a") << "nobody released it";
}

TEST(SecondRead, AfterAResetLosesNothing) {
  ModeInfo info;
  EXPECT_EQ(read(info, strip("a")), 0);
  info.reset();
  EXPECT_EQ(read(info, strip("b")), 0);
  EXPECT_EQ(std::as_const(info).get_stripMap().get_azimuthBeamID(), "b");
}

TEST(SecondRead, OfARootLosesWhatItHeld) {
  c_version40 root;
  EXPECT_EQ(root.unmarshal(std::string("<chirpSlope>UP</chirpSlope>")), 0);
  const std::unique_ptr<const std::string> lost(&root.get_chirpSlope());
  EXPECT_EQ(root.unmarshal(std::string("<imagingMode>SM SL</imagingMode>")), 0);
  EXPECT_EQ(root.getchosen(), c_version40::e_imagingMode);
  EXPECT_EQ(root.size_imagingMode(), 2U);
  EXPECT_EQ(*lost, "UP");
}

}  // namespace
