#include "gridkit/whole_file.h"

#include "gridkit/services/partial_stream.h"

namespace gridkit {

void write_whole_file(const std::string& path, std::span<const std::byte> bytes, bool replace) {
  PartialStream file(path, replace ? Existing::replace : Existing::refuse);
  file.write(bytes);
  file.close();
  file.complete();
}

}  // namespace gridkit
