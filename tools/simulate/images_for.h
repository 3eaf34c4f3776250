#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/simulate/options.h"

namespace simulate {

// What images are made of for an annotation that exists; the rest of a scene is the annotation's.
struct ImageContent {
  std::uint64_t seed = 1;
  std::int32_t targets = 9;
  CosarOptions cosar;         // with one burst
  bool empty_images = false;  // no samples
  bool overwrite = false;     // replace images that are there
};

struct MadeImages {
  std::string annotation;            // beside the images
  std::vector<std::string> written;  // paths of image files
  std::vector<std::string> kept;     // that were there already
  std::string map;                   // such as "UTM zone 32 N, WGS84"; empty: none
  std::int32_t lines = 0;
  std::int32_t samples = 0;

  // "2 images of 300 lines x 260 samples were written, on UTM zone 32 N, WGS84"
  std::string in_words() const;
};

// Makes the image files that an annotation names, in its own folder or below `folder` where one is
// given (the annotation is then copied there too): speckle, targets and map as in a product of the
// simulator's own. An image that is there already is kept unless `overwrite` is set.
//
// Throws std::invalid_argument for content that its images cannot have, std::exception for an
// annotation that does not bind, that names a file outside its folder, or whose map is neither UTM
// nor UPS on WGS 84, and when something cannot be written.
MadeImages write_images_for(const std::string& annotation, const std::string& folder,
                            const ImageContent& content);

}  // namespace simulate
