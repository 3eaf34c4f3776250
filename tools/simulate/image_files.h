#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/simulate/scene.h"
#include "tools/simulate/synthesis.h"

namespace simulate {

// COSAR, one burst: records of 4 x (samples + 2) bytes, all numbers big-endian. Four annotation
// records, then one record a line: first and last valid sample (from 1), then I and Q of each
// sample, 16-bit. Samples outside the valid ones are zero.
//
// First record: bytes in burst (its low 32 bits), range sample relative index, range samples,
// azimuth samples, burst index, bytes per record, records, the letters "CSAR", the format's
// version, the oversampling factor, and, as 64-bit floating number, the inverse SPECAN scaling
// rate, zero where no SPECAN processing took place. Second to fourth, behind two words of fill, for
// each range sample: relative index of the burst's first line, first and last line in which the
// sample is valid; indices count from 1.
//
// Written line by line. Throws std::runtime_error when the file cannot be written.
void write_cosar(const std::string& path, const Scene& scene, const Synthesis& synthesis);

// A COSAR file of the right size whose samples are zeros, taking hardly any room on disk.
void write_sparse_cosar(const std::string& path, std::int32_t lines, std::int32_t samples);

// GeoTIFF: 16-bit, one strip a line, uncompressed; georeferenced where the scene has a map.
void write_geotiff(const std::string& path, const Scene& scene, const Synthesis& synthesis);

// Such a file of the right size whose samples are zeros, taking hardly any room on disk.
void write_sparse_geotiff(const std::string& path, std::int32_t lines, std::int32_t samples,
                          const std::optional<MapGrid>& map);

}  // namespace simulate
