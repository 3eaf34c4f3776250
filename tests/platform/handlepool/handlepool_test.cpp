#include "handlepool/handlepool.h"

#include <gtest/gtest.h>

namespace {

int32_t released = 0;
int32_t release(void* handle) {
  released += *static_cast<int32_t*>(handle);
  return 0;
}

TEST(Pool, EndsAnEntryOnce) {
  int32_t one = 1;
  int32_t ten = 10;
  released = 0;
  EXPECT_EQ(pool_FindFileHandleIfOpen("a", 0), nullptr);
  EXPECT_EQ(pool_AddFileHandleToList(&one, "a", release), 0);
  EXPECT_EQ(pool_AddFileHandleToList(&ten, "a", release), 0);
  EXPECT_EQ(pool_FindFileHandleIfOpen("a", 0), &ten) << "the newer answers";
  pool_RemoveFileHandleFromList("a", 0);
  EXPECT_EQ(released, 10);
  EXPECT_EQ(pool_FindFileHandleIfOpen("a", 0), &one);
  pool_RemoveFileHandleFromList("a", 0);
  pool_RemoveFileHandleFromList("a", 0);
  EXPECT_EQ(released, 11);
  pool_RemoveFileHandleFromList(nullptr, 0);
  EXPECT_EQ(pool_AddFileHandleToList(nullptr, "a", release), -1);
  EXPECT_EQ(pool_FindFileHandleIfOpen(nullptr, 0), nullptr);
}

TEST(Pool, ACallbackMayUseThePool) {
  int32_t handle = 0;
  pool_AddFileHandleToList(&handle, "b", [](void* record) {
    EXPECT_EQ(pool_FindFileHandleIfOpen("b", 0), nullptr) << "already out";
    *static_cast<int32_t*>(record) = 1;
    return 0;
  });
  pool_RemoveFileHandleFromList("b", 0);
  EXPECT_EQ(handle, 1);
}

}  // namespace
