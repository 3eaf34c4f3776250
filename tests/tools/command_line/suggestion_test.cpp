#include "tools/command_line/suggestion.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const std::vector<std::string> verbs = {"formats", "info", "layers", "read", "quicklook", "locate"};

TEST(Suggestion, FindsAWordWithAWrongMissingExtraOrSwappedLetter) {
  EXPECT_EQ("; did you mean \"info\"?", did_you_mean("inqo", verbs));
  EXPECT_EQ("; did you mean \"info\"?", did_you_mean("ino", verbs));
  EXPECT_EQ("; did you mean \"info\"?", did_you_mean("infoo", verbs));
  EXPECT_EQ("; did you mean \"read\"?", did_you_mean("raed", verbs));
}

TEST(Suggestion, FindsAWordByItsBeginning) {
  EXPECT_EQ("; did you mean \"quicklook\"?", did_you_mean("quick", verbs));
  EXPECT_EQ("; did you mean \"locate\"?", did_you_mean("lo", verbs));
}

TEST(Suggestion, CaseCountsForNothing) {
  EXPECT_EQ("; did you mean \"layers\"?", did_you_mean("LAYER", verbs));
}

TEST(Suggestion, PrefersTheNearest) {
  const std::vector<std::string> layers = {"X_HH_MAGNITUDE_1", "X_HH_PHASE_2", "X_VV_PHASE_4"};
  EXPECT_EQ("; did you mean \"X_VV_PHASE_4\"?", did_you_mean("X_VV_PHASE_5", layers));
}

TEST(Suggestion, IsNothingForAWordThatIsLikeNone) {
  EXPECT_EQ("", did_you_mean("xylophone", verbs));
  EXPECT_EQ("", did_you_mean("", verbs));
  EXPECT_EQ("", did_you_mean("x", verbs));
  EXPECT_EQ("", did_you_mean(std::string(100000, 'i'), verbs));
  EXPECT_EQ("", did_you_mean("info", {}));
}

}  // namespace
