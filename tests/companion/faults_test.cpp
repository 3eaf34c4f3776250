// Files that lie, end early, cannot be read or change while they are read. The companion is the
// shipped one; the toolkit's positioned read is this program's own, and fails when it is told to.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <filesystem>
#include <thread>

#include "companion/sample_products.h"
#include "gridkit/report.h"
#include "gridkit/shared_file.h"

namespace {

// Reads that are still to succeed; negative: all.
std::atomic<int>& reads_left() {
  static std::atomic<int> left = -1;
  return left;
}

}  // namespace

// In front of the toolkit's.
GRIDKIT_API int64_t gkf_SharedRead(const gkf_SharedFile* file, void* buffer, int64_t bytes,
                                   int64_t offset, gke_Report** err) {
  static const auto real =
      reinterpret_cast<decltype(&gkf_SharedRead)>(::dlsym(RTLD_NEXT, "gkf_SharedRead"));
  if (reads_left() == 0) {
    *err = gke_CreateErrorReport("gkf_SharedRead", 1, gke_SeverityError, *err, "the disk is broken",
                                 0);
    return -1;
  }
  if (reads_left() > 0) --reads_left();
  return real(file, buffer, bytes, offset, err);
}

namespace {

namespace fs = std::filesystem;
using gridkit::SampleError;
using gridkit::SampleForm;
using simulate::Variant;

class Faults : public testing::Test {
 protected:
  ~Faults() override { reads_left() = -1; }

  SampleProducts products;
};

constexpr std::uint32_t untouched = 0x12345678;

// What a read gave of a whole complex image, and its error.
struct Read {
  std::vector<std::uint32_t> pairs;
  std::string message;
  gkc_ErrorCode code = gkc_NoError;
  std::int64_t image_line = -1;
  gridkit::Delivered delivered;
};

Read read_whole(const gridkit::Samples& samples, std::size_t number = 0) {
  const auto& image = samples.images()[number];
  Read read;
  read.pairs.assign(static_cast<std::size_t>(image.lines * image.samples), untouched);
  try {
    samples.read(number, {0, 0, image.lines, image.samples}, {}, {read.pairs.data()});
    read.delivered = {image.lines, 0};
  } catch (const SampleError& error) {
    read.message = error.what();
    read.code = error.code();
    read.image_line = error.image_line();
    read.delivered = error.delivered();
  }
  return read;
}

// That samples came as far as told, and nothing after them was touched.
void expect_delivered(const Read& read, std::int64_t samples_a_line) {
  const std::int64_t came = read.delivered.lines * samples_a_line + read.delivered.samples;
  for (std::int64_t k = 0; k < std::ssize(read.pairs); ++k) {
    std::uint32_t expected = untouched;
    if (k < came) {
      const PlainSample plain = plain_sample(0, k / samples_a_line, k % samples_a_line);
      const std::uint16_t halves[] = {plain.i, plain.q};
      std::memcpy(&expected, halves, sizeof expected);
    }
    ASSERT_EQ(read.pairs[static_cast<std::size_t>(k)], expected) << k << " of " << came;
  }
}

// At every length of a file of 10 lines of 7 samples: 4 records of annotation, each of 36 bytes,
// then the lines, of which each has 8 bytes ahead of its samples.
TEST_F(Faults, FileThatEndsEarlyGivesAllSamplesBeforeItsEnd) {
  const std::string annotation = products.with_bursts({{10, 7}});
  const fs::path image = SampleProducts::image_of(annotation);
  const auto samples = products.open(annotation);
  for (std::int64_t bytes = 36 * 14 - 1; bytes >= 36; --bytes) {
    fs::resize_file(image, static_cast<std::uintmax_t>(bytes));
    const Read read = read_whole(samples);
    const std::int64_t line = std::max<std::int64_t>(bytes / 36 - 4, 0);
    const std::int64_t in_line = bytes - 36 * (line + 4) - 8;
    ASSERT_EQ(read.code, gkc_CutShort);
    ASSERT_EQ(read.image_line, line) << bytes;
    ASSERT_EQ(read.delivered.lines, line) << bytes;
    ASSERT_EQ(read.delivered.samples, std::max<std::int64_t>(in_line, 0) / 4) << bytes;
    ASSERT_EQ(read.message, image.string() + ": the file ends at byte " + std::to_string(bytes) +
                                ", before the end of line " + std::to_string(line) +
                                ", which has lines 0 to 9");
    expect_delivered(read, 7);
  }
}

TEST_F(Faults, FileThatEndsInALaterBurstLeavesTheOthersWhole) {
  const std::string annotation = products.with_bursts({{10, 7}, {5, 8}});
  const fs::path image = SampleProducts::image_of(annotation);
  fs::resize_file(image, fs::file_size(image) - 41);
  const auto samples = products.open(annotation);
  EXPECT_EQ(read_whole(samples, 0).code, gkc_NoError);
  const Read read = read_whole(samples, 1);
  EXPECT_EQ(read.delivered.lines, 3);
  EXPECT_NE(read.message.find(", before the end of line 3 of burst 2, which has lines 0 to 4"),
            std::string::npos)
      << read.message;
}

TEST_F(Faults, ConvertedSamplesStopWhereTheFileDoes) {
  const std::string annotation = products.with_bursts({{10, 7}});
  const auto samples = products.open(annotation);
  fs::resize_file(SampleProducts::image_of(annotation), 36 * 8 + 8 + 4 * 3);
  std::vector<float> magnitudes(70, -1);
  try {
    samples.read(0, {0, 0, 10, 7}, {SampleForm::magnitude}, {magnitudes.data()});
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.delivered().lines, 4);
    EXPECT_EQ(error.delivered().samples, 3);
    EXPECT_EQ(error.path(), SampleProducts::image_of(annotation));
  }
  for (std::size_t k = 0; k < 70; ++k) ASSERT_EQ(magnitudes[k] < 0, k >= 31) << k;
}

