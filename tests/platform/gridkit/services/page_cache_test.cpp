#include "gridkit/services/page_cache.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using gridkit::PageCache;
constexpr std::int64_t page = PageCache::page_bytes;

class Pages : public testing::Test {
 protected:
  // A whole page of one value.
  static void fill(PageCache& cache, std::int64_t number, char value) {
    std::byte* room = cache.place(number * page);
    ASSERT_NE(room, nullptr);
    std::memset(room, value, PageCache::page_bytes);
    cache.set_size(PageCache::page_bytes);
  }
  // What a read of that many bytes gives, at most 100.
  static std::string read(PageCache& cache, std::int64_t offset, std::size_t bytes = 2) {
    std::byte buffer[100];
    const std::size_t got = cache.read(offset, std::span(buffer).first(bytes));
    return {reinterpret_cast<const char*>(buffer), got};
  }
  static void spend(PageCache& cache, std::int64_t number) {
    std::vector<std::byte> whole(PageCache::page_bytes);
    EXPECT_EQ(cache.read(number * page, whole), whole.size());
  }
};

TEST_F(Pages, AreReadFromAnyPlaceUpToTheirEnd) {
  PageCache cache(3 * page);
  EXPECT_EQ(read(cache, 0), "");
  fill(cache, 7, 'a');
  EXPECT_EQ(read(cache, 7 * page), "aa");
  EXPECT_EQ(read(cache, 8 * page - 1), "a");
  EXPECT_EQ(read(cache, 8 * page), "");
  EXPECT_EQ(read(cache, 7 * page - 1), "");
}

TEST_F(Pages, EndWhereTheirBytesEnd) {
  PageCache cache(page);
  std::byte* room = cache.place(100);
  EXPECT_EQ(read(cache, 100), "") << "nothing before it is told";
  std::memset(room, 'a', 101);
  cache.set_size(101);
  EXPECT_EQ(read(cache, 100), "a");
  EXPECT_EQ(read(cache, 101), "");
  fill(cache, 0, 'b');
  EXPECT_EQ(read(cache, 101), "bb") << "filled anew";
}

TEST_F(Pages, AreBounded) {
  PageCache cache(3 * page + 5);
  for (const int number : {0, 1, 2, 3}) fill(cache, number, 'a');
  int held = 0;
  for (const int number : {0, 1, 2, 3}) held += read(cache, number * page).empty() ? 0 : 1;
  EXPECT_EQ(held, 3);
}

TEST_F(Pages, NotAskedForLatelyMakeRoom) {
  PageCache cache(3 * page);
  for (const int number : {0, 1, 2}) fill(cache, number, 'a');
  read(cache, 0);
  read(cache, 2 * page);
  fill(cache, 9, 'b');
  EXPECT_EQ(read(cache, 0), "aa");
  EXPECT_EQ(read(cache, page), "");
  EXPECT_EQ(read(cache, 2 * page), "aa");
  EXPECT_EQ(read(cache, 9 * page), "bb");
}

TEST_F(Pages, HandedOutWholeMakeRoomFirst) {
  PageCache cache(3 * page);
  fill(cache, 0, 'a');
  fill(cache, 1, 'a');
  spend(cache, 1);
  fill(cache, 2, 'b');
  EXPECT_EQ(read(cache, 0), "aa");
  EXPECT_EQ(read(cache, page), "");
  EXPECT_EQ(read(cache, 2 * page), "bb");
}

TEST_F(Pages, FilledAnewAreNotSpent) {
  PageCache cache(2 * page);
  fill(cache, 0, 'a');
  spend(cache, 0);
  fill(cache, 0, 'b');
  fill(cache, 1, 'c');
  EXPECT_EQ(read(cache, 0), "bb");
  EXPECT_EQ(read(cache, page), "cc");
}

TEST_F(Pages, AreForgotten) {
  PageCache cache(2 * page);
  fill(cache, 0, 'a');
  spend(cache, 0);
  fill(cache, 1, 'a');
  cache.forget();
  EXPECT_EQ(read(cache, 0), "");
  EXPECT_EQ(read(cache, page), "");
  fill(cache, 0, 'b');
  fill(cache, 1, 'c');
  EXPECT_EQ(read(cache, 0), "bb");
  EXPECT_EQ(read(cache, page), "cc");
}

TEST_F(Pages, WithoutMemoryAreNotHeld) {
  PageCache none(page - 1);
  EXPECT_EQ(none.place(0), nullptr);
  EXPECT_EQ(read(none, 0), "");
  PageCache too_many(std::size_t{1} << 60U);
  EXPECT_EQ(too_many.place(0), nullptr);
  EXPECT_EQ(too_many.place(0), nullptr);
  EXPECT_EQ(read(too_many, 0), "");
}

}  // namespace
