#include "tools/gridkit/report/labels.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using report::Anchor;
using report::Box;
using report::box_of;
using report::Labels;

constexpr Box drawing = {0, 0, 100, 50};
constexpr auto plain = Labels::Style::plain;

bool holds(const Labels& labels, const std::string& words) {
  return labels.svg().find('>' + words + '<') != std::string::npos;
}

TEST(BoxOfALabel, LiesOnItsAnchorsSide) {
  const Box start = box_of({{40, 20}, Anchor::start, "abc"});
  const Box middle = box_of({{40, 20}, Anchor::middle, "abc"});
  const Box end = box_of({{40, 20}, Anchor::end, "abc"});
  EXPECT_EQ(start.left, 40);
  EXPECT_EQ(end.right, 40);
  EXPECT_EQ(middle.left + middle.right, 80);
  EXPECT_EQ(start.right - start.left, end.right - end.left);
  // Letters stand on their place and reach a little below it.
  EXPECT_LT(start.top, 12);
  EXPECT_GT(start.bottom, 20);
}

TEST(BoxOfALabel, CountsLettersAndNotBytes) {
  const auto width = [](const char* words) {
    const Box box = box_of({{0, 0}, Anchor::start, words});
    return box.right - box.left;
  };
  EXPECT_EQ(width("4\u00b0"), width("44"));
  EXPECT_LT(width("till"), width("noon"));
}

TEST(Labels, TakeTheFirstChoiceThatIsFree) {
  Labels labels;
  labels.set(drawing, plain, {{{10, 20}, Anchor::start, "one"}});
  labels.set(drawing, plain,
             {{{15, 22}, Anchor::start, "over one"}, {{10, 40}, Anchor::start, "below one"}});
  EXPECT_TRUE(holds(labels, "one"));
  EXPECT_FALSE(holds(labels, "over one"));
  EXPECT_TRUE(holds(labels, "below one"));
}

TEST(Labels, AreLeftOutWhereTheyWouldLeaveTheirBox) {
  Labels labels;
  labels.set(drawing, plain, {{{95, 20}, Anchor::start, "right"}});
  labels.set(drawing, plain, {{{5, 20}, Anchor::end, "left"}});
  labels.set(drawing, plain, {{{50, 5}, Anchor::middle, "above"}});
  labels.set(drawing, plain, {{{50, 49}, Anchor::middle, "below"}});
  EXPECT_EQ(labels.svg(), "");
  labels.set(drawing, plain, {{{95, 20}, Anchor::end, "right"}});
  EXPECT_TRUE(holds(labels, "right"));
}

TEST(Labels, LeaveFreeWhatMustBe) {
  Labels labels;
  labels.keep_free({0, 0, 50, 50});
  EXPECT_FALSE(labels.is_free({40, 10, 60, 20}));
  EXPECT_TRUE(labels.is_free({60, 10, 80, 20}));
  labels.set(drawing, plain, {{{30, 30}, Anchor::start, "within"}});
  EXPECT_EQ(labels.svg(), "");
}

TEST(Labels, EscapeTheirWords) {
  Labels labels;
  labels.set(drawing, Labels::Style::halo, {{{10, 20}, Anchor::start, "a<b"}});
  EXPECT_EQ(labels.svg(),
            "<text class=\"halo\" x=\"10.0\" y=\"20.0\" text-anchor=\"start\">a&lt;b</text>");
}

}  // namespace
