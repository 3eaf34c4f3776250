#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <cpl_string.h>
#include <gdal.h>

#include "gridkit/layers/gdal_support.h"
#include "gridkit/partial_file.h"
#include "gridkit/raster_writer.h"
#include "gridkit/writers/compression.h"
#include "gridkit/writers/thread_count.h"

namespace gridkit {

namespace {

struct Closer {
  void operator()(void* dataset) const {
    const GdalMessages unheard;
    GDALClose(dataset);
  }
};
using Dataset = std::unique_ptr<void, Closer>;

// The library would fill a part of all memory with blocks; 64 MiB hold the tiles of a row.
class BlockCacheLimit {
 public:
  BlockCacheLimit() : before_(GDALGetCacheMax64()) { GDALSetCacheMax64(64 << 20); }
  BlockCacheLimit(const BlockCacheLimit&) = delete;
  BlockCacheLimit& operator=(const BlockCacheLimit&) = delete;
  ~BlockCacheLimit() { GDALSetCacheMax64(before_); }

 private:
  GIntBig before_;
};

// How many threads of the library make overviews that are asked for on this thread.
class ThreadSetting {
 public:
  explicit ThreadSetting(const std::string& threads) {
    const char* const before = CPLGetThreadLocalConfigOption(key, nullptr);
    if (before != nullptr) before_ = before;
    CPLSetThreadLocalConfigOption(key, threads.c_str());
  }
  ThreadSetting(const ThreadSetting&) = delete;
  ThreadSetting& operator=(const ThreadSetting&) = delete;
  ~ThreadSetting() { CPLSetThreadLocalConfigOption(key, before_ ? before_->c_str() : nullptr); }

 private:
  static constexpr const char* key = "GDAL_NUM_THREADS";
  std::optional<std::string> before_;
};

const char* resampling(Overview overview) {
  switch (overview) {
    case Overview::nearest:
      return "NEAREST";
    case Overview::average:
      return "AVERAGE";
    case Overview::root_mean_square:
      return "RMS";
  }
  return "NEAREST";
}

int CPL_STDCALL tell_progress(double done, const char*, void* progress) {
  return (*static_cast<std::function<bool(double)>*>(progress))(done) ? TRUE : FALSE;
}

// Lines come top to bottom, but a cloud-optimised file begins with its smallest overview: the image
// is first written as an ordinary GeoTIFF and then copied.
class CogWriter final : public RasterWriter {
 public:
  CogWriter(const std::string& path, std::int32_t width, std::int32_t height,
            const RasterOptions& options)
      : file_(path, options.existing),
        draft_(std::make_unique<PartialFile>(path)),
        target_(path),
        type_(options.type),
        compression_(options.compression.value_or(Compression::deflate)),
        threads_(std::to_string(thread_count(options.threads))),
        overview_(options.overview),
        progress_(options.progress) {
    register_cog();
    RasterOptions of_draft = options;
    of_draft.existing = Existing::replace;
    of_draft.shown_path = path;
    of_draft.compression = Compression::none;
    writer_ = create_geotiff(draft_->path(), width, height, of_draft);
  }

  void write_lines(std::span<const std::byte> samples, std::int32_t lines) override {
    writer_->write_lines(samples, lines);
  }
  void add_metadata(const std::string& key, const std::string& value) override {
    writer_->add_metadata(key, value);
  }
  void set_no_data(double value) override { writer_->set_no_data(value); }

  void finish() override {
    writer_->finish();
    copy_draft();
    draft_.reset();
    file_.complete();
  }

 private:
  void copy_draft() {
    const GdalMessages messages;
    const BlockCacheLimit limit;
    const ThreadSetting of_overviews(threads_);
    const char* const drivers[] = {"GTiff", nullptr};
    const Dataset draft(GDALOpenEx(draft_->path().c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY,
                                   drivers, nullptr, nullptr));
    if (draft == nullptr) refuse(messages);
    CPLStringList settings;
    settings.SetNameValue("COMPRESS", gdal_name(compression_));
    const bool has_differences = compression_ != Compression::none && has_predictor(type_);
    settings.SetNameValue("PREDICTOR", has_differences ? "YES" : "NO");
    settings.SetNameValue("NUM_THREADS", threads_.c_str());
    settings.SetNameValue("BIGTIFF", "IF_SAFER");
    settings.SetNameValue("OVERVIEW_RESAMPLING", resampling(overview_));
    Dataset copy(GDALCreateCopy(GDALGetDriverByName("COG"), file_.path().c_str(), draft.get(),
                                FALSE, settings.List(),
                                progress_ ? &tell_progress : &GDALDummyProgress, &progress_));
    if (copy == nullptr) refuse(messages);
    GDALClose(copy.release());
    if (messages.any()) refuse(messages);
  }

  [[noreturn]] void refuse(const GdalMessages& messages) {
    throw Error(target_ + ": cannot be written: " + messages.reason());
  }

  PartialFile file_;
  std::unique_ptr<PartialFile> draft_;  // never completed: it goes when the copy is made
  std::string target_;
  SampleType type_;
  Compression compression_;
  std::string threads_;  // how many, as the library takes it
  Overview overview_;
  std::function<bool(double)> progress_;
  std::unique_ptr<RasterWriter> writer_;
};

}  // namespace

std::unique_ptr<RasterWriter> create_cog(const std::string& path, std::int32_t width,
                                         std::int32_t height, const RasterOptions& options) {
  return std::make_unique<CogWriter>(path, width, height, options);
}

}  // namespace gridkit
