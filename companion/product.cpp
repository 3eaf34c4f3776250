#include "companion/product.h"

#include <algorithm>
#include <utility>

#include "image/cosar_layout.h"

namespace companion {

namespace {

// Whether a reader that goes by the annotation alone finds the samples where they are.
bool lies_as_annotated(const CosarFile& cosar, const ProductFacts& facts) {
  if (!facts.has_paired_layers) return false;
  const CosarBurst& burst = cosar.bursts.front();
  return cosar.bursts.size() == 1 && burst.version == 1 && burst.lines == facts.lines &&
         burst.samples == facts.samples &&
         burst.record_bytes == static_cast<std::int64_t>(
                                   cosar::record_bytes(static_cast<std::uint64_t>(burst.samples)));
}

// The name by which users ask for an image: its polarisation, and where that does not tell it from
// another file's the file's number.
std::string name_of(const ProductFacts& facts, std::size_t file) {
  const std::string& polarisation = facts.files[file].polarisation;
  const auto same = std::count_if(
      facts.files.begin(), facts.files.end(),
      [&](const ImageFileFacts& other) { return other.polarisation == polarisation; });
  return same == 1 ? polarisation : polarisation + "_" + std::to_string(file + 1);
}

// As the plug-in names the layer of that place in its list.
std::string layer_name(const std::string& polarisation, const char* kind, std::int32_t place) {
  const auto letter = [&](std::size_t i) {
    return i < polarisation.size() && polarisation[i] == 'V' ? 'V' : 'H';
  };
  return std::string("X_") + letter(0) + letter(1) + '_' + kind + '_' + std::to_string(place + 1);
}

void name_layers(Image& image) {
  if (image.magnitude_layer >= 0) {
    image.magnitude_layer_name = layer_name(image.polarisation, "MAGNITUDE", image.magnitude_layer);
  }
  if (image.phase_layer >= 0) {
    image.phase_layer_name = layer_name(image.polarisation, "PHASE", image.phase_layer);
  }
}

void add_complex(gkc_Product& product, const ProductFacts& facts, std::size_t file) {
  const ImageFileFacts& annotated = facts.files[file];
  const CosarFile& cosar = product.cosar_files.emplace_back(open_cosar(annotated.path));
  const std::size_t count = cosar.bursts.size();
  const bool knows_starts = annotated.burst_starts.size() == count;
  for (std::size_t i = 0; i < count; ++i) {
    Image image;
    image.name = name_of(facts, file);
    image.polarisation = annotated.polarisation;
    image.calibration_factor = annotated.calibration_factor;
    image.noise = &product.noise[file];
    image.image_file = static_cast<std::int32_t>(file);
    image.cosar = &cosar;
    image.cosar_burst = &cosar.bursts[i];
    if (count == 1) {
      image.first_line_utc = facts.scene.start.text();
      // Each complex image gives a magnitude and a phase layer.
      if (lies_as_annotated(cosar, facts)) {
        image.magnitude_layer = 2 * image.image_file;
        image.phase_layer = image.magnitude_layer + 1;
        name_layers(image);
      }
    } else {
      image.burst = static_cast<std::int32_t>(i + 1);
      image.name += "_B" + std::to_string(image.burst);
      if (knows_starts) image.first_line_utc = annotated.burst_starts[i];
    }
    product.images.push_back(std::move(image));
  }
}

void add_detected(gkc_Product& product, const ProductFacts& facts, std::size_t file) {
  const ImageFileFacts& annotated = facts.files[file];
  Image image;
  image.name = name_of(facts, file);
  image.polarisation = annotated.polarisation;
  image.calibration_factor = annotated.calibration_factor;
  image.noise = &product.noise[file];
  image.first_line_utc = facts.scene.start.text();
  image.image_file = static_cast<std::int32_t>(file);
  image.detected = &product.detected_files.emplace_back(annotated.path);
  const bool lies_as_layer = image.lines() == facts.lines && image.samples() == facts.samples;
  if (lies_as_layer && !facts.has_paired_layers) {
    image.magnitude_layer = image.image_file;
    name_layers(image);
  }
  product.images.push_back(std::move(image));
}

}  // namespace

std::unique_ptr<gkc_Product> open_product(const std::string& path, Reading reading,
                                          bool without_images) {
  const ProductFacts facts = read_product_facts(path, reading);
  auto product = std::make_unique<gkc_Product>();
  product->passed_over = facts.passed_over;
  product->facts = std::make_unique<HandedFacts>(facts.annotated);
  product->grid = std::make_unique<GridOnDemand>(path, facts);
  if (without_images) return product;
  for (const ImageFileFacts& file : facts.files) product->noise.push_back(file.noise);
  for (std::size_t file = 0; file < facts.files.size(); ++file) {
    (facts.is_complex ? add_complex : add_detected)(*product, facts, file);
  }
  return product;
}

}  // namespace companion
