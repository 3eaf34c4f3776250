#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "rmdllib/rational_model.h"

// A rational model by GDAL's names: the offsets and scales of line, sample (pixels), latitude,
// longitude (degrees) and height (metres above the ellipsoid), four times twenty coefficients, the
// largest errors ERR_LINE and ERR_SAMP (pixels), the heights it was fitted over, and whether the
// signal's delays were applied.
nlohmann::ordered_json rational_model_as_json(const rmdllib::FittedRationalModel& fitted,
                                              bool delays);

// The same on standard output, a number a line as "NAME: NUMBER": the form that GDAL reads beside
// IMAGE.tif as IMAGE_RPC.TXT. Numbers read back bit for bit.
void print_rational_model(const rmdllib::FittedRationalModel& fitted, bool delays);

// The coefficients, offsets and scales of a window of the image that begins at a line and sample,
// by the names and in the texts of GDAL's metadata domain RPC. Numbers read back bit for bit.
std::vector<std::pair<std::string, std::string>> rational_model_as_metadata(
    const rmdllib::FittedRationalModel& fitted, double first_line, double first_sample);

// What a user must be told of a model that misses its goal; empty for one that keeps it.
std::string remark_on(const rmdllib::FittedRationalModel& fitted);
