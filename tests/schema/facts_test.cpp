// Reads the documents of facts that are stated by hand, beside what the tables say.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "tests/schema/cases.h"

TEST(Facts, EveryFactStatedByHandHolds) {
  const char* path = std::getenv("TSX_FACTS");
  ASSERT_NE(path, nullptr) << "TSX_FACTS must name the file that make_facts.py wrote";
  std::ifstream lines(path);
  ASSERT_TRUE(lines.is_open()) << path;
  const cases::Tally tally = cases::run(lines);
  EXPECT_EQ(tally.failures, 0) << tally.told;
  EXPECT_GT(tally.total(), 1500) << "facts are missing";
}
