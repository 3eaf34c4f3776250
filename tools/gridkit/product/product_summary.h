#pragma once

#include <optional>
#include <string>
#include <vector>

// What a reader wants to know of a product at a glance, from its annotation.

struct SummaryRow {
  std::string label;  // "mode"
  std::string text;   // "StripMap (SM), beam strip_005"
};

// The rows in reading order; none for a file that is no valid annotation, whose product another
// plug-in opened.
std::vector<SummaryRow> summary_of(const std::string& annotation);

// What one image of the product is calibrated with: digital numbers to radar brightness.
struct ImageCalibration {
  std::string polarisation;
  std::vector<double> factors;  // that the annotation states for it, one a beam; each value once
};

// One entry an image, in the order of the annotation; none for a file as above.
std::vector<ImageCalibration> calibrations_of(const std::string& annotation);
