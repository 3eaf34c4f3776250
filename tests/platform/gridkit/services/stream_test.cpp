#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "gridkit/file.h"
#include "gridkit/preference.h"
#include "tests/support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr double page_megabytes = 0.0625;

class Streams : public testing::Test {
 protected:
  void TearDown() override {
    gkf_fclose(stream);
    gkp_ClearNumberPreference("gridkit", "stream_cache_megabytes");
  }

  void write(const std::string& content, std::ios::openmode mode = std::ios::trunc) {
    std::ofstream(path, std::ios::binary | mode) << content;
  }
  // Every byte tells its place and the content's number, so that no place is taken for another.
  static std::string content(std::size_t bytes, unsigned number = 0) {
    std::mt19937 random(number + 1);
    std::string text(bytes, '\0');
    for (char& c : text) c = static_cast<char>(random());
    return text;
  }
  void open(double megabytes) {
    gkp_SetNumberPreference("gridkit", "stream_cache_megabytes", megabytes, nullptr);
    open();
  }
  void open() {
    gkf_fclose(stream);
    stream = gkf_fopen(path.c_str(), "rb");
    ASSERT_NE(stream, nullptr);
  }
  // What one read of single bytes gives.
  std::string read(std::size_t bytes) {
    std::string text(bytes, '\0');
    text.resize(gkf_fread(text.data(), 1, bytes, stream));
    return text;
  }
  std::string read_at(std::int64_t offset, std::size_t bytes) {
    EXPECT_EQ(gkf_fseeko(stream, offset, 0), 0);
    return read(bytes);
  }
  bool at_end() const { return gkf_feof(stream) != 0; }

  const ScratchFolder scratch;
  const std::string path = scratch / "a file";
  gkf_Stream* stream = nullptr;
};

TEST_F(Streams, ReadAtAnyPlace) {
  write("first\nsecond line\nlast");
  open();
  char buffer[32] = {};
  EXPECT_EQ(gkf_fseeko(stream, 6, 0), 0);
  EXPECT_EQ(gkf_fread(buffer, 2, 3, stream), 3U);
  EXPECT_STREQ(buffer, "second");
  EXPECT_EQ(gkf_fread(buffer, 1, 1, stream), 1U);
  EXPECT_EQ(buffer[0], ' ') << "after the last read";
  EXPECT_FALSE(at_end());
  EXPECT_EQ(gkf_fseeko(stream, 19, 0), 0);
  EXPECT_EQ(gkf_fread(buffer, 2, 4, stream), 1U) << "three bytes are one whole item";
  EXPECT_TRUE(at_end());
  EXPECT_EQ(gkf_fseeko(stream, 0, 0), 0);
  EXPECT_FALSE(at_end()) << "a seek clears the mark";
  EXPECT_EQ(read_at(18, 4), "last");
  EXPECT_FALSE(at_end()) << "only a read that comes short finds the end";
  EXPECT_EQ(read(1), "");
  EXPECT_TRUE(at_end());
}

TEST_F(Streams, RefuseWhatTheyCannotDo) {
  write("some bytes");
  EXPECT_EQ(gkf_fopen(path.c_str(), "w"), nullptr);
  EXPECT_EQ(gkf_fopen(scratch.path().c_str(), "r"), nullptr);
  const std::string fifo = scratch / "fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(gkf_fopen(fifo.c_str(), "r"), nullptr);
  open();
  EXPECT_NE(gkf_fseeko(stream, -1, 0), 0);
  EXPECT_NE(gkf_fseeko(stream, 0, 1), 0);
  EXPECT_EQ(read_at(INT64_MAX, 1), "");
  char byte = 0;
  EXPECT_EQ(gkf_fread(&byte, SIZE_MAX, 2, stream), 0U);
  EXPECT_EQ(gkf_fread(&byte, 0, 1, stream), 0U);
}

TEST_F(Streams, AnswerNullHandles) {
  char byte = 0;
  EXPECT_NE(gkf_fseeko(nullptr, 0, 0), 0);
  EXPECT_EQ(gkf_fread(&byte, 1, 1, nullptr), 0U);
  EXPECT_EQ(gkf_feof(nullptr), 0);
  EXPECT_EQ(gkf_StreamBytesRead(nullptr), 0);
  EXPECT_NE(gkf_fclose(nullptr), 0);
}

