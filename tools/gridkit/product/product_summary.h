#pragma once

#include <string>
#include <vector>

#include "gridkit/product_facts.h"

// What a reader wants to know of a product at a glance, in words.

struct SummaryRow {
  std::string label;  // "mode"
  std::string text;   // "StripMap (SM), beam strip_005, looking right"
};

// The rows in reading order. What has an order of axes has lines before samples.
std::vector<SummaryRow> summary_of(const gridkit::ProductFacts& facts);

// "HH 1.05957369e-05", of a beam of several "HH 1.05e-05 or 1.06e-05 by beam": one text an image.
std::string calibration_in_words(const gridkit::ImageCalibration& image);
