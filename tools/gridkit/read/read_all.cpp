#include "tools/gridkit/read/read_all.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "gridkit/os_error.h"
#include "tools/gridkit/read/calibration.h"
#include "tools/gridkit/read/output_file.h"

namespace {

namespace fs = std::filesystem;

void make_folder(const std::string& folder) {
  std::error_code failed;
  fs::create_directory(folder, failed);
  std::error_code ignored;
  if (fs::is_directory(folder, ignored)) return;
  if (fs::exists(folder, ignored)) throw gridkit::Error(folder + ": it is no folder");
  throw gridkit::Error(folder + ": no such folder, and it cannot be made: " +
                       gridkit::os_error_in_words(failed.value()));
}

// Names of layers are the plug-in's affair; one with a slash would lead out of the folder.
std::string file_of(const std::string& folder, const std::string& layer, OutputFormat format) {
  if (layer.find('/') != std::string::npos) {
    throw gridkit::Error("the layer \"" + layer + "\" has no name for a file; read it by itself");
  }
  return (fs::path(folder) / (layer + output_ending(format))).string();
}

}  // namespace

void read_all(const gridkit::Product& product, const ImageRequest& like,
              const std::string& folder) {
  std::vector<ImageRequest> requests;
  for (const std::string& layer : product.layer_names()) {
    if (like.calibration && !has_brightness(product.open_layer(layer))) continue;
    ImageRequest request = like;
    request.layer = layer;
    request.output = file_of(folder, layer, like.format);
    check_output(request.output, request.format, request.overwrite, product);
    requests.push_back(request);
  }
  if (requests.empty()) throw gridkit::Error(product.path() + ": it has no such layers");
  make_folder(folder);
  for (const ImageRequest& request : requests) read_image(product, request);
}
