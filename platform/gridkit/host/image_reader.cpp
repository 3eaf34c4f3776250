#include "gridkit/image_reader.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <mutex>
#include <optional>

#include "gridkit/host/block_limits.h"
#include "gridkit/host/first_refused.h"
#include "gridkit/host/sample_road.h"
#include "gridkit/host/tail.h"
#include "gridkit/preference.h"
#include "gridkit/report.h"

namespace gridkit {

namespace {

constexpr std::int64_t pixel_bytes = 2;
constexpr const char* group = "import";
constexpr const char* name = "default_block_size";

[[noreturn]] void refuse_preference(gke_Report* failure) {
  const std::string why = gke_ReportMessage(failure);
  gke_DeleteErrorReportEx(&failure);
  throw Error("the preferred block size cannot be changed: " + why);
}

// The preferred block size is the whole process's; who changes it or counts on it holds this.
std::mutex& block_size_in_use() {
  static std::mutex mutex;
  return mutex;
}

// The block-size preference, put back at the end, for which no memory is needed.
class BlockSizePreference {
 public:
  BlockSizePreference() {
    gke_Report* failure = nullptr;
    before_ = gkp_GetNumberPreference(group, name, unset, &failure);
    if (failure != nullptr) refuse_preference(failure);
  }
  BlockSizePreference(const BlockSizePreference&) = delete;
  BlockSizePreference& operator=(const BlockSizePreference&) = delete;
  ~BlockSizePreference() { restore(); }

  void set(std::int32_t size) {
    gke_Report* failure = nullptr;
    gkp_SetNumberPreference(group, name, size, &failure);
    if (failure != nullptr) refuse_preference(failure);
  }
  void restore() {
    if (before_ == unset) {
      gkp_ClearNumberPreference(group, name);
    } else {
      gkp_SetNumberPreference(group, name, before_, nullptr);
    }
  }

