#include "gridkit/product.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <mutex>
#include <utility>

#include "gridkit/dictionary.h"
#include "gridkit/host/exports.h"
#include "gridkit/host/opening_mutex.h"
#include "gridkit/host/sampled_layer.h"
#include "gridkit/samples.h"
#include "gridkit/services/host_texts.h"

namespace gridkit {

// A plug-in's record of an open product. All holders share one of these, and its end closes it.
struct Record {
  std::shared_ptr<Plugin> plugin;
  const Exports* exports;
  FileHandle handle;  // null: opened leniently, over its samples alone
  std::string path;
  std::int32_t title;
  // Of the plug-in's functions, which are for one thread at a time.
  std::mutex calls_mutex;
  std::mutex samples_mutex;
  std::optional<Samples> samples;  // after their first use
  std::mutex layer_names_mutex;
  // Asked for once: what a plug-in keeps for a list may stay until the record ends.
  std::optional<std::vector<std::string>> layer_names;
  NamedData data;  // of a product over its samples

  Record(std::shared_ptr<Plugin> owner, const Exports* functions, FileHandle file, std::string name,
         std::int32_t title_index)
      : plugin(std::move(owner)),
        exports(functions),
        handle(file),
        path(std::move(name)),
        title(title_index) {}
  Record(const Record&) = delete;
  Record& operator=(const Record&) = delete;
  ~Record();

