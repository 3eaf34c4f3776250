// Writes every float as the classes do and reads it back as they do. 0 when each of them comes back
// to the bit. Negative ones are the same texts behind a sign, so the positive ones are gone
// through.

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <sstream>

#include "lmx/value.h"

int main() {
  constexpr auto infinity = std::bit_cast<std::uint32_t>(std::numeric_limits<float>::infinity());
  std::uint64_t different = 0;
  std::ostringstream stream;
  for (std::uint32_t bits = 0; bits <= infinity; ++bits) {
    const auto number = std::bit_cast<float>(bits);
    stream.str({});
    stream << lmx::c_as_xml<float>(number);
    const auto read = static_cast<float>(lmx::to_double(stream.str()));
    if (std::bit_cast<std::uint32_t>(read) != bits) {
      std::printf("%a is written %s and reads %a\n", static_cast<double>(number),
                  stream.str().c_str(), static_cast<double>(read));
      ++different;
    }
    if (bits % (infinity / 16) == 0) std::fprintf(stderr, "%3u %%\n", bits / (infinity / 100));
  }
  std::printf("floats written and read: %llu differ\n", static_cast<unsigned long long>(different));
  return different == 0 ? 0 : 1;
}
