#include <cstdint>
#include <string>
#include <utility>

#include <cpl_string.h>
#include <gdal.h>

#include "gridkit/layers/gdal_support.h"
#include "gridkit/partial_file.h"
#include "gridkit/raster_writer.h"

namespace gridkit {

namespace {

struct closer {
  void operator()(void* dataset) const {
    const gdal_messages unheard;
    GDALClose(dataset);
  }
};
using dataset = std::unique_ptr<void, closer>;

// The library would fill a part of all memory with blocks; 64 MiB hold the tiles of a row.
class block_cache_limit {
 public:
  block_cache_limit() : before_(GDALGetCacheMax64()) { GDALSetCacheMax64(64 << 20); }
  block_cache_limit(const block_cache_limit&) = delete;
  block_cache_limit& operator=(const block_cache_limit&) = delete;
  ~block_cache_limit() { GDALSetCacheMax64(before_); }

 private:
  GIntBig before_;
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
        overview_(options.overview),
        progress_(options.progress) {
    register_cog();
    RasterOptions of_draft = options;
    of_draft.existing = Existing::replace;
    of_draft.shown_path = path;
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
    const gdal_messages messages;
    const block_cache_limit limit;
    const char* const drivers[] = {"GTiff", nullptr};
    const dataset draft(GDALOpenEx(draft_->path().c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY,
                                   drivers, nullptr, nullptr));
    if (draft == nullptr) refuse(messages);
    CPLStringList settings;
    settings.SetNameValue("COMPRESS", "DEFLATE");
    settings.SetNameValue("PREDICTOR", "YES");
    settings.SetNameValue("BIGTIFF", "IF_SAFER");
    settings.SetNameValue("OVERVIEW_RESAMPLING", resampling(overview_));
    dataset copy(GDALCreateCopy(GDALGetDriverByName("COG"), file_.path().c_str(), draft.get(),
                                FALSE, settings.List(),
                                progress_ ? &tell_progress : &GDALDummyProgress, &progress_));
    if (copy == nullptr) refuse(messages);
    GDALClose(copy.release());
    if (messages.any()) refuse(messages);
  }

  [[noreturn]] void refuse(const gdal_messages& messages) {
    throw Error(target_ + ": cannot be written: " + messages.reason());
  }

  PartialFile file_;
  std::unique_ptr<PartialFile> draft_;  // never completed: it goes when the copy is made
  std::string target_;
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
