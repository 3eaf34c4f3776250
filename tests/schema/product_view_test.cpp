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

// Every accessor has a value of its own, and so has the second of each list, where an accessor of
// the first must not look.
template <class Product>
void fill(Product& product) {
  lmx::c_datetime time;
  auto& info = product.get_productInfo();
  auto& variant = info.get_productVariantInfo();
  for (const char* text : {"MGD", "EEC"}) variant.append_productVariant(text);
  for (const char* text : {"GROUNDRANGE", "MAP"}) variant.append_projection(text);
  for (const char* text : {"UPS", "UTM"}) variant.append_mapProjection(text);
  info.get_acquisitionInfo().set_lookDirection("LEFT");
  auto& image = info.get_imageDataInfo();
  image.set_imageDataFormat("COSAR");
  image.set_numberOfLayers(3);
  image.set_imageDataDepth(4);
  for (int i = 0; i < 2; ++i) {
    auto& raster = image.get_imageRaster(static_cast<std::size_t>(i));
    raster.set_numberOfRows(100 + i);
    raster.set_numberOfColumns(200 + i);
    raster.get_rowSpacing().set_rowSpacing(1.25F + static_cast<float>(i));
    raster.get_columnSpacing().set_columnSpacing(2.5F + static_cast<float>(i));
  }
  auto& scene = info.get_sceneInfo();
  time = "2008-03-10T13:32:20.5Z";
  scene.get_start().set_timeUTC(time);
  time = "2009-04-11T14:33:21.25Z";
  scene.get_stop().set_timeUTC(time);
  scene.get_rangeTime().set_firstPixel(0.004);
  scene.get_rangeTime().set_lastPixel(0.005);
  scene.set_sceneAverageHeight(321.5);
  auto& specific = product.get_productSpecific();
  for (std::size_t i = 0; i < 2; ++i) {
    auto& complex = specific.get_complexImageInfo(i);
    complex.set_projectedSpacingAzimuth(1.75F + static_cast<float>(i));
    complex.get_projectedSpacingRange().set_groundNear(7);
    complex.get_projectedSpacingRange().set_groundFar(8);
    complex.get_projectedSpacingRange().set_slantRange(1.5F + static_cast<float>(i));
    complex.append_imageDataStartWith("LATEAZNEARRG");
    complex.append_quicklookDataStartWith(i == 0 ? "EARLYAZFARRG" : "LATEAZFARRG");
  }
  auto& slant = specific.get_projectedImageInfo().get_slantToGroundRangeProjection();
  slant.set_polynomialDegree(6);
  for (std::size_t i = 0; i < 3; ++i) {
    slant.get_coefficient(i).set_coefficient(10 + static_cast<double>(i));
  }
  auto& instrument = product.get_instrument();
  instrument.get_radarParameters().set_centerFrequency(9.65e9);
  for (std::size_t i = 0; i < 2; ++i) {
    instrument.get_settings(i).get_RSF().set_RSF(1.1e8 + static_cast<double>(i));
    instrument.get_settings(i).get_rxBandwidth().set_rxBandwidth(1e8);
  }
  for (std::size_t i = 0; i < 2; ++i) {
    product.get_calibration().get_calibrationConstant(i).get_calFactor().set_calFactor(
        1e-5 + static_cast<double>(i));
  }
  auto& orbit = product.get_platform().get_orbit();
  auto& header = orbit.get_orbitHeader();
  header.set_numStateVectors(12);
  header.set_stateVectorTimeSpacing(10.5);
  time = "2010-05-12T15:34:22.75Z";
  header.get_firstStateTime().set_firstStateTimeUTC(time);
  time = "2011-06-13T16:35:23Z";
  header.get_lastStateTime().set_lastStateTimeUTC(time);
  for (std::size_t i = 0; i < 3; ++i) {
    auto& vector = orbit.get_stateVec(i);
    const double base = 100 * static_cast<double>(i);
    vector.set_posX(base + 1);
    vector.set_posY(base + 2);
    vector.set_posZ(base + 3);
    vector.set_velX(base + 4);
    vector.set_velY(base + 5);
    vector.set_velZ(base + 6);
  }
  for (std::size_t i = 0; i < 2; ++i) {
    auto& data = product.get_productComponents().get_imageData(i);
    data.set_polLayer(i == 0 ? "HV" : "VH");
    data.get_file().get_location().set_host("host");
    data.get_file().get_location().set_path(i == 0 ? "IMAGEDATA" : "OTHER");
    data.get_file().get_location().set_filename(i == 0 ? "one.cos" : "two.cos");
  }
}

