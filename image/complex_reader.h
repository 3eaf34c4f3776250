#pragma once

#include <cstdint>

#include "gridkit/report.h"
#include "record/tsx_file.h"

// Reads one block of a layer of a complex product from its COSAR file. Layout, with W samples per
// line (from the annotation; the file's own annotation is not read): records of 4 x (W + 2) bytes,
// 4 annotation records first, then one record a line with a head of 8 bytes and W samples of I and
// Q, each 16-bit, most significant byte first.
//
// `pixelData` is the address of the caller's block pointer: [blockHeight][blockWidth] pixels. The
// pointer is set to null, without a report, when the block has no data: when it starts outside the
// range that the image's size allows, or when any of its lines lies past the end of the file.
//
// Kept on purpose: that range takes no account of annotation records and line heads, so blocks that
// start near the bottom are refused although the file holds them; and a block at the right edge is
// not clipped, so samples past a line's end come from the next record.
//
// `err` receives a report of a failed seek ("gkf_fseeko failed") or of missing memory, and the
// block stays as it was; with `err` null the report is printed here.
void tsx_ReadLineComplex(TsxLayer* layer, std::int32_t layerIndex, std::int32_t firstColumn,
                         void** pixelData, std::int32_t firstLine, gke_Report** err);
