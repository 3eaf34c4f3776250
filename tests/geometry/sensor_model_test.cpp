#include "geometry/sensor_model.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"

namespace {

constexpr double c = 299792458.0;

class SensorModel : public testing::Test {
 protected:
  void SetUp() override {
    reset_toolkit();
    file.product = &document;
    file.sarModel = &model;
    file.width = 80;
    file.height = 100;
  }
  void TearDown() override { free_arrays(); }
  void free_arrays() {
    for (RadarArray* array :
         {&model.rsx, &model.rsy, &model.rsz, &model.vsx, &model.vsy, &model.vsz}) {
      gkm_HeapFree(array->elements);
      array->elements = nullptr;
    }
  }
  const RadarGenericModel& read(std::int32_t variant = variant_ssc) {
    free_arrays();
    file.productVariant = variant;
    tsx_GenericSARRead(&file, nullptr);
    return model;
  }
  FakeDocument document;
  RadarGenericModel model{};
  TsxFile file{};
};

TEST_F(SensorModel, OfAComplexProduct) {
  toolkit().modelled = 7;
  model.vs_coeffs[3] = 9;
  model.gnd2slt_coeffs[5] = 9;
  read();
  EXPECT_EQ(model.sensor, 0);
  EXPECT_EQ(model.data_type, 3) << "magnitude and phase";
  EXPECT_EQ(model.coord_sys, 'F');
  EXPECT_EQ(model.year, 2008);
  EXPECT_EQ(model.month, 3);
  EXPECT_EQ(model.day, 10);
  EXPECT_EQ(model.doy, 70) << "31 + 29 + 10";
  EXPECT_EQ(model.num_samples, 80);
  EXPECT_EQ(model.num_lines, 100);
  EXPECT_EQ(model.image_start_time, 48740.5) << "13:32:20.5";
  EXPECT_EQ(model.image_end_time, 48748.25);
  EXPECT_EQ(model.image_duration, 7.75);
  EXPECT_EQ(model.first_pt_secs_of_day, 48690) << "13:31:30";
  EXPECT_EQ(model.first_pt_org, 48690);
  EXPECT_EQ(model.time_interval, 10);
  EXPECT_EQ(model.time_interval_org, 10);
  EXPECT_EQ(model.semimajor, 6378137.0);
  EXPECT_EQ(model.semiminor, 6356752.314);
  EXPECT_EQ(model.target_height, 123.5);
  EXPECT_EQ(model.look_side, 90.0);
  EXPECT_EQ(model.wavelength, c / 9.65e9);
  EXPECT_EQ(model.sampling_rate, 1.1e8);
  EXPECT_EQ(model.range_pix_spacing, 1.25) << "slant range";
  EXPECT_EQ(model.azimuth_line_spacing, 2.5);
  EXPECT_EQ(model.near_slant_range, 3.75e-3 * c * 0.5);
  EXPECT_EQ(model.projection, 2) << "slant range";
  for (const double term : model.gnd2slt_coeffs) EXPECT_EQ(term, 0);
  EXPECT_EQ(model.time_dir_pixels, 0);
  EXPECT_EQ(model.time_dir_lines, 0);
  EXPECT_EQ(model.orbitState, 0);
  EXPECT_EQ(model.rs_coeffs[0], 7) << "the orbit model's own";
  EXPECT_EQ(model.vs_coeffs[3], 0) << "the record is cleared first";
  EXPECT_EQ(model.sub_unity_subset, 1);
  EXPECT_EQ(model.sub_range_start, 0);
  EXPECT_EQ(model.sub_range_end, 79);
  EXPECT_EQ(model.sub_range_degrade, 1);
  EXPECT_EQ(model.sub_range_num_samples, 80);
  EXPECT_EQ(model.sub_azimuth_start, 0);
  EXPECT_EQ(model.sub_azimuth_end, 99);
  EXPECT_EQ(model.sub_azimuth_degrade, 1);
  EXPECT_EQ(model.sub_azimuth_num_lines, 100);
  EXPECT_EQ(document.quicklook_reads, 0) << "that accessor ends the process where there is none";
  EXPECT_TRUE(toolkit().printed.empty());
}

TEST_F(SensorModel, HasEveryStateVector) {
  document.state_vectors = 12;
  read();
  EXPECT_EQ(model.num_pos_pts, 12);
  const RadarArray* arrays[] = {&model.rsx, &model.rsy, &model.rsz,
                                &model.vsx, &model.vsy, &model.vsz};
  for (int a = 0; a < 6; ++a) {
    ASSERT_EQ(arrays[a]->count, 12);
    for (int i = 0; i < 12; ++i) EXPECT_EQ(arrays[a]->elements[i], 1000 * i + a);
  }
}

TEST_F(SensorModel, OfAGroundRangeProduct) {
  document.projection_text = "GROUNDRANGE";
  read(variant_mgd);
  EXPECT_EQ(model.data_type, 0) << "magnitude";
  EXPECT_EQ(model.projection, 1);
  EXPECT_EQ(model.range_pix_spacing, 3.5) << "the raster's column spacing";
  EXPECT_EQ(model.azimuth_line_spacing, 4.5) << "the raster's row spacing";
  EXPECT_EQ(model.gnd2slt_coeffs[0], model.near_slant_range);
  // Ground range is 2.5e8 d, slant range c / 2 d: a straight line.
  EXPECT_NEAR(model.gnd2slt_coeffs[1], c / 2 / 2.5e8, 1e-12);
}

TEST_F(SensorModel, TakesAnyOtherProjectionForGroundRange) {
  document.projection_text = "MAP";
  EXPECT_EQ(read().projection, 1);
  document.projection_text = "slantrange";
  EXPECT_EQ(read().projection, 1);
}

TEST_F(SensorModel, LooksLeftOnlyForTheExactWord) {
  document.look_direction = "LEFT";
  EXPECT_EQ(read().look_side, -90.0);
  document.look_direction = "left";
  EXPECT_EQ(read().look_side, 90.0);
}

TEST_F(SensorModel, DirectionsOfAGroundRangeProductAreTheQuicklooks) {
  const struct {
    const char* text;
    int pixels, lines;
  } cases[] = {{"EARLYAZNEARRG", 0, 0}, {"EARLYAZFARRG", 1, 0}, {"LATEAZNEARRG", 0, 1},
               {"LATEAZFARRG", 1, 1},   {"earlyazfarrg", 0, 0}, {"", 0, 0}};
  for (const auto& one : cases) {
    document.quicklook_start = one.text;
    read(variant_mgd);
    EXPECT_EQ(model.time_dir_pixels, one.pixels) << one.text;
    EXPECT_EQ(model.time_dir_lines, one.lines) << one.text;
  }
}

TEST_F(SensorModel, SceneAcrossMidnightLastsOn) {
  document.start = {2008, 3, 10, 23, 59, 50};
  document.stop = {2008, 3, 11, 0, 0, 10};
  read();
  EXPECT_EQ(model.image_end_time, 10.0) << "of its own day";
  EXPECT_EQ(model.image_duration, 20.0);
}

TEST_F(SensorModel, NextDayIsToldByTheHoursAlone) {
  document.start = {2008, 3, 10, 13, 30, 0};
  document.stop = {2008, 3, 11, 13, 20, 0};
  EXPECT_EQ(read().image_duration, -600.0);
}

TEST_F(SensorModel, SecondsAreTheNearestFloat) {
  // Floats between 32 and 64 lie 2^-18 apart; 59.999999 is nearest to 60 - 0 * 2^-18 = 60.
  document.start.second = 59.999999F;
  EXPECT_EQ(read().image_start_time, 48720.0 + 60.0);
  document.start.second = 20.123456F;
  EXPECT_EQ(read().image_start_time, 48720.0 + 10550486 * 0x1p-19) << "2^-19 apart here";
}

TEST_F(SensorModel, DayOfTheYearFollowsTheGregorianRule) {
  const struct { int year, doy; } cases[] = {{2008, 61}, {2007, 60}, {1900, 60}, {2000, 61}};
  for (const auto& one : cases) {
    document.start = {one.year, 3, 1, 0, 0, 0};
    EXPECT_EQ(read().doy, one.doy) << one.year;
  }
}

TEST_F(SensorModel, FirstStateOfTheDayBeforeHasAFormOfItsOwn) {
  document.start = {2008, 3, 10, 0, 0, 20};
  document.first_state = {2008, 3, 9, 23, 58, 30};
  EXPECT_EQ(read().first_pt_secs_of_day, 150.0) << "((24 - 23) * 60 - 58) * 60 + 30";
}

TEST_F(SensorModel, FirstStateOfTheNextDayCountsOn) {
  document.start = {2008, 3, 9, 23, 59, 50};
  document.first_state = {2008, 3, 10, 0, 0, 5};
  EXPECT_EQ(read().first_pt_secs_of_day, 86405.0);
}

TEST_F(SensorModel, FirstStateBeforeTheTurnOfTheYearCountsAsLater) {
  document.start = {2009, 1, 1, 0, 0, 20};
  document.first_state = {2008, 12, 31, 23, 59, 30};
  EXPECT_EQ(read().first_pt_secs_of_day, ((23 + 24) * 60 + 59) * 60 + 30);
}

TEST_F(SensorModel, TakesTheLowHalfOfTheStateVectorCount) {
  document.state_vectors = (std::uint64_t{1} << 32) + 3;
  EXPECT_EQ(read().num_pos_pts, 3);
}

TEST_F(SensorModel, OfNoStateVectorsHasEmptyArrays) {
  document.state_vectors = 0;
  read();
  EXPECT_EQ(model.num_pos_pts, 0);
  EXPECT_EQ(model.vsz.count, 0);
  EXPECT_NE(model.vsz.elements, nullptr);
}

TEST_F(SensorModel, RefusesHostileStateVectorCounts) {
  for (const std::uint64_t count :
       {std::uint64_t{100001}, std::uint64_t{0x7FFFFFFF}, std::uint64_t{0x80000000},
        std::uint64_t{0xFFFFFFFF}, ~std::uint64_t{0}}) {
    reset_toolkit();
    document.state_vectors = count;
    read();
    EXPECT_EQ(toolkit().printed,
              (std::vector<PrintedReport>{{"tsx_GenericSARRead",
                                           "The annotation's numStateVectors must be 0 to 100000 "
                                           "state vectors in its low 32 bits",
                                           2}}))
        << count;
    EXPECT_EQ(model.num_pos_pts, 0);
    EXPECT_EQ(toolkit().live_blocks, 0);
    EXPECT_EQ(toolkit().calls["rmdl_modelEphemeris"], 0);
  }
  document.state_vectors = 100000;
  EXPECT_EQ(read().num_pos_pts, 100000);
}

TEST_F(SensorModel, OfNoStateVectorsHasSixEmptyArraysWhateverNoBytesAre) {
  for (const bool is_null : {false, true}) {
    reset_toolkit();
    toolkit().nothing_for_no_bytes = is_null;
    document.state_vectors = 0;
    read();
    EXPECT_TRUE(toolkit().printed.empty());
    EXPECT_EQ(model.num_pos_pts, 0);
    for (const RadarArray* array :
         {&model.rsx, &model.rsy, &model.rsz, &model.vsx, &model.vsy, &model.vsz}) {
      EXPECT_EQ(array->count, 0);
      EXPECT_EQ(array->elements == nullptr, is_null);
    }
    EXPECT_EQ(toolkit().calls["rmdl_modelEphemeris"], 1);
    free_arrays();
  }
}

// One less than the least number of 32 bits is the largest, in two's complement.
TEST_F(SensorModel, OfTheLeastSizeWrapsItsLastPixel) {
  file.width = file.height = -2147483647 - 1;
  read();
  EXPECT_EQ(model.sub_range_end, 2147483647);
  EXPECT_EQ(model.sub_azimuth_end, 2147483647);
  EXPECT_EQ(model.sub_range_num_samples, -2147483647 - 1);
}

TEST_F(SensorModel, ReportsMissingMemoryForTheStateVectors) {
  for (int call = 1; call <= 6; ++call) {
    reset_toolkit();
    toolkit().fail_at["gkm_HeapMalloc"] = call;
    read();
    EXPECT_EQ(toolkit().messages(), std::vector<std::string>{"No memory for the state vectors"});
    EXPECT_EQ(model.num_pos_pts, 0);
    EXPECT_EQ(model.rsx.count, 0);
    free_arrays();
    EXPECT_EQ(toolkit().live_blocks, 0);
  }
}

TEST_F(SensorModel, PassesTheOrbitModelsReportOn) {
  toolkit().fail_at["rmdl_modelEphemeris"] = 1;
  gke_Report* report = nullptr;
  file.productVariant = variant_ssc;
  tsx_GenericSARRead(&file, &report);
  ASSERT_NE(report, nullptr);
  EXPECT_TRUE(toolkit().printed.empty());
  gke_PrintErrorReport(report, 0, 0);
  EXPECT_EQ(toolkit().printed.front(),
            (PrintedReport{"tsx_GenericSARRead", "rmdl_modelEphemeris failed", gke_SeverityError}));
  gke_DeleteErrorReportEx(&report);
}

TEST_F(SensorModel, PrintsItsReportWithoutASlot) {
  toolkit().fail_at["rmdl_modelEphemeris"] = 1;
  read();
  EXPECT_EQ(toolkit().messages(),
            (std::vector<std::string>{"rmdl_modelEphemeris failed", "made to fail"}));
  EXPECT_EQ(toolkit().live_reports, 0);
}

TEST_F(SensorModel, OfNoRecordIsNothing) {
  tsx_GenericSARRead(nullptr, nullptr);
  EXPECT_TRUE(toolkit().calls.empty());
}

TEST_F(SensorModel, FinishesInSilenceWhenTheFitIsRefused) {
  document.degree = 10;
  read(variant_mgd);
  for (const double term : model.gnd2slt_coeffs) EXPECT_EQ(term, 0);
  EXPECT_EQ(model.num_pos_pts, 2);
  EXPECT_TRUE(toolkit().printed.empty());
}

}  // namespace