 private:
  static constexpr double unset = std::numeric_limits<double>::lowest();
  double before_ = unset;
};

// A window that holds more empty pixels than may be made up is found out before a line of it is
// handed out: an image's data end once, so the first row of blocks without data is sought by
// halves.
void check_extent(const Layer& layer, const Window& window, std::vector<std::uint16_t>& block) {
  if (std::int64_t{window.width} * window.height <= most_empty_pixels) return;
  const std::int32_t size = layer.block_width();
  const std::int64_t row = first_refused(
      window.line / size, (window.line + window.height - 1) / size + 1,
      [&](std::int64_t candidate) {
        return layer.read_block(static_cast<std::int32_t>(candidate), window.column / size, block);
      });
  const std::int64_t line = row * size;
  if ((window.line + window.height - line) * window.width <= most_empty_pixels) return;
  throw Error("the image should have " + std::to_string(layer.height()) +
              " lines but its data end about line " + std::to_string(line) +
              "; read what is there as a smaller window");
}

// Reads one row of blocks into whole lines of the window; false when a block did not come.
bool read_block_row(const Layer& layer, const Window& window, std::int32_t row,
                    std::vector<std::uint16_t>& block, std::vector<std::uint16_t>& lines) {
  const std::int32_t size = layer.block_width();
  const std::int32_t right = window.column + window.width;
  const std::int32_t top = std::max(row * size, window.line);
  const auto bottom = static_cast<std::int32_t>(
      std::min<std::int64_t>((std::int64_t{row} + 1) * size, window.line + window.height));
  lines.assign(static_cast<std::size_t>(bottom - top) * static_cast<std::size_t>(window.width), 0);
  const std::int32_t columns_end = (right - 1) / size + 1;
  for (std::int32_t column = window.column / size; column < columns_end; ++column) {
    if (!layer.read_block(row, column, block)) return false;
    const std::int32_t from = std::max(column * size, window.column);
    const auto until =
        static_cast<std::int32_t>(std::min<std::int64_t>((std::int64_t{column} + 1) * size, right));
    for (std::int32_t line = top; line < bottom; ++line) {
      const auto source =
          static_cast<std::ptrdiff_t>(line - row * size) * size + (from - column * size);
      const auto target =
          static_cast<std::ptrdiff_t>(line - top) * window.width + (from - window.column);
      std::copy_n(block.begin() + source, until - from, lines.begin() + target);
    }
  }
  return true;
}

// Lines, if any, that lie past the data, or so far above their end that they are not held for
// another attempt.
void give_up_lines(const Tail& tail, std::int32_t width, const LineRange& lines,
                   const MarkedLineSink& sink, std::vector<LineRange>& missing) {
  if (lines.first > lines.last) return;
  const std::vector<std::uint16_t> empty(static_cast<std::size_t>(width), 0);
  for (std::int32_t line = lines.first; line <= lines.last; ++line) {
    sink(empty, 1, false);
    append(missing, {line, line, tail.why(line)});
  }
}

// Hands the tail on in runs of lines that are complete or are not.
void hand_on(const Tail& tail, const MarkedLineSink& sink, std::vector<LineRange>& missing) {
  std::span<const std::uint16_t> pixels = tail.pixels();
  const auto hand = [&](std::int32_t lines, bool complete) {
    if (lines == 0) return;
    const auto count =
        static_cast<std::size_t>(lines) * static_cast<std::size_t>(tail.window().width);
    sink(pixels.first(count), lines, complete);
    pixels = pixels.subspan(count);
  };
  std::int32_t next = tail.window().line;
  for (const LineRange& range : tail.missing()) {
    hand(range.first - next, true);
    hand(range.last + 1 - range.first, false);
    next = range.last + 1;
    append(missing, range);
  }
  hand(tail.window().line + tail.window().height - next, true);
}

Layer open_with_preferred_blocks(const Product& product, const std::string& layer) {
  const std::lock_guard lock(block_size_in_use());
  return product.open_layer(layer);
}

// Opens a layer anew with one block size after the other. The sizes belong to the product, so the
// preferred one is put back for its other layers.
class BlockSizes {
 public:
  BlockSizes(const Product& product, const std::string& layer)
      : product_(product), layer_name_(layer), in_use_(block_size_in_use()) {}

  // Nothing where the plug-in does not take the size.
  const Layer* open(std::int32_t size) {
    if (!layer_ || layer_->block_width() != size) {
      preference_.set(size);
      layer_.emplace(product_.open_layer(layer_name_));
    }
    const bool as_asked = layer_->block_width() == size && layer_->block_height() == size;
    return as_asked ? &*layer_ : nullptr;
  }

  void put_back() {
    preference_.restore();
    product_.open_layer(layer_name_);
  }

