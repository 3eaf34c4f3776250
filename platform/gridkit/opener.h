#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/export.h"
#include "gridkit/plugin.h"
#include "gridkit/product.h"

namespace gridkit {

// A file that none of the plug-ins takes for one of its format.
class NotRecognised : public Error {
 public:
  using Error::Error;
};

// What is at the end of a path that a user gave, before it is opened.
struct RecognisedProduct {
  std::shared_ptr<Plugin> plugin;
  std::int32_t title = 0;  // of the plug-in's formats, from 0
  std::string path;        // of the file by which the product is opened
};

// The plug-ins of some folders, and opening a product with whichever takes it, given as its file or
// its folder: what every program, the C functions and the bridges do first. Safe to use from
// several threads at once.
class GRIDKIT_API Opener {
 public:
  // What several products of one folder are, in words, for the message that lists them.
  using WhatSeveralAre = std::function<std::string(const std::vector<std::filesystem::path>&)>;

  // Loads the plug-ins of the folders, in their order; without one those of
  // default_plugin_folder(). Throws Error where no plug-in loads.
  explicit Opener(const std::vector<std::filesystem::path>& folders = {},
                  WhatSeveralAre what_several_are = {});

  const std::vector<std::shared_ptr<Plugin>>& plugins() const { return plugins_; }

  // The file that a product's format opens it by, given as that file or as its folder, see
  // gridkit/product_path.h. Throws Error.
  std::string find(const std::string& given) const;

  // The same, and the plug-in that takes it. Throws Error, NotRecognised for a file of none of the
  // known formats.
  RecognisedProduct recognise(const std::string& given) const;

  // Opens a product. Throws Error as recognise does, and what Plugin::open throws.
  Product open(const std::string& given) const;

 private:
  std::vector<std::shared_ptr<Plugin>> plugins_;
  WhatSeveralAre what_several_are_;
};

// While it lives, plug-ins that are called on this thread find another answer to whether products
// of sister satellites, which have the form of those that a format is named for, are welcome: the
// number preference "sister_satellites" of whichever group a plug-in asks for. What the whole
// process has set stays as it is.
class GRIDKIT_API SisterSatellites {
 public:
  explicit SisterSatellites(bool are_welcome);
  SisterSatellites(const SisterSatellites&) = delete;
  SisterSatellites& operator=(const SisterSatellites&) = delete;
  ~SisterSatellites();

 private:
  double value_;
  const double* before_;
};

}  // namespace gridkit
