#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "handlepool/handlepool.h"
#include "plugin/open_product.h"
#include "record/exports.h"
#include "record/run_counters.h"
#include "record/tsx_file.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"
#include "support/open_calls.h"

namespace {

class Open : public OpenProduct {};

TEST_F(Open, IdentifiesWithoutParsing) {
  EXPECT_EQ(open(nullptr), nullptr);
  EXPECT_EQ(title, 0);
  EXPECT_TRUE(toolkit().constructed.empty());
  EXPECT_EQ(s_tsxFileTitleIdentifyAndOpenCount, opened_before + 1);
  ASSERT_EQ(toolkit().debug.size(), 1U);
  EXPECT_EQ(toolkit().debug[0],
            "\n s_tsxFileTitleIdentifyAndOpenCount: " + std::to_string(opened_before + 1) + " \n");
  EXPECT_EQ(toolkit().log, (std::vector<std::string>{"gkf_Close", "gkf_Close"}));
}

TEST_F(Open, AForeignFileIsNoErrorAndRaisesNoCounter) {
  toolkit().files[path] = "something\nelse\nhere\n";
  EXPECT_EQ(open(nullptr), nullptr);
  EXPECT_EQ(title, -1);
  EXPECT_EQ(open("r"), nullptr);
  EXPECT_EQ(title, -1);
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(s_tsxFileTitleIdentifyAndOpenCount, opened_before);
}

TEST_F(Open, AMissingFileReportsNothing) {
  toolkit().files.erase(path);
  EXPECT_EQ(open("r"), nullptr);
  EXPECT_EQ(title, -1);
  EXPECT_TRUE(toolkit().printed.empty());
}

TEST_F(Open, AcceptsNoPlaceForTheTitle) {
  EXPECT_EQ(tsxFileTitleIdentifyAndOpen(path.c_str(), nullptr, nullptr), nullptr);
}

TEST_F(Open, RefusesModesThatCreate) {
  for (const char* mode : {"a", "ab", "w+", "wb+", "w+b"}) {
    toolkit().printed.clear();
    EXPECT_EQ(open(mode), nullptr);
    EXPECT_EQ(title, -1);
    ASSERT_EQ(toolkit().printed.size(), 1U) << mode;
    EXPECT_EQ(
        toolkit().printed[0],
        (PrintedReport{word, "TerraSAR-X file creation is not supported", gke_SeverityError}));
  }
  EXPECT_EQ(toolkit().calls["gkf_Open"], 0);
}

TEST_F(Open, DoesNotRefuseTheOtherModesAndPassesThemOn) {
  for (const char* mode : {"r", "w", "wb", "rb", "r+", "r+b", "rb+", "a+", "ab+", "a+b", "A", "AB",
                           "W+", "w+x", "x", ""}) {
    toolkit().document = new FakeDocument;
    toolkit().modes.clear();
    TsxFile* record = open(mode);
    EXPECT_TRUE(registered(record)) << mode;
    EXPECT_EQ(toolkit().modes, (std::vector<std::string>{"r", mode})) << "identified by r";
    tsxFileClose(record);
  }
  delete document;
  toolkit().document = nullptr;
}

TEST_F(Open, BuildsAndRegistersAComplexProduct) {
  document->layers = 2;
  TsxFile* record = open();
  ASSERT_TRUE(registered(record));
  EXPECT_EQ(title, 0);
  EXPECT_EQ(toolkit().constructed, std::vector<std::int32_t>{0});
  EXPECT_STREQ(record->fileName, path.c_str());
  EXPECT_NE(record->fileName, path.c_str()) << "an own copy";
  EXPECT_NE(record->cosarFiles[0], nullptr);
  EXPECT_NE(record->cosarFiles[1], nullptr);
  EXPECT_EQ(record->cosarFiles[2], nullptr);
  EXPECT_EQ(toolkit().log.back(), "gkf_fopen /products/one/IMAGEDATA/image1 r");
  EXPECT_TRUE(toolkit().printed.empty());
  int64_t time = 5;
  EXPECT_EQ(tsxFileDataModTimeGet(record, "anything", &time), 0);
  EXPECT_EQ(time, 0);
  record->sarModel->num_samples = 0;
  EXPECT_EQ(tsxFileDataModTimeGet(record, nullptr, &time), 0);
  EXPECT_EQ(time, -1) << "a model without samples";
  tsxFileClose(record);
  EXPECT_EQ(pool_FindFileHandleIfOpen(path.c_str(), 0), nullptr);
}

TEST_F(Open, OpensDetectedImagesThroughTheHostsLayers) {
  document->variant = "GEC";
  document->format = "GEOTIFF";
  TsxFile* record = open();
  ASSERT_TRUE(registered(record));
  EXPECT_NE(record->tiffLayers[0], nullptr);
  EXPECT_EQ(toolkit().log.back(), "gkl_LayerOpen /products/one/IMAGEDATA/image0 25 0");
  EXPECT_EQ(toolkit().log[toolkit().log.size() - 2],
            "gkl_LayerGetNames /products/one/IMAGEDATA/image0");
  tsxFileClose(record);
}

TEST_F(Open, APathWithoutAFolderLooksBesideIt) {
  toolkit().files["a.xml"] = annotation;
  toolkit().files["IMAGEDATA/image0"] = "x";
  TsxFile* record = tsxFileTitleIdentifyAndOpen("a.xml", nullptr, "r");
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(toolkit().log.back(), "gkf_fopen IMAGEDATA/image0 r");
  tsxFileClose(record);
}

TEST_F(Open, ASecondOpenSharesTheRecordAndParsesNothing) {
  TsxFile* first = open();
  TsxFile* second = open();
  EXPECT_EQ(first, second);
  EXPECT_EQ(title, 0);
  EXPECT_EQ(toolkit().constructed.size(), 1U);
  EXPECT_EQ(s_tsxFileTitleIdentifyAndOpenCount, opened_before + 2);
  tsxFileClose(first);
}

TEST_F(Open, IdentifyingAnOpenProductGivesNoRecord) {
  TsxFile* record = open();
  EXPECT_EQ(open(nullptr), nullptr);
  EXPECT_EQ(title, 0);
  EXPECT_TRUE(registered(record));
  tsxFileClose(record);
}

TEST_F(Open, TheErrorWordOfTheDocumentStartsAsOne) {
  TsxFile* record = open();
  EXPECT_EQ(toolkit().error_at_entry, lmx::error_cannot_open);
  tsxFileClose(record);
}

// The path's copy, and a text of each counter: one open, one close.
TEST_F(Open, ALifeOfAComplexProductLosesThreeTexts) {
  TsxFile* record = open();
  tsxFileClose(record);
  EXPECT_EQ(toolkit().live_blocks, 3);
}

// The same, the map projection's name, and the list of layer names: two texts and their array.
TEST_F(Open, ALifeOfAGeocodedProductLosesItsListOfLayersToo) {
  document->variant = "GEC";
  document->format = "GEOTIFF";
  TsxFile* record = open();
  tsxFileClose(record);
  EXPECT_EQ(toolkit().live_blocks, 3 + 1 + 3);
}

TEST_F(Open, EachVersionTextAsksForItsClasses) {
  const char* texts[] = {"3.4", "3.5", "3.6", "3.7", "4.0", "4.1"};
  for (std::int32_t index = 0; index < 6; ++index) {
    toolkit().files[path] =
        "1\n2\nLevel 1B Product\nTSX-1\n5\n6\n" + std::string(texts[index]) + "\n";
    toolkit().document = new FakeDocument;
    toolkit().constructed.clear();
    TsxFile* record = open();
    EXPECT_EQ(toolkit().constructed, std::vector<std::int32_t>{index});
    tsxFileClose(record);
  }
  delete document;
  toolkit().document = nullptr;
}

TEST_F(Open, AFailingOpenOfTheAnnotationGivesNoRecord) {
  toolkit().fail_at["gkf_Open"] = 2;
  EXPECT_EQ(open(), nullptr);
  EXPECT_EQ(title, 0);
  EXPECT_EQ(toolkit().printed[0], (PrintedReport{word, "gkf_Open failed", gke_SeverityError}));
  EXPECT_EQ(s_tsxFileTitleIdentifyAndOpenCount, opened_before);
  EXPECT_EQ(toolkit().live_reports, 0);
}

// An unfinished record is handed out, the error printed, and the registry does not know it.
#define EXPECT_UNFINISHED(record, message)                                              \
  do {                                                                                  \
    ASSERT_NE(record, nullptr);                                                         \
    EXPECT_FALSE(registered(record));                                                   \
    EXPECT_EQ(title, 0);                                                                \
    ASSERT_FALSE(toolkit().printed.empty());                                            \
    EXPECT_EQ(toolkit().printed[0], (PrintedReport{word, message, gke_SeverityError})); \
    EXPECT_EQ(toolkit().live_reports, 0);                                               \
  } while (false)

TEST_F(Open, WithoutMemoryForItsTextsTheRecordIsUnfinished) {
  const struct {
    const char* operation;
    int call;
    const char* message;
  } cases[] = {
      {"gks_Duplicate", open_copy::path, "No memory for the product's path"},
      {"gkm_HeapMalloc", open_allocation::first_state_vectors, "tsx_GenericSARRead failed"},
      {"gkm_HeapMalloc", open_allocation::last_state_vectors, "tsx_GenericSARRead failed"},
      {"gkm_HeapMalloc", open_allocation::directory, "No memory for the product's directory"}};
  for (const auto& failing : cases) {
    delete toolkit().document;
    toolkit().document = new FakeDocument;
    toolkit().printed.clear();
    toolkit().fail_at.clear();
    toolkit().fail_at[failing.operation] = toolkit().calls[failing.operation] + failing.call;
    TsxFile* record = open();
    EXPECT_UNFINISHED(record, failing.message);
  }
}

TEST_F(Open, AnUnformattedPathOfAnImageEndsInAFailedOpen) {
  toolkit().fail_at["gks_Sprintf"] = open_text::first_image;
  TsxFile* record = open();
  EXPECT_UNFINISHED(record, "gkf_fopen failed");
}

TEST_F(Open, WithoutAVersionTextTheSchemaIsWrong) {
  toolkit().files[path] = "1\n2\nLevel 1B Product\nTSX-1\n5\n6\n7\n";
  TsxFile* record = open();
  EXPECT_UNFINISHED(record, "Wrong XML schema file detected");
  EXPECT_EQ(toolkit().printed.size(), 1U);
  EXPECT_EQ(record->product, nullptr);
}

TEST_F(Open, AFaultInTheAnnotationIsAWrongSchema) {
  toolkit().document_error = lmx::error_required_element_missing;
  TsxFile* record = open();
  EXPECT_UNFINISHED(record, "Wrong XML schema file detected");
  EXPECT_EQ(record->product, document) << "the document stays with the record";
}

TEST_F(Open, AMissingComplexImageLeavesTheRecordUnfinished) {
  toolkit().files.erase("/products/one/IMAGEDATA/image1");
  document->layers = 2;
  TsxFile* record = open();
  EXPECT_UNFINISHED(record, "gkf_fopen failed");
  EXPECT_NE(record->cosarFiles[0], nullptr) << "what was open stays open";
}

TEST_F(Open, DetectedImagesFailWithTheirWords) {
  document->variant = "MGD";
  document->format = "GEOTIFF";
  toolkit().fail_at["gkl_LayerGetNames"] = 1;
  TsxFile* record = open();
  EXPECT_UNFINISHED(record, "gkl_LayerGetNames failed");
}

TEST_F(Open, AFailingLayerOpenHasItsWords) {
  document->variant = "MGD";
  document->format = "GEOTIFF";
  toolkit().fail_at["gkl_LayerOpen"] = 1;
  TsxFile* record = open();
  EXPECT_UNFINISHED(record, "gkl_LayerOpen failed");
}

TEST_F(Open, MoreThanFourImagesAreRefusedBeforeAnyIsOpened) {
  for (const int layers : {5, 2147483647}) {
    delete toolkit().document;
    toolkit().document = document = new FakeDocument;
    document->layers = layers;
    toolkit().printed.clear();
    TsxFile* record = open();
    EXPECT_UNFINISHED(
        record,
        "The product must have at most 4 image files; see numberOfLayers in its annotation");
    EXPECT_EQ(toolkit().calls["gkf_fopen"], 0);
  }
}

TEST_F(Open, FourImagesAndNoneAreFine) {
  for (const int layers : {0, 4}) {
    toolkit().document = new FakeDocument;
    dynamic_cast<FakeDocument*>(toolkit().document)->layers = layers;
    for (int i = 0; i < layers; ++i) {
      toolkit().files["/products/one/IMAGEDATA/image" + std::to_string(i)] = "x";
    }
    TsxFile* record = open();
    EXPECT_TRUE(registered(record)) << layers;
    tsxFileClose(record);
  }
  delete document;
  toolkit().document = nullptr;
}

TEST_F(Open, ANegativeNumberOfImagesIsNone) {
  for (const int layers : {-1, -2147483647 - 1}) {
    delete toolkit().document;
    toolkit().document = document = new FakeDocument;
    document->layers = layers;
    TsxFile* record = open();
    EXPECT_TRUE(registered(record)) << layers;
    EXPECT_TRUE(toolkit().printed.empty());
    EXPECT_EQ(toolkit().calls["gkf_fopen"], 0);
    int32_t count = 5;
    char** names = nullptr;
    EXPECT_EQ(tsxFileLayerNamesGet(record, &count, &names), 0);
    EXPECT_EQ(count, 0);
    tsxFileClose(record);
  }
}

// The format doubles the layers, the variant decides how the images are opened.
TEST_F(Open, ADetectedVariantInTheComplexFormatHasTwoLayersAnImage) {
  document->variant = "GEC";
  document->format = "COSAR";
  document->layers = 2;
  TsxFile* record = open();
  ASSERT_TRUE(registered(record));
  EXPECT_EQ(record->layerCount, 4);
  EXPECT_NE(record->tiffLayers[1], nullptr);
  EXPECT_EQ(record->cosarFiles[0], nullptr);
  int32_t count = 0;
  char** names = nullptr;
  EXPECT_EQ(tsxFileLayerNamesGet(record, &count, &names), 0);
  ASSERT_EQ(count, 4);
  EXPECT_STREQ(names[1], "X_VV_MAGNITUDE_2") << "an image each, as far as there are any";
  EXPECT_STREQ(names[3], "X_HH_MAGNITUDE_4");
  for (int32_t i = 0; i < count; ++i) gkm_HeapFree(names[i]);
  gkm_HeapFree(names);
  tsxFileClose(record);
}

// Recognition's is the first open of the annotation.
TEST_F(Open, AnAnnotationThatOpensAsNullWithoutAReportIsReadAllTheSame) {
  toolkit().fail_at["gkf_Open"] = 2;
  toolkit().silent.insert("gkf_Open");
  TsxFile* record = open();
  ASSERT_TRUE(registered(record));
  EXPECT_EQ(record->xmlFile, nullptr);
  EXPECT_EQ(s_tsxFileTitleIdentifyAndOpenCount, opened_before + 1);
  toolkit().log.clear();
  tsxFileClose(record);
  EXPECT_EQ(toolkit().log, std::vector<std::string>{"gkf_fclose"}) << "there is nothing to close";
}

TEST_F(Open, AListOfLayersThatIsNullOrEmptyWithoutAReportEndsAtItsMissingName) {
  for (const bool is_null : {true, false}) {
    delete toolkit().document;
    toolkit().document = document = new FakeDocument;
    document->variant = "MGD";
    toolkit().printed.clear();
    toolkit().fail_at.clear();
    toolkit().files_without_layers = true;
    toolkit().silent.insert("gkl_LayerGetNames");
    if (is_null) toolkit().fail_at["gkl_LayerGetNames"] = toolkit().calls["gkl_LayerGetNames"] + 1;
    TsxFile* record = open();
    EXPECT_UNFINISHED(record, "gkl_LayerOpen failed");
    EXPECT_EQ(toolkit().log.back(), "gkl_LayerOpen (null) 25 0");
  }
}

// A failed open hands out a record that the registry does not know. Its close takes out what it
// finds under the path, be it the record of another caller who opened it well.
TEST_F(Open, TheCloseOfAnUnfinishedRecordEndsTheRecordOfItsPath) {
  toolkit().document_error = lmx::error_malformed;
  TsxFile* unfinished = open();
  EXPECT_FALSE(registered(unfinished));
  toolkit().document_error = lmx::error_none;
  bool deleted = false;
  auto* whole = new FakeDocument;
  whole->deleted = &deleted;
  toolkit().document = whole;
  TsxFile* record = open();
  ASSERT_TRUE(registered(record));
  EXPECT_NE(record, unfinished);
  EXPECT_EQ(tsxFileClose(unfinished), 0);
  EXPECT_TRUE(deleted);
  EXPECT_EQ(pool_FindFileHandleIfOpen(path.c_str(), 0), nullptr);
  EXPECT_EQ(unfinished->product, document) << "the unfinished one is not touched";
}

TEST_F(Open, TheCountersTextIsMadeFromItsFormatAsItStands) {
  TsxFile* record = open();
  ASSERT_GE(toolkit().formats.size(), 2U);
  EXPECT_EQ(toolkit().formats[open_text::counter - 1],
            "\n s_tsxFileTitleIdentifyAndOpenCount: %d \n");
  EXPECT_EQ(toolkit().formats[open_text::first_image - 1], "%s%s/%s");
  tsxFileClose(record);
  EXPECT_EQ(toolkit().formats.back(), "\n s_tsxFileCloseCount: %d \n");
}

TEST_F(Open, AnUnknownVariantTakesTheDetectedPath) {
  document->variant = "UNDEFINED";
  TsxFile* record = open();
  ASSERT_TRUE(registered(record));
  EXPECT_EQ(record->productVariant, -1);
  EXPECT_EQ(toolkit().log.back(), "gkl_LayerOpen /products/one/IMAGEDATA/image0 25 0");
  int32_t count = 5;
  char** names = nullptr;
  EXPECT_EQ(tsxFileRasterFormatsNonStandardDataNamesGet(record, &count, &names), -1);
  EXPECT_EQ(count, 5);
  tsxFileClose(record);
}

TEST_F(Open, TheAnnotationIsClosedUntilThatSucceeds) {
  // The first close ends the recognition; the second to fourth fail.
  toolkit().fail_at["gkf_Close"] = 2;
  toolkit().fail_until["gkf_Close"] = 4;
  EXPECT_EQ(open(nullptr), nullptr);
  EXPECT_EQ(title, 0);
  EXPECT_EQ(toolkit().calls["gkf_Close"], 5);
  ASSERT_EQ(toolkit().printed.size(), 6U) << "three chains of two";
  EXPECT_EQ(toolkit().printed[0], (PrintedReport{word, "gkf_Close failed", gke_SeverityError}));
  EXPECT_EQ(toolkit().live_reports, 0);
}

TEST_F(Open, AnAnnotationThatDidNotOpenIsClosedAllTheSame) {
  toolkit().fail_at["gkf_Open"] = 2;
  EXPECT_EQ(open(nullptr), nullptr);
  EXPECT_EQ(toolkit().messages()[0], "gkf_Open failed");
  EXPECT_EQ(toolkit().log, (std::vector<std::string>{"gkf_Close", "gkf_Close"}));
}

TEST_F(Open, AnUnformattedCounterPassesANullText) {
  toolkit().fail_at["gks_Sprintf"] = open_text::counter;
  EXPECT_EQ(open(nullptr), nullptr);
  EXPECT_EQ(toolkit().debug, std::vector<std::string>{"(null)"});
}

TEST_F(Open, ASensorModelThatFailsLeavesTheRecordUnfinished) {
  toolkit().fail_at["rmdl_modelEphemeris"] = 1;
  TsxFile* record = open();
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(toolkit().messages(),
            (std::vector<std::string>{"tsx_GenericSARRead failed", "rmdl_modelEphemeris failed",
                                      "made to fail"}));
  EXPECT_EQ(toolkit().calls["gkf_fopen"], 0) << "no image is opened";
  EXPECT_EQ(pool_FindFileHandleIfOpen(path.c_str(), 0), nullptr);
}

TEST_F(Open, OnlyRadarGeometryHasASensorModel) {
  for (const char* variant : {"GEC", "EEC", "other"}) {
    delete toolkit().document;
    reset_toolkit();
    toolkit().files[path] = annotation;
    toolkit().files["/products/one/IMAGEDATA/image0"] = "x";
    auto* made = new FakeDocument;
    made->variant = variant;
    toolkit().document = made;
    TsxFile* record = open();
    EXPECT_EQ(toolkit().calls["rmdl_modelEphemeris"], 0) << variant;
    EXPECT_EQ(record->sarModel->num_samples, 0) << variant;
    tsxFileClose(record);
  }
  toolkit().document = nullptr;
}

}  // namespace
