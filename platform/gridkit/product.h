#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gridkit/export.h"
#include "gridkit/map_data.h"
#include "gridkit/plugin.h"
#include "gridkit/report.h"

namespace gridkit {

// Collects this thread's printed reports as one text while it lives.
class GRIDKIT_API ReportCollector {
 public:
  ReportCollector();
  ReportCollector(const ReportCollector&) = delete;
  ReportCollector& operator=(const ReportCollector&) = delete;
  ~ReportCollector();

  // "WORD: MESSAGE" of every report, joined by "; ".
  const std::string& text() const { return text_; }

  // The message of the oldest report of a chain, which is nearest to the cause; empty where that
  // only says that some call failed.
  const std::string& cause() const { return cause_; }

 private:
  static void collect(const gke_Report* report, void* collector);

  std::string text_;
  std::string cause_;
  gke_ReportSinkSetting before_;
};

// Data beside the pixels, with the dictionary that tells how to read it.
struct NonStandardData {
  std::string type;
  std::string dictionary;
  std::vector<std::byte> bytes;
};

struct Record;
class Samples;

// One open layer. It keeps its product open.
class GRIDKIT_API Layer {
 public:
  Layer(Layer&&) noexcept;
  Layer& operator=(Layer&&) noexcept;
  ~Layer();

  const std::string& name() const { return name_; }
  const std::string& pixel_type() const { return pixel_type_; }  // of the format's pixel types
  const std::string& layer_type() const { return layer_type_; }
  std::int32_t width() const { return width_; }
  std::int32_t height() const { return height_; }
  std::int32_t block_width() const { return block_width_; }
  std::int32_t block_height() const { return block_height_; }

  // One whole block, [block_height][block_width] 16-bit pixels; false when the plug-in has no data
  // for it. `pixels` is resized. Throws Error with what was reported, and for blocks of more than
  // 1 GiB.
  bool read_block(std::int32_t row, std::int32_t column, std::vector<std::uint16_t>& pixels) const;

  // Where the layer lies on a map, if it does. Throws Error.
  std::optional<MapInfo> map_info() const;

  // The projection of that map in its MIF form, if the layer lies on one. Throws Error.
  std::optional<MapProjection> map_projection() const;

 private:
  friend class Product;
  Layer(std::shared_ptr<Record> record, std::string name);

  std::shared_ptr<Record> record_;
  std::string name_;
  std::string pixel_type_;
  std::string layer_type_;
  std::int32_t width_ = 0;
  std::int32_t height_ = 0;
  std::int32_t block_width_ = 0;
  std::int32_t block_height_ = 0;
  void* handle_ = nullptr;
};

// A holder of an open product. Plug-ins hand out the same record for a second open of a path; the
// host counts the holders of each record and closes it once, when the last one goes. Products and
// their layers may be used on any number of threads at once: the calls of one record's plug-in wait
// for one another.
class GRIDKIT_API Product {
 public:
  const std::string& path() const;
  const Plugin& plugin() const;
  const std::string& title() const;  // of the format that recognised it

  // Names of the layers. Throws Error.
  std::vector<std::string> layer_names() const;

  // Names of the data beside the pixels; none when the plug-in has none to list. Throws Error.
  std::vector<std::string> data_names() const;

  // Data by name; nothing when the plug-in does not know the name. Throws Error.
  std::optional<NonStandardData> read_data(const std::string& name) const;

  // The product's samples, opened through the plug-in's companion when they are first asked for;
  // see gridkit/samples.h. Throws Error where they cannot be had. Unlike all else of the product
  // they wait for no other thread.
  Samples samples() const;

  // Whether it was opened without the plug-in, see Plugin::open_leniently, and what was passed over
  // then, one sentence each.
  bool is_over_samples() const;
  std::vector<std::string> passed_over() const;

  // Throws Error for a name that the plug-in refuses.
  Layer open_layer(const std::string& name) const;

 private:
  friend class Plugin;
  Product(std::shared_ptr<Plugin> plugin, void* record, const std::string& path,
          std::int32_t title);
  Product(std::shared_ptr<Plugin> plugin, Samples samples, const std::string& path,
          std::int32_t title, NamedData data);

  std::shared_ptr<Record> record_;
};

}  // namespace gridkit
