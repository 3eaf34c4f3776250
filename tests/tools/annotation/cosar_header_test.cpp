#include "tools/annotation/cosar_header.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace {

// A burst's first record, cut or filled to the record's width.
std::string first_record(const std::vector<std::uint32_t>& words, std::size_t record_bytes) {
  std::string record;
  for (const std::uint32_t value : words) {
    for (const unsigned shift : {24U, 16U, 8U, 0U}) record += static_cast<char>(value >> shift);
  }
  record.replace(28, 4, "CSAR");
  record.resize(record_bytes);
  return record;
}

// 10 samples a line in records of 48 bytes, 3 lines in 7 records: 336 bytes.
std::string burst(std::uint32_t index) {
  std::string bytes = first_record({336, 1, 10, 3, index, 48, 7, 0, 1, 1, 0, 0}, 48);
  bytes.resize(336, '\x55');
  return bytes;
}

CosarHeader header_of(const std::string& bytes) {
  std::istringstream file(bytes);
  return read_cosar_header(file, bytes.size());
}

TEST(CosarHeader, TellsTheWordsOfABurst) {
  const CosarHeader header = header_of(burst(1));
  ASSERT_EQ(header.bursts.size(), 1U);
  const cosar::BurstHeader& only = header.bursts[0];
  EXPECT_EQ(only.low_bytes, 336U);
  EXPECT_EQ(only.samples, 10U);
  EXPECT_EQ(only.lines, 3U);
  EXPECT_EQ(only.record_bytes, 48U);
  EXPECT_EQ(only.records, 7U);
  EXPECT_EQ(only.version, 1U);
  EXPECT_EQ(only.bytes(), 336U);
  EXPECT_EQ(header.mark, "CSAR");
  EXPECT_EQ(header.end, 336U);
}

TEST(CosarHeader, WidthOfARecordCountsTwoWordsAheadOfTheSamples) {
  EXPECT_EQ(cosar::record_bytes(10), 48U);  // 4 x (10 + 2)
}

TEST(CosarHeader, GoesFromBurstToBurst) {
  const CosarHeader header = header_of(burst(1) + burst(2) + burst(3));
  EXPECT_EQ(header.bursts.size(), 3U);
  EXPECT_EQ(header.end, 3 * 336U);
}

TEST(CosarHeader, EndsAtWhatIsNoBurst) {
  const CosarHeader header = header_of(burst(1) + std::string(100, 'x'));
  EXPECT_EQ(header.bursts.size(), 1U);
  EXPECT_EQ(header.end, 336U);
  EXPECT_EQ(header.mark, "CSAR");
}

TEST(CosarHeader, EndsBehindAFileThatWasCutOff) {
  const std::string whole = burst(1) + burst(2);
  const CosarHeader header = header_of(whole.substr(0, 336 + 60));
  EXPECT_EQ(header.bursts.size(), 2U);
  EXPECT_EQ(header.end, 672U);
}

TEST(CosarHeader, HasNoBurstWithoutTheMark) {
  std::string other = burst(1);
  other[28] = 'X';
  EXPECT_TRUE(header_of(other).bursts.empty());
  EXPECT_EQ(header_of(other).mark, "XSAR");
  EXPECT_TRUE(header_of("").bursts.empty());
  EXPECT_EQ(header_of("").mark, "");
  EXPECT_EQ(header_of(burst(1).substr(0, 30)).mark, "CS");
  EXPECT_TRUE(header_of(burst(1).substr(0, 47)).bursts.empty());
}

TEST(CosarHeader, StopsAtABurstThatDoesNotHoldItsOwnHeader) {
  const std::string none = first_record({0, 1, 10, 3, 1, 0, 0, 0, 1, 1, 0, 0}, 48);
  const CosarHeader header = header_of(none + none);
  EXPECT_EQ(header.bursts.size(), 1U);
  EXPECT_EQ(header.end, 0U);
}

TEST(CosarHeader, CountsLargestNumbersWithoutOverflow) {
  constexpr auto most = std::numeric_limits<std::uint32_t>::max();
  const std::string huge =
      first_record({most, most, most, most, most, most, most, 0, 1, 1, 0, 0}, 48);
  const CosarHeader header = header_of(burst(1) + huge);
  ASSERT_EQ(header.bursts.size(), 2U);
  // (2^32 - 1)^2 = 2^64 - 2^33 + 1, and 336 ahead of it.
  EXPECT_EQ(header.end,
            std::numeric_limits<std::uint64_t>::max() - (std::uint64_t{1} << 33U) + 2 + 336);
}

TEST(CosarHeader, LooksAtTenThousandBursts) {
  std::string one = first_record({48, 1, 10, 0, 1, 48, 1, 0, 1, 1, 0, 0}, 48);
  std::string many;
  for (int i = 0; i < 10003; ++i) many += one;
  const CosarHeader header = header_of(many);
  EXPECT_EQ(header.bursts.size(), 10000U);
  EXPECT_EQ(header.end, 480000U);
}

}  // namespace
