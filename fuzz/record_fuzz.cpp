// Records and their dictionaries from strangers: dictionary text, design name, record.

#include <algorithm>
#include <cstdint>
#include <span>

#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "gridkit/error.h"
#include "gridkit/record_decoder.h"
#include "rmdllib/radar_geometry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes input(data, size);
  const std::string_view dictionary = input.text();
  const std::string_view type = input.text();
  const auto bytes = std::as_bytes(std::span<const char>(input.rest()));
  try {
    const auto fields = gridkit::decode_record(dictionary, type, bytes);
    const auto again = gridkit::encode_record(dictionary, type, fields);
    expect(std::ranges::equal(again, bytes), "what is decoded encodes to the same bytes");
    const rmdllib::RadarGeometry geometry(fields);
    const rmdllib::Geodetic place = geometry.ground_of({10, 20}, geometry.average_height());
    geometry.pixel_of(place);
  } catch (const gridkit::Error& error) {
    expect(*error.what() != '\0', "a refusal says why");
  }
  return 0;
}
