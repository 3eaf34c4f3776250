// Documents read and copied while memory runs out: at whichever allocation that happens, the
// exception comes out and everything that was allocated before is given back.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "level1bProduct40/version40.h"

namespace {

long until_failure = -1;  // allocations that succeed; negative: all
long live = 0;            // blocks of operator new

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  if (until_failure == 0) throw std::bad_alloc();
  if (until_failure > 0) --until_failure;
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++live;
  return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  --live;
  std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

namespace {

using version40::c_version40;

const std::string header =
    "<generalHeader fileName='a name that is longer than fifteen'><itemName>a text that is longer"
    "</itemName><mission>m</mission><source>s</source><destination>d</destination>"
    "<generationSystem version='1'>g</generationSystem>"
    "<generationTime>2008-03-10T13:32:20Z</generationTime></generalHeader>";
const std::string file =
    "<file><location><host>another text that is longer</host><path/><filename/></location>"
    "<size>1</size></file>";
const std::string annotation = "<annotation><type>MAIN</type>" + file + "</annotation>";
// Ends in a fault after a list of objects.
const std::string product = "<level1Product>" + header + "<productComponents>" + annotation +
                            annotation + "</productComponents></level1Product>";

// Runs the action with ever more memory until it succeeds; gives how often it failed.
template <class Action>
int failures_of(Action action) {
  for (int failures = 0;; ++failures) {
    const long before = live;
    try {
      until_failure = failures;
      action();
      until_failure = -1;
      EXPECT_EQ(live, before);
      return failures;
    } catch (const std::bad_alloc&) {
      until_failure = -1;
      EXPECT_EQ(live, before) << "at allocation " << failures + 1;
      if (live != before) return failures;
    }
  }
}

class OutOfMemory : public testing::TestWithParam<std::string> {};

TEST_P(OutOfMemory, ReadingGivesEverythingBack) {
  const int failures = failures_of([&] {
    lmx::elmx_error error{};
    const c_version40 root(GetParam(), &error);
  });
  EXPECT_GT(failures, 5);
}

TEST_P(OutOfMemory, CopyingGivesEverythingBack) {
  c_version40 root;
  root.unmarshal(GetParam());
  const int failures = failures_of([&] {
    c_version40 copy(root);
    copy.reset();
  });
  EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(Documents, OutOfMemory,
                         testing::Values(header, file, product, "<imagingMode>SM SL</imagingMode>",
                                         "<chirpSlope>UPDOWN</chirpSlope>"),
                         [](const auto& set) { return "Number" + std::to_string(set.index); });

// What a choice held ends when another member is chosen.
TEST(Choice, GivesBackWhatItHeld) {
  const long before = live;
  {
    c_version40 root;
    root.unmarshal(product);
    root.append_imagingMode("a mode whose name is longer than fifteen");
    root.set_polLayer("a layer whose name is longer than fifteen");
    root.get_file().get_location().set_host("a host whose name is longer than fifteen");
    root.get_level1Product();
  }
  EXPECT_EQ(live, before);
}

TEST(OutOfMemory, TheErrorWordSaysThatNothingWasRead) {
  lmx::elmx_error error{};
  // The reader itself is the first to need memory.
  until_failure = 0;
  EXPECT_THROW(c_version40(file, &error), std::bad_alloc);
  until_failure = -1;
  EXPECT_EQ(error, 42);
}

}  // namespace
