#pragma once

#include <cstdint>

#include "record/tsx_file.h"

// The annotation gives ground range as a polynomial of the two-way slant-range time; the sensor
// model needs the inverse, slant range as a polynomial of ground range. The inverse is fitted
// through ten points, each a thousand slant-range pixels after the one before.

// Fills gnd2slt_coeffs of the record's model, whose near_slant_range and range_pix_spacing are set.
// The fitted constant is replaced by near_slant_range, so the polynomial gives the absolute slant
// range from the near edge. 0; -1 for a null record; else the solver's result, and nothing is
// filled. Terms beyond the six that the model holds take no part; missing ones count as zero.
std::int32_t tsx_ComputeGnd2slt_coeffs(TsxFile* file);

// The design matrix [rows][rowStride] and the right-hand side [rows] of the fit: row k holds the
// powers of the ground range G of point k, from 1 to G^5 as far as `columnsUsed` reaches, and its
// slant-range distance from the first pixel in metres. `coefficients` are the annotation's six, in
// metres by powers of seconds; `spacing` is the slant-range pixel spacing in metres. The times of
// the near and the far edge are not used. 0, or -1 for a null array or a size below 1.
std::int32_t tsx_BuildGnd2sltSystem(double nearTime, double farTime, double spacing,
                                    const double* coefficients, std::int32_t columnsUsed,
                                    std::int32_t rows, std::int32_t rowStride, double* matrix,
                                    double* rhs);
