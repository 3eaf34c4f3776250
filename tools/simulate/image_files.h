#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/simulate/scene.h"
#include "tools/simulate/synthesis.h"

namespace simulate {

// COSAR: records of 4 x (samples + 2) bytes, all numbers big-endian. Four annotation records of one
// burst, then one record a line: first and last valid sample (from 1), then I and Q of each sample,
// 16-bit. Samples outside the valid ones are zero.
//
// First record: bytes in burst, range sample relative index, samples, lines, burst index, bytes per
// record, records, the letters "CSAR", the format's version. Second to fourth, behind two words of
// fill: relative index, first and last valid line of each range sample.
//
// Written line by line. Throws std::runtime_error when the file cannot be written.
void write_cosar(const std::string& path, const Scene& scene, const Synthesis& synthesis);

// A COSAR file of the right size whose samples are zeros, taking hardly any room on disk.
void write_sparse_cosar(const std::string& path, std::int32_t lines, std::int32_t samples);

// GeoTIFF: 16-bit, one strip a line, uncompressed; georeferenced where the scene has a map.
void write_geotiff(const std::string& path, const Scene& scene, const Synthesis& synthesis);
void write_sparse_geotiff(const std::string& path, std::int32_t lines, std::int32_t samples);

}  // namespace simulate
