// Thousands of lives through the plug-in as it is shipped: after a while nothing grows but what
// docs/decisions.md names, and that by as much as is derived below, to the block and to the byte.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <malloc.h>
#include <unistd.h>

#include "gridkit/plugin.h"
#include "gridkit/product.h"
#include "gridkit/string_list.h"
#include "tests/support/heap_use.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

namespace fs = std::filesystem;
using simulate::Variant;

constexpr int lives = TSX_LIVES;
constexpr int blocks_a_life = 100;
constexpr int rare = 10;  // every so many lives, data and maps are read as well

long open_handles() {
  long count = 0;
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) count += entry.exists() ? 1 : 0;
  return count;
}

long resident_bytes() {
  long all = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident * ::sysconf(_SC_PAGESIZE);
}

// The allocator's own word.
long allocated_bytes() {
  const struct mallinfo2 told = ::mallinfo2();
  return static_cast<long>(told.uordblks + told.hblkhd);
}

std::size_t bytes_of(const std::string& text) {
  return text.size() + 1;
}

// What the plug-in's exports were called for since it was loaded, and what they have lost by that.
class Losses {
 public:
  // An export that raises a run counter prints a text, "\n NAME: COUNT \n", and keeps it.
  void open_or_identify() { print("s_tsxFileTitleIdentifyAndOpenCount", opens_); }
  void close() { print("s_tsxFileCloseCount", closes_); }
  void layer_open() { print("s_tsxLayerOpenCount", layer_opens_); }
  void layer_close() { print("s_tsxLayerCloseCount", layer_closes_); }

  // An open keeps its copy of the path and, of a product on a map, the name of the projection.
  void record(const std::string& path, const std::string& projection) {
    use_.add(bytes_of(path));
    if (!projection.empty()) use_.add(bytes_of(projection));
  }

  // The open of a detected image keeps the list of its one layer: the list itself, room for one
  // text, and the text "1:PATH".
  void detected_image(const std::string& path) {
    use_.add(sizeof(gks_StringList));
    use_.add(sizeof(char*));
    use_.add(bytes_of("1:" + path));
  }

  const HeapUse& use() const { return use_; }

 private:
  void print(const char* name, int& count) {
    char text[128];
    const int length = std::snprintf(text, sizeof text, "\n %s: %d \n", name, ++count);
    use_.add(static_cast<std::size_t>(length) + 1);
  }

  HeapUse use_;
  int opens_ = 0;
  int closes_ = 0;
  int layer_opens_ = 0;
  int layer_closes_ = 0;
};

// A simulated product and what is known of it.
struct Sample {
  Variant variant;
  std::string path;
  std::string projection;  // in its annotation; empty without a map
  std::string image;       // path of its one image, as the plug-in puts it together
  std::vector<std::vector<std::uint16_t>> blocks;  // of a first life, by order of reading

  bool is_complex() const { return variant == Variant::ssc; }
};

// The text of the first element of a name after the first mention of `where`.
std::string element(const std::string& document, const std::string& where,
                    const std::string& name) {
  const auto at = document.find('<' + name + '>', document.find('<' + where));
  if (at == std::string::npos) return {};
  const auto from = at + name.size() + 2;
  return document.substr(from, document.find('<', from) - from);
}

class LongLife : public testing::Test {
 protected:
  void SetUp() override { plugin = gridkit::Plugin::load(TSX_PLUGIN); }

  Sample make(Variant variant) const {
    simulate::Options options;
    options.variant = variant;
    options.lines = options.samples = 150;
    options.profile = simulate::Profile::minimal;
    options.targets = 1;
    const std::string path = simulate::write_product_folder(options, scratch.path());
    std::ostringstream document;
    document << std::ifstream(path).rdbuf();
    const bool is_on_map = variant == Variant::gec || variant == Variant::eec;
    const std::string projection =
        is_on_map ? element(document.str(), "productVariantInfo", "mapProjection") : "";
    EXPECT_EQ(is_on_map, !projection.empty());
    const std::string image = fs::path(path).parent_path().string() + '/' +
                              element(document.str(), "imageData", "path") + '/' +
                              element(document.str(), "imageData", "filename");
    EXPECT_TRUE(fs::is_regular_file(image)) << image;
    return {variant, path, projection, image, {}};
  }

  // A block that the plug-in has data for: of a complex image the last row of blocks has none.
  static std::vector<std::uint16_t> block(const gridkit::Layer& layer, int number) {
    std::vector<std::uint16_t> pixels;
    EXPECT_TRUE(layer.read_block(number % 2, number / 2 % 3, pixels));
    return pixels;
  }

  // Recognised, opened, listed, read block by block and closed; the losses are counted beside.
  void live(Sample& sample, bool reads_data) {
    EXPECT_TRUE(plugin->identify(sample.path).has_value());
    losses.open_or_identify();
    const gridkit::Product product = plugin->open(sample.path);
    losses.open_or_identify();
    losses.record(sample.path, sample.projection);
    if (!sample.is_complex()) losses.detected_image(sample.image);

    const std::vector<std::string> names = product.layer_names();
    ASSERT_EQ(names.size(), sample.is_complex() ? 2U : 1U);
    const bool is_first = sample.blocks.empty();
    const int blocks_a_layer = blocks_a_life / static_cast<int>(names.size());
    std::size_t place = 0;
    for (const std::string& name : names) {
      const gridkit::Layer layer = product.open_layer(name);
      losses.layer_open();
      for (int i = 0; i < blocks_a_layer; ++i, ++place) {
        std::vector<std::uint16_t> pixels = block(layer, i);
        if (is_first) {
          sample.blocks.push_back(std::move(pixels));
        } else {
          ASSERT_EQ(pixels, sample.blocks.at(place));
        }
      }
      blocks_read += blocks_a_layer;
      if (reads_data) {
        EXPECT_EQ(layer.map_info().has_value(), !sample.projection.empty());
        EXPECT_EQ(layer.map_projection().has_value(), !sample.projection.empty());
      }
      losses.layer_close();
    }
    if (reads_data) {
      for (const std::string& name : product.data_names()) {
        EXPECT_TRUE(product.read_data(name).has_value());
      }
    }
    losses.close();
  }

