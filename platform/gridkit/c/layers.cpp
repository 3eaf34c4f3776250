// Layers of a product and windows of their pixels.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <string>

#include "gridkit/c/reading.h"
#include "gridkit/image_reader.h"

namespace {

using gridkit::SampleTarget;
using gridkit::SampleWindow;
using gridkit::c::Fault;
using gridkit::c::LayerFacts;
using gridkit::c::OpenProduct;
using gridkit::c::require;

gridkit_layer described(const LayerFacts& layer) {
  return {0,           layer.name.c_str(), layer.pixel_type.c_str(), layer.layer_type.c_str(),
          layer.width, layer.height,       layer.block_width,        layer.block_height};
}

bool lies_inside(std::int64_t first, std::int64_t count, std::int64_t step, std::int64_t size) {
  return first >= 0 && count >= 1 && step >= 1 && first < size &&
         (count - 1) <= (size - 1 - first) / step;
}

void check_inside(const OpenProduct& product, const LayerFacts& layer, const SampleWindow& w) {
  if (lies_inside(w.line, w.lines, w.line_step, layer.height) &&
      lies_inside(w.sample, w.samples, w.sample_step, layer.width)) {
    return;
  }
  throw Fault(gridkit_WrongUse,
              product.path() + ": the window of " + std::to_string(w.lines) + " lines x " +
                  std::to_string(w.samples) + " samples at line " + std::to_string(w.line) +
                  ", sample " + std::to_string(w.sample) + ", in steps of " +
                  std::to_string(w.line_step) + " and " + std::to_string(w.sample_step) +
                  ", does not lie in " + layer.name + " of " + std::to_string(layer.height) +
                  " lines x " + std::to_string(layer.width) + " samples",
              product.path());
}

// Takes the lines of the window that the steps go over, and hands on those that are asked for.
class SteppedTarget {
 public:
  SteppedTarget(const SampleWindow& window, const SampleTarget& target)
      : window_(window), target_(target), width_((window.samples - 1) * window.sample_step + 1) {
    constexpr std::int64_t pixel_bytes = sizeof(std::uint16_t);
    if (target_.sample_stride == 0) target_.sample_stride = pixel_bytes;
    if (target_.line_stride == 0) target_.line_stride = target_.sample_stride * window.samples;
  }

  gridkit::Window spanned() const {
    return {static_cast<std::int32_t>(window_.sample), static_cast<std::int32_t>(window_.line),
            static_cast<std::int32_t>(width_),
            static_cast<std::int32_t>((window_.lines - 1) * window_.line_step + 1)};
  }

  void add(std::span<const std::uint16_t> pixels, std::int32_t lines, bool complete) {
    for (std::int32_t l = 0; l < lines; ++l, ++seen_) {
      if (seen_ % window_.line_step != 0) continue;
      const std::int64_t line = seen_ / window_.line_step;
      if (!complete && came_ == window_.lines) came_ = line;
      if (complete) hand_on(pixels.data() + l * width_, line);
    }
  }

  // Lines that came from the first on, without one that did not.
  std::int64_t came() const { return std::min(came_, (seen_ - 1) / window_.line_step + 1); }

 private:
  void hand_on(const std::uint16_t* pixels, std::int64_t line) const {
    auto* to = static_cast<std::byte*>(target_.data) + line * target_.line_stride;
    for (std::int64_t s = 0; s < window_.samples; ++s) {
      std::memcpy(to + s * target_.sample_stride, pixels + s * window_.sample_step, sizeof *pixels);
    }
  }

  SampleWindow window_;
  SampleTarget target_;
  std::int64_t width_;
  std::int64_t seen_ = 0;
  std::int64_t came_ = window_.lines;
};

void read_blocks(const OpenProduct& product, const LayerFacts& layer, const SampleWindow& window,
                 const SampleTarget& target, const gridkit::ReadManner& manner,
                 gridkit::Delivered& came) {
  SteppedTarget stepped(window, target);
  gridkit::read_window(product.product(), layer.name, stepped.spanned(),
                       [&](std::span<const std::uint16_t> pixels, std::int32_t lines, bool whole) {
                         stepped.add(pixels, lines, whole);
                         const std::int64_t more = stepped.came() - came.lines;
                         came.lines += more;
                         if (more == 0 || !manner.advance || manner.advance(more)) return;
                         throw gridkit::Cancelled("the read was cancelled");
                       });
  if (came.lines == window.lines) return;
  Fault fault(gridkit_CutShort,
              product.path() + ": line " +
                  std::to_string(window.line + came.lines * window.line_step) + " of " +
                  layer.name + " does not come",
              product.path());
  fault.image_line = window.line + came.lines * window.line_step;
  throw fault;
}

}  // namespace

int32_t gridkit_layer_count(const gridkit_product* product, int32_t* count, gridkit_error** error) {
  if (count != nullptr) *count = 0;
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    require(count, "count");
    *count = static_cast<int32_t>(open.layers().size());
  });
}

int32_t gridkit_get_layer(const gridkit_product* product, int32_t number, gridkit_layer* layer,
                          gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    gridkit::c::check_filled(layer, "layer");
    gridkit::c::fill(layer, described(open.layer(number)));
  });
}

int32_t gridkit_read_layer(const gridkit_product* product, int32_t number,
                           const gridkit_window* window, const gridkit_target* target,
                           const gridkit_read_options* options, gridkit_delivered* delivered,
                           gridkit_error** error) {
  return gridkit::c::contain(product, error, gridkit_CannotRead, [&](OpenProduct& open) {
    gridkit::c::deliver(delivered, [&](gridkit::Delivered& came) {
      const auto wanted = gridkit::c::taken(options, "options");
      const auto part = gridkit::c::window_of(window);
      const auto place = gridkit::c::target_of(target);
      const auto manner = gridkit::c::manner_of(wanted, part.lines);
      const LayerFacts& layer = open.layer(number);
      check_inside(open, layer, part);
      const auto& road = open.road_to(static_cast<std::size_t>(number));
      if (!road) return read_blocks(open, layer, part, place, manner, came);
      gridkit::read_on_threads(road->samples, road->image, part, {road->form}, place, manner, came);
    });
  });
}
