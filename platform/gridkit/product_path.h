#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "gridkit/export.h"

namespace gridkit {

// What tells the files by which products are opened from others.
struct ProductFiles {
  std::function<bool(const std::filesystem::path&)> may_be;         // cheap: by the name alone
  std::function<bool(const std::filesystem::path&)> is_recognised;  // asked of those only
  // What several of one folder are, in words, such as "several products".
  std::function<std::string(const std::vector<std::filesystem::path>&)> what_several_are;
};

// The file by which a product is opened, from what the user gave: that file itself, whatever it is,
// or the product's folder. Where the folder itself holds no product, the folders in it are looked
// through, up to three deep, as deliveries nest them.
//
// Throws Error where the path leads nowhere, cannot be read, or does not tell one product:
// the message, led by the path and ": ", lists those that could be meant, or what was found
// instead. A file, or what a folder holds in place of a product, that is still packed (see
// refuse_packed) is told as that.
GRIDKIT_API std::string find_product(const std::string& path, const ProductFiles& files);

// Throws Error for a file whose name tells that it is a packed product, such as
// "x.tar.gz", with the command that unpacks it.
GRIDKIT_API void refuse_packed(const std::string& path);

// Whether the file's name has the ending, such as ".xml", in upper or lower case.
GRIDKIT_API bool has_ending(const std::filesystem::path& file, const std::string& ending);

}  // namespace gridkit
