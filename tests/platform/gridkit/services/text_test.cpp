#include "gridkit/text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "gridkit/memory.h"
#include "gridkit/report.h"
#include "gridkit/string_list.h"

namespace {

TEST(Memory, CopiesAndFrees) {
  char* copy = static_cast<char*>(gkm_MemDup("abc", 4));
  EXPECT_STREQ(copy, "abc");
  gkm_HeapFree(copy);
  gkm_HeapFree(nullptr);
  EXPECT_EQ(gkm_MemDup(nullptr, 3), nullptr);
  void* empty = gkm_HeapMalloc(0);
  EXPECT_NE(empty, nullptr);
  gkm_HeapFree(empty);
  EXPECT_EQ(gkm_HeapMalloc(SIZE_MAX / 2), nullptr);
}

TEST(Memory, SwapsBigEndianItemsInPlace) {
  std::array<unsigned char, 4> bytes = {0x12, 0x34, 0xFF, 0xFE};
  gkm_MemSwab(bytes.data(), 2, 2);
  std::array<std::int16_t, 2> values{};
  std::memcpy(values.data(), bytes.data(), 4);
  EXPECT_EQ(values[0], 0x1234);
  EXPECT_EQ(values[1], -2);
}

TEST(Memory, SwapsItemsOfEverySizeAndLeavesOthers) {
  // The bytes 1 to 8 as big-endian items; what each size makes of them stands in hexadecimal.
  constexpr std::array<unsigned char, 8> bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  std::array<std::uint32_t, 2> words{};
  std::memcpy(words.data(), bytes.data(), bytes.size());
  gkm_MemSwab(words.data(), 2, 4);
  EXPECT_EQ(words[0], 0x01020304U);
  EXPECT_EQ(words[1], 0x05060708U);
  std::uint64_t whole = 0;
  std::memcpy(&whole, bytes.data(), bytes.size());
  gkm_MemSwab(&whole, 1, 8);
  EXPECT_EQ(whole, 0x0102030405060708U);
  for (const std::size_t other : {std::size_t{1}, std::size_t{3}, std::size_t{16}}) {
    std::array<unsigned char, 8> same = bytes;
    gkm_MemSwab(same.data(), 1, other);
    EXPECT_EQ(same, bytes) << other;
  }
}

TEST(Text, WithoutAFormatIsRefused) {
  gke_Report* report = nullptr;
  EXPECT_EQ(gks_Sprintf(nullptr, nullptr, &report), nullptr);
  ASSERT_NE(report, nullptr);
  EXPECT_STREQ(gke_ReportMessage(report), "no format was given");
  gke_DeleteErrorReportEx(&report);
}

TEST(Text, FormatsIntoANewOrAGivenBuffer) {
  char* text = gks_Sprintf(nullptr, "%s-%d%%", nullptr, "a", 7);
  EXPECT_STREQ(text, "a-7%");
  gkm_HeapFree(text);
  char buffer[16];
  EXPECT_EQ(gks_Sprintf(buffer, "%ld", nullptr, 12L), buffer);
  EXPECT_STREQ(buffer, "12");
}

TEST(Text, FindsAndCompares) {
  EXPECT_STREQ(gks_SubString("version 3.4x", "3.4"), "3.4x");
  EXPECT_EQ(gks_SubString("a", "b"), nullptr);
  EXPECT_EQ(gks_SubString(nullptr, "b"), nullptr);
  EXPECT_EQ(gkt_Text_strcmp("a", "a"), 0);
  EXPECT_NE(gkt_Text_strcmp("a", "A"), 0);
  EXPECT_NE(gkt_Text_strcmp("a", nullptr), 0);
  EXPECT_EQ(gkt_Text_strcmp(nullptr, nullptr), 0);
  EXPECT_EQ(gkt_Text_strlen(nullptr), 0U);
  EXPECT_STREQ(gkt_Text_strrchr("a_b_c", '_'), "_c");
  EXPECT_EQ(gks_Duplicate(nullptr), nullptr);
}

TEST(Text, ComparesAPrefixCaseAside) {
  EXPECT_NE(gks_Eqnic(":TSX_Beta0", ":tsx_beta0xyz", 10), 0);
  EXPECT_EQ(gks_Eqnic(":TSX_Beta0", ":TSX_Beta", 10), 0) << "one ends early";
  EXPECT_NE(gks_Eqnic("ab", "ab", 50), 0) << "both end there";
}

TEST(Text, ReadsNumbersWithinTheirRange) {
  EXPECT_EQ(gkt_Text_atol("12x"), 12);
  EXPECT_EQ(gkt_Text_atol(" -7"), -7);
  EXPECT_EQ(gkt_Text_atol("99999999999999999999"), 2147483647);
  EXPECT_EQ(gkt_Text_atol("-99999999999999999999"), -2147483648);
  EXPECT_EQ(gkt_Text_atol("x"), 0);
  EXPECT_EQ(gkt_Text_atol(nullptr), 0);
}

TEST(Text, TakesTheDirectoryOfAPath) {
  const auto directory = [](const std::string& path) {
    std::string buffer(path.size() + 1, '?');
    gks_GetPathPart(path.c_str(), buffer.data(), path.size());
    return std::string(buffer.c_str());
  };
  EXPECT_EQ(directory("/data/my products/a%20.xml"), "/data/my products/");
  EXPECT_EQ(directory("a.xml"), "");
  EXPECT_EQ(directory("/a"), "/");
}

TEST(RegularExpression, MatchesAgainstTheCurrentPattern) {
  EXPECT_EQ(gks_REComp("^[A-Z]_[1-9][0-9]*$"), 0);
  EXPECT_NE(gks_REExec("X_12"), 0);
  EXPECT_EQ(gks_REExec("X_02"), 0);
  EXPECT_EQ(gks_REExec(nullptr), 0);
  EXPECT_EQ(gks_REComp("[unclosed"), -1);
  EXPECT_EQ(gks_REExec("anything"), 0) << "no pattern is current";
}

TEST(StringList, GrowsAndGivesItsTextsAway) {
  gke_Report* report = nullptr;
  gks_StringList* list = gks_StringListAppend(nullptr, "a", &report);
  list = gks_StringListAppend(list, "b", &report);
  ASSERT_EQ(list->count, 2);
  EXPECT_STREQ(list->strings[1], "b");
  EXPECT_EQ(report, nullptr);
  EXPECT_EQ(gks_StringListAppend(list, nullptr, &report), list);
  EXPECT_NE(report, nullptr);
  gke_DeleteErrorReportEx(&report);
  char** taken = list->strings;
  *list = {0, nullptr};
  gks_StringListDelete(list, nullptr);
  EXPECT_STREQ(taken[0], "a");
  gkm_HeapFree(taken[0]);
  gkm_HeapFree(taken[1]);
  gkm_HeapFree(taken);
  gks_StringListDelete(nullptr, nullptr);
}

}  // namespace
