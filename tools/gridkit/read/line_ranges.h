#pragma once

#include <string>
#include <vector>

#include "gridkit/image_reader.h"

// "935-998, 1000" for lines of an image, counted from 0.
std::string lines_as_text(const std::vector<gridkit::LineRange>& ranges);