  bool is_over_samples() const { return handle == nullptr; }
};

namespace {

// The records that are open, by their handles, and who closes each: of two that were made for one
// handle, while the first was on its way to its end, the second.
struct OpenRecords {
  struct Entry {
    const Record* owner = nullptr;
    std::weak_ptr<Record> record;
  };
  std::mutex mutex;
  std::map<FileHandle, Entry> by_handle;
};

OpenRecords& records() {
  static OpenRecords instance;
  return instance;
}

const std::string& entry(const std::vector<std::string>& list, std::int32_t index,
                         const char* what) {
  if (index < 0 || static_cast<std::size_t>(index) >= list.size()) {
    throw Error(std::string("the plug-in gave a ") + what + " that is not in its list");
  }
  return list[static_cast<std::size_t>(index)];
}

// Ends the dictionaries that plug-ins leave to the toolkit.
struct DictionaryRelease {
  DictionaryRelease() = default;
  DictionaryRelease(const DictionaryRelease&) = delete;
  DictionaryRelease& operator=(const DictionaryRelease&) = delete;
  ~DictionaryRelease() { gkd_ReleaseDictionaries(); }
};

// `what` begins with the product's path, which is not told again.
[[noreturn]] void refuse(const std::string& what, const ReportCollector& reports) {
  const std::string lead = what.substr(0, what.find(": ") + 2);
  const std::string& cause = reports.cause();
  throw Error(what, cause.starts_with(lead) ? cause.substr(lead.size()) : cause, reports.text());
}

}  // namespace

Record::~Record() {
  if (is_over_samples()) return;
  const std::lock_guard opening(opening_mutex(path));
  {
    const std::lock_guard lock(records().mutex);
    const auto found = records().by_handle.find(handle);
    if (found == records().by_handle.end() || found->second.owner != this) return;
    records().by_handle.erase(found);
  }
  exports->FileClose(handle);
}

std::mutex& opening_mutex(const std::string& path) {
  // Paths that share one wait for each other without need, and that is all.
  static std::array<std::mutex, 64> mutexes;
  return mutexes[std::hash<std::string>()(path) % mutexes.size()];
}

Product::Product(std::shared_ptr<Plugin> plugin, void* record, const std::string& path,
                 std::int32_t title) {
  const std::lock_guard lock(records().mutex);
  const Exports* exports = plugin->exports_.get();
  // Without a holder the product is closed again.
  std::unique_ptr<void, std::int32_t (*)(FileHandle)> opened(record, exports->FileClose);
  const auto [entry, is_new] = records().by_handle.try_emplace(record);
  if (!is_new) {
    record_ = entry->second.record.lock();
    // One on its way to its end closes it, if nobody takes its place.
    static_cast<void>(opened.release());
    if (record_ != nullptr) return;
  }
  std::shared_ptr<Record> holder;
  try {
    holder = std::make_shared<Record>(std::move(plugin), exports, record, path, title);
  } catch (...) {
    if (is_new) records().by_handle.erase(entry);
    throw;
  }
  static_cast<void>(opened.release());
  entry->second = {holder.get(), holder};
  record_ = std::move(holder);
}

Product::Product(std::shared_ptr<Plugin> plugin, Samples samples, const std::string& path,
                 std::int32_t title, NamedData data) {
  const Exports* exports = plugin->exports_.get();
  record_ = std::make_shared<Record>(std::move(plugin), exports, nullptr, path, title);
  record_->layer_names = names_of(sampled_layers(samples));
  record_->samples = std::move(samples);
  record_->data = std::move(data);
}

bool Product::is_over_samples() const {
  return record_->is_over_samples();
}

std::vector<std::string> Product::passed_over() const {
  if (!is_over_samples()) return {};
  return samples().passed_over();
}

const std::string& Product::path() const {
  return record_->path;
}

const Plugin& Product::plugin() const {
  return *record_->plugin;
}

const std::string& Product::title() const {
  return entry(record_->plugin->format().titles, record_->title, "title");
}

std::vector<std::string> Product::layer_names() const {
  const std::lock_guard lock(record_->layer_names_mutex);
  if (record_->layer_names) return *record_->layer_names;
  const ReportCollector reports;
  const std::lock_guard calls(record_->calls_mutex);
  std::int32_t count = 0;
  char** names = nullptr;
  if (record_->exports->FileLayerNamesGet(record_->handle, &count, &names) != 0) {
    refuse(path() + ": the layers cannot be listed", reports);
  }
  return record_->layer_names.emplace(take_texts(names, count));
}

std::vector<std::string> Product::data_names() const {
  if (record_->is_over_samples()) {
    std::vector<std::string> listed;
    for (const auto& [name, data] : record_->data) listed.push_back(name);
    return listed;
  }
  const ReportCollector reports;
  const std::lock_guard calls(record_->calls_mutex);
  std::int32_t count = 0;
  char** names = nullptr;
  const auto list = record_->exports->FileRasterFormatsNonStandardDataNamesGet;
  if (list(record_->handle, &count, &names) == 0) return take_texts(names, count);
  // A plug-in that has no names to list says so without a word.
  if (reports.text().empty()) return {};
  refuse(path() + ": the data cannot be listed", reports);
}

std::optional<NonStandardData> Product::read_data(const std::string& name) const {
  if (record_->is_over_samples()) {
    const auto found = record_->data.find(name);
    return found == record_->data.end() ? std::nullopt : std::optional(found->second);
  }
  const ReportCollector reports;
  const DictionaryRelease release;
  const std::lock_guard calls(record_->calls_mutex);
  void* data = nullptr;
  std::int32_t size = 0;
  char* dictionary = nullptr;
  char* type = nullptr;
  const std::int32_t result = record_->exports->FileDataRead(record_->handle, name.c_str(), &data,
                                                             &size, &dictionary, &type);
  const HeapBlock owned_data(data);
  HeapText owned_dictionary(dictionary);
  NonStandardData read{take_text(type), take_text(owned_dictionary.release()), {}};
  if (result != 0) refuse(path() + ": " + name + " cannot be read", reports);
  if (data == nullptr || size < 0) return std::nullopt;
  const auto* bytes = static_cast<const std::byte*>(data);
  read.bytes.assign(bytes, bytes + size);
  return read;
}

Samples Product::samples() const {
  Record& record = *record_;
  const std::lock_guard lock(record.samples_mutex);
  if (!record.samples) record.samples = Samples::open(*record.plugin, record.path);
  return *record.samples;
}

Layer Product::open_layer(const std::string& name) const {
  return Layer(record_, name);
}

Layer::Layer(std::shared_ptr<Record> record, std::string name)
    : record_(std::move(record)), name_(std::move(name)) {
  if (record_->is_over_samples()) {
    const SampledLayer layer = find_sampled_layer(*record_->samples, record_->path, name_);
    pixel_type_ = layer.pixel_type();
    layer_type_ = entry(record_->plugin->format().layer_types, 0, "layer type");
    width_ = layer.width;
    height_ = layer.height;
    block_width_ = block_height_ = sampled_block_size;
    return;
  }
  const ReportCollector reports;
  const std::lock_guard calls(record_->calls_mutex);
  std::int32_t pixel_type = -1;
  std::int32_t layer_type = -1;
  record_->exports->LayerOpen(record_->handle, name_.c_str(), &pixel_type, &width_, &height_,
                              &layer_type, &block_width_, &block_height_, &handle_);
  if (handle_ == nullptr) refuse(record_->path + ": no layer " + name_, reports);
  try {
    pixel_type_ = entry(record_->plugin->format().pixel_types, pixel_type, "pixel type");
    layer_type_ = entry(record_->plugin->format().layer_types, layer_type, "layer type");
  } catch (...) {
    record_->exports->LayerClose(std::exchange(handle_, nullptr));
    throw;
  }
}

Layer::Layer(Layer&& other) noexcept
    : record_(std::move(other.record_)),
      name_(std::move(other.name_)),
      pixel_type_(std::move(other.pixel_type_)),
      layer_type_(std::move(other.layer_type_)),
      width_(other.width_),
      height_(other.height_),
      block_width_(other.block_width_),
      block_height_(other.block_height_),
      handle_(std::exchange(other.handle_, nullptr)) {}

Layer& Layer::operator=(Layer&& other) noexcept {
  Layer moved(std::move(other));
  std::swap(record_, moved.record_);
  std::swap(name_, moved.name_);
  std::swap(pixel_type_, moved.pixel_type_);
  std::swap(layer_type_, moved.layer_type_);
  std::swap(width_, moved.width_);
  std::swap(height_, moved.height_);
  std::swap(block_width_, moved.block_width_);
  std::swap(block_height_, moved.block_height_);
  std::swap(handle_, moved.handle_);
  return *this;
}

Layer::~Layer() {
  if (handle_ == nullptr) return;
  const std::lock_guard calls(record_->calls_mutex);
  record_->exports->LayerClose(handle_);
}

bool Layer::read_block(std::int32_t row, std::int32_t column,
                       std::vector<std::uint16_t>& pixels) const {
  const ReportCollector reports;
  const auto width = static_cast<std::size_t>(std::max(block_width_, 0));
  const auto height = static_cast<std::size_t>(std::max(block_height_, 0));
  constexpr std::size_t most_pixels = std::size_t{1} << 29;
  if (width > 0 && height > most_pixels / width) {
    throw Error(record_->path + ": blocks of " + std::to_string(width) + " x " +
                std::to_string(height) + " pixels are too large; see import.default_block_size");
  }
  pixels.assign(width * height, 0);
  if (record_->is_over_samples()) {
    const SampledLayer layer = find_sampled_layer(*record_->samples, record_->path, name_);
    return read_sampled_block(*record_->samples, layer, row, column, pixels);
  }
  void* block = pixels.data();
  const std::lock_guard calls(record_->calls_mutex);
  if (record_->exports->LayerRasterRead(handle_, row, column, &block) != 0) {
    refuse(record_->path + ": block " + std::to_string(row) + ", " + std::to_string(column) +
               " of " + name_ + " cannot be read",
           reports);
  }
  return block != nullptr;
}

std::optional<MapInfo> Layer::map_info() const {
  if (record_->is_over_samples()) return std::nullopt;
  const ReportCollector reports;
  const std::lock_guard calls(record_->calls_mutex);
  // No map is told by outs that stay as they were.
  constexpr double untouched = std::numeric_limits<double>::quiet_NaN();
  char* projection = nullptr;
  char* units = nullptr;
  double x = untouched;
  double y = untouched;
  double width = untouched;
  double height = untouched;
  const std::int32_t result =
      record_->exports->LayerMapInfoRead(handle_, &projection, &x, &y, &width, &height, &units);
  const bool has_map = projection != nullptr;
  HeapText owned_units(units);
  MapInfo info{take_text(projection), {x, y}, {width, height}, take_text(owned_units.release())};
  if (result != 0) refuse(record_->path + ": no map information of " + name_, reports);
  return has_map ? std::optional(info) : std::nullopt;
}

std::optional<MapProjection> Layer::map_projection() const {
  if (record_->is_over_samples()) return std::nullopt;
  const ReportCollector reports;
  const std::lock_guard calls(record_->calls_mutex);
  char* name = nullptr;
  std::array<MifValue, 8> v{};
  const std::int32_t result = record_->exports->LayerMapProjectionRead(
      handle_, &name, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7]);
  const bool has_map =
      name != nullptr || std::any_of(v.begin(), v.end(), [](MifValue o) { return o != nullptr; });
  std::array<HeapText, 8> values;
  for (std::size_t i = 0; i < v.size(); ++i) values[i].reset(static_cast<char*>(v[i]));
  MapProjection projection{take_text(name), {}};
  for (std::size_t i = 0; i < v.size(); ++i) {
    if (values[i] != nullptr) projection.values[i] = values[i].get();
  }
  if (result != 0)
    refuse(record_->path + ": the map projection of " + name_ + " cannot be read", reports);
  return has_map ? std::optional(projection) : std::nullopt;
}

}  // namespace gridkit