// The model: a text and a place in it.
TEST_F(Streams, GiveWhatTheFileHoldsWithEveryCacheSize) {
  const std::string file = content(1000003);
  write(file);
  for (const double megabytes : {-1.0, 0.0, 0.01, page_megabytes, 3 * page_megabytes, 64.0, 1e9}) {
    SCOPED_TRACE(megabytes);
    open(megabytes);
    std::mt19937 random(7);
    std::vector<char> buffer(std::size_t{3} * 6000);
    std::size_t place = 0;
    for (int i = 0; i < 20000; ++i) {
      if (random() % 4 != 0) {
        // Now and then close to the end and past it.
        place = random() % 8 == 0 ? file.size() - 500 + random() % 1000 : random() % file.size();
        ASSERT_EQ(gkf_fseeko(stream, static_cast<std::int64_t>(place), 0), 0);
        ASSERT_FALSE(at_end());
      }
      const std::size_t size = 1 + random() % 3;
      const std::size_t count = random() % (random() % 16 == 0 ? 6000 : 200);
      const std::size_t there = place < file.size() ? file.size() - place : 0;
      const std::size_t bytes = std::min(size * count, there);
      ASSERT_EQ(gkf_fread(buffer.data(), size, count, stream), bytes / size) << place;
      ASSERT_EQ(at_end(), bytes < size * count) << place;
      ASSERT_TRUE(
          std::equal(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(bytes),
                     file.begin() + static_cast<std::ptrdiff_t>(std::min(place, file.size()))))
          << place;
      place += bytes;
    }
  }
}

// Blocks of 64 x 64 samples of 4 bytes, the samples of a line after 8 bytes of head.
class Sweeps : public Streams {
 protected:
  static constexpr std::int64_t lines = 640;
  static constexpr std::int64_t samples = 3000;
  static constexpr std::int64_t record = 4 * (samples + 2);

  void SetUp() override { write(std::string(lines * record, 'x')); }
  void read_block(std::int64_t row, std::int64_t column) {
    for (std::int64_t line = 0; line < 64; ++line) {
      const std::int64_t offset = (row * 64 + line) * record + 8 + column * 256;
      ASSERT_EQ(read_at(offset, 256).size(),
                row * 64 + line == lines - 1 && column == samples / 64 ? 4 * samples % 256U : 256U);
    }
  }
  double times_the_file() const {
    return static_cast<double>(gkf_StreamBytesRead(stream)) / (lines * record);
  }
};

TEST_F(Sweeps, ReadEachByteOfTheFileOnce) {
  open();
  for (std::int64_t row = 0; row < lines / 64; ++row) {
    for (std::int64_t column = 0; column <= samples / 64; ++column) read_block(row, column);
  }
  EXPECT_LE(times_the_file(), 1.05);
  EXPECT_GE(times_the_file(), 0.99);
}

// As a host does that shows magnitude and phase.
TEST_F(Sweeps, ThatReadEachBlockTwiceReadTheFileTwiceAtMost) {
  open();
  for (std::int64_t row = 0; row < lines / 64; ++row) {
    for (std::int64_t column = 0; column <= samples / 64; ++column) {
      read_block(row, column);
      read_block(row, column);
    }
  }
  EXPECT_LE(times_the_file(), 2.1);
}

TEST_F(Sweeps, WithoutACacheReadWhatTheyDeliver) {
  open(0);
  read_block(0, 0);
  read_block(0, 1);
  EXPECT_EQ(gkf_StreamBytesRead(stream), 2 * 64 * 256);
}

TEST_F(Streams, ScatteredReadsReadAtMostThriceWhatTheyDeliverAndTheMemory) {
  write("");
  fs::resize_file(path, 1U << 30U);
  open(2);
  std::mt19937 random(3);
  constexpr int reads = 20000;
  for (int i = 0; i < reads; ++i) ASSERT_EQ(read_at(random() % 1000000000, 256).size(), 256U);
  EXPECT_LE(gkf_StreamBytesRead(stream), 3 * 256 * reads + 2 * 1024 * 1024);
}

TEST_F(Streams, LongReadsReadWhatTheyDeliver) {
  write(content(100000));
  open();
  EXPECT_EQ(read_at(5, 50000), content(100000).substr(5, 50000));
  EXPECT_EQ(gkf_StreamBytesRead(stream), 50000);
}

