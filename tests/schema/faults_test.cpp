// Reads every document of the generated cases and compares code and name with what the rules say.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "tests/schema/cases.h"

TEST(Faults, EveryRowOfTheTablesGivesItsCodeAndName) {
  const char* path = std::getenv("TSX_CASES");
  ASSERT_NE(path, nullptr) << "TSX_CASES must name the file that make_cases.py wrote";
  std::ifstream lines(path);
  ASSERT_TRUE(lines.is_open()) << path;
  const cases::Tally tally = cases::run(lines);
  for (const auto& [kind, count] : tally.counts) std::printf("%6d  %s\n", count, kind.c_str());
  std::printf("%6d  documents, %d not as expected\n", tally.total(), tally.failures);
  EXPECT_EQ(tally.failures, 0) << tally.told;
  EXPECT_GT(tally.total(), 40000) << "the cases are not those of the whole schema";
}
