// The product view: what its accessors do where a document lacks what they walk to.

#include <gtest/gtest.h>

#include <memory>

#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"

namespace {

template <class Root>
class View : public testing::Test {
 public:
  Root root;
  level1bProductBase& view = root;
};

using Roots =
    testing::Types<version34::c_version34, version35::c_version35, version40::c_version40>;
TYPED_TEST_SUITE(View, Roots);

TYPED_TEST(View, ReadsDefaultsFromAnEmptyDocumentAndChoosesTheProduct) {
  EXPECT_EQ(this->view.numberOfRows(), 0);
  EXPECT_STREQ(this->view.imageDataFormat(), "");
  EXPECT_EQ(this->view.calFactor(), 0);
  EXPECT_EQ(this->root.getchosen(), TypeParam::e_level1Product);
}

TYPED_TEST(View, ReplacesAnotherGlobalElement) {
  this->root.set_chirpSlope("UP");
  EXPECT_EQ(this->view.numberOfColumns(), 0);
  EXPECT_EQ(this->root.getchosen(), TypeParam::e_level1Product);
}

TYPED_TEST(View, ReadingCanGrowTheDocument) {
  EXPECT_STREQ(this->view.imageDataPath(2), "");
  EXPECT_STREQ(this->view.imageDataFilename(2), "");
  EXPECT_STREQ(this->view.polLayer(4), "");
  EXPECT_EQ(this->root.get_level1Product().get_productComponents().size_imageData(), 5U);
  EXPECT_EQ(this->view.stateVecPosX(1), 0);
  EXPECT_EQ(this->root.get_level1Product().get_platform().get_orbit().size_stateVec(), 2U);
}

TYPED_TEST(View, BothSpacingsAreTheSameElement) {
  auto& product = this->root.get_level1Product();
  product.get_productSpecific().get_complexImageInfo(0).get_projectedSpacingRange().set_slantRange(
      1.36F);
  EXPECT_EQ(this->view.projectedSpacingSlantRange(), 1.36F);
  EXPECT_EQ(this->view.slantRangeSpacing(), 1.36F);
}

TYPED_TEST(View, SecondsAreSinglePrecision) {
  lmx::c_datetime time;
  time = "2008-12-31T23:59:59.999999Z";
  this->root.get_level1Product().get_productInfo().get_sceneInfo().get_start().set_timeUTC(time);
  EXPECT_EQ(this->view.sceneStartYear(), 2008);
  EXPECT_EQ(this->view.sceneStartMonth(), 12);
  EXPECT_EQ(this->view.sceneStartDay(), 31);
  EXPECT_EQ(this->view.sceneStartHour(), 23);
  EXPECT_EQ(this->view.sceneStartMinute(), 59);
  EXPECT_EQ(this->view.sceneStartSecond(), 59.999999F);
}

TYPED_TEST(View, CountsStateVectorsIn64Bits) {
  this->root.get_level1Product().get_platform().get_orbit().get_orbitHeader().set_numStateVectors(
      18446744073709551615U);
  EXPECT_EQ(this->view.numStateVectors(), 18446744073709551615U);
}

TYPED_TEST(View, EndsTheProcessWhereATextIsMissing) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(this->view.productVariant(), "a_index < m_productVariant.size\\(\\)");
  EXPECT_DEATH(this->view.mapProjection(), "a_index < m_mapProjection.size\\(\\)");
  EXPECT_DEATH(this->view.projection(), "a_index < m_projection.size\\(\\)");
  EXPECT_DEATH(this->view.quicklookDataStartWith(),
               "a_index < m_quicklookDataStartWith.size\\(\\)");
  EXPECT_DEATH(this->view.slantToGroundCoefficient(256), "a_index < 256");
}

TYPED_TEST(View, IsDeletedThroughItsBase) {
  const std::unique_ptr<level1bProductBase> owned = std::make_unique<TypeParam>();
  EXPECT_EQ(owned->numberOfLayers(), 0);
}

}  // namespace
