// What the classes' names and types must be, where like-named ones differ or a spelling is odd.
// Most of it fails to compile when it does not hold.

#include <gtest/gtest.h>

#include <concepts>
#include <sstream>
#include <string>
#include <type_traits>

#include "binding/document.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"

namespace {

using namespace version40;

using Product = c_level1Product;
using Info = Product::c_productInfo;
using Specific = Product::c_productSpecific;
using Geocoded = Specific::c_geocodedImageInfo;
using Statistics =
    Product::c_processing::c_signalDataAnalysis::c_rawDataInfo::c_rawDataStatisticsAndCorrection;
using Chirp =
    Product::c_processing::c_processingParameter::c_rangeCompression::c_chirps::c_referenceChirp;
using Orbit = Product::c_platform::c_orbit;
using Characteristics =
    Product::c_calibration::c_calibrationData::c_calibrationInfoAndInstrumentCharacteristics;
using Antenna = Product::c_calibration::c_calibrationData::c_antennaPattern;
using Limits = Product::c_productQuality::c_limits;

template <class Class>
concept tests_statistics = requires(const Class& c) {
  c.isset_quantisationStatistics();
};
template <class Class>
concept has_user_data = requires(Class& c) {
  c.get_userData();
};
template <class Class>
concept has_range_extent = requires(Class& c) {
  c.get_sceneRangeExtent();
};
template <class Class>
concept has_polarization = requires(Class& c) {
  c.get_polarization();
};

template <class T, class Getter>
constexpr bool gives = std::same_as<std::remove_cvref_t<Getter>, T>;

TEST(ClassFacts, LikeNamedClassesAreToldApart) {
  EXPECT_FALSE((std::same_as<Specific::c_complexImageInfo::c_complexImageInfo_projectedSpacingRange,
                             Info::c_previewInfo::c_previewInfo_quicklooks::
                                 c_previewInfo_quicklooks_imageRaster::c_projectedSpacingRange>));
  EXPECT_FALSE(
      (std::same_as<
          Info::c_imageDataInfo::c_imageRaster,
          Info::c_previewInfo::c_previewInfo_quicklooks::c_previewInfo_quicklooks_imageRaster>));
  EXPECT_FALSE((std::same_as<Geocoded::c_geocodedImageInfo_mappingGridInfo,
                             Specific::c_projectedImageInfo::c_mappingGridInfo>));
  EXPECT_FALSE((std::same_as<Antenna::c_elevationPattern::c_gainExt,
                             Antenna::c_azimuthPattern::c_azimuthPattern_gainExt>));
  EXPECT_FALSE((std::same_as<Limits::c_limits_processing, Product::c_processing>));
  EXPECT_TRUE((std::is_class_v<Limits::c_limits_imageData>));
  EXPECT_FALSE((std::same_as<Product::c_processing::c_doppler::c_dopplerCentroid::
                                 c_dopplerEstimate::c_combinedDoppler::c_coefficient,
                             c_dblPolynom::c_dblPolynom_coefficient>));
}

TEST(ClassFacts, HyphensAreUnderscoresInMembersAndKeptInDocuments) {
  Characteristics::c_ADCandIQCharacteristics characteristics;
  characteristics.get_I_Q_Characteristics(1).set_non_orthogonality(0.5);
  EXPECT_EQ(characteristics.size_I_Q_Characteristics(), 2U);
  Geocoded geocoded;
  geocoded.get_elevationData().get_DEM_DB_ContentVersion().set_DEM_DB_ContentVersion("1");
  EXPECT_EQ(geocoded.get_elevationData().get_DEM_DB_ContentVersion().get_DEM_DB_ContentVersion(),
            "1");
}

TEST(ClassFacts, OddSpellingsStay) {
  Product product;
  product.get_platform().get_orbit().get_orbitHeader().get_coordSystemTransfrom();
  EXPECT_TRUE(product.get_platform().get_orbit().get_orbitHeader().isset_coordSystemTransfrom());
  auto& record = product.get_instrument().get_settings(0).get_settingRecord(0);
  record.get_echowindowLength().set_echowindowLength(1);
  record.get_echoWindowPosition().set_echoWindowPosition(2);
  EXPECT_EQ(record.get_echowindowLength().get_echowindowLength(), 1);
}

TEST(ClassFacts, LikeNamedMembersDifferInWidth) {
  Chirp chirp;
  EXPECT_TRUE((gives<double, decltype(chirp.get_pulseLength())>));
  EXPECT_TRUE((gives<float, decltype(chirp.get_replica().get_pulseLength())>));
  EXPECT_TRUE((gives<float, decltype(chirp.get_replica().get_resolution())>));
  Orbit orbit;
  EXPECT_TRUE((gives<std::uint64_t, decltype(orbit.get_stateVec(0).get_timeGPS())>));
  EXPECT_TRUE((gives<std::uint8_t, decltype(orbit.get_stateVec(0).get_qualInd())>));
  auto& header = orbit.get_orbitHeader();
  EXPECT_TRUE(
      (gives<std::uint32_t, decltype(header.get_firstStateTime().get_firstStateTimeGPS())>));
  EXPECT_TRUE((gives<std::uint32_t, decltype(header.get_lastStateTime().get_lastStateTimeGPS())>));
  EXPECT_TRUE((gives<std::uint64_t, decltype(header.get_numStateVectors())>));
  Specific specific;
  auto& grid = specific.get_projectedImageInfo().get_mappingGridInfo();
  EXPECT_TRUE((gives<std::int64_t, decltype(grid.get_gridReferenceTime().get_refRow())>));
  EXPECT_TRUE((gives<std::int64_t, decltype(grid.get_gridReferenceTime().get_refCol())>));
  EXPECT_TRUE((gives<std::int32_t, decltype(grid.get_imageRaster().get_numberOfRows())>));
  c_file file;
  EXPECT_TRUE((gives<std::int64_t, decltype(file.get_size())>));
  const c_dblVector wide;
  const c_floatVector narrow;
  EXPECT_TRUE((gives<double, decltype(wide.get_x())>));
  EXPECT_TRUE((gives<float, decltype(narrow.get_x())>));
}

TEST(ClassFacts, LayerIndexIsATextOfAConstantAndANumberOfANoise) {
  const Product::c_calibration::c_calibrationConstant constant;
  const Product::c_noise noise;
  EXPECT_TRUE((gives<std::string, decltype(constant.get_layerIndex())>));
  EXPECT_TRUE((gives<std::int32_t, decltype(noise.get_layerIndex())>));
  EXPECT_FALSE(constant.isset_layerIndex());
}

TEST(ClassFacts, AnyContentHasNoPresenceTest) {
  EXPECT_FALSE(tests_statistics<Statistics>);
}

TEST(ClassFacts, LaterMembersAreAbsentBefore) {
  EXPECT_FALSE(has_user_data<version34::c_level1Product::c_setup::c_orderInfo>);
  EXPECT_TRUE(has_user_data<version35::c_level1Product::c_setup::c_orderInfo>);
  EXPECT_TRUE(has_user_data<Product::c_setup::c_orderInfo>);
  EXPECT_FALSE(has_range_extent<version35::c_level1Product::c_productInfo::c_sceneInfo>);
  EXPECT_TRUE(has_range_extent<Info::c_sceneInfo>);
  EXPECT_FALSE(has_polarization<version35::c_level1Product::c_productQuality::c_rawDataQuality>);
  EXPECT_TRUE(has_polarization<Product::c_productQuality::c_rawDataQuality>);
}

// The extension of a named type holds the type's members itself and derives from nothing.
TEST(ClassFacts, AnExtensionIsFlattened) {
  using Position = Product::c_platform::c_referenceData::c_SARAntennaPosition;
  EXPECT_FALSE((std::derived_from<Position, c_floatVector>));
  Position position;
  position.set_x(1.5F);
  EXPECT_EQ(position.get_x(), 1.5F);
}

TEST(ClassFacts, OnlyTheRootHasABase) {
  EXPECT_TRUE((std::derived_from<c_version40, level1bProductBase>));
  EXPECT_FALSE((std::derived_from<c_level1Product, level1bProductBase>));
  EXPECT_TRUE(std::has_virtual_destructor_v<c_level1Product>);
  EXPECT_TRUE(std::has_virtual_destructor_v<c_file>);
}

// The choices' numbers, with the one for nothing after the last.
TEST(ClassFacts, ChoicesAreNumberedInOrder) {
  using Mode = Info::c_acquisitionInfo::c_imagingModeSpecificInfo;
  EXPECT_EQ(Mode::e_stripMap, 0);
  EXPECT_EQ(Mode::e_scanSAR, 1);
  EXPECT_EQ(Mode::e_spotLight, 2);
  EXPECT_EQ(Mode().getchosen(), 3);
  using Scene = Product::c_setup::c_orderInfo::c_orderedScene;
  EXPECT_EQ(Scene::e_sceneCenterCoord, 0);
  EXPECT_EQ(Scene::e_sceneExtent, 1);
  EXPECT_EQ(Scene().getchosen(), 2);
}

template <class Root>
class Roots : public testing::Test {};
using Versions =
    testing::Types<version34::c_version34, version35::c_version35, version40::c_version40>;
TYPED_TEST_SUITE(Roots, Versions);

TYPED_TEST(Roots, AreNumberedAlikeInEveryVersion) {
  EXPECT_EQ(TypeParam::e_generalHeader, 0);
  EXPECT_EQ(TypeParam::e_chirpSlope, 1);
  EXPECT_EQ(TypeParam::e_file, 2);
  EXPECT_EQ(TypeParam::e_polLayer, 3);
  EXPECT_EQ(TypeParam::e_antennaReceiveConfiguration, 4);
  EXPECT_EQ(TypeParam::e_lookDirection, 5);
  EXPECT_EQ(TypeParam::e_imagingMode, 6);
  EXPECT_EQ(TypeParam::e_polarisationMode, 7);
  EXPECT_EQ(TypeParam::e_level1Product, 8);
  EXPECT_EQ(TypeParam().getchosen(), 9);
}

// The events of the root's elements, which is_member leaves behind.
TYPED_TEST(Roots, ClassifyTheirElementsAlike) {
  const struct {
    const char* document;
    int event;
  } cases[] = {{"<generalHeader/>", 13},
               {"<chirpSlope/>", 28},
               {"<file/>", 29},
               {"<polLayer/>", 35},
               {"<antennaReceiveConfiguration/>", 36},
               {"<lookDirection/>", 37},
               {"<imagingMode/>", 38},
               {"<polarisationMode/>", 39},
               {"<level1Product/>", 40}};
  for (const auto& set : cases) {
    const std::string document = set.document;
    lmx::c_xml_reader_memory reader(document.data(), document.size());
    lmx::elmx_error error{};
    reader.get_element_event(nullptr, &error, &reader.current_name);
    EXPECT_TRUE(TypeParam::is_member(reader, reader.current_name)) << document;
    EXPECT_EQ(reader.current_event, set.event) << document;
  }
}

TYPED_TEST(Roots, HoldEachTextAndEachList) {
  const struct {
    const char* document;
    int chosen;
    int code;
  } cases[] = {{"<chirpSlope>UPDOWN</chirpSlope>", 1, 0},
               {"<polLayer>UNDEFINED</polLayer>", 3, 0},
               {"<lookDirection>RIGHT</lookDirection>", 5, 0},
               {"<lookDirection>right</lookDirection>", 5, 38},
               {"<antennaReceiveConfiguration>SRA DRA</antennaReceiveConfiguration>", 4, 0},
               {"<imagingMode> SM\n HS </imagingMode>", 6, 0},
               {"<imagingMode>SM XX</imagingMode>", 6, 38},
               {"<polarisationMode>TWIN</polarisationMode>", 7, 0},
               // Unreadable values: a list's is told as 29, a text's as the reader told it.
               {"<imagingMode>SM<a/></imagingMode>", 6, 29},
               {"<imagingMode a='1'>SM</imagingMode>", 6, 29},
               {"<polLayer a='1'>HH</polLayer>", 3, 39}};
  for (const auto& set : cases) {
    TypeParam root;
    EXPECT_EQ(root.unmarshal(std::string(set.document)), set.code) << set.document;
    EXPECT_EQ(root.getchosen(), set.chosen) << set.document;
  }
}

TYPED_TEST(Roots, KeepATokenOutsideItsSet) {
  TypeParam root;
  EXPECT_EQ(root.unmarshal(std::string("<imagingMode>SM XX SL</imagingMode>")), 38);
  ASSERT_EQ(root.size_imagingMode(), 2U) << "what follows is not read";
  EXPECT_EQ(root.get_imagingMode(1), "XX");
}

TEST(EmptyElement, OfAnOptionalClassIsAcceptedAndLeavesItsMembersUnset) {
  Geocoded geocoded;
  const std::string document = "<geocodedImageInfo/>";
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  EXPECT_EQ(binding::read_document(Geocoded::s_description, &geocoded, reader), 0);
  EXPECT_FALSE(geocoded.is_occurs_ok());
}

TEST(EmptyElement, OfATextIsItsEmptyValue) {
  const auto read = [](const std::string& document) {
    c_file file;
    return file.unmarshal("<file>" + document + "</file>");
  };
  const std::string location = "<location><host/><path/><filename/></location>";
  EXPECT_EQ(read(location + "<size>1</size>"), 0) << "plain strings may be empty";
  EXPECT_EQ(read(location + "<size/>"), 35) << "a number may not";
  EXPECT_EQ(read("<location/><size>1</size>"), 32);
  c_dblPolynom::c_dblPolynom_coefficient coefficient;
  const std::string empty = "<coefficient/>";
  lmx::c_xml_reader_memory reader(empty.data(), empty.size());
  EXPECT_EQ(binding::read_document(coefficient.s_description, &coefficient, reader), 35);
}

// The value before it must not pass for the value of an element that has none.
TEST(EmptyElement, DoesNotTakeOverTheValueBeforeIt) {
  const std::string document =
      "<dblPolynom><validityRangeMin>1</validityRangeMin><validityRangeMax>2</validityRangeMax>"
      "<referencePoint>3</referencePoint><polynomialDegree>4</polynomialDegree><coefficient/>"
      "</dblPolynom>";
  c_dblPolynom polynomial;
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  EXPECT_EQ(binding::read_document(c_dblPolynom::s_description, &polynomial, reader), 35);
}

TEST(EmptyElement, OfAClassWithATextLetsTheReadGoOn) {
  c_generalHeader h;
  EXPECT_EQ(h.unmarshal(std::string(
                "<generalHeader fileName='f'><itemName>i</itemName><mission>m</mission>"
                "<source>s</source><destination>d</destination><generationSystem version='1'/>"
                "<generationTime>2008-03-10T13:32:20Z</generationTime></generalHeader>")),
            0);
  EXPECT_EQ(h.get_generationSystem().get_generationSystem(), "");
  EXPECT_EQ(h.get_generationTime().year, 2008);
}

TEST(EmptyList, CountsAsPresent) {
  const auto segment_of = [](const std::string& offset) {
    const std::string document =
        "<segmentInfoType segmentID='1'><polLayer>HH</polLayer>" + offset +
        "<dataSegment><startTimeUTC>2008-03-10T13:32:20</startTimeUTC>"
        "<stopTimeUTC>2008-03-10T13:32:20</stopTimeUTC><numberOfRows>1</numberOfRows>"
        "</dataSegment></segmentInfoType>";
    lmx::c_xml_reader_memory reader(document.data(), document.size());
    c_segmentInfoType segment;
    EXPECT_EQ(binding::read_document(c_segmentInfoType::s_description, &segment, reader), 0);
    return segment;
  };
  for (const char* empty :
       {"<DRAoffset/>", "<DRAoffset></DRAoffset>", "<DRAoffset> \n</DRAoffset>"}) {
    const c_segmentInfoType segment = segment_of(empty);
    EXPECT_TRUE(segment.isset_DRAoffset()) << empty;
    EXPECT_EQ(segment.size_DRAoffset(), 0U);
  }
  EXPECT_FALSE(segment_of("").isset_DRAoffset());
}

template <class Class>
std::string written(const Class& object, const char* name) {
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "\t", "\n");
  EXPECT_EQ(object.marshal(writer, name), 0);
  return out.str();
}

