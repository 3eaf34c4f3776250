#pragma once

#include <cstdint>

#include "gridkit/report.h"
#include "record/tsx_file.h"

// Layer names: "X_%s%s_%s_%ld" with two polarisation letters, "MAGNITUDE" or "PHASE", and the
// layer's number from 1. On a complex product every image gives a magnitude and a phase layer, on
// any other product a magnitude layer.

// The name of the layer of that index as a new heap text, or null when the polarisation cannot be
// told or memory ran out. Only a 'V' is told apart: every other letter yields an H, so that an
// unknown polarisation text still gives a well-formed name.
char* tsx_FileLayerNamesGet(TsxFile* file, std::int32_t index, gke_Report** err);

// The zero-based index of a layer's name, or -1. Only the form and the number count: letters and
// kind are never compared with the product, and numbers go up to twice the layer count, although
// that holds the doubled count of a complex product already.
std::int32_t tsx_LayerCheck(const TsxFile* file, const char* layerName);
