#pragma once

#include <memory>
#include <string>
#include <vector>

#include "gridkit/plugin.h"

// The file by which a product is opened, from what the user gave: that file itself, or the
// product's folder. In a folder the plug-ins are asked which of the files with their formats'
// endings they recognise; where the folder itself holds none, the folders in it are looked through,
// up to three deep, as deliveries nest them.
//
// Throws gridkit::Error where the path leads nowhere, cannot be read, or does not tell one product:
// the message lists those that could be meant, or what was found instead.
std::string find_product(const std::string& path,
                         const std::vector<std::shared_ptr<gridkit::Plugin>>& plugins);