TYPED_TEST(View, EveryAccessorReadsItsOwnElement) {
  fill(this->root.get_level1Product());
  level1bProductBase& v = this->view;
  EXPECT_STREQ(v.productVariant(), "MGD");
  EXPECT_STREQ(v.imageDataFormat(), "COSAR");
  EXPECT_EQ(v.numberOfLayers(), 3);
  EXPECT_EQ(v.numberOfRows(), 100);
  EXPECT_EQ(v.numberOfColumns(), 200);
  EXPECT_STREQ(v.mapProjection(), "UPS");
  EXPECT_EQ(v.calFactor(), 1e-5);
  EXPECT_STREQ(v.lookDirection(), "LEFT");
  EXPECT_STREQ(v.projection(), "GROUNDRANGE");
  EXPECT_EQ(v.sceneStartYear(), 2008);
  EXPECT_EQ(v.sceneStartMonth(), 3);
  EXPECT_EQ(v.sceneStartDay(), 10);
  EXPECT_EQ(v.sceneStartHour(), 13);
  EXPECT_EQ(v.sceneStartMinute(), 32);
  EXPECT_EQ(v.sceneStartSecond(), 20.5F);
  EXPECT_EQ(v.sceneStopHour(), 14);
  EXPECT_EQ(v.sceneStopMinute(), 33);
  EXPECT_EQ(v.sceneStopSecond(), 21.25F);
  EXPECT_EQ(v.centerFrequency(), 9.65e9);
  EXPECT_EQ(v.projectedSpacingSlantRange(), 1.5F);
  EXPECT_EQ(v.projectedSpacingAzimuth(), 1.75F);
  EXPECT_EQ(v.columnSpacing(), 2.5F);
  EXPECT_EQ(v.rowSpacing(), 1.25F);
  EXPECT_EQ(v.rangeSamplingRate(), 1.1e8);
  EXPECT_EQ(v.firstPixelRangeTime(), 0.004);
  EXPECT_EQ(v.sceneAverageHeight(), 321.5);
  EXPECT_EQ(v.firstStateYear(), 2010);
  EXPECT_EQ(v.firstStateMonth(), 5);
  EXPECT_EQ(v.firstStateDay(), 12);
  EXPECT_EQ(v.firstStateHour(), 15);
  EXPECT_EQ(v.firstStateMinute(), 34);
  EXPECT_EQ(v.firstStateSecond(), 22.75F);
  EXPECT_EQ(v.numStateVectors(), 12U);
  EXPECT_STREQ(v.quicklookDataStartWith(), "EARLYAZFARRG");
  EXPECT_EQ(v.stateVectorTimeSpacing(), 10.5);
  for (std::uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(v.stateVecPosX(i), 100.0 * i + 1);
    EXPECT_EQ(v.stateVecPosY(i), 100.0 * i + 2);
    EXPECT_EQ(v.stateVecPosZ(i), 100.0 * i + 3);
    EXPECT_EQ(v.stateVecVelX(i), 100.0 * i + 4);
    EXPECT_EQ(v.stateVecVelY(i), 100.0 * i + 5);
    EXPECT_EQ(v.stateVecVelZ(i), 100.0 * i + 6);
    EXPECT_EQ(v.slantToGroundCoefficient(i), 10.0 + i);
  }
  EXPECT_EQ(v.slantToGroundPolynomialDegree(), 6U);
  EXPECT_EQ(v.slantRangeSpacing(), 1.5F);
  EXPECT_STREQ(v.imageDataPath(0), "IMAGEDATA");
  EXPECT_STREQ(v.imageDataPath(1), "OTHER");
  EXPECT_STREQ(v.imageDataFilename(0), "one.cos");
  EXPECT_STREQ(v.imageDataFilename(1), "two.cos");
  EXPECT_STREQ(v.polLayer(0), "HV");
  EXPECT_STREQ(v.polLayer(1), "VH");
}

TYPED_TEST(View, TheLastCoefficientIsTheTwoHundredFiftySixth) {
  EXPECT_EQ(this->view.slantToGroundCoefficient(255), 0);
  EXPECT_EQ(this->root.get_level1Product()
                .get_productSpecific()
                .get_projectedImageInfo()
                .get_slantToGroundRangeProjection()
                .size_coefficient(),
            256U);
}

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
