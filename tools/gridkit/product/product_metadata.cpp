#include "tools/gridkit/product/product_metadata.h"

#include "gridkit/product_facts.h"
#include "gridkit/version.h"
#include "tools/gridkit/product/layer_image.h"
#include "tools/gridkit/product/words.h"

namespace {

// The annotation's times may leave out the mark of their zone.
std::string in_utc(const std::string& time) {
  return time.empty() || time.ends_with('Z') ? time : time + 'Z';
}

}  // namespace

std::string polarisation_of_layer(const gridkit::Product& product, const std::string& layer) {
  const auto facts = gridkit::facts_of(product);
  if (!facts) return {};
  const auto& images = facts->calibration;  // one entry an image
  const auto image = image_of_layer(product, layer, images.size());
  return image ? images[*image].polarisation : std::string();
}

std::vector<std::pair<std::string, std::string>> product_metadata(const gridkit::Product& product,
                                                                  const std::string& polarisation) {
  std::vector<std::pair<std::string, std::string>> metadata;
  const auto add = [&](const char* key, const std::string& value) {
    if (!value.empty()) metadata.emplace_back(key, value);
  };
  if (const auto facts = gridkit::facts_of(product)) {
    add("PRODUCT_ID", facts->name);
    add("PRODUCT_TYPE", facts->type);
    add("SATELLITE_IDENTIFIER", facts->mission);
    add("BEAM_MODE", facts->imaging_mode);
    add("BEAMS", facts->beam);
    add("POLARISATION", polarisation);
    add("ACQUISITION_START_TIME", in_utc(facts->start));
    add("ACQUISITION_STOP_TIME", in_utc(facts->stop));
    add("ORBIT_NUMBER", std::to_string(facts->orbit));
    add("ORBIT_DIRECTION", facts->pass);
    add("LOOK_DIRECTION", facts->look);
    add("INCIDENCE_ANGLE", shortest_number(facts->incidence_degrees));
    add("PROCESSING_SOFTWARE", facts->processing_software);
  }
  add("WRITTEN_BY", "gridkit " + gridkit::version());
  return metadata;
}
