// Preferences files.

#include <cstdint>

#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "fuzz/memory_file.h"
#include "gridkit/preference.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(Bytes(data, size).rest());
  gke_Report* report = nullptr;
  const int32_t result = gkp_LoadPreferences(file.path().c_str(), &report);
  expect((result == 0) == (report == nullptr), "a refusal is reported");
  gke_DeleteErrorReportEx(&report);
  return 0;
}
