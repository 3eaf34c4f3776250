// Whole products from strangers: a valid annotation in which some texts are replaced, with an image
// of any bytes, through the plug-in's exports from the open to the close. The input: the variant,
// then pairs of a number that picks an element and a text that it gets, ended by an empty text,
// then the image's bytes.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/bytes.h"
#include "fuzz/expect.h"
#include "gridkit/memory.h"
#include "gridkit/report.h"
#include "handlepool/handlepool.h"
#include "record/exports.h"
#include "tests/support/scratch_folder.h"
#include "tools/simulate/product.h"

namespace {

namespace fs = std::filesystem;

struct Place {
  std::size_t begin;
  std::size_t size;
};

// A small product of each variant, and where the texts of its annotation stand.
struct Base {
  fs::path annotation;
  fs::path image;
  std::string content;
  std::vector<Place> texts;
};

Base make_base(simulate::Variant variant, const fs::path& folder) {
  simulate::Options options;
  options.variant = variant;
  options.lines = options.samples = 64;
  options.empty_images = true;
  Base base;
  base.annotation = simulate::write_product_folder(options, folder);
  base.image = fs::directory_iterator(base.annotation.parent_path() / "IMAGEDATA")->path();
  std::ifstream in(base.annotation, std::ios::binary);
  base.content.assign(std::istreambuf_iterator<char>(in), {});
  for (std::size_t end = base.content.find("</"); end != std::string::npos;
       end = base.content.find("</", end + 1)) {
    const std::size_t begin = base.content.rfind('>', end) + 1;
    if (begin < end && base.content[begin] != '\n') base.texts.push_back({begin, end - begin});
  }
  return base;
}

const Base& base_of(unsigned variant) {
  static const ScratchFolder folder;
  static const std::vector<Base> bases = {make_base(simulate::Variant::ssc, folder.path()),
                                          make_base(simulate::Variant::mgd, folder.path()),
                                          make_base(simulate::Variant::gec, folder.path()),
                                          make_base(simulate::Variant::eec, folder.path())};
  return bases[variant % bases.size()];
}

void write(const fs::path& path, std::string_view content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(content.data(), static_cast<std::streamsize>(content.size()));
}

void free_all(std::initializer_list<void*> blocks) {
  for (void* block : blocks) gkm_HeapFree(block);
}

void free_list(std::int32_t count, char** list) {
  for (std::int32_t i = 0; list != nullptr && i < count; ++i) gkm_HeapFree(list[i]);
  gkm_HeapFree(list);
}

void read_layer(TsxFile* file, const char* name) {
  TsxLayer* layer = nullptr;
  std::int32_t out[6] = {};
  tsxLayerOpen(file, name, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &layer);
  if (layer == nullptr) return;
  constexpr std::size_t block_pixels = std::size_t{64} * 64;
  std::vector<std::uint16_t> pixels(block_pixels);
  for (const std::int32_t row : {0, 1, 1000000, -1}) {
    void* block = pixels.data();
    const std::int32_t result = tsxLayerRasterRead(layer, row, 0, &block);
    expect(result == 0 || result == -1, "a read answers 0 or -1");
  }
  char* projection = nullptr;
  char* units = nullptr;
  double place[4];
  tsxLayerMapInfoRead(layer, &projection, &place[0], &place[1], &place[2], &place[3], &units);
  free_all({projection, units});
  MifValue v[8] = {};
  tsxLayerMapProjectionRead(layer, &projection, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6],
                            &v[7]);
  gkm_HeapFree(projection);
  for (MifValue value : v) gkm_HeapFree(value);
  tsxLayerClose(layer);
}

void read_data(TsxFile* file) {
  for (const char* name : {":RADAR_Generic_v2.2", ":TSX_Beta0"}) {
    void* data = nullptr;
    std::int32_t size = 0;
    char* dictionary = nullptr;
    char* type = nullptr;
    tsxFileDataRead(file, name, &data, &size, &dictionary, &type);
    free_all({data, dictionary, type});
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  gke_SetReportSink({[](const gke_Report*, void*) {}, nullptr});
  Bytes input(data, size);
  const Base& base = base_of(input.byte());
  std::string content = base.content;
  std::size_t moved = 0;
  std::size_t last = 0;
  for (int edits = 0; edits < 8 && !input.empty(); ++edits) {
    const std::size_t number = input.number() % base.texts.size();
    const std::string_view text = input.text();
    if (text.empty()) break;
    // Later places only, so that earlier replacements stay where they are.
    const std::size_t chosen = std::max(number, last);
    if (chosen >= base.texts.size()) break;
    const Place place = base.texts[chosen];
    content.replace(place.begin + moved, place.size, text);
    moved += text.size() - place.size;
    last = chosen + 1;
  }
  write(base.annotation, content);
  if (!input.empty()) write(base.image, input.rest());
  TsxFile* file = tsxFileTitleIdentifyAndOpen(base.annotation.c_str(), nullptr, "r");
  // A record that is not registered is unfinished; a host does not use it.
  if (file == nullptr || pool_FindFileHandleIfOpen(base.annotation.c_str(), 0) != file) return 0;
  std::int32_t count = 0;
  char** names = nullptr;
  if (tsxFileLayerNamesGet(file, &count, &names) == 0) {
    for (std::int32_t i = 0; i < count; ++i) read_layer(file, names[i]);
    free_list(count, names);
  }
  read_data(file);
  tsxFileClose(file);
  return 0;
}
