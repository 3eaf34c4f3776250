// Whole lives of simulated products, from the open to the close, on the host's own toolkit. Under
// LeakSanitizer this shows that nothing is lost but what tests/support/sanitizer_defaults.cpp
// names.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "gridkit/report.h"
#include "handlepool/handlepool.h"
#include "record/exports.h"
#include "record/tsx_file.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

namespace fs = std::filesystem;
using simulate::Variant;

class Life : public testing::Test {
 protected:
  void SetUp() override {
    options.lines = options.samples = 150;
    before = gke_SetReportSink({[](const gke_Report* report, void* kept) {
                                  for (; report != nullptr; report = gke_ReportPrevious(report)) {
                                    static_cast<std::vector<std::string>*>(kept)->emplace_back(
                                        gke_ReportMessage(report));
                                  }
                                },
                                &messages});
  }
  void TearDown() override { gke_SetReportSink(before); }

  std::vector<std::string> names(TsxFile* file) {
    int32_t count = 0;
    char** list = nullptr;
    EXPECT_EQ(tsxFileLayerNamesGet(file, &count, &list), 0);
    std::vector<std::string> result;
    for (int32_t i = 0; i < count; ++i) {
      result.emplace_back(list[i]);
      gkm_HeapFree(list[i]);
    }
    gkm_HeapFree(list);
    return result;
  }

  // Reads a block of a layer; tells the result and whether there was data.
  std::pair<int32_t, bool> read(TsxFile* file, const std::string& name, int32_t row) {
    TsxLayer* layer = nullptr;
    int32_t out[6];
    tsxLayerOpen(file, name.c_str(), &out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &layer);
    std::vector<std::uint16_t> pixels(64 * 64);
    void* block = pixels.data();
    const int32_t result = tsxLayerRasterRead(layer, row, 0, &block);
    tsxLayerClose(layer);
    return {result, block != nullptr};
  }

  const ScratchFolder scratch;
  const fs::path& folder = scratch.path();
  simulate::Options options;
  std::vector<std::string> messages;
  gke_ReportSinkSetting before{};
};

TEST_F(Life, OfEveryVariantAndSchemaIsWhole) {
  for (const char* version : {"3.4", "3.5", "4.0"}) {
    for (const Variant variant : {Variant::ssc, Variant::mgd, Variant::gec, Variant::eec}) {
      options.version_text = version;
      options.variant = variant;
      const std::string path = simulate::write_product_folder(options, folder);
      int32_t title = -1;
      TsxFile* file = tsxFileTitleIdentifyAndOpen(path.c_str(), &title, "r");
      ASSERT_NE(file, nullptr);
      EXPECT_EQ(pool_FindFileHandleIfOpen(path.c_str(), 0), file);
      EXPECT_EQ(title, 0);
      EXPECT_EQ(file->productVariant, static_cast<int>(variant));
      EXPECT_EQ(file->width, 150);
      EXPECT_NEAR(file->beta0->calibration_factor, 1.05957369e-5, 1e-13);
      for (const std::string& name : names(file)) {
        EXPECT_EQ(read(file, name, 0), (std::pair<int32_t, bool>{0, true})) << name;
        EXPECT_EQ(read(file, name, 2), (std::pair<int32_t, bool>{0, variant != Variant::ssc}))
            << "the last block reaches past the end: " << name;
      }
      EXPECT_EQ(tsxFileClose(file), 0);
      EXPECT_EQ(pool_FindFileHandleIfOpen(path.c_str(), 0), nullptr);
    }
  }
  EXPECT_TRUE(messages.empty()) << messages.front();
}