TEST_F(Faults, EveryReadMayFail) {
  const std::string annotation = products.with_bursts({{600, 70}});
  const auto samples = products.open(annotation);
  int failures = 0;
  for (int reads = 0;; ++reads) {
    reads_left() = reads;
    const Read read = read_whole(samples);
    reads_left() = -1;
    ASSERT_NO_FATAL_FAILURE(expect_delivered(read, 70));
    if (read.code == gkc_NoError) break;
    ++failures;
    ASSERT_EQ(read.code, gkc_CannotRead);
    ASSERT_EQ(read.message, SampleProducts::image_of(annotation).string() + ": line " +
                                std::to_string(read.image_line) +
                                " cannot be read: the disk is broken");
  }
  EXPECT_GT(failures, 1);
}

TEST_F(Faults, OpeningFailsWithEveryRead) {
  const std::string annotation = products.with_bursts({{10, 7}, {5, 8}});
  for (int reads = 0; reads < 3; ++reads) {
    reads_left() = reads;
    try {
      products.open(annotation);
      ADD_FAILURE() << reads;
    } catch (const SampleError& error) {
      EXPECT_EQ(error.code(), gkc_CannotRead);
      const std::int64_t at[] = {0, 36 * 14, 36 * 14 + 40 * 9};
      EXPECT_EQ(error.what(), SampleProducts::image_of(annotation).string() +
                                  ": cannot be read at byte " + std::to_string(at[reads]) +
                                  ": the disk is broken");
    }
  }
}

// Headers that do not fit together, and what is said of them.
struct Lie {
  const char* name;
  void (*tell)(BurstHeader&);
  const char* fault;
};

TEST_F(Faults, HeadersThatLieAreRefusedInWords) {
  const Lie lies[] = {
      {"version", [](BurstHeader& h) { h.version = 3; },
       "samples of version 3; known are 1, integers of 16 bits, and 2, half-precision numbers"},
      {"no lines", [](BurstHeader& h) { h.lines = 0; }, "0 lines of 8 samples"},
      {"no samples", [](BurstHeader& h) { h.samples = 0; }, "10 lines of 0 samples"},
      {"narrow records", [](BurstHeader& h) { h.record_bytes = 36; },
       "records of 36 bytes, but 8 samples a line, which take 40"},
      {"negative samples", [](BurstHeader& h) { h.samples = 0xFFFFFFFF; },
       "records of 40 bytes, but 4294967295 samples a line, which take 17179869188"},
      {"odd records", [](BurstHeader& h) { h.record_bytes = 41; },
       "records of 41 bytes, which are no whole samples of 4"},
      {"no records", [](BurstHeader& h) { h.record_bytes = 0; },
       "records of 0 bytes, but 8 samples a line, which take 40"},
      {"overlapping bursts", [](BurstHeader& h) { h.records = 13; },
       "13 records, but 10 lines, which with their annotation take 14"},
      {"negative lines", [](BurstHeader& h) { h.lines = 0xFFFFFFFF; },
       "14 records, but 4294967295 lines, which with their annotation take 4294967299"},
      {"beyond 2^63",
       [](BurstHeader& h) {
         h.record_bytes = 0xFFFFFFFC;
         h.records = 0xFFFFFFFF;
       },
       "it would end beyond byte 2^63"}};
  const std::string annotation = products.with_bursts({{10, 8}});
  const fs::path image = SampleProducts::image_of(annotation);
  for (const Lie& lie : lies) {
    BurstHeader header = true_header({10, 8}, 1);
    lie.tell(header);
    {
      BigEndianFile file(image);
      file.header(header);
      file.zeros(40 * 14 - 36);
    }
    try {
      products.open(annotation);
      ADD_FAILURE() << lie.name;
    } catch (const SampleError& error) {
      EXPECT_EQ(error.code(), gkc_BadImage) << lie.name;
      EXPECT_EQ(error.path(), image);
      EXPECT_EQ(error.what(), image.string() + ": the header of burst 1, at byte 0: " + lie.fault);
    }
  }
}

