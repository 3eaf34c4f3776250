#pragma once

#include <cstddef>
#include <span>

// The bytes follow those written before, and are on their way when it returns. Throws
// gridkit::Error where they do not arrive, as on a full disk.
void write_to_standard_output(std::span<const std::byte> bytes);
