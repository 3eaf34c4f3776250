#pragma once

#include <optional>
#include <string>

#include "binding/description.h"

namespace binding {

// What keeps an object from being written as a document that reads again.
struct Unwritable {
  std::string path;  // of the element, such as /level1Product/productSpecific/geocodedImageInfo
  std::string why;   // what it lacks: "has no <geoParameter>"
};

// Looks for it in the object and all that it holds, in document order; `path` is the object's own.
//
// Valid documents can hold such elements: an optional one may stand empty, whatever its class
// requires, and a list may have no entries, but writing ends the process over the first and leaves
// out the second.
std::optional<Unwritable> find_unwritable(const ClassDescription& description, const void* object,
                                          const std::string& path);

}  // namespace binding
