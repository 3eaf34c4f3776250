#include "lmx/expat_parser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace lmx;

TEST(ExpatParser, TellsWhereTheLastTagOrTextEnds) {
  TokenBatch batch;
  ExpatParser parser(batch);
  parser.parse("<?xml version='1.0'?>", false);
  EXPECT_EQ(parser.settled(), 0U) << "a declaration is neither";
  parser.parse("<a>te&#65;xt", false);
  EXPECT_EQ(parser.settled(), 33U);
  parser.parse("<!-- a comment -->", false);
  EXPECT_EQ(parser.settled(), 33U);
  parser.parse("<b", false);
  EXPECT_EQ(parser.settled(), 33U);
  parser.parse("/>", false);
  EXPECT_EQ(parser.settled(), 55U);
  EXPECT_FALSE(parser.is_at_root_end());
  parser.parse("</a>", true);
  EXPECT_TRUE(parser.is_at_root_end());
}

// However long the bytes are, and however many tokens they make.
TEST(ExpatParser, PausesWithManyTokensAndGoesOn) {
  constexpr int count = 200'000;
  std::string document = "<r>";
  for (int i = 0; i < count; ++i) document += "<a b=''/>";
  TokenBatch batch;
  ExpatParser parser(batch);
  parser.parse(document, false);
  std::size_t tokens = batch.size();
  std::size_t pauses = 0;
  while (parser.is_paused()) {
    EXPECT_LE(batch.held(), 40'000U);
    batch.clear();
    parser.resume();
    tokens += batch.size();
    ++pauses;
  }
  EXPECT_EQ(tokens, 1U + 2U * count);
  EXPECT_GE(pauses, 3U * count / 40'000);
  batch.clear();
  parser.parse("</r>", true);
  EXPECT_TRUE(parser.is_at_root_end());
  EXPECT_EQ(batch[0].text, "r");
}

TEST(ExpatParser, EndsWithOneFault) {
  TokenBatch batch;
  ExpatParser parser(batch);
  parser.parse("<a></b>", false);
  parser.fail(error_too_long, "another");
  ASSERT_EQ(batch.size(), 2U);
  EXPECT_EQ(batch[1].kind, TokenKind::fault);
  EXPECT_EQ(batch[1].error, error_malformed);
  EXPECT_EQ(batch[1].text, "mismatched tag");
  EXPECT_TRUE(parser.is_faulted());
}

TEST(ExpatParser, TellsWhetherTheBytesAreUtf8) {
  const auto is_utf8 = [](std::string_view document) {
    TokenBatch batch;
    ExpatParser parser(batch);
    parser.parse(document, true);
    return parser.is_utf8();
  };
  EXPECT_TRUE(is_utf8("<a/>"));
  EXPECT_TRUE(is_utf8("<?xml version='1.0' encoding='utf-8'?><a/>"));
  EXPECT_TRUE(is_utf8("<?xml version='1.0' encoding='us-ascii'?><a/>"));
  EXPECT_FALSE(is_utf8("<?xml version='1.0' encoding='ISO-8859-1'?><a/>"));
  EXPECT_FALSE(is_utf8(std::string_view("\xFF\xFE<\0a\0/\0>\0", 10)));
}

}  // namespace
