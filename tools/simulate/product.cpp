#include "tools/simulate/product.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tools/simulate/annotation.h"
#include "tools/simulate/auxiliary_files.h"
#include "tools/simulate/cosar.h"
#include "tools/simulate/geolocation_grid.h"
#include "tools/simulate/image_files.h"
#include "tools/simulate/scene.h"
#include "tools/simulate/synthesis.h"
#include "tools/simulate/truth.h"

namespace simulate {

namespace {

namespace fs = std::filesystem;

std::string product_name(const Scene& scene, const AnnotationSource& source) {
  const std::string resolution = scene.is_complex() ? "____" : "_SE_";
  // "TSX1" for "TSX-1".
  std::string satellite = scene.options.satellite;
  std::erase(satellite, '-');
  return satellite + "_SAR__" + source.variant_text() + resolution + "__" + source.mode_text() +
         '_' + source.polarisation_letter() + "_SRA_" + scene.utc(scene.start).compact() + '_' +
         scene.utc(scene.stop).compact();
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

void write_empty_image(const fs::path& path, const Scene& scene) {
  const Options& o = scene.options;
  if (scene.is_complex()) {
    write_sparse_cosar(path.string(), lay_out_cosar(o.lines, o.samples, o.cosar));
  } else {
    write_sparse_geotiff(path.string(), {o.lines, o.samples, georeference_of(scene.map)});
  }
}

void write_image(const fs::path& path, const Scene& scene, const Synthesis& image) {
  const Options& o = scene.options;
  if (scene.is_complex()) {
    write_cosar(path.string(), lay_out_cosar(o.lines, o.samples, o.cosar), image);
  } else {
    write_geotiff(path.string(), {o.lines, o.samples, georeference_of(scene.map)}, image);
  }
}

// All but the annotation itself; fills in the sizes.
void write_files(const fs::path& product, const Scene& scene, const std::vector<Target>& targets,
                 AnnotationSource& source) {
  const Options& o = scene.options;
  for (const char* part : {"IMAGEDATA", "ANNOTATION", "PREVIEW", "AUXRASTER", "SUPPORT"}) {
    fs::create_directories(product / part);
  }
  std::vector<Pixel> pixels(targets.size());
  std::transform(targets.begin(), targets.end(), pixels.begin(),
                 [](const Target& target) { return target.pixel; });
  const auto shading = scene.terrain && !o.empty_images ? std::make_shared<Shading>(scene)
                                                        : std::shared_ptr<Shading>();
  std::vector<Synthesis> images;
  for (std::size_t i = 0; i < o.polarisations.size(); ++i) {
    const fs::path path = product / "IMAGEDATA" / source.image_name(o.polarisations[i]);
    if (o.empty_images) {
      write_empty_image(path, scene);
    } else {
      images.emplace_back(scene.ground_spacing(), pixels, o.seed, static_cast<std::int32_t>(i),
                          shading);
      write_image(path, scene, images.back());
    }
  }
  write_previews((product / "PREVIEW").string(), scene, source.beam(), images);
  write_geolocation_grid((product / "ANNOTATION" / "GEOREF.xml").string(), scene, source.name);
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
  if (!options.overwrite && fs::exists(product) && !fs::is_empty(product)) {
    throw std::runtime_error(product.string() + ": exists already; --overwrite replaces it");
  }
  write_files(product, scene, targets, source);
  if (options.annotation_megabytes > 0) {
    source.repeats = repeats_for(source, options.annotation_megabytes);
  }
  const fs::path annotation = product / (source.name + ".xml");
  save(annotation, written(source));
  if (options.relief > 0) {
    write_terrain((product / terrain_name).string(), terrain_plan(scene));
  }
  save(product / "truth.json", truth_of(source, targets).dump(2) + '\n');
  return annotation.string();
}

}  // namespace simulate