TEST_F(Streams, AFileThatShrankEndsEarlierAlsoWhereBytesAreHeld) {
  const std::string file = content(300000);
  write(file);
  open();
  for (std::int64_t offset = 0; offset < 300000; offset += 1000) read_at(offset, 1000);
  fs::resize_file(path, 150000);
  EXPECT_EQ(read_at(149500, 1000), file.substr(149500, 500));
  EXPECT_TRUE(at_end());
  EXPECT_EQ(read_at(200000, 1000), "");
  EXPECT_TRUE(at_end());
  fs::resize_file(path, 5);
  EXPECT_EQ(read_at(0, 10), file.substr(0, 5));
  EXPECT_TRUE(at_end());
}

TEST_F(Streams, AFileThatGrewIsReadOn) {
  const std::string file = content(200000);
  write(file.substr(0, 100000));
  open();
  EXPECT_EQ(read_at(99900, 1000).size(), 100U);
  EXPECT_TRUE(at_end());
  write(file.substr(100000), std::ios::app);
  EXPECT_EQ(read(1000), file.substr(100000, 1000)) << "without a seek";
  EXPECT_FALSE(at_end());
  EXPECT_EQ(read_at(99000, 2000), file.substr(99000, 2000));
}

TEST_F(Streams, AFileThatShrankAndGrewAgainGivesItsNewBytes) {
  write(content(200000));
  open();
  EXPECT_EQ(read_at(120000, 1000), content(200000).substr(120000, 1000));
  fs::resize_file(path, 100000);
  EXPECT_EQ(read_at(110000, 10), "");
  fs::resize_file(path, 200000);
  EXPECT_EQ(read_at(120000, 1000), std::string(1000, '\0'));
}

TEST_F(Streams, AFileWrittenOverIsReadAnew) {
  const auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(30)); };
  write(content(100000, 1));
  pause();  // so that the file's times differ
  open();
  EXPECT_EQ(read_at(1000, 1000), content(100000, 1).substr(1000, 1000));
  write(content(100000, 2), std::ios::in | std::ios::out);
  pause();
  EXPECT_EQ(read_at(1000, 1000), content(100000, 2).substr(1000, 1000));
}

TEST_F(Streams, AFileReplacedOrRemovedStaysTheOneThatWasOpened) {
  write(content(100000, 1));
  open();
  EXPECT_EQ(read_at(0, 100), content(100000, 1).substr(0, 100));
  fs::rename(path, path + ".old");
  write(content(100000, 2));
  EXPECT_EQ(read_at(50000, 100), content(100000, 1).substr(50000, 100));
  fs::remove(path + ".old");
  EXPECT_EQ(read_at(70000, 100), content(100000, 1).substr(70000, 100));
}

TEST_F(Streams, AReadErrorIsNoEndOfFile) {
  write(content(100000));
  const int next = ::dup(0);
  ::close(next);
  open();
  EXPECT_EQ(read_at(500, 10).size(), 10U);
  ASSERT_EQ(::close(next), 0) << "the stream's own descriptor, closed behind its back";
  EXPECT_EQ(read_at(0, 10), "");
  EXPECT_FALSE(at_end());
  EXPECT_EQ(read_at(0, 10000), "");
  EXPECT_FALSE(at_end());
  EXPECT_NE(gkf_fclose(std::exchange(stream, nullptr)), 0);
}

TEST_F(Streams, TwoOnOneFileDoNotDisturbEachOther) {
  const std::string file = content(500000);
  write(file);
  open(3 * page_megabytes);
  gkf_Stream* other = gkf_fopen(path.c_str(), "r");
  std::thread thread([&] {
    char byte = 0;
    for (std::int64_t i = 0; i < 300000; i += 7) {
      gkf_fseeko(other, 499999 - i, 0);
      ASSERT_EQ(gkf_fread(&byte, 1, 1, other), 1U);
      ASSERT_EQ(byte, file[static_cast<std::size_t>(499999 - i)]);
    }
  });
  for (std::int64_t i = 0; i < 300000; i += 7) {
    ASSERT_EQ(read_at(i, 1), file.substr(static_cast<std::size_t>(i), 1));
  }
  thread.join();
  EXPECT_EQ(gkf_fclose(other), 0);
}

}  // namespace
