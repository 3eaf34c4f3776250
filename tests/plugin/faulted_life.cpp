#include "plugin/faulted_life.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "gridkit/memory.h"
#include "handlepool/handlepool.h"
#include "record/exports.h"
#include "support/counted_new.h"
#include "support/fake_document.h"
#include "support/fake_toolkit.h"

namespace {

constexpr int size = 40;  // lines and samples of each image
constexpr int block = 8;  // of the layers
// The second image of a complex product ends within its last row of blocks: one item after the
// start of the sixth line of the block that is read.
constexpr int images = 2;
const std::string path = "a.xml";

int live_documents = 0;

struct CountedDocument : FakeDocument {
  CountedDocument() { ++live_documents; }
  ~CountedDocument() override { --live_documents; }
};

std::string text_of(char* text) {
  std::string copy = text == nullptr ? "(null)" : text;
  gkm_HeapFree(text);
  return copy;
}

std::string texts_of(char** texts, int32_t count) {
  if (texts == nullptr) return "none";
  std::string joined;
  for (int32_t i = 0; i < count; ++i) joined += (i > 0 ? " " : "") + text_of(texts[i]);
  gkm_HeapFree(texts);
  return joined;
}

std::string list_outcome(int32_t result, char** texts, int32_t count) {
  return result == 0 ? texts_of(texts, count) : std::to_string(result);
}

class Life {
 public:
  Life(std::string variant, std::string watched)
      : variant_(std::move(variant)), watched_(std::move(watched)) {}

  void live() {
    prepare();
    describe();
    step("identify", [this] { return open(nullptr).second; });
    step("open", [this] { return keep(open("r")); });
    if (file_ == nullptr) return;
    step("open again", [this] { return open_again(); });
    step("names", [this] {
      int32_t count = 0;
      char** names = nullptr;
      const int32_t result = tsxFileLayerNamesGet(file_, &count, &names);
      return list_outcome(result, names, count);
    });
    step("data names", [this] {
      int32_t count = 0;
      char** names = nullptr;
      const int32_t result = tsxFileRasterFormatsNonStandardDataNamesGet(file_, &count, &names);
      return list_outcome(result, names, count);
    });
    const bool is_modelled = variant_ == "SSC" || variant_ == "MGD";
    if (is_modelled) step("model", [this] { return data(":RADAR_Generic_v2.2"); });
    step("factor", [this] { return data(":TSX_Beta0"); });
    layer("first", "X_HH_MAGNITUDE_1", 1);
    layer("second", variant_ == "SSC" ? "X_VV_PHASE_4" : "X_VV_MAGNITUDE_2", 4);
    step("close", [this] { return std::to_string(tsxFileClose(file_)); });
  }

  std::vector<LifeStep> steps;

 private:
  void prepare() {
    const bool is_complex = variant_ == "SSC";
    toolkit().make_document = [this, is_complex] {
      auto* document = new CountedDocument;
      document->variant = variant_;
      document->format = is_complex ? "COSAR" : "GEOTIFF";
      document->layers = images;
      document->rows = document->columns = size;
      return document;
    };
    toolkit().files[path] = "1\n2\nLevel 1B Product\nTSX-1\n5\n6\n3.4\n";
    const std::string image(4 * (size + 2) * (size + 4), 'x');
    toolkit().files["IMAGEDATA/image0"] = image;
    toolkit().files["IMAGEDATA/image1"] = image.substr(0, image.size() - 3 * 4 * (size + 2) + 42);
    toolkit().pixels = {1.0};
    toolkit().preferences["import.default_block_size"] = block;
    toolkit().projection_mark = 1;
  }

  void step(const std::string& name, const std::function<std::string()>& action) {
    std::string outcome = action();
    const long calls =
        watched_ == record_allocation ? counted_new().calls : long{toolkit().calls[watched_]};
    steps.push_back({name, std::move(outcome), static_cast<int>(calls)});
  }