  const ScratchFolder scratch;
  std::shared_ptr<gridkit::Plugin> plugin;
  Losses losses;
  long blocks_read = 0;
};

TEST_F(LongLife, LosesWhatIsDocumentedAndNoByteMore) {
  Sample samples[] = {make(Variant::ssc), make(Variant::mgd), make(Variant::gec),
                      make(Variant::eec)};
  // Libraries fill their own stores first.
  for (Sample& sample : samples) {
    for (int i = 0; i < 3; ++i) live(sample, true);
  }
  blocks_read = 0;
  const auto started = std::chrono::steady_clock::now();
  const long handles_before = open_handles();
  const long allocated_before = allocated_bytes();
  const long resident_before = resident_bytes();
  const HeapUse documented_before = losses.use();
  const HeapUse before = heap_in_use();

  for (int i = 0; i < lives && !HasFatalFailure(); ++i) {
    live(samples[i % std::size(samples)], i / static_cast<int>(std::size(samples)) % rare == 0);
  }

  const HeapUse grown = heap_in_use() - before;
  const HeapUse documented = losses.use() - documented_before;
  const long allocated = allocated_bytes() - allocated_before;
  const long resident = resident_bytes() - resident_before;
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - started;
  std::printf(
      "%d opens and closes, %ld block reads in %.1f s\n"
      "  grown on the heap:  %ld blocks, %ld bytes (%.1f bytes a life)\n"
      "  documented losses:  %ld blocks, %ld bytes\n"
      "  the allocator says: %ld bytes more in use; resident %ld bytes more\n"
      "  file handles:       %ld more\n",
      lives, blocks_read, took.count(), grown.blocks, grown.bytes,
      static_cast<double>(grown.bytes) / lives, documented.blocks, documented.bytes, allocated,
      resident, open_handles() - handles_before);

  EXPECT_EQ(blocks_read, static_cast<long>(lives) * blocks_a_life);
  EXPECT_EQ(grown, documented);
  EXPECT_EQ(open_handles(), handles_before);
#ifndef TSX_ADDRESS_SANITIZER
  // Beside the bytes a block costs 16 of the count's own head, 8 of the allocator's, and up to 15
  // for its size is rounded up; what waits in the allocator's stores counts as in use.
  constexpr long stores = 1 << 20;
  const long most = documented.bytes + (16 + 8 + 15) * documented.blocks + stores;
  EXPECT_LE(allocated, most);
  EXPECT_LE(resident, most + 8 * stores);
#endif
}

TEST_F(LongLife, EachFurtherOpenOfAnOpenProductKeepsOneHandle) {
  constexpr int further = 100;
  for (const Variant variant : {Variant::ssc, Variant::gec}) {
    const Sample sample = make(variant);
    const gridkit::Product first = plugin->open(sample.path);
    { const gridkit::Product second = plugin->open(sample.path); }
    const long handles_before = open_handles();
    const HeapUse before = heap_in_use();
    for (int i = 0; i < further; ++i) {
      const gridkit::Product again = plugin->open(sample.path);
      EXPECT_EQ(again.path(), sample.path);
    }
    EXPECT_EQ(open_handles() - handles_before, further);
    // The handle, the C library's stream in it and the text of the run counter.
    EXPECT_EQ((heap_in_use() - before).blocks, 3 * further);
  }
}

TEST_F(LongLife, AnIdentificationKeepsTheTextOfItsRunCounterAlone) {
  constexpr int times = 1000;
  const Sample sample = make(Variant::ssc);
  const fs::path foreign = scratch / "foreign.xml";
  std::ofstream(foreign) << "one\ntwo\nthree\nfour\n";
  EXPECT_TRUE(plugin->identify(sample.path).has_value());
  const long handles_before = open_handles();
  const HeapUse before = heap_in_use();
  for (int i = 0; i < times; ++i) {
    EXPECT_TRUE(plugin->identify(sample.path).has_value());
    EXPECT_FALSE(plugin->identify(foreign.string()).has_value());
  }
  EXPECT_EQ((heap_in_use() - before).blocks, times);
  EXPECT_EQ(open_handles(), handles_before);
}

// Through pointers that the compiler cannot see through, or it leaves pairs of calls out.
void* (*volatile take)(std::size_t) = std::malloc;
void* (*volatile take_cleared)(std::size_t, std::size_t) = std::calloc;
void* (*volatile take_again)(void*, std::size_t) = std::realloc;
void* (*volatile take_aligned)(std::size_t, std::size_t) = std::aligned_alloc;

TEST(HeapUseCount, SeesEveryWayToABlock) {
  const HeapUse before = heap_in_use();
  void* a = take(100);
  void* b = take_cleared(3, 7);
  a = take_again(a, 5000);
  void* c = take_aligned(64, 128);
  void* d = ::operator new(1000);
  const HeapUse between = heap_in_use();
  const bool is_aligned = reinterpret_cast<std::uintptr_t>(c) % 64 == 0;
  std::free(a);
  std::free(b);
  std::free(c);
  ::operator delete(d);
  const HeapUse after = heap_in_use();
  EXPECT_TRUE(is_aligned);
  EXPECT_EQ(between - before, (HeapUse{4, 5000 + 3 * 7 + 128 + 1000}));
  EXPECT_EQ(after, before);
}

}  // namespace
