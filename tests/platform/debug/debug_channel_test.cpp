#include "debug/debug_channel.h"

#include <gtest/gtest.h>

namespace {

TEST(DebugChannel, IsSilentUntilTurnedOn) {
  testing::internal::CaptureStderr();
  OutputDebugStringA("hidden");
  debug_EnableChannel(1);
  OutputDebugStringA("\n s_count: 1 \n");
  OutputDebugStringA(nullptr);
  debug_EnableChannel(0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\n s_count: 1 \n");
  EXPECT_NE(DisableThreadLibraryCalls(nullptr), 0);
}

}  // namespace
