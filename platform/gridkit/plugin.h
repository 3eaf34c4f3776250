#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/export.h"

namespace gridkit {

struct Exports;
class Product;
struct NonStandardData;

// Data beside the pixels by their names.
using NamedData = std::map<std::string, NonStandardData>;

// What a plug-in says of its format.
struct FormatDescription {
  std::string description;
  std::vector<std::string> titles;
  std::vector<std::string> templates;    // of file names, one a title
  std::vector<std::string> extensions;   // one a title
  std::vector<std::string> short_names;  // one a title
  std::vector<std::string> pixel_types;
  std::vector<std::string> layer_types;
};

// A loaded format plug-in. The prefix of its exports is the library's file name without extension:
// tsx.so exports tsxFileClose. The library stays loaded while the plug-in or a product of it lives.
class GRIDKIT_API Plugin : public std::enable_shared_from_this<Plugin> {
 public:
  // Throws Error when the library does not load or lacks an export, which the text names.
  static std::shared_ptr<Plugin> load(const std::filesystem::path& library);
  ~Plugin();

  const FormatDescription& format() const { return format_; }
  const std::filesystem::path& library() const { return library_; }

  // Whether the plug-in takes the file for one of its format: the title's index.
  std::optional<std::int32_t> identify(const std::string& path) const;

  // Opens a file of the format. Throws Error with what the plug-in reported; a record that it hands
  // out unfinished is never used. Until it is open, files outside the folder of `path` are not
  // opened, and the text names the first that was refused; see the preference
  // "allow_outside_files" of the group "gridkit".
  Product open(const std::string& path, const std::string& mode = "r");

  // Opens a file that the plug-in refuses, over its companion alone, and over values that are not
  // what the format allows where no sample, place, time or factor is made of them: see
  // Product::passed_over and gridkit/samples.h. Layers are made of samples, so images have them
  // only where they lie as the plug-in would read them. There are no maps, and the data beside the
  // pixels are those that the caller hands in, who may know the format. Throws Error for a file
  // that is not of the format, and as Samples::open_leniently does.
  Product open_leniently(const std::string& path);
  Product open_leniently(const std::string& path, const NamedData& data);

 private:
  friend class Product;
  friend class Layer;
  Plugin() = default;

  std::filesystem::path library_;
  std::unique_ptr<Exports> exports_;
  FormatDescription format_;
};

// The plug-ins of a folder, by name. A library that does not load is left out with its reason.
struct PluginFolder {
  std::vector<std::shared_ptr<Plugin>> plugins;
  std::vector<std::string> refused;
};
GRIDKIT_API PluginFolder load_plugins(const std::filesystem::path& folder);

// The folder that the environment variable GRIDKIT_PLUGINS names; where that is unset or empty, the
// folder `gridkit` beside the toolkit's own library.
GRIDKIT_API std::filesystem::path default_plugin_folder();

}  // namespace gridkit
