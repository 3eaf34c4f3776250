#include "companion/product_facts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "binding/fault_collector.h"
#include "companion/failure.h"
#include "gridkit/file.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"
#include "plugin/recognition_texts.h"
#include "plugin/schema_version.h"
#include "record/tsx_file.h"
#include "schema/lenience.h"

namespace companion {

namespace {

constexpr std::size_t level_line = 2;  // of the first lines, from 0
constexpr std::size_t version_line = 6;

// The first lines as recognition reads them: a longer line counts as several, and those that the
// file does not have are empty. Throws Failure for a file that does not open.
std::array<std::string, version_line + 1> first_lines_of(const std::string& path) {
  constexpr std::int32_t read_size = 255;
  struct Close {
    void operator()(gkf_File* file) const { gkf_Close(file, nullptr); }
  };
  gke_Report* report = nullptr;
  const std::unique_ptr<gkf_File, Close> file(gkf_Open(path.c_str(), "r", &report, 0));
  if (file == nullptr) throw Failure(gkc_NotRecognised, take_report(report));
  std::array<std::string, version_line + 1> lines;
  for (std::string& line : lines) {
    std::array<char, read_size + 1> text{};
    gkf_Fgets(text.data(), read_size, file.get(), nullptr);
    line = text.data();
  }
  return lines;
}

// Which of the version texts the seventh line holds: the last in their order, as recognition has
// it.
std::optional<SchemaIndex> version_of(const std::string& line) {
  std::optional<SchemaIndex> found;
  for (int index = 0; index < schema_text_none; ++index) {
    if (line.find(schema_version_texts[index]) != std::string::npos) {
      found = static_cast<SchemaIndex>(index);
    }
  }
  return found;
}

// The factor of a polarisation and beam, from among those that the annotation states for it.
template <class Product>
double calibration_factor(const Product& product, const std::string& polarisation,
                          const std::optional<std::string>& beam) {
  const auto& calibration = product.get_calibration();
  std::optional<double> found;
  for (std::size_t i = 0; i < calibration.size_calibrationConstant(); ++i) {
    const auto& constant = calibration.get_calibrationConstant(i);
    if (constant.isset_polLayer() && constant.get_polLayer() != polarisation) continue;
    if (beam && constant.isset_beamID() && constant.get_beamID() != *beam) continue;
    const double factor = constant.get_calFactor().get_calFactor();
    if (found && *found != factor) return 0;
    found = factor;
  }
  return found.value_or(0);
}

// When the bursts of a polarisation and beam began, in the annotation's order.
template <class Product>
std::vector<std::string> burst_starts(const Product& product, const std::string& polarisation,
                                      const std::optional<std::string>& beam) {
  std::vector<std::string> starts;
  const auto& processing = product.get_processing();
  if (!processing.isset_signalDataAnalysis()) return starts;
  const auto& analysis = processing.get_signalDataAnalysis();
  if (!analysis.isset_burstInfo()) return starts;
  const auto& bursts = analysis.get_burstInfo();
  for (std::size_t i = 0; i < bursts.size_burstSequence(); ++i) {
    const auto& burst = bursts.get_burstSequence(i);
    if (burst.isset_polChannel() && burst.get_polChannel() != polarisation) continue;
    if (beam && burst.get_beamID() != *beam) continue;
    starts.emplace_back(burst.get_startTimeUTC().text());
  }
  return starts;
}

std::string below(const std::string& folder, const auto& file) {
  const auto& location = file.get_location();
  return folder + location.get_path() + '/' + location.get_filename();
}

template <class Product>
SceneFacts scene_facts(const Product& product, const std::string& folder) {
  const auto& scene = product.get_productInfo().get_sceneInfo();
  const auto& components = product.get_productComponents();
  SceneFacts facts;
  facts.start = scene.get_start().get_timeUTC();
  facts.stop = scene.get_stop().get_timeUTC();
  facts.first_range_time = scene.get_rangeTime().get_firstPixel();
  facts.last_range_time = scene.get_rangeTime().get_lastPixel();
  for (std::size_t i = 0; i < components.size_annotation(); ++i) {
    const auto& annotation = components.get_annotation(i);
    if (annotation.get_type() != "GEOREF") continue;
    facts.grid_files.push_back(below(folder, annotation.get_file()));
  }
  return facts;
}

template <class Product>
ProductFacts facts_of(const Product& product, const std::string& path) {
  const auto& info = product.get_productInfo();
  const auto& variants = info.get_productVariantInfo();
  const auto& image_info = info.get_imageDataInfo();
  const auto& components = product.get_productComponents();
  const auto fail = [&](const char* element, const std::string& fault) {
    Failure failure(gkc_BadDescription, path, std::string(element) + ": " + fault);
    failure.element = element;
    throw failure;
  };
  if (variants.size_productVariant() == 0) {
    fail("/level1Product/productInfo/productVariantInfo/productVariant", "is empty");
  }
  if (image_info.size_imageRaster() == 0) {
    fail("/level1Product/productInfo/imageDataInfo/imageRaster", "is missing");
  }
  const std::int32_t layers = image_info.get_numberOfLayers();
  if (layers < 1 || layers > most_images ||
      static_cast<std::size_t>(layers) > components.size_imageData()) {
    fail("/level1Product/productInfo/imageDataInfo/numberOfLayers",
         std::to_string(layers) + " image files are told, of which " +
             std::to_string(components.size_imageData()) +
             " are named; a product has 1 to 4 of them");
  }
  const auto& raster = image_info.get_imageRaster(0);
  ProductFacts facts;
  facts.is_complex = variants.get_productVariant(0) == "SSC";
  facts.has_paired_layers = image_info.get_imageDataFormat() == "COSAR";
  facts.lines = raster.get_numberOfRows();
  facts.samples = raster.get_numberOfColumns();
  facts.is_on_map =
      variants.get_productVariant(0) == "GEC" || variants.get_productVariant(0) == "EEC";
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  facts.scene = scene_facts(product, folder);
  facts.annotated = annotated_facts(product, path);
  for (std::size_t i = 0; i < static_cast<std::size_t>(layers); ++i) {
    const auto& image = components.get_imageData(i);
    std::optional<std::string> beam;
    if (image.isset_beamID()) beam = image.get_beamID();
    const std::string& polarisation = image.get_polLayer();
    facts.files.push_back(
        {below(folder, image.get_file()), polarisation,
         calibration_factor(product, polarisation, beam), burst_starts(product, polarisation, beam),
         noise_facts(product, polarisation, beam, facts.scene.start, facts.scene.stop)});
  }
  return facts;
}

Failure failure_of(const std::string& path, const lmx::Diagnostic& fault) {
  Failure failure(gkc_BadDescription, path + ':' + std::to_string(fault.line) + ':' +
                                          std::to_string(fault.column) + ": " + fault.path + ": " +
                                          fault.message());
  failure.path = path;
  failure.element = fault.path;
  failure.text_line = fault.line;
  return failure;
}

template <class Root>
ProductFacts bind(const std::string& path, Reading reading) {
  lmx::c_xml_reader_file reader(path.c_str());
  if (!reader.is_open()) throw Failure(gkc_NotRecognised, path, "cannot be opened");
  binding::FaultCollector lenience(level1bProduct::may_be_passed_over);
  if (reading == Reading::lenient) lenience.watch(reader);
  Root root;
  if (root.unmarshal(reader) != lmx::error_none) {
    const auto& passed = lenience.faults();
    const lmx::Diagnostic* fault = passed.empty() ? reader.diagnostic() : &passed.back();
    if (fault == nullptr) throw Failure(gkc_BadDescription, path, "is not a valid annotation");
    throw failure_of(path, *fault);
  }
  ProductFacts facts = facts_of(std::as_const(root.get_level1Product()), path);
  for (const lmx::Diagnostic& fault : lenience.faults()) {
    facts.passed_over.push_back(failure_of(path, fault));
  }
  return facts;
}

}  // namespace

ProductFacts read_product_facts(const std::string& path, Reading reading) {
  const auto lines = first_lines_of(path);
  if (lines[level_line].find(product_level_text) == std::string::npos) {
    throw Failure(gkc_NotRecognised, path, "the third line does not name a Level 1B product");
  }
  const auto version = version_of(lines[version_line]);
  if (!version) {
    throw Failure(gkc_NotRecognised, path,
                  "the seventh line tells no schema version that is known (3.4 to 4.1)");
  }
  switch (*version) {
    case schema_text_34:
      return bind<version34::c_version34>(path, reading);
    case schema_text_35:
    case schema_text_36:
      return bind<version35::c_version35>(path, reading);
    default:
      return bind<version40::c_version40>(path, reading);
  }
}

}  // namespace companion