 private:
  const Product& product_;
  const std::string& layer_name_;
  std::lock_guard<std::mutex> in_use_;
  BlockSizePreference preference_;
  std::optional<Layer> layer_;
};

// Of the lines, those that may come: the last of them, as many as may be held.
Window lines_that_may_come(const Window& lines, const BlockLimits& limits) {
  const std::int32_t end_of_data = std::max(limits.end, limits.line + (limits.column > 0 ? 1 : 0));
  const std::int32_t end = std::clamp(end_of_data, lines.line, lines.line + lines.height);
  const auto most_held = static_cast<std::int32_t>(
      std::min<std::int64_t>(longest_tail, most_bytes_held / pixel_bytes / lines.width));
  const std::int32_t first = std::max(lines.line, end - most_held);
  return {lines.column, first, lines.width, end - first};
}

// The lines that did not come with the preferred block size.
Tail read_with_other_blocks(const Product& product, const Layer& layer, const Window& lines) {
  BlockSizes sizes(product, layer.name());
  if (sizes.open(1) == nullptr) {
    sizes.put_back();
    // All of the plug-in's own blocks may come, as nothing else is known.
    const BlockLimits none{layer.height(), 0, layer.height()};
    Tail tail(lines_that_may_come(lines, none), layer.width(), none);
    tail.read(layer.block_width(),
              [&](std::int32_t, std::int32_t row, std::int32_t column, auto& block) {
                return layer.read_block(row, column, block);
              });
    return tail;
  }
  const BlockReader read_block = [&](std::int32_t size, std::int32_t row, std::int32_t column,
                                     std::vector<std::uint16_t>& block) {
    const Layer* sized = sizes.open(size);
    return sized != nullptr && sized->read_block(row, column, block);
  };
  std::vector<std::uint16_t> probed;
  const BlockLimits limits = find_block_limits(
      layer.width(), layer.height(), [&](std::int32_t size, std::int32_t row, std::int32_t column) {
        return read_block(size, row, column, probed);
      });
  Tail tail(lines_that_may_come(lines, limits), layer.width(), limits);
  tail.read_with_best_sizes(read_block);
  sizes.put_back();
  return tail;
}

}  // namespace

void check_window(const Window& window, std::int64_t width, std::int64_t height) {
  const bool inside = window.column >= 0 && window.line >= 0 && window.width > 0 &&
                      window.height > 0 && window.width <= width - window.column &&
                      window.height <= height - window.line;
  if (inside) return;
  throw Error("the window " + std::to_string(window.width) + " x " + std::to_string(window.height) +
              " at column " + std::to_string(window.column) + ", line " +
              std::to_string(window.line) + " does not lie in the image of " +
              std::to_string(width) + " x " + std::to_string(height));
}

void check_window(const Layer& layer, const Window& window) {
  check_window(window, layer.width(), layer.height());
  if (layer.block_width() < 1 || layer.block_width() != layer.block_height()) {
    throw Error(layer.name() + ": blocks of " + std::to_string(layer.block_width()) + " x " +
                std::to_string(layer.block_height()) + " pixels cannot be read");
  }
  const std::int64_t width = window.width;
  const bool is_large = window.height > most_lines || width * window.height > most_pixels ||
                        width * layer.block_height() > most_bytes_held / pixel_bytes;
  if (is_large) {
    throw Error("the window " + std::to_string(window.width) + " x " +
                std::to_string(window.height) +
                " is too large to be read at once; read it in smaller windows");
  }
}

std::vector<LineRange> read_window(const Product& product, const std::string& layer_name,
                                   const Window& window, const LineSink& sink) {
  return read_window(product, layer_name, window,
                     [&](std::span<const std::uint16_t> pixels, std::int32_t lines, bool) {
                       sink(pixels, lines);
                     });
}

std::vector<LineRange> read_window(const Product& product, const std::string& layer_name,
                                   const Window& window, const MarkedLineSink& sink) {
  const Layer layer = open_with_preferred_blocks(product, layer_name);
  check_window(layer, window);
  if (const auto road = sample_road_to(product, layer)) {
    return read_over_samples(*road, window, sink);
  }
  std::vector<std::uint16_t> block;
  std::vector<std::uint16_t> lines;
  const std::int32_t size = layer.block_width();
  const std::int32_t end = window.line + window.height;
  check_extent(layer, window, block);
  std::int32_t next = window.line;
  while (next < end && read_block_row(layer, window, next / size, block, lines)) {
    const auto until = static_cast<std::int32_t>(
        std::min<std::int64_t>((std::int64_t{next} / size + 1) * size, end));
    sink(lines, until - next, true);
    next = until;
  }
  if (next == end) return {};

  const Window rest{window.column, next, window.width, end - next};
  const Tail tail = read_with_other_blocks(product, layer, rest);
  const std::int32_t held_end = tail.window().line + tail.window().height;
  std::vector<LineRange> missing;
  give_up_lines(tail, window.width, {next, tail.window().line - 1}, sink, missing);
  hand_on(tail, sink, missing);
  give_up_lines(tail, window.width, {held_end, end - 1}, sink, missing);
  return missing;
}

}  // namespace gridkit
