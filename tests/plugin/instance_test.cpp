#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gridkit/memory.h"
#include "plugin/string_lists.h"
#include "record/exports.h"
#include "support/fake_toolkit.h"

namespace {

class Instance : public testing::Test {
 protected:
  void SetUp() override { reset_toolkit(); }
};

TEST_F(Instance, DescribesTheFormat) {
  char* description = nullptr;
  EXPECT_EQ(tsxInstanceDescriptionGet(&description), 0);
  EXPECT_STREQ(description, "Raster DLL for TerraSAR-X Radar Sensor, launched: June 15, 2007");
  gkm_HeapFree(description);
  int32_t count = 0;
  char** list = nullptr;
  EXPECT_EQ(tsxInstanceTitleListGet(&count, &list), 0);
  ASSERT_EQ(count, 1);
  EXPECT_STREQ(list[0], "TerraSAR-X");
  tsx_StringListFree(&list, count);
  unsigned char* flags = nullptr;
  EXPECT_EQ(tsxInstanceTemplateListGet(&list, &flags), 0);
  EXPECT_STREQ(list[0], "TSX1*.xml");
  EXPECT_EQ(flags[0], 0);
  tsx_StringListFree(&list, 1);
  gkm_HeapFree(flags);
  EXPECT_EQ(tsxInstanceExtListGet(&list), 0);
  EXPECT_STREQ(list[0], ".xml");
  tsx_StringListFree(&list, 1);
  EXPECT_EQ(tsxInstanceShortNameListGet(&list), 0);
  EXPECT_STREQ(list[0], "xml");
  tsx_StringListFree(&list, 1);
  EXPECT_EQ(tsxInstancePixelTypesGet(&count, &list), 0);
  ASSERT_EQ(count, 2);
  EXPECT_STREQ(list[0], "u16");
  EXPECT_STREQ(list[1], "s16");
  tsx_StringListFree(&list, 2);
  EXPECT_EQ(tsxInstanceLayerTypesGet(&count, &list), 0);
  ASSERT_EQ(count, 1);
  EXPECT_STREQ(list[0], "athematic");
  tsx_StringListFree(&list, 1);
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(Instance, EveryGetterHandsOutIndependentCopies) {
  // Each hands out a list, and its one or two texts are its own at each call.
  using Getter = void (*)(char*** list);
  const Getter getters[] = {[](char*** list) {
                              *list = static_cast<char**>(gkm_HeapMalloc(sizeof(char*)));
                              tsxInstanceDescriptionGet(*list);
                            },
                            [](char*** list) {
                              int32_t count = 0;
                              tsxInstanceTitleListGet(&count, list);
                            },
                            [](char*** list) {
                              unsigned char* flags = nullptr;
                              tsxInstanceTemplateListGet(list, &flags);
                              gkm_HeapFree(flags);
                            },
                            [](char*** list) { tsxInstanceExtListGet(list); },
                            [](char*** list) { tsxInstanceShortNameListGet(list); },
                            [](char*** list) {
                              int32_t count = 0;
                              tsxInstanceLayerTypesGet(&count, list);
                            },
                            [](char*** list) {
                              int32_t count = 0;
                              tsxInstancePixelTypesGet(&count, list);
                              gkm_HeapFree((*list)[1]);
                            }};
  for (const Getter get : getters) {
    char** first = nullptr;
    char** second = nullptr;
    get(&first);
    get(&second);
    ASSERT_NE(first, second);
    const std::string text = first[0];
    first[0][0] = '?';
    EXPECT_EQ(text, second[0]);
    tsx_StringListFree(&first, 1);
    tsx_StringListFree(&second, 1);
  }
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(Instance, EveryTemplateListHasItsOwnByte) {
  unsigned char* flags[2];
  char** lists[2];
  for (int i = 0; i < 2; ++i) tsxInstanceTemplateListGet(&lists[i], &flags[i]);
  EXPECT_NE(flags[0], flags[1]);
  flags[0][0] = 7;
  EXPECT_EQ(flags[1][0], 0);
}

TEST_F(Instance, TheLibraryAsksForNoThreadNotificationsAtLoad) {
  EXPECT_EQ(library_calls_disabled(), 1);
}

TEST_F(Instance, ADescriptionWithoutMemoryIsNullAndFails) {
  toolkit().fail_at["gks_Duplicate"] = 1;
  char* description = const_cast<char*>("old");
  EXPECT_EQ(tsxInstanceDescriptionGet(&description), -1);
  EXPECT_EQ(description, nullptr);
}

TEST_F(Instance, TitlesWithAFailingAllocatorAreNone) {
  for (const char* operation : {"gkm_HeapMalloc", "gks_Duplicate"}) {
    reset_toolkit();
    toolkit().fail_at[operation] = 1;
    int32_t count = 7;
    char** titles = nullptr;
    EXPECT_EQ(tsxInstanceTitleListGet(&count, &titles), -1);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(titles, nullptr);
    EXPECT_EQ(toolkit().live_blocks, 0);
  }
}

TEST_F(Instance, TemplatesThatFailOnTheBytesLeaveNoList) {
  toolkit().fail_at["gkm_MemDup"] = 1;
  char** templates = nullptr;
  unsigned char* flags = nullptr;
  EXPECT_EQ(tsxInstanceTemplateListGet(&templates, &flags), -1);
  EXPECT_EQ(templates, nullptr);
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(Instance, TemplatesThatFailOnTheTextsAskForNoBytes) {
  for (const char* operation : {"gkm_HeapMalloc", "gks_Duplicate"}) {
    reset_toolkit();
    toolkit().fail_at[operation] = 1;
    char** templates = nullptr;
    unsigned char* flags = nullptr;
    EXPECT_EQ(tsxInstanceTemplateListGet(&templates, &flags), -1);
    EXPECT_EQ(templates, nullptr);
    EXPECT_EQ(flags, nullptr);
    EXPECT_EQ(toolkit().calls["gkm_MemDup"], 0);
    EXPECT_EQ(toolkit().live_blocks, 0);
  }
}

// The texts go back from the last to the first, and the array after them.
TEST_F(Instance, StringListFreeGoesBackwards) {
  const char* source[] = {"a", "b", "c"};
  char** copy = nullptr;
  ASSERT_EQ(tsx_StringListCopy(&copy, source, 3), 0);
  const std::vector<const void*> expected = {copy[2], copy[1], copy[0], copy};
  tsx_StringListFree(&copy, 3);
  EXPECT_EQ(toolkit().freed, expected);
}

// A copy that fails at its third text gives the first two back.
TEST_F(Instance, StringListCopyFreesWhatItReachedBackwards) {
  const char* source[] = {"a", "b", "c", "d"};
  char** copy = nullptr;
  toolkit().fail_at["gks_Duplicate"] = 3;
  EXPECT_EQ(tsx_StringListCopy(&copy, source, 4), -1);
  EXPECT_EQ(toolkit().freed.size(), 3U) << "two texts and the array";
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(Instance, ExtensionsAndShortNamesFailWithoutMemory) {
  for (auto* get : {tsxInstanceExtListGet, tsxInstanceShortNameListGet}) {
    reset_toolkit();
    toolkit().fail_at["gks_Duplicate"] = 1;
    char** list = nullptr;
    EXPECT_EQ(get(&list), -1);
    EXPECT_EQ(list, nullptr);
  }
}

TEST_F(Instance, PixelTypesSucceedWhateverHappens) {
  toolkit().fail_at["gks_Duplicate"] = 2;
  int32_t count = 0;
  char** list = nullptr;
  EXPECT_EQ(tsxInstancePixelTypesGet(&count, &list), 0);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(list[1], nullptr);
  tsx_StringListFree(&list, 2);
  reset_toolkit();
  toolkit().fail_at["gkm_HeapMalloc"] = 1;
  EXPECT_EQ(tsxInstanceLayerTypesGet(&count, &list), 0);
  EXPECT_EQ(list, nullptr);
}

TEST_F(Instance, StringListCopySkipsNullTextsAndUndoesAFailure) {
  const char* source[] = {"a", nullptr, "c"};
  char** copy = nullptr;
  EXPECT_EQ(tsx_StringListCopy(&copy, source, 3), 0);
  EXPECT_STREQ(copy[0], "a");
  EXPECT_EQ(copy[1], nullptr);
  EXPECT_STREQ(copy[2], "c");
  tsx_StringListFree(&copy, 3);
  EXPECT_EQ(copy, nullptr);
  tsx_StringListFree(&copy, 3);
  toolkit().fail_at["gks_Duplicate"] = toolkit().calls["gks_Duplicate"] + 2;
  EXPECT_EQ(tsx_StringListCopy(&copy, source, 3), -1);
  EXPECT_EQ(copy, nullptr);
  const char* five[] = {"a", "b", "c", "d", "e"};
  toolkit().fail_at["gks_Duplicate"] = toolkit().calls["gks_Duplicate"] + 2;
  EXPECT_EQ(tsx_StringListCopy(&copy, five, 5), -1) << "frees what it reached, no more";
  EXPECT_EQ(copy, nullptr);
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(Instance, AnImageWithoutAMapIsSupported) {
  const auto ask = [](const char* name, MifValue fifth) {
    return tsxInstanceMapProjectionIsSupported(nullptr, name, nullptr, nullptr, nullptr, fifth,
                                               nullptr, nullptr, nullptr, nullptr);
  };
  int mark = 0;
  EXPECT_EQ(ask(nullptr, nullptr), 1);
  EXPECT_EQ(ask(nullptr, &mark), 0);
}

}  // namespace