// A burst may be told to be as long as 2^63 bytes allow; then the next lies past the file's end,
// and lines past 2^32 are asked for where they would be.
TEST_F(Faults, LinesBeyondTheFileAreToldHoweverFar) {
  const std::string annotation = products.with_bursts({{10, 8}});
  const fs::path image = SampleProducts::image_of(annotation);
  BurstHeader header = true_header({10, 8}, 1);
  header.lines = 0x7FFFFFF0;
  header.records = header.lines + 4;
  header.samples = 0x3FFFFFF0;
  header.record_bytes = 4 * (header.samples + 2);
  {
    BigEndianFile file(image);
    file.header(header);
    file.zeros(40 * 14 - 36);
  }
  const auto samples = products.open(annotation);
  std::uint32_t sample = untouched;
  try {
    samples.read(0, {0x7FFFFFEF, 0x3FFFFFEF, 1, 1}, {}, {&sample});
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.image_line(), 0x7FFFFFEF);
    EXPECT_EQ(error.what(), image.string() +
                                ": the file ends at byte 560, before the end of line 2147483631, "
                                "which has lines 0 to 2147483631");
  }
  EXPECT_EQ(sample, untouched);
}

TEST_F(Faults, FileWithoutABurstIsNoCosarFile) {
  const std::string annotation = products.with_bursts({{10, 8}});
  const fs::path image = SampleProducts::image_of(annotation);
  for (const std::uintmax_t bytes : {0, 27, 35}) {
    fs::resize_file(image, bytes);
    try {
      products.open(annotation);
      ADD_FAILURE();
    } catch (const SampleError& error) {
      EXPECT_EQ(error.what(),
                image.string() + ": is no COSAR file: \"CSAR\" does not stand at byte 28");
    }
  }
  fs::remove(image);
  try {
    products.open(annotation);
    ADD_FAILURE();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.code(), gkc_BadImage);
    EXPECT_EQ(error.what(), image.string() + ": no such file or folder");
  }
}

TEST_F(Faults, TooManyBurstsAreRefused) {
  const std::string annotation = products.with_bursts({{10, 8}});
  const fs::path image = SampleProducts::image_of(annotation);
  write_cosar(image, std::vector<BurstLayout>(10001, BurstLayout{1, 1}));
  try {
    products.open(annotation);
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.what(), image.string() + ": has more than 10000 bursts");
  }
}

TEST_F(Faults, WhatFollowsTheLastBurstIsNoImage) {
  const std::string annotation = products.with_bursts({{10, 8}});
  const fs::path image = SampleProducts::image_of(annotation);
  fs::resize_file(image, fs::file_size(image) + 1000);
  EXPECT_EQ(products.open(annotation).images().size(), 1U);
}

TEST_F(Faults, AnnotationsAtFaultAreToldWithTheirPlace) {
  const std::string annotation = products.with_bursts({{10, 8}});
  std::ifstream in(annotation);
  std::string text((std::istreambuf_iterator<char>(in)), {});
  const auto rewrite = [&](const std::string& from, const std::string& to) {
    std::string changed = text;
    changed.replace(changed.find(from), from.size(), to);
    std::ofstream(annotation) << changed;
  };
  rewrite("<numberOfRows>64<", "<numberOfRows>many<");
  try {
    products.open(annotation);
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.code(), gkc_BadDescription);
    EXPECT_EQ(error.path(), annotation);
    EXPECT_EQ(error.element(), "/level1Product/productInfo/imageDataInfo/imageRaster/numberOfRows");
    const std::size_t at = text.find("<numberOfRows>");
    EXPECT_EQ(error.text_line(),
              1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
    EXPECT_EQ(std::string(error.what()).find(annotation + ":" + std::to_string(error.text_line())),
              0U)
        << error.what();
  }
  rewrite("<numberOfLayers>1<", "<numberOfLayers>2<");
  try {
    products.open(annotation);
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.what(),
              annotation +
                  ": /level1Product/productInfo/imageDataInfo/numberOfLayers: 2 image files are "
                  "told, of which 1 are named; a product has 1 to 4 of them");
  }
  rewrite("Level 1B Product", "Level 1C Product");
  try {
    products.open(annotation);
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.code(), gkc_NotRecognised);
    EXPECT_EQ(error.what(), annotation + ": the third line does not name a Level 1B product");
  }
  rewrite("4.1", "9.9");
  try {
    products.open(annotation);
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.what(), annotation +
                                ": the seventh line tells no schema version that is known (3.4 to "
                                "4.1)");
  }
}

