#include "gridkit/error.h"

#include <gtest/gtest.h>

#include <string>

#include "gridkit/product.h"
#include "gridkit/report.h"

namespace {

TEST(Error, WithoutCallsIsItsSentence) {
  const gridkit::Error error("a.xml: no such file");
  EXPECT_STREQ("a.xml: no such file", error.what());
  EXPECT_EQ("a.xml: no such file", error.sentence());
  EXPECT_EQ("", error.calls());
}

TEST(Error, TellsUsersWhatFailedAndWhyAndProgrammersTheCalls) {
  const gridkit::Error error("a.xml: no block", "line 70 cannot be read",
                             "xLayerRasterRead: read failed; read: line 70 cannot be read");
  EXPECT_EQ("a.xml: no block: line 70 cannot be read", error.sentence());
  EXPECT_EQ("xLayerRasterRead: read failed; read: line 70 cannot be read", error.calls());
  EXPECT_STREQ("a.xml: no block: xLayerRasterRead: read failed; read: line 70 cannot be read",
               error.what());
}

TEST(Error, WithoutACauseOrReportsSaysWhatFailed) {
  const gridkit::Error error("a.xml: cannot be opened", "", "");
  EXPECT_STREQ("a.xml: cannot be opened", error.what());
  EXPECT_EQ("a.xml: cannot be opened", error.sentence());
  EXPECT_EQ("", error.calls());
  const gridkit::Error copied(error);
  EXPECT_EQ("a.xml: cannot be opened", copied.sentence());
}

// What a collector gives for a chain whose oldest report says `oldest`.
std::string cause_of(const char* oldest) {
  const gridkit::ReportCollector collector;
  gke_Report* chain = gke_CreateErrorReport("read", 1, gke_SeverityError, nullptr, oldest, 0);
  chain = gke_CreateErrorReport("LayerRead", 2, gke_SeverityError, chain, "read failed", 0);
  gke_PrintErrorReport(chain, 0, 0);
  gke_DeleteErrorReportEx(&chain);
  EXPECT_EQ(std::string("LayerRead: read failed; read: ") + oldest, collector.text());
  return collector.cause();
}

TEST(ReportCollector, TakesTheOldestReportForTheCause) {
  EXPECT_EQ("line 70 cannot be read", cause_of("line 70 cannot be read"));
}

TEST(ReportCollector, HasNoCauseWhereTheOldestReportOnlyNamesACall) {
  EXPECT_EQ("", cause_of("gkf_fopen failed"));
}

}  // namespace
