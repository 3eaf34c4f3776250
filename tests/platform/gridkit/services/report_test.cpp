#include "gridkit/report.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Report, PrintsTheChainNewestFirst) {
  gke_Report* report =
      gke_CreateErrorReport("gkf_Close", 1, gke_SeverityWarning, nullptr, "old", 0);
  report = gke_CreateErrorReport("tsxLayerOpen", 2, gke_SeverityError, report, "100% new", 0);
  testing::internal::CaptureStderr();
  gke_PrintErrorReport(report, 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "gridkit: tsxLayerOpen: 100% new\ngridkit: warning: gkf_Close: old\n");
  EXPECT_EQ(gke_ReportLine(report), 2);
  EXPECT_EQ(gke_ReportSeverity(gke_ReportPrevious(report)), gke_SeverityWarning);
  gke_DeleteErrorReportEx(&report);
  EXPECT_EQ(report, nullptr);
  gke_DeleteErrorReportEx(&report);
  gke_DeleteErrorReportEx(nullptr);
}

TEST(Report, GoesToAnInstalledSinkInstead) {
  std::string seen;
  const auto sink = [](const gke_Report* r, void* text) {
    *static_cast<std::string*>(text) += gke_ReportMessage(r);
  };
  const gke_ReportSinkSetting before = gke_SetReportSink({sink, &seen});
  gke_Report* report = gke_CreateErrorReport("w", 1, gke_SeverityError, nullptr, "m", 0);
  testing::internal::CaptureStderr();
  gke_PrintErrorReport(report, 0, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(seen, "m");
  gke_SetReportSink(before);
  gke_DeleteErrorReportEx(&report);
}

}  // namespace
