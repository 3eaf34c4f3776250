#pragma once

#include <memory>
#include <string>
#include <vector>

#include "gridkit/plugin.h"
#include "gridkit/product.h"

// The command line's host: the plug-ins of a folder, and opening a file with whichever takes it.

struct HostOptions {
  std::string plugins;      // folder; empty: the one beside the toolkit's library
  std::string preferences;  // file; empty: none
  bool debug = false;       // turns the debug channel on
};

class Host {
 public:
  // Throws gridkit::Error for a preferences file that is refused, or when no plug-in loads.
  explicit Host(const HostOptions& options);

  const std::vector<std::shared_ptr<gridkit::Plugin>>& plugins() const { return folder_.plugins; }

  // Opens a product, given as the file that its format opens it by or as its folder (see
  // command_line/product_path.h); its path() is that file. Throws gridkit::Error whose text says
  // what is wrong with the file and where.
  gridkit::Product open(const std::string& given) const;

 private:
  gridkit::PluginFolder folder_;
};
