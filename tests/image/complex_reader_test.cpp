#include "image/complex_reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "record/exports.h"
#include "support/fake_toolkit.h"

namespace {

constexpr int W = 60;
constexpr int H = 200;

// A COSAR file whose sample c of line r has I = r + 1 and Q = c + 1; heads and annotation are 0x55.
std::string cosar(int width = W, int height = H) {
  const auto big_endian = [](int value) {
    return std::string{static_cast<char>(value >> 8), static_cast<char>(value)};
  };
  std::string bytes(static_cast<std::size_t>(16 * (width + 2)), 0x55);
  for (int r = 0; r < height; ++r) {
    bytes += std::string(8, 0x55);
    for (int c = 0; c < width; ++c) bytes += big_endian(r + 1) + big_endian(c + 1);
  }
  return bytes;
}

class ComplexReader : public testing::Test {
 protected:
  void SetUp() override {
    reset_toolkit();
    toolkit().files["image"] = cosar();
    file.width = W;
    file.height = H;
    file.productVariant = variant_ssc;
    file.blockWidth = file.blockHeight = 8;
    file.cosarFiles[0] = gkf_fopen("image", "r");
    pixels.assign(64, 777);
  }
  void TearDown() override {
    if (file.cosarFiles[0] != nullptr) gkf_fclose(file.cosarFiles[0]);
  }
  // Reads a block; tells whether there was data.
  bool read(int row, int column, int layer_index = 0) {
    TsxLayer layer{&file, layer_index};
    void* block = pixels.data();
    tsx_ReadLineComplex(&layer, layer_index, column * file.blockWidth, &block,
                        row * file.blockHeight, nullptr);
    return block != nullptr;
  }
  static std::uint16_t magnitude(int i, int q) {
    return static_cast<std::uint16_t>(std::sqrt(static_cast<float>(i * i + q * q)));
  }