TEST_F(Faults, FilesOutsideTheProductAreNotOpened) {
  const std::string annotation = products.with_bursts({{10, 8}});
  std::ifstream in(annotation);
  std::string text((std::istreambuf_iterator<char>(in)), {});
  const std::string from = "<path>IMAGEDATA<";
  text.replace(text.find(from), from.size(), "<path>../IMAGEDATA<");
  std::ofstream(annotation) << text;
  try {
    products.open(annotation);
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_NE(std::string(error.what()).find("outside the product's folder"), std::string::npos)
        << error.what();
  }
}

TEST_F(Faults, DetectedImageThatIsCutGivesTheLinesBefore) {
  const std::string annotation = products.simulated(Variant::mgd, 300, 200);
  const auto whole = [&] {
    std::vector<std::uint16_t> pixels(300 * 200);
    products.open(annotation).read(0, {0, 0, 300, 200}, {}, {pixels.data()});
    return pixels;
  }();
  const fs::path image = SampleProducts::image_of(annotation);
  fs::resize_file(image, fs::file_size(image) / 2);
  std::vector<std::uint16_t> pixels(300 * 200, 55555);
  try {
    products.open(annotation).read(0, {0, 0, 300, 200}, {}, {pixels.data()});
    FAIL();
  } catch (const SampleError& error) {
    EXPECT_EQ(error.code() == gkc_CannotRead || error.code() == gkc_BadImage, true);
    const std::int64_t came = error.delivered().lines * 200;
    EXPECT_GE(error.image_line(), 0);
    EXPECT_EQ(error.delivered().lines, error.image_line());
    for (std::int64_t k = 0; k < 300 * 200; ++k) {
      const auto at = static_cast<std::size_t>(k);
      ASSERT_EQ(pixels[at], k < came ? whole[at] : 55555) << k;
    }
  }
}

// Threads on one product, while its file is cut again and again and gets its end back: every read
// ends in samples of the file or in an error with what came before.
TEST_F(Faults, FilesMayShrinkWhileThreadsRead) {
  const std::string annotation = products.with_bursts({{300, 90}});
  const fs::path image = SampleProducts::image_of(annotation);
  const fs::path copy = products.scratch / "copy";
  fs::copy(image, copy);
  const auto samples = products.open(annotation);
  std::atomic<bool> done = false;
  std::atomic<int> wrong = 0;
  {
    std::vector<std::jthread> readers;
    for (int t = 0; t < 3; ++t) {
      readers.emplace_back([&] {
        while (!done) {
          const Read read = read_whole(samples);
          const std::int64_t came = read.delivered.lines * 90 + read.delivered.samples;
          for (std::int64_t k = 0; k < 300 * 90; ++k) {
            const PlainSample plain = plain_sample(0, k / 90, k % 90);
            const std::uint16_t halves[] = {plain.i, plain.q};
            std::uint32_t expected = untouched;
            if (k < came) std::memcpy(&expected, halves, sizeof expected);
            // A file that grows again has zeros for a moment.
            const std::uint32_t found = read.pairs[static_cast<std::size_t>(k)];
            if (found != expected && (k >= came || found != 0)) ++wrong;
          }
          if (read.code != gkc_NoError && read.code != gkc_CutShort) ++wrong;
        }
      });
    }
    for (int k = 0; k < 200; ++k) {
      fs::resize_file(image, fs::file_size(copy) / static_cast<unsigned>(k % 7 + 2));
      std::ifstream from(copy, std::ios::binary);
      std::ofstream to(image, std::ios::binary | std::ios::in);
      to << from.rdbuf();
    }
    fs::remove(image);
    done = true;
  }
  EXPECT_EQ(wrong, 0);
  // The name is gone, the open file is not.
  EXPECT_EQ(read_whole(samples).code, gkc_NoError);
}

}  // namespace