// A list is an element or an attribute only while it holds something, present or not.
TEST(EmptyList, IsNotWritten) {
  c_segmentInfoType segment;
  segment.set_segmentID(7);
  segment.set_polLayer("HV");
  segment.append_DRAoffset("SRA");
  segment.append_DRAoffset("DRAAft");
  segment.get_dataSegment().set_numberOfRows(1);
  lmx::c_datetime time;
  time = "2008-03-10T13:32:20";
  segment.get_dataSegment().set_startTimeUTC(time);
  segment.get_dataSegment().set_stopTimeUTC(time);
  const std::string end =
      "\t<dataSegment>\n\t\t<startTimeUTC>2008-03-10T13:32:20</startTimeUTC>\n"
      "\t\t<stopTimeUTC>2008-03-10T13:32:20</stopTimeUTC>\n"
      "\t\t<numberOfRows>1</numberOfRows>\n\t</dataSegment>\n</s>\n";
  const std::string start = "<s segmentID=\"7\">\n\t<polLayer>HV</polLayer>\n";
  EXPECT_EQ(written(segment, "s"), start + "\t<DRAoffset>SRA DRAAft</DRAoffset>\n" + end);
  segment.clear_DRAoffset();
  EXPECT_TRUE(segment.isset_DRAoffset());
  EXPECT_EQ(written(segment, "s"), start + end);

  Info::c_imageDataInfo::c_imageRaster::c_rowSpacing spacing;
  spacing.set_rowSpacing(1.5F);
  spacing.append_units("s");
  spacing.append_units("m");
  EXPECT_EQ(written(spacing, "rowSpacing"), "<rowSpacing units=\"s m\">1.5</rowSpacing>\n");
  spacing.clear_units();
  EXPECT_TRUE(spacing.isset_units());
  EXPECT_EQ(written(spacing, "rowSpacing"), "<rowSpacing>1.5</rowSpacing>\n");
}

// A numeric text of its own is never missed.
TEST(Occurs, OfACoefficientIsAlwaysRight) {
  EXPECT_TRUE(c_dblPolynom::c_dblPolynom_coefficient().is_occurs_ok());
  EXPECT_FALSE(c_chirpSlope().is_occurs_ok());
}

TEST(Occurs, CountsBothEndsOfARepeat) {
  Characteristics::c_ADCandIQCharacteristics pair;
  EXPECT_FALSE(pair.is_occurs_ok());
  pair.append_I_Q_Characteristics();
  EXPECT_FALSE(pair.is_occurs_ok()) << "one of exactly two";
  pair.append_I_Q_Characteristics();
  EXPECT_TRUE(pair.is_occurs_ok());
  EXPECT_EQ(pair.append_I_Q_Characteristics(), 26);
}

}  // namespace
