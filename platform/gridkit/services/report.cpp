#include "gridkit/report.h"

#include <cstdio>
#include <memory>
#include <new>
#include <string>

struct gke_Report {
  const char* word;
  std::int32_t line;
  std::int32_t severity;
  gke_Report* previous;
  std::string message;
};

namespace {

thread_local gke_ReportSinkSetting current_sink{nullptr, nullptr};

// Stands in when there is no memory for a report. It is never deleted.
gke_Report& last_resort() {
  static gke_Report report{"gke_CreateErrorReport", 0, gke_SeverityError, nullptr, "out of memory"};
  return report;
}

void print_to_standard_error(const gke_Report* report) {
  for (; report != nullptr; report = report->previous) {
    const char* kind = report->severity == gke_SeverityWarning ? "warning: " : "";
    std::fprintf(stderr, "gridkit: %s%s: %s\n", kind, report->word, report->message.c_str());
  }
}

}  // namespace

gke_Report* gke_CreateErrorReport(const char* functionWord, int32_t line, int32_t severity,
                                  gke_Report* previous, const char* message, int32_t) {
  try {
    const char* word = functionWord != nullptr ? functionWord : "";
    return new gke_Report{word, line, severity, previous, message != nullptr ? message : ""};
  } catch (const std::bad_alloc&) {
    gke_DeleteErrorReportEx(&previous);
    return &last_resort();
  }
}

void gke_PrintErrorReport(const gke_Report* report, int32_t, int32_t) {
  if (report == nullptr) return;
  if (current_sink.sink != nullptr) {
    current_sink.sink(report, current_sink.context);
  } else {
    print_to_standard_error(report);
  }
}

void gke_DeleteErrorReportEx(gke_Report** report) {
  if (report == nullptr) return;
  gke_Report* next = *report;
  *report = nullptr;
  while (next != nullptr && next != &last_resort()) {
    const std::unique_ptr<gke_Report> ended(next);
    next = ended->previous;
  }
}

const char* gke_ReportWord(const gke_Report* report) {
  return report->word;
}
const char* gke_ReportMessage(const gke_Report* report) {
  return report->message.c_str();
}
int32_t gke_ReportLine(const gke_Report* report) {
  return report->line;
}
int32_t gke_ReportSeverity(const gke_Report* report) {
  return report->severity;
}
const gke_Report* gke_ReportPrevious(const gke_Report* report) {
  return report->previous;
}

gke_ReportSinkSetting gke_SetReportSink(gke_ReportSinkSetting setting) {
  const gke_ReportSinkSetting before = current_sink;
  current_sink = setting;
  return before;
}
