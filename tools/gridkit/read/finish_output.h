#pragma once

#include <string>
#include <vector>

#include "gridkit/raster_writer.h"
#include "tools/gridkit/read/image_place.h"
#include "tools/gridkit/read/line_ranges.h"
#include "tools/gridkit/terminal/progress.h"

// Ends an image file all of whose lines are written: names the lines that did not come in its
// metadata, finishes it, ends the progress bar, and tells what a user should know of the file.
// Throws gridkit::Error, or Interrupted, and leaves no file then.
void finish_output(gridkit::RasterWriter& writer, Progress& progress, const std::string& output,
                   const ImagePlace& place, const std::vector<UnreadLines>& missing);
