#include "plugin/identify.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugin/schema_version.h"
#include "support/fake_toolkit.h"

namespace {

// Seven lines of an annotation with its version text.
std::string annotation(const std::string& version, const std::string& third = "Level 1B Product",
                       const std::string& fourth = "TSX-1") {
  return "<level1Product>\n<generalHeader>\n<itemName>" + third + "</itemName>\n<mission>" +
         fourth + "</mission>\n<source>\n<destination>\n<generationSystem version=\"" + version +
         "\">\n";
}

class Identify : public testing::Test {
 protected:
  void SetUp() override { reset_toolkit(); }
  std::int32_t identify(const std::string& bytes) {
    toolkit().files["a.xml"] = bytes;
    version = schema_text_none;
    return tsx_FileIdentify("a.xml", &version);
  }
  std::int32_t version = schema_text_none;
};

TEST_F(Identify, FindsEachVersionText) {
  EXPECT_EQ(identify(annotation("3.4")), 0);
  EXPECT_EQ(version, 0);
  EXPECT_EQ(identify(annotation("3.5")), 0);
  EXPECT_EQ(version, 1);
  EXPECT_EQ(identify(annotation("3.6")), 0);
  EXPECT_EQ(version, 2);
  EXPECT_EQ(identify(annotation("3.7")), 0);
  EXPECT_EQ(version, 3);
  EXPECT_EQ(identify(annotation("4.0")), 0);
  EXPECT_EQ(version, 4);
  EXPECT_EQ(identify(annotation("4.11")), 0);
  EXPECT_EQ(version, 5);
}

TEST_F(Identify, OfSeveralTextsTheLastInTableOrderWins) {
  EXPECT_EQ(identify(annotation("4.1 and 3.4")), 0);
  EXPECT_EQ(version, 5);
}

TEST_F(Identify, RecognisesAFileWithoutAVersionTextAndLeavesTheIndex) {
  EXPECT_EQ(identify(annotation("2.9")), 0);
  EXPECT_EQ(version, schema_text_none);
}

TEST_F(Identify, RefusesAnotherLevelOrMissionInSilence) {
  EXPECT_EQ(identify(annotation("3.4", "Level 1A Product")), -1);
  EXPECT_EQ(identify(annotation("3.4", "Level 1B Product", "ERS-1")), -1);
  const PrintedReport foreign = {"tsx_FileIdentify", "This is not a TerraSAR-X file.",
                                 gke_SeverityError};
  EXPECT_EQ(toolkit().created, (std::vector<PrintedReport>{foreign, foreign}));
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(toolkit().live_reports, 0);
}

// Both texts must stand there whole, in the same case, and on their own lines.
TEST_F(Identify, RefusesWhatOnlyResemblesTheTexts) {
  EXPECT_EQ(identify(annotation("3.4", "Level 1B")), -1);
  EXPECT_EQ(identify(annotation("3.4", "level 1b product")), -1);
  EXPECT_EQ(identify(annotation("3.4", "Level 1B Product", "TSX-2")), -1);
  EXPECT_EQ(identify(annotation("3.4", "Level 1B Product", "tsx-1")), -1);
  EXPECT_EQ(identify(annotation("3.4", "TSX-1", "Level 1B Product")), -1);
  EXPECT_EQ(identify(annotation("3.4", "my Level 1B Product X", "a TSX-1 b")), 0) << "anywhere";
}

TEST_F(Identify, TakesSisterSatellitesWhereThePreferenceAsksForThem) {
  for (const char* mission : {"TDX-1", "PAZ-1"}) {
    const std::string bytes = annotation("4.0", "Level 1B Product", mission);
    toolkit().preferences.clear();
    EXPECT_EQ(identify(bytes), -1) << "off without a word";
    toolkit().preferences["tsx.sister_satellites"] = 0;
    EXPECT_EQ(identify(bytes), -1);
    toolkit().preferences["tsx.sister_satellites"] = 1;
    EXPECT_EQ(identify(bytes), 0);
    EXPECT_EQ(version, schema_text_40);
  }
  for (const char* mission : {"TDX", "PAZ-2", "tdx-1", "ERS-1"}) {
    EXPECT_EQ(identify(annotation("4.0", "Level 1B Product", mission)), -1) << mission;
  }
  EXPECT_EQ(toolkit().created,
            (std::vector<PrintedReport>(
                8, {"tsx_FileIdentify", "This is not a TerraSAR-X file.", gke_SeverityError})));
}

TEST_F(Identify, AsksForThePreferenceOnlyWhereASisterIsNamed) {
  EXPECT_EQ(identify(annotation("4.0")), 0);
  EXPECT_EQ(identify(annotation("4.0", "Level 1B Product", "ERS-1")), -1);
  EXPECT_EQ(toolkit().calls["gkp_GetNumberPreference"], 0);
}

TEST_F(Identify, WithoutTheWordOfThePreferenceASisterIsForeign) {
  toolkit().fail_at["gkp_GetNumberPreference"] = 1;
  EXPECT_EQ(identify(annotation("4.0", "Level 1B Product", "TDX-1")), -1);
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(toolkit().live_reports, 0);
}

// The version stands on the seventh line alone.
TEST_F(Identify, LooksForTheVersionOnItsLineOnly) {
  EXPECT_EQ(identify("4.0\n4.0\nLevel 1B Product 4.0\nTSX-1 4.0\n4.0\n4.0\n3.5\n4.1\n"), 0);
  EXPECT_EQ(version, 1);
}

// Only the answer 1 means that there is a file, and a report along with another is dropped.
TEST_F(Identify, TakesNoOtherAnswerForAnExistingFile) {
  for (const int answer : {0, 2, -1}) {
    toolkit().exists["a.xml"] = answer;
    EXPECT_EQ(identify(annotation("3.4")), -1) << answer;
  }
  toolkit().exists.clear();
  toolkit().fail_at["gkf_FileExists"] = toolkit().calls["gkf_FileExists"] + 1;
  EXPECT_EQ(identify(annotation("3.4")), -1);
  EXPECT_EQ(toolkit().calls["gkf_Open"], 0);
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(toolkit().live_reports, 0);
}

// A handle that is null without a report ends the recognition; it is closed like any other.
TEST_F(Identify, ANullHandleWithoutAReportIsClosedToo) {
  toolkit().fail_at["gkf_Open"] = 1;
  toolkit().silent.insert("gkf_Open");
  EXPECT_EQ(identify(annotation("3.4")), -1);
  EXPECT_TRUE(toolkit().created.empty());
  EXPECT_EQ(toolkit().calls["gkf_Fgets"], 0);
  EXPECT_EQ(toolkit().log, std::vector<std::string>{"gkf_Close"});
}

TEST_F(Identify, OpensForReading) {
  EXPECT_EQ(identify(annotation("3.4")), 0);
  EXPECT_EQ(toolkit().modes, std::vector<std::string>{"r"});
  EXPECT_EQ(toolkit().calls["gkf_Fgets"], 7) << "seven lines and no more";
}

TEST_F(Identify, WorksOnALineOf256BytesAndACopyOfThePath) {
  EXPECT_EQ(identify(annotation("3.4")), 0);
  EXPECT_EQ(toolkit().allocations, std::vector<std::size_t>{256});
  EXPECT_EQ(toolkit().formats, std::vector<std::string>{"%s"});
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(Identify, WithoutMemoryForEitherTheFileIsForeign) {
  for (const char* operation : {"gkm_HeapMalloc", "gks_Sprintf"}) {
    reset_toolkit();
    toolkit().fail_at[operation] = 1;
    EXPECT_EQ(identify(annotation("3.4")), -1);
    EXPECT_EQ(toolkit().calls["gkf_Open"], 0);
    EXPECT_TRUE(toolkit().printed.empty());
    EXPECT_EQ(toolkit().live_reports, 0);
    EXPECT_EQ(toolkit().live_blocks, 0);
  }
}

TEST_F(Identify, RefusesAMissingFileWithoutOpeningAny) {
  std::int32_t index = 6;
  EXPECT_EQ(tsx_FileIdentify("nowhere.xml", &index), -1);
  EXPECT_EQ(toolkit().calls["gkf_Open"], 0);
  EXPECT_TRUE(toolkit().log.empty());
}

TEST_F(Identify, RefusesAFileThatEndsEarlyAndClosesIt) {
  for (int lines = 0; lines < 7; ++lines) {
    std::string bytes = annotation("3.4");
    std::size_t end = 0;
    for (int i = 0; i < lines; ++i) end = bytes.find('\n', end) + 1;
    toolkit().log.clear();
    EXPECT_EQ(identify(bytes.substr(0, end)), -1) << lines << " lines";
    EXPECT_EQ(toolkit().log, std::vector<std::string>{"gkf_Close"});
    EXPECT_TRUE(toolkit().printed.empty());
  }
}

// A read takes 254 characters with the line's end. A longer line counts as two reads, and
// everything after it stands one read too late.
TEST_F(Identify, ReadsALongLineInPieces) {
  const std::string rest = annotation("3.4").substr(annotation("3.4").find('\n') + 1);
  EXPECT_EQ(identify(std::string(253, ' ') + '\n' + rest), 0);
  EXPECT_EQ(identify(std::string(254, ' ') + '\n' + rest), -1);
}

// The words of what is dropped in silence.
TEST_F(Identify, WrapsEachFailureInItsWords) {
  const struct {
    const char* operation;
    int call;
    const char* message;
  } cases[] = {{"gkf_Open", 1, "gkf_Open fail"},
               {"gkf_Fgets", 1, "gkf_Fgets failure in tsx_FileIdentify"},
               {"gkf_Fgets", 2, "gkf_Fgets failure in tsx_FileIdentify"},
               {"gkf_Fgets", 3, "gkf_ReadDirect failure in tsx_FileIdentify"},
               {"gkf_Fgets", 4, "gkf_ReadDirect failure in tsx_FileIdentify"},
               {"gkf_Fgets", 7, "gkf_ReadDirect failure in tsx_FileIdentify"}};
  for (const auto& failing : cases) {
    reset_toolkit();
    toolkit().fail_at[failing.operation] = failing.call;
    EXPECT_EQ(identify(annotation("3.4")), -1);
    EXPECT_EQ(
        toolkit().created,
        (std::vector<PrintedReport>{{"tsx_FileIdentify", failing.message, gke_SeverityError}}));
    EXPECT_TRUE(toolkit().printed.empty());
    EXPECT_EQ(toolkit().live_reports, 0);
  }
}

TEST_F(Identify, PrintsAFailingCloseAsAWarning) {
  toolkit().fail_at["gkf_Close"] = 1;
  EXPECT_EQ(identify(annotation("3.4")), 0);
  ASSERT_EQ(toolkit().printed.size(), 2U);
  EXPECT_EQ(toolkit().printed[0],
            (PrintedReport{"tsx_FileIdentify", "gkf_Close failed", gke_SeverityWarning}));
  EXPECT_EQ(toolkit().live_reports, 0);
}

TEST_F(Identify, DropsTheReportOfAFailingOpen) {
  toolkit().fail_at["gkf_Open"] = 1;
  EXPECT_EQ(identify(annotation("3.4")), -1);
  EXPECT_TRUE(toolkit().printed.empty());
  EXPECT_EQ(toolkit().live_reports, 0);
}

}  // namespace
