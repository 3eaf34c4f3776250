#pragma once

#include <stdint.h>

#include "gridkit/export.h"

#ifdef __cplusplus
extern "C" {
#endif

// Error reports: a chain, newest first, of what failed and why. An operation of the toolkit that
// fails stores a report in the slot whose address it was given (an address of null drops it); the
// caller wraps it in a report of its own, prints the chain where the road ends, and deletes it.
typedef struct gke_Report gke_Report;

enum { gke_SeverityWarning = 0, gke_SeverityError = 2 };

// A new report that holds `previous` (may be null) and takes it over. `functionWord` names the
// function that reports and must live as long as the report; the message is copied. `reserved` is
// 0. Never null: without memory it is a fixed report that says so, and `previous` is deleted.
GRIDKIT_API gke_Report* gke_CreateErrorReport(const char* functionWord, int32_t line,
                                              int32_t severity, gke_Report* previous,
                                              const char* message, int32_t reserved);

// Shows the chain, one line a report: "gridkit: WORD: MESSAGE" for severity 2, "gridkit: warning:
// WORD: MESSAGE" for severity 0, on standard error, or hands it to the installed sink. Null shows
// nothing. The last two arguments are 0.
GRIDKIT_API void gke_PrintErrorReport(const gke_Report* report, int32_t reserved1,
                                      int32_t reserved2);

// Deletes the chain and clears the slot. Null address or slot: nothing happens.
GRIDKIT_API void gke_DeleteErrorReportEx(gke_Report** report);

// The parts of a report; `report` is not null. Texts live as long as the report.
GRIDKIT_API const char* gke_ReportWord(const gke_Report* report);
GRIDKIT_API const char* gke_ReportMessage(const gke_Report* report);
GRIDKIT_API int32_t gke_ReportLine(const gke_Report* report);
GRIDKIT_API int32_t gke_ReportSeverity(const gke_Report* report);
GRIDKIT_API const gke_Report* gke_ReportPrevious(const gke_Report* report);

// Where this thread's printed chains go: `sink` gets each chain, which it must not keep. A null
// sink restores standard error. Returns the sink and context that were installed before.
typedef void (*gke_ReportSink)(const gke_Report* report, void* context);
typedef struct gke_ReportSinkSetting {
  gke_ReportSink sink;
  void* context;
} gke_ReportSinkSetting;
GRIDKIT_API gke_ReportSinkSetting gke_SetReportSink(gke_ReportSinkSetting setting);

#ifdef __cplusplus
}
#endif
