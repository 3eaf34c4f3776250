#include "tools/simulate/images_for.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tools/annotation/annotated_images.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"
#include "tools/annotation/map_text.h"
#include "tools/simulate/cosar.h"
#include "tools/simulate/image_files.h"
#include "tools/simulate/range_doppler.h"

namespace simulate {

namespace {

namespace fs = std::filesystem;

std::string bytes_of(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The annotation where its images shall be.
fs::path placed(const std::string& annotation, const std::string& folder, bool overwrite) {
  fs::path own = fs::absolute(annotation);
  if (folder.empty()) return own;
  fs::create_directories(folder);
  fs::path copy = fs::path(folder) / own.filename();
  if (fs::exists(copy)) {
    if (fs::equivalent(own, copy) || bytes_of(own) == bytes_of(copy)) return copy;
    if (!overwrite) {
      throw std::runtime_error(copy.string() + ": exists already; --overwrite replaces it");
    }
  }
  fs::copy_file(own, copy, fs::copy_options::overwrite_existing);
  return copy;
}

GroundSpacing ground_spacing(const std::string& annotation, const std::string& schema) {
  return with_root(schema, [&](auto& root) {
    root.unmarshal(annotation.c_str());
    const auto& info = std::as_const(root.get_level1Product()).get_productInfo();
    const auto& raster = info.get_imageDataInfo().get_imageRaster(0);
    const auto& scene = info.get_sceneInfo();
    const double along = scene.get_sceneAzimuthExtent() / std::max(1, raster.get_numberOfRows());
    const double across = raster.get_rowSpacing().get_rowSpacing();
    if (std::string(info.get_imageDataInfo().get_imageDataFormat()) != "COSAR") {
      return GroundSpacing{along, across};
    }
    const double incidence = scene.get_sceneCenterCoord().get_incidenceAngle() * degree;
    return GroundSpacing{along, range_of(across) / std::sin(incidence)};
  });
}

// The annotation does not say whether its corners are the centres of the corner pixels or their
// outer corners; the size of what lies between them does.
std::optional<gridkit::Georeference> georeference(const fs::path& annotation,
                                                  const AnnotatedImages& images) {
  if (!images.map || images.format == "COSAR") return std::nullopt;
  const AnnotatedMap& map = *images.map;
  const auto system = map_system(map);
  if (!system || system->datum != "WGS84") {
    throw std::runtime_error(annotation.string() + ": its map \"" + map.projection + "\" zone \"" +
                             map.zone + "\" on \"" + map.datum +
                             "\" is neither UTM nor UPS on WGS84");
  }
  const double across = std::abs(map.spacing[0]);
  const double down = std::abs(map.spacing[1]);
  if (!(across > 0 && down > 0)) {
    throw std::runtime_error(annotation.string() + ": its pixels have no spacing on the map");
  }
  const double columns = (map.lower_right[0] - map.upper_left[0]) / across;
  const double outer = std::abs(columns - images.samples) < 0.5 ? 0 : 0.5;
  constexpr int utm_north = 32600;
  constexpr int utm_south = 32700;
  constexpr int ups_north = 32661;
  constexpr int ups_south = 32761;
  const int epsg = system->zone == 0 ? (system->south ? ups_south : ups_north)
                                     : (system->south ? utm_south : utm_north) + system->zone;
  return gridkit::Georeference{
      epsg,
      {map.upper_left[0] - outer * across, across, 0, map.upper_left[1] + outer * down, 0, -down}};
}

// Brings a file to the size that an annotation states, unless it is as large already. What follows
// the tags and pixels of a GeoTIFF is no part of the image.
void lengthen(const fs::path& path, std::int64_t bytes) {
  if (bytes > 0 && static_cast<std::uint64_t>(bytes) > fs::file_size(path)) {
    fs::resize_file(path, static_cast<std::uint64_t>(bytes));
  }
}

void refuse_outside(const fs::path& folder, const fs::path& image) {
  const fs::path way = image.lexically_normal().lexically_relative(folder.lexically_normal());
  if (way.empty() || *way.begin() == "..") {
    throw std::runtime_error(image.string() + ": outside the annotation's folder; nothing written");
  }
}

// Writes one image after the other.
class Maker {
 public:
  Maker(const AnnotatedImages& images, std::optional<gridkit::Georeference> map,
        GroundSpacing spacing, const ImageContent& content)
      : images_(images), map_(std::move(map)), spacing_(spacing), content_(content) {}

  void make(std::size_t index) const {
    const fs::path& path = images_.files[index].file;
    fs::create_directories(path.parent_path());
    const Synthesis synthesis(spacing_,
                              target_pixels(images_.lines, images_.samples, content_.targets),
                              content_.seed, static_cast<std::int32_t>(index));
    if (images_.format == "COSAR") {
      const CosarLayout layout = lay_out_cosar(images_.lines, images_.samples, content_.cosar);
      content_.empty_images ? write_sparse_cosar(path.string(), layout)
                            : write_cosar(path.string(), layout, synthesis);
      return;
    }
    const GeotiffLayout layout{images_.lines, images_.samples, map_};
    content_.empty_images ? write_sparse_geotiff(path.string(), layout)
                          : write_geotiff(path.string(), layout, synthesis);
    lengthen(path, images_.files[index].bytes);
  }

 private:
  const AnnotatedImages& images_;
  std::optional<gridkit::Georeference> map_;
  GroundSpacing spacing_;
  const ImageContent& content_;
};

AnnotatedImages images_of(const fs::path& annotation, const std::string& schema) {
  auto images = read_annotated_images(annotation.string(), schema);
  const auto files = images ? static_cast<std::int64_t>(images->files.size()) : 0;
  if (!images || images->lines < 1 || images->samples < 1 || images->layers < 0 ||
      images->layers > std::min<std::int64_t>(files, 4)) {
    throw std::runtime_error(annotation.string() + ": its image sizes or counts cannot be served");
  }
  images->files.resize(static_cast<std::size_t>(images->layers));
  for (const AnnotatedImage& image : images->files) {
    refuse_outside(annotation.parent_path(), image.file);
  }
  return *std::move(images);
}

}  // namespace

std::string MadeImages::in_words() const {
  const std::size_t count = written.size();
  if (count == 0) return "no image was written";
  return std::to_string(count) + (count == 1 ? " image of " : " images of ") +
         std::to_string(lines) + " lines x " + std::to_string(samples) + " samples " +
         (count == 1 ? "was" : "were") + " written" + (map.empty() ? "" : ", on " + map);
}

MadeImages write_images_for(const std::string& annotation, const std::string& folder,
                            const ImageContent& content) {
  const CheckResult check = check_annotation(annotation);
  if (check.error != 0) throw std::runtime_error(check.text());
  const fs::path own = placed(annotation, folder, content.overwrite);
  const AnnotatedImages images = images_of(own, check.schema);
  const auto map = georeference(own, images);
  if (images.format == "COSAR") {
    check_cosar(content.cosar, images.lines, images.samples);
  } else if (content.cosar != CosarOptions()) {
    throw std::invalid_argument(
        own.string() +
        ": only its complex images could have a sample type, record padding and an edge taper");
  }
  const Maker maker(images, map, ground_spacing(own.string(), check.schema), content);
  MadeImages made{own.string(),  {}, {}, map ? *map_text(*images.map) : "", images.lines,
                  images.samples};
  for (std::size_t i = 0; i < images.files.size(); ++i) {
    const std::string path = images.files[i].file.string();
    if (!content.overwrite && fs::exists(path)) {
      made.kept.push_back(path);
      continue;
    }
    maker.make(i);
    made.written.push_back(path);
  }
  return made;
}

}  // namespace simulate
