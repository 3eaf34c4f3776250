// Opening, closing and describing products.

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "gridkit/c/open_product.h"
#include "gridkit/opener.h"
#include "gridkit/record_json.h"
#include "gridkit/version.h"

namespace {

using gridkit::c::Fault;
using gridkit::c::OpenProduct;
using gridkit::c::require;
using Folders = std::vector<std::filesystem::path>;

// The plug-ins of folders, once they are loaded, for every product.
struct Openers {
  std::mutex mutex;
  std::map<Folders, std::shared_ptr<const gridkit::Opener>> by_folders;
};

Openers& openers() {
  static Openers instance;
  return instance;
}

std::shared_ptr<const gridkit::Opener> opener_for(Folders folders) {
  if (folders.empty()) folders.push_back(gridkit::default_plugin_folder());
  const std::lock_guard lock(openers().mutex);
  auto& opener = openers().by_folders[folders];
  if (opener == nullptr) {
    try {
      opener = std::make_shared<const gridkit::Opener>(folders);
    } catch (const gridkit::Error& error) {
      throw Fault(gridkit_NoPlugin, error.sentence());
    }
  }
  return opener;
}

Folders folders_of(const gridkit_open_options& options) {
  if (options.plugin_folder_count > 0) require(options.plugin_folders, "plugin_folders");
  Folders folders;
  for (std::size_t i = 0; i < options.plugin_folder_count; ++i) {
    require(options.plugin_folders[i], "a plug-in folder");
    folders.emplace_back(options.plugin_folders[i]);
  }
  return folders;
}

gridkit::RecognisedProduct recognise(const gridkit::Opener& opener, const std::string& path) {
  try {
    return opener.recognise(path);
  } catch (const gridkit::NotRecognised& error) {
    throw Fault(gridkit_NotRecognised, error.sentence(), path);
  } catch (const gridkit::Error& error) {
    throw Fault(gridkit_NotFound, error.sentence(), path);
  }
}

// A plug-in's refusal is a chain of calls; its companion can tell the place.
std::shared_ptr<OpenProduct> open_recognised(const gridkit::RecognisedProduct& found,
                                             bool lenient) {
  try {
    return std::make_shared<OpenProduct>(found.plugin->open(found.path));
  } catch (const gridkit::Error& refusal) {
    try {
      if (lenient) return std::make_shared<OpenProduct>(found.plugin->open_leniently(found.path));
      gridkit::Samples::open(*found.plugin, found.path);
    } catch (const gridkit::SampleError& reason) {
      throw Fault(reason);
    } catch (const gridkit::Error&) {
      // There is no companion to tell more.
    }
    throw Fault(gridkit_CannotRead, refusal.sentence(), found.path);
  }
}

std::vector<std::string> files_of(OpenProduct& product) {
  std::vector<std::string> files = {product.path()};
  try {
    for (const gridkit::SampleImage& image : product.samples().images()) {
      if (std::find(files.begin(), files.end(), image.file) == files.end()) {
        files.push_back(image.file);
      }
    }
  } catch (const Fault& fault) {
    if (fault.code != gridkit_NotThere) throw;
  }
  return files;
}

// The addresses first, then the texts.
char** as_one_block(const std::vector<std::string>& texts) {
  std::size_t bytes = texts.size() * sizeof(char*);
  for (const std::string& text : texts) bytes += text.size() + 1;
  auto** list = static_cast<char**>(gridkit::c::allocate(bytes));
  char* place = reinterpret_cast<char*>(list + texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    std::memcpy(place, texts[i].c_str(), texts[i].size() + 1);
    list[i] = place;
    place += texts[i].size() + 1;
  }
  return list;
}

}  // namespace

int32_t gridkit_version_number() {
  return GRIDKIT_VERSION_NUMBER;
}

const char* gridkit_version() {
  static const std::string text = gridkit::version();
  return text.c_str();
}

int32_t gridkit_open(const char* path, const gridkit_open_options* options,
                     gridkit_product** product, gridkit_error** error) {
  if (product != nullptr) *product = nullptr;
  return gridkit::c::contain(error, gridkit_CannotRead, [&] {
    require(path, "path");
    require(product, "product");
    const auto wanted = gridkit::c::taken(options, "options");
    const gridkit::SisterSatellites sisters(
        gridkit::c::chosen(wanted.sister_satellites, true, "sister_satellites"));
    const auto opener = opener_for(folders_of(wanted));
    *product = gridkit::c::handle_of(open_recognised(
        recognise(*opener, path), gridkit::c::chosen(wanted.lenient, false, "lenient")));
  });
}

int32_t gridkit_close(gridkit_product* product) {
  if (product == nullptr || gridkit::c::close_handle(product)) return gridkit_Done;
  return gridkit_WrongUse;
}

int32_t gridkit_annotation_path(const gridkit_product* product, char** path,
                                gridkit_error** error) {
  if (path != nullptr) *path = nullptr;
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    require(path, "path");
    *path = gridkit::c::copied_text(open.path());
  });
}

int32_t gridkit_files(const gridkit_product* product, char*** paths, size_t* count,
                      gridkit_error** error) {
  if (paths != nullptr) *paths = nullptr;
  if (count != nullptr) *count = 0;
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    require(paths, "paths");
    require(count, "count");
    const std::vector<std::string> files = files_of(open);
    *paths = as_one_block(files);
    *count = files.size();
  });
}

int32_t gridkit_data(const gridkit_product* product, const char* name, char** json,
                     gridkit_error** error) {
  if (json != nullptr) *json = nullptr;
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    require(name, "name");
    require(json, "json");
    const auto data = gridkit::read_listed_data(open.product(), name);
    if (!data) {
      throw Fault(gridkit_NotThere, open.path() + ": no data of the name \"" + name + '"',
                  open.path());
    }
    *json = gridkit::c::copied_text(gridkit::record_as_json(name, *data));
  });
}
