#include "tools/simulate/product.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"
#include "tools/simulate/annotation.h"
#include "tools/simulate/auxiliary_files.h"
#include "tools/simulate/image_files.h"
#include "tools/simulate/scene.h"
#include "tools/simulate/synthesis.h"
#include "tools/simulate/truth.h"

namespace simulate {

namespace {

namespace fs = std::filesystem;

std::string product_name(const Scene& scene, const AnnotationSource& source) {
  const std::string resolution = scene.is_complex() ? "____" : "_SE_";
  const std::size_t layers = scene.options.polarisations.size();
  return "TSX1_SAR__" + source.variant_text() + resolution + "__" + source.mode_text() +
         (layers == 1 ? "_S" : (layers == 2 ? "_D" : "_Q")) + "_SRA_" +
         scene.utc(scene.start).compact() + '_' + scene.utc(scene.stop).compact();
}

std::string written(const AnnotationSource& source) {
  std::ostringstream text;
  write_annotation(source, text);
  return std::move(text).str();
}

// The repeats of growing records that bring the annotation to the size asked for.
std::int32_t repeats_for(AnnotationSource source, double megabytes) {
  source.repeats = 1;
  const auto one = static_cast<double>(written(source).size());
  source.repeats = 2;
  const auto two = static_cast<double>(written(source).size());
  const double wanted = megabytes * 1e6;
  return std::max(1, static_cast<std::int32_t>(std::lround(1 + (wanted - one) / (two - one))));
}

void save(const fs::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (!out) throw std::runtime_error(path.string() + ": cannot be written");
}

void write_empty_image(const fs::path& path, bool is_complex, std::int32_t lines,
                       std::int32_t samples, const std::optional<MapGrid>& map) {
  if (is_complex) {
    write_sparse_cosar(path.string(), lines, samples);
  } else {
    write_sparse_geotiff(path.string(), lines, samples, map);
  }
}

// Brings a file to the size that an annotation states, unless it is as large already. What follows
// the tags and pixels of a GeoTIFF is no part of the image.
void lengthen(const fs::path& path, std::int64_t bytes) {
  if (bytes > 0 && static_cast<std::uint64_t>(bytes) > fs::file_size(path)) {
    fs::resize_file(path, static_cast<std::uint64_t>(bytes));
  }
}

void write_image(const fs::path& path, const Scene& scene, const Synthesis& image) {
  if (scene.is_complex()) {
    write_cosar(path.string(), scene, image);
  } else {
    write_geotiff(path.string(), scene, image);
  }
}

// All but the annotation itself; fills in the sizes.
void write_files(const fs::path& product, const Scene& scene, const std::vector<Target>& targets,
                 AnnotationSource& source) {
  const Options& o = scene.options;
  for (const char* part : {"IMAGEDATA", "ANNOTATION", "PREVIEW", "AUXRASTER", "SUPPORT"}) {
    fs::create_directories(product / part);
  }
  std::vector<Synthesis> images;
  for (std::size_t i = 0; i < o.polarisations.size(); ++i) {
    const fs::path path = product / "IMAGEDATA" / source.image_name(o.polarisations[i]);
    if (o.empty_images) {
      write_empty_image(path, scene.is_complex(), o.lines, o.samples, scene.map);
    } else {
      images.emplace_back(scene, targets, o.seed, static_cast<std::int32_t>(i));
      write_image(path, scene, images.back());
    }
  }
  write_previews((product / "PREVIEW").string(), scene, source.beam(), images);
  write_georeference((product / "ANNOTATION" / "GEOREF.xml").string(), scene);
  write_mapping_grid((product / "AUXRASTER" / "MAPPING_GRID.bin").string(), scene);
  for (const auto& entry : fs::recursive_directory_iterator(product)) {
    if (!entry.is_regular_file()) continue;
    source.file_bytes[fs::relative(entry.path(), product).generic_string()] = entry.file_size();
  }
}

}  // namespace

std::string write_product_folder(const Options& options, const std::string& folder) {
  if (schema_for(options.version_text).empty()) {
    throw std::invalid_argument("no schema serves the version text " + options.version_text);
  }
  const Scene scene = make_scene(options);
  const std::vector<Target> targets = place_targets(scene);
  AnnotationSource source{scene, {}, scene.epoch.after(86400).whole_second()};
  source.name = product_name(scene, source);
  const fs::path product = fs::path(folder) / source.name;
  write_files(product, scene, targets, source);
  if (options.annotation_megabytes > 0) {
    source.repeats = repeats_for(source, options.annotation_megabytes);
  }
  const fs::path annotation = product / (source.name + ".xml");
  save(annotation, written(source));
  save(product / "truth.json", truth_of(source, targets).dump(2) + '\n');
  return annotation.string();
}

std::string write_images_for(const std::string& annotation, const std::string& folder) {
  const CheckResult check = check_annotation(annotation);
  if (check.error != 0) throw std::runtime_error(check.text());
  fs::path own = fs::absolute(annotation);
  if (!folder.empty()) {
    fs::create_directories(folder);
    const fs::path copy = fs::path(folder) / own.filename();
    if (!fs::exists(copy) || !fs::equivalent(own, copy)) {
      fs::copy_file(own, copy, fs::copy_options::overwrite_existing);
    }
    own = copy;
  }
  with_root(check.schema, [&](auto& root) {
    root.unmarshal(own.c_str());
    const bool is_complex = std::string(root.imageDataFormat()) == "COSAR";
    const std::int32_t lines = root.numberOfRows();
    const std::int32_t samples = root.numberOfColumns();
    const std::int32_t images = root.numberOfLayers();
    if (lines < 1 || samples < 1 || images < 0 || images > 4) {
      throw std::runtime_error(own.string() + ": its image sizes or counts cannot be served");
    }
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(images); ++i) {
      const fs::path image = own.parent_path() / root.imageDataPath(i) / root.imageDataFilename(i);
      if (fs::exists(image)) continue;
      fs::create_directories(image.parent_path());
      write_empty_image(image, is_complex, lines, samples, std::nullopt);
      const auto& components = root.get_level1Product().get_productComponents();
      if (!is_complex) lengthen(image, components.get_imageData(i).get_file().get_size());
    }
  });
  return own.string();
}

}  // namespace simulate
