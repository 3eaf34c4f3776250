#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/product.h"
#include "gridkit/raster_writer.h"

// The image files that are written.

enum class OutputFormat { geotiff, cog, png, envi };

// The formats' names, as -f takes them: "GTiff", "COG", "PNG", "ENVI".
const std::vector<std::string>& output_format_names();

// By a name of those; else by the ending of the path: .tif and .tiff, .png, .img and .envi. Nothing
// for another ending.
std::optional<OutputFormat> output_format(const std::string& name, const std::string& path);

// The ending that files of the format get: ".tif", ".png" or ".img".
std::string output_ending(OutputFormat format);

// The name of the output that is no file but the program's standard output.
inline constexpr const char* standard_output = "-";

// Whether the format can be written there: byte after byte, in a single stream.
bool can_stream(OutputFormat format);

// The output as messages call it.
std::string shown_name(const std::string& path);

// Throws gridkit::Error for standard output that is a terminal, for a file that is there already,
// unless it is to be overwritten; and in any case for one that the product is being read from.
void check_output(const std::string& path, OutputFormat format, bool overwrite,
                  const gridkit::Product& product);

std::unique_ptr<gridkit::RasterWriter> create_output(OutputFormat format, const std::string& path,
                                                     std::int32_t width, std::int32_t height,
                                                     const gridkit::RasterOptions& options);
