#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/annotation/image_finding.h"

// A product's image files against what the annotation says of them. Only headers are read: of a
// COSAR file 48 bytes a burst, of a GeoTIFF its tags.

// An image file of a known format.
struct CheckedImage {
  std::string path;
  std::string facts;    // what was compared, such as "COSAR, 1 burst of ..."
  bool agrees = false;  // no finding concerns it
};

struct ImageCheck {
  std::vector<CheckedImage> images;  // as the annotation lists them, without unreadable ones
  std::vector<ImageFinding> findings;

  bool has_serious() const;
};

// Compares every image file that the annotation names. Its `size` counts bytes and holds to the
// byte; one below 1, which the format uses for an open size, says nothing. Of a GeoTIFF another
// size is worth a look only: the same pixels can be stored in more ways than one.
//
// Nothing when the annotation does not bind to its schema: the one that its version line asks for
// unless `schema` names another.
std::optional<ImageCheck> check_images(const std::string& annotation,
                                       const std::optional<std::string>& schema = {});
