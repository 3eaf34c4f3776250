#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "companion/window.h"
#include "gridkit/companion.h"
#include "gridkit/layer.h"

namespace companion {

struct CloseLayer {
  void operator()(gkl_Layer* layer) const { gkl_LayerClose(layer, nullptr); }
};
using LayerHandle = std::unique_ptr<gkl_Layer, CloseLayer>;

// The first layer of a GeoTIFF file, for any number of threads. A handle of the host serves one
// thread at a time, so each read borrows one of its own: from those that are idle, or a new one.
class DetectedImage {
 public:
  // Throws Failure for a file that does not open.
  explicit DetectedImage(const std::string& path);

  const std::string& path() const { return path_; }
  std::int64_t lines() const { return lines_; }
  std::int64_t samples() const { return samples_; }

  // Reads a window, pixels of 16 bits: what is no such number is truncated toward zero and keeps
  // its low 16 bits, as in the plug-in's layers. `progress` tells how far it came, also when it
  // throws Failure. The window is a checked one. Memory: 320 KiB beside the host's own tiles.
  void read(const gkc_Window& window, Progress& progress);

 private:
  LayerHandle borrow();
  void give_back(LayerHandle layer);

  std::string path_;
  std::int64_t lines_ = 0;
  std::int64_t samples_ = 0;
  std::mutex mutex_;  // held while a handle is taken or given, never while one is opened or read
  std::vector<LayerHandle> idle_;
};

}  // namespace companion
