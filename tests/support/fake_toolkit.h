#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "binding/level1bProductBase.h"
#include "gridkit/file.h"
#include "gridkit/layer.h"
#include "gridkit/report.h"
#include "lmx/error.h"

// A toolkit of the test's own, linked in place of the host's: files live in memory, every report is
// kept, and the n-th call of any operation can be made to fail.

struct PrintedReport {
  std::string word;
  std::string message;
  std::int32_t severity;
  bool operator==(const PrintedReport&) const = default;
};
std::ostream& operator<<(std::ostream& out, const PrintedReport& report);

struct FakeToolkit {
  std::map<std::string, std::string> files;   // path -> bytes
  std::map<std::string, int> fail_at;         // operation -> number of the call that fails, from 1
  std::map<std::string, int> fail_until;      // operation -> last number that fails
  std::set<std::string> silent;               // operations whose failures leave no report
  std::map<std::string, int> exists;          // path -> answer of gkf_FileExists, over `files`
  std::map<std::string, int> calls;           // operation -> calls so far
  std::vector<std::string> log;               // operations whose order matters
  std::vector<PrintedReport> printed;         // newest of a chain first
  std::vector<PrintedReport> created;         // by the plug-in, printed or not, in order
  std::vector<std::string> debug;             // texts of the debug channel, null as "(null)"
  std::map<std::string, double> preferences;  // "group.name" -> value
  std::vector<std::string> modes;             // handed to gkf_Open
  std::vector<std::size_t> allocations;       // bytes asked of gkm_HeapMalloc
  std::vector<std::string> formats;           // handed to gks_Sprintf
  int map_info_slots = 0;                     // calls of gkl_MapInfoRead that were given one
  std::vector<double> pixels;                 // what gkl_LayerRead fills rectangles with, repeated
  std::int64_t short_reads_of = -1;           // items that every read gives at most, without an end
  bool endless = false;                       // every stream gives as many zeros as asked
  bool nothing_for_no_bytes = false;          // gkm_HeapMalloc(0) gives null
  bool files_without_layers = false;          // gkl_LayerGetNames gives an empty list
  std::set<std::string> null_map_texts;       // fields of the map information that are null
  std::vector<std::int64_t> seeks;
  std::int32_t projection_mark = 0;  // of every projection
  double modelled = 0;               // what rmdl_modelEphemeris stores in rs_coeffs[0]
  std::vector<const void*> freed;    // blocks given back, in order
  int live_blocks = 0;               // allocated and not freed
  int live_reports = 0;

  // The document that the plug-in's open constructs, and the error it is constructed with.
  level1bProductBase* document = nullptr;
  std::function<level1bProductBase*()> make_document;  // instead, a new one for each open
  lmx::elmx_error document_error = lmx::error_none;
  std::vector<std::int32_t> constructed;             // version indices asked for
  lmx::elmx_error error_at_entry = lmx::error_none;  // what the error word held then

  // The messages of all printed reports.
  std::vector<std::string> messages() const;
};

// The toolkit of the running test; reset() gives a new one.
FakeToolkit& toolkit();
void reset_toolkit();

// What was handed out since the last reset and has not come back, by kind: block, text, list, entry
// (of a list), design, file, stream, layer, rectangle, pixels, map, report.
std::map<std::string, int> outstanding();

// How often DisableThreadLibraryCalls was called since the program was loaded.
int library_calls_disabled();
