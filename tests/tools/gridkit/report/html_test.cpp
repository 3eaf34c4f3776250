#include "tools/gridkit/report/html.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

namespace {

TEST(Escape, LeavesNoMarkup) {
  EXPECT_EQ("&lt;a b=&quot;c&quot; d=&#39;e&#39;&gt;&amp;amp;",
            report::escape("<a b=\"c\" d='e'>&amp;"));
}

TEST(Escape, KeepsOtherLanguages) {
  const std::string text = "Å\tЖ\n中 😀";
  EXPECT_EQ(text, report::escape(text));
}

TEST(Escape, ReplacesWhatIsNoText) {
  const std::string replaced = "\xEF\xBF\xBD";
  // A lone continuation, a cut character, an overlong slash, a surrogate, beyond Unicode.
  for (const std::string bytes :
       {"\x80", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
    std::string wanted;
    for (std::size_t i = 0; i < bytes.size(); ++i) wanted += replaced;
    EXPECT_EQ(wanted, report::escape(bytes));
  }
  EXPECT_EQ("a" + replaced + "b" + replaced, report::escape(std::string("a\0b\x1b", 4)));
  EXPECT_EQ(replaced + "&lt;", report::escape("\xE2<"));
}

TEST(Base64, EndsWithItsPadding) {
  const auto of = [](std::string_view text) {
    return report::base64(std::as_bytes(std::span(text)));
  };
  EXPECT_EQ("", of(""));
  EXPECT_EQ("Zg==", of("f"));
  EXPECT_EQ("Zm8=", of("fo"));
  EXPECT_EQ("Zm9v", of("foo"));
  EXPECT_EQ("/+8=", of("\xFF\xEF"));
}

TEST(Fill, PutsValuesInOnce) {
  EXPECT_EQ("<{{b}} 2 {{b}}>", report::fill("<{{a}} {{b}} {{a}}>", {{"a", "{{b}}"}, {"b", "2"}}));
}

TEST(Fill, RefusesATemplateThatItCannotFill) {
  EXPECT_THROW(report::fill("{{c}}", {{"a", "1"}}), std::logic_error);
  EXPECT_THROW(report::fill("{{a", {{"a", "1"}}), std::logic_error);
}

TEST(Fixed, KeepsNoSignOfNothing) {
  EXPECT_EQ("0.00", report::fixed(-0.001, 2));
  EXPECT_EQ("-0.01", report::fixed(-0.01, 2));
  EXPECT_EQ(309U, report::fixed(std::numeric_limits<double>::max(), 0).size());
}

}  // namespace
