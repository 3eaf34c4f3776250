#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "gridkit/dictionary.h"
#include "gridkit/error.h"
#include "gridkit/memory.h"
#include "gridkit/plugin.h"
#include "gridkit/product.h"
#include "gridkit/report.h"

namespace {

// Blocks that new has given and delete has not taken back, in the toolkit too.
std::atomic<long> live_blocks = 0;
// How many more blocks new gives before it has no memory for one; negative is without end.
std::atomic<long> blocks_until_failure = -1;

}  // namespace

// Not inlined, or g++ takes malloc and delete for a pair that does not belong together.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (blocks_until_failure >= 0 && blocks_until_failure-- == 0) throw std::bad_alloc();
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++live_blocks;
  return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  if (block != nullptr) --live_blocks;
  std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace {

long left_by(void (*work)()) {
  const long before = live_blocks;
  work();
  return live_blocks - before;
}

void make_dictionary() {
  gkd_DesignCreate(gkd_DictionaryCreate(nullptr), "LEFT", nullptr, gkd_Double, "value", 0);
}

TEST(DictionaryRelease, CounterSeesADictionaryThatIsLeft) {
  EXPECT_GT(left_by(make_dictionary), 0);
  gkd_ReleaseDictionaries();
}

TEST(DictionaryRelease, EndsDictionariesAndTheirDesigns) {
  EXPECT_EQ(left_by([] {
              make_dictionary();
              make_dictionary();
              gkd_ReleaseDictionaries();
              gkd_ReleaseDictionaries();
            }),
            0);
}

TEST(DictionaryRelease, ARefusedDesignLeavesNothing) {
  gkd_Dictionary* dictionary = gkd_DictionaryCreate(nullptr);
  // The dictionary's list of designs may keep its room.
  gkd_DesignDestroy(gkd_DesignCreate(dictionary, "T", nullptr, gkd_Double, "value", 0));
  const long before = live_blocks;
  gkd_DesignCreate(dictionary, "T", nullptr, gkd_Double, "value", gkd_Double, "value", 0);
  gkd_DesignDestroy(gkd_DesignCreate(dictionary, "T", nullptr, gkd_Double, "value", 0));
  EXPECT_EQ(live_blocks, before);
  gkd_ReleaseDictionaries();
}

// Makes a dictionary and encodes a record with it; whether it came to the end. Each step that fails
// must tell it.
bool encodes(gke_Report** err) {
  const double record = 1;
  char buffer[8];
  gkd_Dictionary* dictionary = gkd_DictionaryCreate(err);
  if (dictionary == nullptr) return false;
  gkd_Design* design = gkd_DesignCreate(dictionary, "T", err, gkd_Double, "value", 0);
  if (design == nullptr) return false;
  gkd_DictionaryAddDesign(dictionary, design, err);
  if (*err != nullptr) return false;
  char* text = gkd_DictionaryEncodeToString(dictionary, err);
  if (text == nullptr) return false;
  gkm_HeapFree(text);
  if (gkd_ObjectSize(&record, design, err) < 0) return false;
  gkd_ConvertToMIF(0, &record, design, buffer, err);
  return *err == nullptr;
}

TEST(DictionaryRelease, TellsOfEachAllocationThatFails) {
  long failures = 0;
  for (bool ended = false; !ended; ++failures) {
    gke_Report* report = nullptr;
    const long before = live_blocks;
    blocks_until_failure = failures;
    ended = encodes(&report);
    blocks_until_failure = -1;
    ASSERT_EQ(report == nullptr, ended) << failures;
    if (report != nullptr) {
      EXPECT_STREQ(gke_ReportMessage(report), "out of memory");
    }
    gke_DeleteErrorReportEx(&report);
    gkd_ReleaseDictionaries();
    ASSERT_EQ(live_blocks, before) << failures;
  }
  EXPECT_GT(failures, 10) << "every step allocates";
}

class DataRead : public testing::Test {
 protected:
  // What one read leaves on the heap, when the toolkit has warmed up.
  long left_by_read(const std::string& name) {
    read(name);
    const long before = live_blocks;
    read(name);
    return live_blocks - before;
  }

  gridkit::Product product =
      gridkit::Plugin::load(std::string(TEST_PLUGINS) + "/fake.so")->open("h40.fake");
  int refusals = 0;

 private:
  void read(const std::string& name) {
    try {
      product.read_data(name);
    } catch (const gridkit::Error&) {
      ++refusals;
    }
  }
};

TEST_F(DataRead, EndsTheDictionariesThatThePluginLeaves) {
  EXPECT_EQ(left_by_read("dictionary"), 0);
  EXPECT_EQ(refusals, 0);
}

TEST_F(DataRead, EndsThemAlsoWhenThePluginFails) {
  EXPECT_EQ(left_by_read("failing dictionary"), 0);
  EXPECT_EQ(refusals, 2);
}

}  // namespace