  void describe() {
    step("description", [] {
      char* text = nullptr;
      const int32_t result = tsxInstanceDescriptionGet(&text);
      const std::string told = text_of(text);
      return result == 0 ? told.substr(0, 10) : std::to_string(result);
    });
    step("titles", [] {
      int32_t count = -1;
      char** texts = nullptr;
      const int32_t result = tsxInstanceTitleListGet(&count, &texts);
      return list_outcome(result, texts, count);
    });
    step("templates", [] {
      char** texts = nullptr;
      unsigned char* flags = nullptr;
      const int32_t result = tsxInstanceTemplateListGet(&texts, &flags);
      gkm_HeapFree(flags);
      return list_outcome(result, texts, 1);
    });
    const std::pair<const char*, int32_t (*)(char***)> singles[] = {
        {"extensions", &tsxInstanceExtListGet}, {"short names", &tsxInstanceShortNameListGet}};
    for (const auto& [name, getter] : singles) {
      step(name, [getter = getter] {
        char** texts = nullptr;
        const int32_t result = getter(&texts);
        return list_outcome(result, texts, 1);
      });
    }
    const std::pair<const char*, int32_t (*)(int32_t*, char***)> counted[] = {
        {"pixel types", &tsxInstancePixelTypesGet}, {"layer types", &tsxInstanceLayerTypesGet}};
    for (const auto& [name, getter] : counted) {
      step(name, [getter = getter] {
        int32_t count = -1;
        char** texts = nullptr;
        const int32_t result = getter(&count, &texts);
        return list_outcome(result, texts, count);
      });
    }
    step("supported", [] {
      return std::to_string(tsxInstanceMapProjectionIsSupported(
          nullptr, "UTM", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    });
  }

  // Opens, and tells what came of it.
  std::pair<TsxFile*, std::string> open(const char* mode) {
    int32_t title = -2;
    counted_new().counts = [](const void*, bool may_throw) { return !may_throw; };
    TsxFile* opened = tsxFileTitleIdentifyAndOpen(path.c_str(), &title, mode);
    counted_new().counts = nullptr;
    return {opened, "title " + std::to_string(title)};
  }

  // Asked outside the sweep: the question is not counted and does not fail.
  static bool is_registered(TsxFile* file) {
    const auto fail_at = std::exchange(toolkit().fail_at, {});
    const bool found = pool_FindFileHandleIfOpen(path.c_str(), 0) == file;
    toolkit().fail_at = fail_at;
    --toolkit().calls["pool_FindFileHandleIfOpen"];
    return found;
  }

  std::string keep(const std::pair<TsxFile*, std::string>& opened) {
    const auto& [file, title] = opened;
    if (file == nullptr) return "none, " + title;
    if (!is_registered(file)) return "unfinished, " + title;
    file_ = file;
    return "record, " + title;
  }

  std::string open_again() {
    const auto [file, title] = open("r");
    if (file == nullptr) return "none, " + title;
    if (file == file_) return "the same, " + title;
    tsxFileClose(file);
    return "another, " + title;
  }

  std::string data(const char* name) {
    void* bytes = nullptr;
    int32_t bytes_long = 0;
    char* dictionary = nullptr;
    char* type = nullptr;
    const int32_t result = tsxFileDataRead(file_, name, &bytes, &bytes_long, &dictionary, &type);
    const std::string told = std::to_string(result) + (bytes != nullptr ? " data" : "") +
                             (dictionary != nullptr ? " dictionary" : "") +
                             (type != nullptr ? " type" : "");
    for (void* given : {bytes, static_cast<void*>(dictionary), static_cast<void*>(type)}) {
      gkm_HeapFree(given);
    }
    return told;
  }

  void layer(const std::string& which, const char* name, int32_t row) {
    TsxLayer* opened = nullptr;
    step(which + " open", [&] {
      int32_t out[6];
      tsxLayerOpen(file_, name, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &opened);
      return opened != nullptr ? "layer" : "none";
    });
    if (opened == nullptr) return;
    step(which + " read", [&] {
      constexpr std::uint16_t untouched = 777;
      std::vector<std::uint16_t> pixels(std::size_t{block} * block, untouched);
      void* target = pixels.data();
      const int32_t result = tsxLayerRasterRead(opened, row, 1, &target);
      const bool first = pixels.front() != untouched;
      const bool last = pixels.back() != untouched;
      return std::to_string(result) + (target == nullptr ? " no data" : "") +
             (first && last ? " pixels" : "") + (first && !last ? " some pixels" : "");
    });
    step(which + " map", [&] {
      char* projection = nullptr;
      char* units = nullptr;
      double place[4];
      const int32_t result = tsxLayerMapInfoRead(opened, &projection, &place[0], &place[1],
                                                 &place[2], &place[3], &units);
      const std::string told = text_of(projection) + ' ' + text_of(units);
      return std::to_string(result) + ' ' + told;
    });
    step(which + " projection", [&] {
      char* projection = nullptr;
      MifValue v[8];
      const int32_t result = tsxLayerMapProjectionRead(opened, &projection, &v[0], &v[1], &v[2],
                                                       &v[3], &v[4], &v[5], &v[6], &v[7]);
      std::string told = std::to_string(result) + ' ' + text_of(projection);
      for (MifValue value : v)
        told += value == nullptr ? "" : ' ' + text_of(static_cast<char*>(value));
      return told;
    });
    step(which + " close", [&] { return std::to_string(tsxLayerClose(opened)); });
  }

  std::string variant_;
  std::string watched_;
  TsxFile* file_ = nullptr;
};

}  // namespace

std::vector<LifeStep> live(const std::string& variant, const std::string& watched) {
  live_documents = 0;
  Life life(variant, watched);
  life.live();
  return life.steps;
}

std::map<std::string, int> left_allocated() {
  auto left = outstanding();
  if (live_documents > 0) left["document"] = live_documents;
  if (counted_new().live > 0) left["record"] = static_cast<int>(counted_new().live);
  return left;
}

void fail_record_allocation(int call) {
  counted_new().calls = 0;
  counted_new().live = 0;
  counted_new().fail_at = call;
}