// Everything that the plug-in reads of an annotation, as text.
std::string told_by(level1bProductBase& view) {
  std::ostringstream out;
  out.precision(17);
  out << view.productVariant() << ' ' << view.imageDataFormat() << ' ' << view.numberOfLayers()
      << ' ' << view.numberOfRows() << ' ' << view.numberOfColumns() << ' ' << view.calFactor()
      << ' ' << view.lookDirection() << ' ' << view.projection() << '\n'
      << view.sceneStartYear() << ' ' << view.sceneStartMonth() << ' ' << view.sceneStartDay()
      << ' ' << view.sceneStartHour() << ' ' << view.sceneStartMinute() << ' '
      << view.sceneStartSecond() << ' ' << view.sceneStopHour() << ' ' << view.sceneStopMinute()
      << ' ' << view.sceneStopSecond() << '\n'
      << view.centerFrequency() << ' ' << view.projectedSpacingSlantRange() << ' '
      << view.projectedSpacingAzimuth() << ' ' << view.columnSpacing() << ' ' << view.rowSpacing()
      << ' ' << view.rangeSamplingRate() << ' ' << view.firstPixelRangeTime() << ' '
      << view.sceneAverageHeight() << ' ' << view.slantRangeSpacing() << ' '
      << view.quicklookDataStartWith() << '\n'
      << view.firstStateYear() << ' ' << view.firstStateMonth() << ' ' << view.firstStateDay()
      << ' ' << view.firstStateHour() << ' ' << view.firstStateMinute() << ' '
      << view.firstStateSecond() << ' ' << view.numStateVectors() << ' '
      << view.stateVectorTimeSpacing() << '\n';
  for (std::uint32_t i = 0; i < view.numStateVectors(); ++i) {
    out << view.stateVecPosX(i) << ' ' << view.stateVecPosY(i) << ' ' << view.stateVecPosZ(i) << ' '
        << view.stateVecVelX(i) << ' ' << view.stateVecVelY(i) << ' ' << view.stateVecVelZ(i)
        << '\n';
  }
  out << view.slantToGroundPolynomialDegree();
  for (std::uint32_t i = 0; i <= view.slantToGroundPolynomialDegree(); ++i) {
    out << ' ' << view.slantToGroundCoefficient(i);
  }
  out << '\n'
      << view.imageDataPath(0) << ' ' << view.imageDataFilename(0) << ' ' << view.polLayer(0);
  return out.str();
}

TEST_F(Life, TheSameProductReadsTheSameInEverySchema) {
  options.variant = Variant::mgd;
  std::set<std::string> told;
  for (const char* version : {"3.4", "3.5", "4.0"}) {
    options.version_text = version;
    const std::string path = simulate::write_product_folder(options, folder);
    TsxFile* file = tsxFileTitleIdentifyAndOpen(path.c_str(), nullptr, "r");
    ASSERT_NE(file, nullptr);
    ASSERT_NE(file->product, nullptr);
    EXPECT_GT(file->product->numStateVectors(), 1U);
    EXPECT_GT(file->product->slantToGroundPolynomialDegree(), 1U);
    told.insert(told_by(*file->product));
    tsxFileClose(file);
  }
  EXPECT_EQ(told.size(), 1U) << *told.begin() << "\nbut\n" << *told.rbegin();
}

TEST_F(Life, ALayerPastTheImagesEndsInAReport) {
  const std::string path = simulate::write_product_folder(options, folder);
  TsxFile* file = tsxFileTitleIdentifyAndOpen(path.c_str(), nullptr, "r");
  EXPECT_EQ(read(file, "X_HH_PHASE_4", 0).first, -1);
  EXPECT_EQ(messages,
            (std::vector<std::string>{"tsx_ReadLineComplex failed", "gkf_fseeko failed"}));
  tsxFileClose(file);
  options.variant = Variant::mgd;
  const std::string detected = simulate::write_product_folder(options, folder);
  file = tsxFileTitleIdentifyAndOpen(detected.c_str(), nullptr, "r");
  messages.clear();
  EXPECT_EQ(read(file, "X_HH_MAGNITUDE_2", 0).first, -1);
  EXPECT_EQ(messages, (std::vector<std::string>{"gkl_LayerRead failed", "no layer"}));
  tsxFileClose(file);
}

TEST_F(Life, ASecondOpenIsTheSameProduct) {
  const std::string path = simulate::write_product_folder(options, folder);
  TsxFile* first = tsxFileTitleIdentifyAndOpen(path.c_str(), nullptr, "r");
  int32_t title = -1;
  EXPECT_EQ(tsxFileTitleIdentifyAndOpen(path.c_str(), &title, "rb"), first);
  EXPECT_EQ(title, 0);
  tsxFileClose(first);
}

TEST_F(Life, AFaultyAnnotationLeavesAnUnfinishedRecord) {
  const std::string path = simulate::write_product_folder(options, folder);
  fs::resize_file(path, fs::file_size(path) - 100);
  TsxFile* file = tsxFileTitleIdentifyAndOpen(path.c_str(), nullptr, "r");
  EXPECT_NE(file, nullptr);
  EXPECT_EQ(pool_FindFileHandleIfOpen(path.c_str(), 0), nullptr);
  EXPECT_EQ(messages, std::vector<std::string>{"Wrong XML schema file detected"});
}

}  // namespace
