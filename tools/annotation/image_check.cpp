#include "tools/annotation/image_check.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "gridkit/os_error.h"
#include "gridkit/raster_header.h"
#include "tools/annotation/annotated_images.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/cosar_check.h"
#include "tools/annotation/geotiff_check.h"

namespace {

namespace fs = std::filesystem;
using Authority = ImageFinding::Authority;

std::string in_bytes(std::int64_t count) {
  return std::to_string(count) + " bytes";
}

// Goes through the images and keeps what it finds.
class Checker {
 public:
  explicit Checker(AnnotatedImages annotated) : annotated_(std::move(annotated)) {}

  ImageCheck check(const std::string& annotation) {
    count(annotation);
    for (const AnnotatedImage& image : annotated_.files) {
      path_ = image.file.string();
      const std::size_t before = result_.findings.size();
      const std::string facts = check_image(image);
      const bool agrees = result_.findings.size() == before;
      if (!facts.empty()) result_.images.push_back({path_, facts, agrees});
    }
    return std::move(result_);
  }

 private:
  bool is_complex() const { return annotated_.format == "COSAR"; }

  // A reader takes as many images as there are layers, in their order.
  void count(const std::string& annotation) {
    const auto files = static_cast<std::int64_t>(annotated_.files.size());
    if (files == annotated_.layers) return;
    path_ = annotation;
    add("image files", std::to_string(files), std::to_string(annotated_.layers) + " layers",
        Authority::annotation, files < annotated_.layers);
  }

  // What the image is, empty where nothing can be told of it.
  std::string check_image(const AnnotatedImage& image) {
    std::error_code failed;
    const fs::file_status status = fs::status(image.file, failed);
    if (!fs::exists(status)) return refuse("no such file");
    if (!fs::is_regular_file(status)) return refuse("no regular file");
    const std::uint64_t bytes = fs::file_size(image.file, failed);
    if (failed) return refuse(gridkit::os_error_in_words(failed.value()));
    if (bytes == 0) return refuse("an empty file");
    const std::string facts = is_complex() ? check_complex(bytes) : check_detected(bytes);
    check_size(image, static_cast<std::int64_t>(bytes));
    return facts.empty() ? facts : facts + ", " + in_bytes(static_cast<std::int64_t>(bytes));
  }

  std::string refuse(const std::string& found) {
    add("file", found,
        std::string(is_complex() ? "a COSAR" : "a GeoTIFF") + " image of " +
            std::to_string(annotated_.samples) + " x " + std::to_string(annotated_.lines));
    return {};
  }

  void check_size(const AnnotatedImage& image, std::int64_t bytes) {
    if (image.bytes < 1 || image.bytes == bytes) return;
    add("size", in_bytes(bytes), in_bytes(image.bytes), Authority::annotation, is_complex());
  }

  std::string check_complex(std::uint64_t bytes) {
    std::ifstream file(path_, std::ios::binary);
    if (!file) return refuse("a file that cannot be read");
    const CosarHeader header = read_cosar_header(file, bytes);
    append(check_cosar(path_, header, bytes, annotated_));
    return header.bursts.empty() ? std::string() : describe_cosar(header);
  }

  std::string check_detected(std::uint64_t bytes) {
    try {
      const gridkit::RasterHeader header = gridkit::read_raster_header(path_);
      append(check_geotiff(path_, header, bytes, annotated_));
      return describe_geotiff(header, annotated_);
    } catch (const gridkit::Error& error) {
      return refuse(std::string("no readable GeoTIFF (") + error.what() + ')');
    }
  }

  void append(std::vector<ImageFinding> findings) {
    std::move(findings.begin(), findings.end(), std::back_inserter(result_.findings));
  }

  void add(std::string what, std::string found, std::string expected,
           Authority authority = Authority::annotation, bool serious = true) {
    result_.findings.push_back(
        {path_, std::move(what), std::move(found), std::move(expected), authority, serious});
  }

  AnnotatedImages annotated_;
  std::string path_;  // of the image at hand
  ImageCheck result_;
};

}  // namespace

bool ImageCheck::has_serious() const {
  return std::any_of(findings.begin(), findings.end(),
                     [](const ImageFinding& finding) { return finding.serious; });
}

std::optional<ImageCheck> check_images(const std::string& annotation,
                                       const std::optional<std::string>& schema) {
  const std::string chosen = schema ? *schema : read_version_line(annotation).schema;
  auto annotated = read_annotated_images(annotation, chosen);
  if (!annotated) return std::nullopt;
  return Checker(std::move(*annotated)).check(annotation);
}
