#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "gridkit/product.h"
#include "gridkit/samples.h"
#include "tools/gridkit/read/read_image.h"

// An image's samples, or a window of them, into an image file.

// The number of the image of that name. Nothing where there is none, or where the product's samples
// cannot be had at all.
std::optional<std::size_t> find_sample_image(const gridkit::Product& product,
                                             const std::string& name);

// Reads and writes in one pass, on every core: complex integers, complex floats or amplitudes, or
// their brightness. Lines that the file does not hold are told in one line and named in the file's
// metadata. Throws gridkit::Error, or Interrupted, and leaves no file then.
void read_samples(const gridkit::Product& product, std::size_t image, const ImageRequest& request);
