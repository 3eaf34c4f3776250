#include "tools/gridkit/report/labels.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "tools/gridkit/report/html.h"

namespace report {

namespace {

// Of the style's letters of 11 units. Fonts with wide letters have digits of 7 units, and that is
// more than the mean letter of a word takes.
constexpr double letter = 7;
constexpr std::string_view narrow_letters = " .fijlrt";
constexpr double narrow_letter = 4.6;
constexpr double ascent = 10.5;
constexpr double descent = 3;
constexpr double gap = 2;  // between labels

double width_of(const std::string& words) {
  double width = 0;
  for (const char c : words) {
    // Bytes that go on with a letter of UTF-8 are none of their own.
    if ((static_cast<unsigned char>(c) & 0xC0U) == 0x80U) continue;
    width += narrow_letters.find(c) == std::string_view::npos ? letter : narrow_letter;
  }
  return width;
}

bool is_inside(const Box& box, const Box& within) {
  return box.left >= within.left && box.right <= within.right && box.top >= within.top &&
         box.bottom <= within.bottom;
}

std::string text(const Label& label, Labels::Style style) {
  constexpr std::array<const char*, 3> anchors = {"start", "middle", "end"};
  return std::string(style == Labels::Style::halo ? "<text class=\"halo\"" : "<text") + " x=\"" +
         fixed(label.at.x, 1) + "\" y=\"" + fixed(label.at.y, 1) + "\" text-anchor=\"" +
         anchors.at(static_cast<std::size_t>(label.anchor)) + "\">" + escape(label.words) +
         "</text>";
}

}  // namespace

Box box_of(const Label& label) {
  const double width = width_of(label.words);
  const double before = label.anchor == Anchor::start    ? 0
                        : label.anchor == Anchor::middle ? width / 2
                                                         : width;
  const double left = label.at.x - before;
  return {left, label.at.y - ascent, left + width, label.at.y + descent};
}

Box around(const Box& one, const Box& other) {
  return {std::min(one.left, other.left), std::min(one.top, other.top),
          std::max(one.right, other.right), std::max(one.bottom, other.bottom)};
}

void Labels::keep_free(const Box& box) {
  taken_.push_back(box);
}

bool Labels::is_free(const Box& box) const {
  return std::none_of(taken_.begin(), taken_.end(), [&](const Box& other) {
    return box.left < other.right + gap && other.left < box.right + gap &&
           box.top < other.bottom + gap && other.top < box.bottom + gap;
  });
}

void Labels::set(const Box& within, Style style, std::initializer_list<Label> choices) {
  for (const Label& label : choices) {
    const Box box = box_of(label);
    if (!is_inside(box, within) || !is_free(box)) continue;
    keep_free(box);
    svg_ += text(label, style);
    return;
  }
}

}  // namespace report
