#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "tools/gridkit/report/place.h"

namespace report {

// Which end of a text its place is.
enum class Anchor { start, middle, end };

// A text of a drawing. Its place is on the letters' baseline.
struct Label {
  Place at;
  Anchor anchor = Anchor::start;
  std::string words;
};

// The room that a label takes, in letters as large as a page's widest usual font has them.
Box box_of(const Label& label);

// The smallest box around both.
Box around(const Box& one, const Box& other);

// The labels of one drawing, set so that none covers another.
class Labels {
 public:
  enum class Style {
    plain,
    halo,  // to be read over lines and pictures
  };

  // Nothing is set over this part from now on.
  void keep_free(const Box& box);

  // Sets the first of the choices that lies inside the box and covers nothing set or kept free so
  // far. Without such a choice the label is left out.
  void set(const Box& within, Style style, std::initializer_list<Label> choices);

  bool is_free(const Box& box) const;

  // The labels that were set, as SVG. Their words are escaped.
  const std::string& svg() const { return svg_; }

 private:
  std::vector<Box> taken_;
  std::string svg_;
};

}  // namespace report
