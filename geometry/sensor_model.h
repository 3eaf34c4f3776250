#pragma once

#include "gridkit/report.h"
#include "record/tsx_file.h"

// The most state vectors that a model takes: a day's worth at one a second and more. The annotation
// states its count apart from the vectors and the product view makes up the missing ones, so
// without a bound a damaged count would ask for any amount of memory.
inline constexpr std::int32_t most_state_vectors = 100000;

// Fills the record's sensor model from its annotation, for complex and ground-range products, and
// has its orbit modelled. The variant, the sizes and the document are set; a null record is
// nothing. A failure is reported through `err`, or printed when `err` is null: a number of state
// vectors that is negative in 32 bits or above the bound, missing memory for them, or a failure of
// the orbit model.
void tsx_GenericSARRead(TsxFile* file, gke_Report** err);
