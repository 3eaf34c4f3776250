#include "tools/simulate/annotation_layout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "tools/simulate/random.h"

namespace simulate {

namespace {

using binding::Member;
using binding::ValueType;

constexpr std::uint64_t untouched_lines = 7;  // that recognition reads

const Member* find(std::span<const Member> members, std::string_view name) {
  const auto found =
      std::find_if(members.begin(), members.end(), [&](const Member& m) { return m.name == name; });
  return found == members.end() ? nullptr : &*found;
}

// 1.23456789012345678E+03, of the value that the member's type holds.
template <class T>
std::string with_exponent(std::string_view text) {
  T value{};
  const auto end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, value);
  if (read.ec != std::errc() || read.ptr != end) return std::string(text);
  std::array<char, 48> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.17E", static_cast<double>(value));
  return buffer.data();
}

std::string number_text(const Member* m, std::string_view text) {
  if (m != nullptr && m->type == ValueType::float64) return with_exponent<double>(text);
  if (m != nullptr && m->type == ValueType::float32) return with_exponent<float>(text);
  return std::string(text);
}

// Goes through the lines; `open_` holds the classes of the elements that are open.
class Layout {
 public:
  Layout(const binding::ClassDescription& product, std::uint64_t seed, std::ostream& out)
      : product_(product), seed_(seed), out_(out) {}

  void add(std::string_view line) {
    ++number_;
    const std::size_t indent = std::min(line.find('<'), line.size());
    const std::string_view element = line.substr(indent);
    if (element.starts_with("</")) {
      open_.pop_back();
      write(indent, element);
    } else if (!element.starts_with('<') || open_.empty()) {
      if (element.starts_with('<')) open_.push_back(&product_);
      out_ << line << '\n';
    } else {
      add_element(indent, element);
    }
  }

 private:
  void add_element(std::size_t indent, std::string_view element) {
    const std::size_t tag_end = element.find('>');
    const std::string_view tag = element.substr(1, tag_end - 1);
    const std::string_view name = tag.substr(0, tag.find(' '));
    const Member* m = open_.back() == nullptr ? nullptr : find(open_.back()->elements, name);
    const binding::ClassDescription* own = m == nullptr ? nullptr : m->nested;
    const std::size_t text_end = element.rfind("</");
    std::string laid_out = "<" + std::string(name) + attributes(own, tag.substr(name.size())) + ">";
    if (text_end != std::string_view::npos && text_end > tag_end) {
      const Member* value = own == nullptr ? m : own->text;
      laid_out += number_text(value, element.substr(tag_end + 1, text_end - tag_end - 1));
      laid_out += element.substr(text_end);
    } else {
      open_.push_back(own);
    }
    write(indent, laid_out);
  }

  // Of a tag's rest behind the name; every value stands between double quotes.
  std::string attributes(const binding::ClassDescription* own, std::string_view rest) const {
    std::vector<std::string> texts;
    while (!rest.empty()) {
      const std::size_t equals = rest.find('=');
      const std::size_t end = rest.find('"', equals + 2);
      const std::string_view name = rest.substr(1, equals - 1);
      const Member* m = own == nullptr ? nullptr : find(own->attributes, name);
      const std::string value = number_text(m, rest.substr(equals + 2, end - equals - 2));
      texts.push_back(' ' + std::string(name) + "=\"" + value + '"');
      rest.remove_prefix(end + 1);
    }
    for (std::size_t i = texts.size(); i > 1 && number_ > untouched_lines; --i) {
      std::swap(texts[i - 1], texts[random_bits(seed_ ^ number_ ^ i << 32U) % i]);
    }
    std::string all;
    for (const std::string& text : texts) all += text;
    return all;
  }

  // About one line in eight stands two blanks more to the right or to the left.
  void write(std::size_t indent, std::string_view element) {
    const std::uint64_t chance = random_bits(seed_ ^ number_) % 16;
    if (number_ > untouched_lines && chance == 0) indent += 2;
    if (number_ > untouched_lines && chance == 1) indent -= std::min<std::size_t>(indent, 2);
    out_ << std::string(indent, ' ') << element << '\n';
  }

  const binding::ClassDescription& product_;
  std::uint64_t seed_;
  std::ostream& out_;
  std::uint64_t number_ = 0;
  std::vector<const binding::ClassDescription*> open_;
};

}  // namespace

void lay_out_like_ground_segment(std::string_view annotation,
                                 const binding::ClassDescription& product, std::uint64_t seed,
                                 std::ostream& out) {
  Layout layout(product, seed, out);
  while (!annotation.empty()) {
    const std::size_t end = std::min(annotation.find('\n'), annotation.size());
    layout.add(annotation.substr(0, end));
    annotation.remove_prefix(std::min(end + 1, annotation.size()));
  }
}

}  // namespace simulate