  TsxFile file{};
  std::vector<std::uint16_t> pixels;
};

TEST_F(ComplexReader, StartsBehindTheAnnotationAndTheFirstHead) {
  ASSERT_TRUE(read(0, 0));
  EXPECT_EQ(toolkit().seeks[0], 4 * (4 * (W + 2) + 2));
  EXPECT_EQ(toolkit().seeks[1] - toolkit().seeks[0], 4 * W + 8);
  EXPECT_EQ(toolkit().seeks.size(), 8U) << "one seek a line";
  EXPECT_EQ(pixels[0], magnitude(1, 1));
  EXPECT_EQ(pixels[7], magnitude(1, 8));
  EXPECT_EQ(pixels[8], magnitude(2, 1));
  EXPECT_EQ(pixels[63], magnitude(8, 8));
}

// The figures of a wider image: with 1000 samples the first lies at byte 16040, lines 4008 apart.
TEST_F(ComplexReader, FindsTheFirstSampleOfAThousandAtItsByte) {
  toolkit().files["image"] = cosar(1000, 40);
  file.width = 1000;
  file.height = 40;
  ASSERT_TRUE(read(0, 0));
  EXPECT_EQ(toolkit().seeks[0], 16040);
  EXPECT_EQ(toolkit().seeks[1], 20048);
}

TEST_F(ComplexReader, ReadsAnyBlockAndTheSameTwice) {
  ASSERT_TRUE(read(5, 3));
  EXPECT_EQ(pixels[0], magnitude(41, 25));
  const auto first = pixels;
  ASSERT_TRUE(read(5, 3));
  EXPECT_EQ(pixels, first);
}

// Lines stand blockHeight apart in the planes, whatever the width: what makes square blocks a need.
TEST_F(ComplexReader, LinesOfABlockStandItsHeightApart) {
  file.blockWidth = 4;
  ASSERT_TRUE(read(0, 0));
  EXPECT_EQ(pixels[3], magnitude(1, 4));
  EXPECT_EQ(pixels[4], 0) << "between the lines";
  EXPECT_EQ(pixels[8], magnitude(2, 1));
  EXPECT_EQ(pixels[27], magnitude(4, 4));
  EXPECT_EQ(pixels[32], 777) << "4 x 8 pixels and no more";
}

TEST_F(ComplexReader, AnOddLayerIsThePhase) {
  ASSERT_TRUE(read(0, 0, 1));
  EXPECT_EQ(pixels[0], 8192) << "I = Q = 1";
  EXPECT_LT(pixels[8], 8192) << "I = 2, Q = 1";
}

TEST_F(ComplexReader, DoesNotClipABlockAtTheRightEdge) {
  ASSERT_TRUE(read(0, 7)) << "samples 56 to 63 of 60";
  EXPECT_EQ(pixels[3], magnitude(1, 60));
  EXPECT_EQ(pixels[4], magnitude(0x5555, 0x5555)) << "the next record's head";
  EXPECT_EQ(pixels[6], magnitude(2, 1)) << "and its first samples";
}

// Refused when 4((r + 4)(W + 2) + 2 + c) + 4W > 4HW, here (r + 4) x 62 + 62 + c > 12000: r = 188
// passes with c = 34 at most, r = 189 never.
TEST_F(ComplexReader, RefusesBlocksThatStartNearTheBottom) {
  file.blockWidth = file.blockHeight = 1;
  EXPECT_TRUE(read(188, 34));
  EXPECT_FALSE(read(188, 35));
  EXPECT_TRUE(read(188, 0));
  EXPECT_FALSE(read(189, 0));
  EXPECT_TRUE(toolkit().printed.empty());
}

TEST_F(ComplexReader, ASumBeyond32BitsCountsAsOutside) {
  // Start of line 0: 16 W + 40 = 4000000040; a line behind it, 5000000040, is 705032744 in 32 bits
  // and would pass the limit of 4 H W = 4000000000.
  file.width = 250000000;
  file.height = 4;
  file.blockWidth = file.blockHeight = 1;
  EXPECT_FALSE(read(0, 0));
  EXPECT_TRUE(toolkit().seeks.empty()) << "refused unread";
}

// The limit 4 H W and the start offset are 32-bit products. For W = H = 40000 the limit is
// 6400000000 mod 2^32 = 2105032704. Line 20000 starts at 3200960168, beyond it. Line 30000 starts
// at 4 x (30004 x 40002 + 2) = 4800880040, which is 505912744 in 32 bits, within it, and is read
// there.
TEST_F(ComplexReader, OffsetAndLimitAre32BitProducts) {
  file.width = file.height = 40000;
  file.blockWidth = file.blockHeight = 1;
  EXPECT_FALSE(read(20000, 0));
  EXPECT_TRUE(toolkit().seeks.empty());
  read(30000, 0);
  EXPECT_EQ(toolkit().seeks, std::vector<std::int64_t>{505912744});
}

// Line 65519 of W = 16384 starts at 4 x (65523 x 16386 + 2) = 4294639520; lines are 65544 bytes
// apart, so the seventh lies at 4295032784, past 2^32 = 4294967296.
TEST_F(ComplexReader, OffsetsGrowPast32BitsWithinABlock) {
  file.width = 16384;
  file.height = 65535;
  file.blockHeight = 7;
  file.blockWidth = 7;
  toolkit().endless = true;
  TsxLayer layer{&file, 0};
  void* block = pixels.data();
  tsx_ReadLineComplex(&layer, 0, 0, &block, 65519, nullptr);
  ASSERT_EQ(toolkit().seeks.size(), 7U);
  EXPECT_EQ(toolkit().seeks[0], 4294639520);
  EXPECT_EQ(toolkit().seeks[6], 4295032784);
  EXPECT_NE(block, nullptr);
  EXPECT_EQ(pixels[48], 0);
}

TEST_F(ComplexReader, DeliversNothingOfABlockThatRunsPastTheEnd) {
  toolkit().files["image"].resize(toolkit().files["image"].size() - 4 * (W + 2) * 100);
  EXPECT_TRUE(read(11, 0)) << "lines 88 to 95 are there";
  pixels.assign(64, 777);
  EXPECT_FALSE(read(12, 0)) << "lines 100 on are not";
  EXPECT_EQ(pixels[0], 777);
  EXPECT_TRUE(toolkit().printed.empty());
}

TEST_F(ComplexReader, AFailingSeekHasItsWordsAndLeavesTheBlock) {
  toolkit().fail_at["gkf_fseeko"] = 3;
  EXPECT_TRUE(read(0, 0)) << "the pointer stays";
  EXPECT_EQ(toolkit().printed,
            (std::vector<PrintedReport>{
                {"tsx_ReadLineComplex", "gkf_fseeko failed", gke_SeverityError}}));
  EXPECT_EQ(pixels[0], 777);
  EXPECT_EQ(toolkit().live_blocks, 0);
}

TEST_F(ComplexReader, AnImageThatWasNeverOpenedEndsInAFailedSeek) {
  for (const int layer : {2, 3, 7, 8, 100000, -2}) {
    toolkit().printed.clear();
    read(0, 0, layer);
    ASSERT_EQ(toolkit().printed.size(), 1U) << layer;
    EXPECT_EQ(toolkit().printed[0].message, "gkf_fseeko failed");
  }
}

// The image behind the fourth is none, whatever stands behind the streams in the record.
TEST_F(ComplexReader, ThereIsNoFifthImage) {
  file.tiffLayers[0] = reinterpret_cast<gkl_Layer*>(file.cosarFiles[0]);
  read(0, 0, 8);
  EXPECT_EQ(toolkit().messages(), std::vector<std::string>{"gkf_fseeko failed"});
}

TEST_F(ComplexReader, DropsWhatTheCallersSlotHeld) {
  gke_Report* slot = gke_CreateErrorReport("before", 0, gke_SeverityError, nullptr, "stale", 0);
  TsxLayer layer{&file, 0};
  void* block = pixels.data();
  tsx_ReadLineComplex(&layer, 0, 0, &block, 0, &slot);
  EXPECT_EQ(slot, nullptr);
  EXPECT_EQ(toolkit().live_reports, 0);
}

TEST_F(ComplexReader, GivesItsBuffersBackOnEveryWayOut) {
  EXPECT_TRUE(read(0, 0));
  EXPECT_EQ(toolkit().live_blocks, 0) << "pixels";
  EXPECT_FALSE(read(1000, 0));
  EXPECT_EQ(toolkit().live_blocks, 0) << "outside";
  toolkit().files["image"].resize(4 * (W + 2) * 50);
  EXPECT_FALSE(read(10, 0));
  EXPECT_EQ(toolkit().live_blocks, 0) << "past the end";
  toolkit().short_reads_of = 3;
  EXPECT_TRUE(read(0, 0));
  EXPECT_EQ(toolkit().live_blocks, 0) << "a short read";
}

// A short read of the third line gives 3 items at place 16: 48 elements, of which two lines of 8
// were read. The phase of what was not read is that of I = Q = 0.
TEST_F(ComplexReader, AShortReadConvertsThePhaseLikewise) {
  toolkit().short_reads_of = 3;
  toolkit().calls["gkf_fread"] = -1;  // the first two reads are whole
  EXPECT_TRUE(read(0, 0, 1));
  EXPECT_EQ(pixels[0], 8192) << "I = Q = 1";
  EXPECT_EQ(pixels[9], 8192) << "I = Q = 2";
  EXPECT_EQ(pixels[16], 0);
  EXPECT_EQ(pixels[47], 0);
  EXPECT_EQ(pixels[48], 777) << "beyond the 48";
}

TEST_F(ComplexReader, LeavesItsReportInTheCallersSlot) {
  toolkit().fail_at["gkf_fseeko"] = 1;
  TsxLayer layer{&file, 0};
  void* block = pixels.data();
  gke_Report* report = nullptr;
  tsx_ReadLineComplex(&layer, 0, 0, &block, 0, &report);
  EXPECT_NE(report, nullptr);
  EXPECT_TRUE(toolkit().printed.empty());
  gke_DeleteErrorReportEx(&report);
}

TEST_F(ComplexReader, AShortReadOnTheFirstLineCopiesNothingAndSucceeds) {
  toolkit().short_reads_of = 5;
  toolkit().calls["gkf_fread"] = 1;
  EXPECT_TRUE(read(0, 0));
  EXPECT_EQ(pixels, std::vector<std::uint16_t>(64, 777));
  EXPECT_TRUE(toolkit().printed.empty());
}

// The range test's 32-bit product makes a large image of -1 lines of 60 samples: 2^32 - 240 bytes.
// So what the file holds is read, and the file's end tells that there is no more.
TEST_F(ComplexReader, ReadsWhatTheFileHoldsWhereTheHeightIsNegative) {
  file.height = -1;
  ASSERT_TRUE(read(H / 8 - 1, 0));
  EXPECT_EQ(pixels[63], magnitude(H, 8));
  EXPECT_FALSE(read(H / 8, 0));
}

// The second line gives 5 items: width 5 and height 8 (the place in the planes) make 40 elements,
// of which the first line's 8 were read.
TEST_F(ComplexReader, AShortReadLaterConvertsItemsTimesPlace) {
  toolkit().short_reads_of = 5;
  EXPECT_TRUE(read(0, 0));
  EXPECT_EQ(pixels[7], magnitude(1, 8));
  EXPECT_EQ(pixels[8], 0) << "converted, but never read";
  EXPECT_EQ(pixels[39], 0);
  EXPECT_EQ(pixels[40], 777) << "beyond the 40";
}

TEST_F(ComplexReader, AShortReadNeverConvertsMoreThanTheBlock) {
  toolkit().short_reads_of = 15;  // 15 x 8 = 120 elements, the block has 64
  pixels.assign(65, 777);
  EXPECT_TRUE(read(0, 0));
  EXPECT_EQ(pixels[64], 777);
}

TEST_F(ComplexReader, ABlockWithoutLinesReadsNothing) {
  for (const int size : {0, -64}) {
    file.blockWidth = file.blockHeight = size;
    EXPECT_TRUE(read(0, 0));
    EXPECT_TRUE(toolkit().seeks.empty());
    EXPECT_EQ(pixels[0], 777);
  }
}

TEST_F(ComplexReader, RefusesBlocksBeyondTwoGibibytesUnallocated) {
  // 32768 x 32768 x 2 bytes are 2 GiB to the byte; a line of 2^30 samples is 4 GiB.
  struct Size {
    int width, height;
  };
  for (const Size size :
       {Size{32768, 32768}, Size{2147483647, 2147483647}, Size{1 << 30, 0}, Size{0, 2147483647}}) {
    toolkit().printed.clear();
    file.blockWidth = size.width;
    file.blockHeight = size.height;
    EXPECT_TRUE(read(0, 0)) << "the pointer stays";
    EXPECT_EQ(toolkit().printed,
              (std::vector<PrintedReport>{
                  {"tsx_ReadLineComplex", "No memory for block buffers", gke_SeverityError}}));
    EXPECT_EQ(toolkit().calls["gkm_HeapMalloc"], 0);
    EXPECT_EQ(pixels[0], 777);
  }
}

TEST_F(ComplexReader, WithoutMemoryItReportsAndLeavesTheBlock) {
  for (int call = 1; call <= 4; ++call) {
    toolkit().printed.clear();
    toolkit().fail_at["gkm_HeapMalloc"] = toolkit().calls["gkm_HeapMalloc"] + call;
    read(0, 0);
    EXPECT_EQ(toolkit().messages(), std::vector<std::string>{"No memory for block buffers"});
    EXPECT_EQ(toolkit().live_blocks, 0);
    EXPECT_EQ(pixels[0], 777);
  }
}

}  // namespace
