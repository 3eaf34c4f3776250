#include "bridges/gdal/product_metadata.h"

#include <cpl_json.h>

#include <array>

#include "bridges/gdal/place.h"

namespace gridkit_gdal {

namespace {

struct Item {
  const char* name;  // in GDAL's metadata
  const char* path;  // in the description
};
constexpr std::array<Item, 15> items = {{{"ACQUISITION_START_TIME", "times/start"},
                                         {"ACQUISITION_STOP_TIME", "times/stop"},
                                         {"BEAMS", "mode/beam"},
                                         {"BEAM_MODE", "mode/imaging"},
                                         {"FAR_INCIDENCE_ANGLE", "incidence/far"},
                                         {"INCIDENCE_ANGLE", "centre/incidence"},
                                         {"LINE_SPACING", "spacing/line"},
                                         {"LOOK_DIRECTION", "mode/look"},
                                         {"NEAR_INCIDENCE_ANGLE", "incidence/near"},
                                         {"ORBIT_DIRECTION", "satellite/pass"},
                                         {"ORBIT_NUMBER", "satellite/orbit"},
                                         {"PIXEL_SPACING", "spacing/sample"},
                                         {"PRODUCT_ID", "product/name"},
                                         {"PRODUCT_TYPE", "product/type"},
                                         {"SATELLITE_IDENTIFIER", "satellite/mission"}}};

std::string text_of(const CPLJSONObject& value) {
  switch (value.GetType()) {
    case CPLJSONObject::Type::String:
    case CPLJSONObject::Type::Integer:
    case CPLJSONObject::Type::Long:
      return value.ToString();
    case CPLJSONObject::Type::Double:
      return number_text(value.ToDouble());
    default:
      return {};
  }
}

}  // namespace

std::vector<std::pair<std::string, std::string>> metadata_of(const Product& product) {
  std::vector<std::pair<std::string, std::string>> told;
  HostError error;
  char* text = nullptr;
  if (gridkit_describe(product.get(), &text, error.out()) != gridkit_Done) {
    error.report();
    return told;
  }
  const HostText json(text);
  CPLJSONDocument document;
  if (!document.LoadMemory(std::string(json.get()))) return told;
  for (const Item& item : items) {
    const std::string value = text_of(document.GetRoot().GetObj(item.path));
    if (!value.empty()) told.emplace_back(item.name, value);
  }
  text = nullptr;
  if (gridkit_annotation_path(product.get(), &text, error.out()) == gridkit_Done) {
    told.emplace_back("SOURCE", HostText(text).get());
  }
  return told;
}

std::vector<std::pair<std::string, std::string>> metadata_of(const RasterSource& source) {
  std::vector<std::pair<std::string, std::string>> told;
  if (source.is_layer) return {{"LAYER", source.name}};
  told.emplace_back("IMAGE", source.name);
  if (!source.polarisation.empty()) told.emplace_back("POLARISATION", source.polarisation);
  if (!source.first_line_utc.empty()) {
    told.emplace_back("FIRST_LINE_OF_IMAGE_UTC", source.first_line_utc);
  }
  if (source.calibration_factor != 0) {
    told.emplace_back("CALIBRATION_FACTOR", number_text(source.calibration_factor));
  }
  if (source.quantity == Quantity::beta0 || source.quantity == Quantity::sigma0 ||
      source.quantity == Quantity::gamma0) {
    told.emplace_back("NOISE", source.subtract_noise == gridkit_Yes ? "subtracted" : "left in");
  }
  return told;
}

}  // namespace gridkit_gdal
