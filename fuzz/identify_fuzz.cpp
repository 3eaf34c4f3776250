// Recognition of a file by its first lines.

#include <cstdint>
#include <string_view>

#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "fuzz/memory_file.h"
#include "gridkit/report.h"
#include "plugin/identify.h"
#include "record/exports.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(Bytes(data, size).rest());
  std::int32_t version = -7;
  const std::int32_t result = tsx_FileIdentify(file.path().c_str(), &version);
  expect(result == 0 || result == -1, "recognition answers 0 or -1");
  expect(version == -7 || (result == 0 && version >= 0 && version <= 5),
         "a version comes with a recognised file only");
  std::int32_t title = -7;
  expect(tsxFileTitleIdentifyAndOpen(file.path().c_str(), &title, nullptr) == nullptr,
         "identifying gives no record");
  expect(title == result, "the title tells the same");
  return 0;
}
