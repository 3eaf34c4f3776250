#include "lmx/token_batch.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace lmx;

const char* const no_attributes[] = {nullptr};

// The batch's tokens, one word each.
std::string words(const TokenBatch& batch) {
  std::string all;
  for (std::size_t i = 0; i < batch.size(); ++i) {
    const Token token = batch[i];
    constexpr const char* kinds[] = {"<", "/", "=", "!"};
    all += kinds[static_cast<std::size_t>(token.kind)];
    all += token.text;
    all += token.self_closed ? "/ " : " ";
  }
  return all;
}

TEST(TokenBatch, HoldsTagsWithTheirAttributes) {
  TokenBatch batch;
  const char* const attributes[] = {"x", "1", "xmlns:p", "uri", nullptr};
  batch.add_start("p:a", attributes, {10, 30});
  batch.add_start("b", no_attributes, {40, 4});
  batch.add_end("b", {44, 0});
  batch.add_end("p:a", {44, 6});
  EXPECT_EQ(words(batch), "<p:a <b/ /b/ /p:a ");
  EXPECT_EQ(batch.held(), 6U);
  const Token start = batch[0];
  EXPECT_EQ(start.offset, 10U);
  EXPECT_EQ(start.end_offset, 40U);
  EXPECT_TRUE(start.prefixed);
  EXPECT_TRUE(start.declares);
  ASSERT_EQ(start.attribute_count, 2U);
  EXPECT_EQ(batch.attribute(start.first_attribute + 1).name, "xmlns:p");
  EXPECT_EQ(batch.attribute(start.first_attribute + 1).value, "uri");
  EXPECT_FALSE(batch[1].prefixed || batch[1].declares);
  EXPECT_EQ(batch[1].attribute_count, 0U);
}

TEST(TokenBatch, JoinsPiecesOfText) {
  TokenBatch batch;
  batch.add_start("a", no_attributes, {0, 3});
  batch.add_text("  ", 3);
  batch.add_text("one", 5);
  batch.add_text("\n", 8);
  batch.add_text("two", 9);
  batch.add_end("a", {12, 4});
  EXPECT_EQ(words(batch), "<a =  one\ntwo /a ");
  EXPECT_EQ(batch[1].offset, 3U);
}

TEST(TokenBatch, PassesOverBlanksBesideTags) {
  TokenBatch batch;
  batch.add_start("a", no_attributes, {0, 3});
  batch.add_text("\n", 3);
  batch.add_text("  ", 4);
  batch.add_start("b", no_attributes, {6, 3});
  batch.add_text(" ", 9);
  batch.add_end("b", {10, 4});
  batch.add_text("\n", 14);
  batch.add_end("a", {15, 4});
  EXPECT_EQ(words(batch), "<a <b =  /b /a ") << "those that are an element's whole content stay";
}

TEST(TokenBatch, KeepsBlanksThatNoTagHasFollowedYet) {
  TokenBatch batch;
  batch.add_start("a", no_attributes, {0, 3});
  batch.add_text("\n", 3);
  batch.settle();
  EXPECT_EQ(words(batch), "<a =\n ");
  batch.clear();
  EXPECT_EQ(batch.size(), 0U);
  batch.add_end("a", {4, 4});
  EXPECT_EQ(words(batch), "/a ") << "its start is in the batch before";
  batch.add_text(" ", 8);
  batch.settle();
  EXPECT_EQ(words(batch), "/a ");
}

TEST(TokenBatch, HoldsFaults) {
  TokenBatch batch;
  batch.add_unreadable_start("a", error_attribute_twice, {5, 7});
  batch.add_fault(error_attribute_twice, "x", 12);
  EXPECT_EQ(words(batch), "<a !x ");
  EXPECT_EQ(batch[0].error, error_attribute_twice);
  EXPECT_EQ(batch[0].attribute_count, 0U);
  EXPECT_EQ(batch[1].error, error_attribute_twice);
  EXPECT_EQ(batch[1].offset, 12U);
}

}  // namespace
