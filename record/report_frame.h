#pragma once

#include <cstdint>

#include "gridkit/report.h"

// The one way in which functions report. Toolkit operations that fail fill the frame's slot; the
// function wraps each failure under its own word; at the function's end a report that is still
// pending is printed and deleted, so none crosses an export. A frame over a slot of the caller's
// leaves its report there instead.
class ReportFrame {
 public:
  explicit ReportFrame(const char* function_word) : ReportFrame(function_word, nullptr) {}

  // Works on the caller's slot, whose report it drops first; with none, on a slot of its own.
  ReportFrame(const char* function_word, gke_Report** callers_slot)
      : word_(function_word), slot_(callers_slot != nullptr ? callers_slot : &own_) {
    drop();
  }
  ReportFrame(const ReportFrame&) = delete;
  ReportFrame& operator=(const ReportFrame&) = delete;
  ~ReportFrame() {
    if (slot_ == &own_) print_and_delete();
  }

  // The slot to hand to a toolkit operation.
  gke_Report** slot() { return slot_; }
  bool pending() const { return *slot_ != nullptr; }

  // Reports a failure over whatever is pending.
  void report(const char* message, std::int32_t severity = gke_SeverityError,
              std::int32_t line = __builtin_LINE()) {
    *slot_ = gke_CreateErrorReport(word_, line, severity, *slot_, message, 0);
  }

  // True, and the failure reported, when the toolkit operation before it failed.
  bool failed(const char* message, std::int32_t line = __builtin_LINE()) {
    if (!pending()) return false;
    report(message, gke_SeverityError, line);
    return true;
  }

  void print_and_delete() {
    if (!pending()) return;
    gke_PrintErrorReport(*slot_, 0, 0);
    gke_DeleteErrorReportEx(slot_);
    *slot_ = nullptr;
  }

  // Deletes without printing.
  void drop() {
    if (pending()) gke_DeleteErrorReportEx(slot_);
    *slot_ = nullptr;
  }

 private:
  const char* word_;
  gke_Report* own_ = nullptr;
  gke_Report** slot_;
};
