#include "tools/annotation/sensor_model_record.h"

#include <cstddef>
#include <memory>
#include <string_view>

#include "geometry/designs.h"
#include "geometry/mif_node.h"
#include "geometry/sensor_model.h"
#include "gridkit/dictionary.h"
#include "gridkit/error.h"
#include "gridkit/memory.h"
#include "record/tsx_file.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"

namespace {

struct FreeHeap {
  void operator()(void* block) const { gkm_HeapFree(block); }
};
template <class T>
using HeapBlock = std::unique_ptr<T, FreeHeap>;

// The open product's record as far as the model needs it, and the model that it is filled into.
class ModelledProduct {
 public:
  explicit ModelledProduct(level1bProductBase& product) {
    const std::string_view variant = product.productVariant();
    file_.productVariant = variant == "SSC"   ? variant_ssc
                           : variant == "MGD" ? variant_mgd
                                              : variant_unknown;
    file_.product = &product;
    file_.sarModel = &model_;
    file_.height = product.numberOfRows();
    file_.width = product.numberOfColumns();
  }
  ModelledProduct(const ModelledProduct&) = delete;
  ModelledProduct& operator=(const ModelledProduct&) = delete;
  ~ModelledProduct() {
    for (const RadarArray* array :
         {&model_.rsx, &model_.rsy, &model_.rsz, &model_.vsx, &model_.vsy, &model_.vsz}) {
      const HeapBlock<double> owned(array->elements);
    }
  }

  bool has_model() const { return file_.productVariant != variant_unknown; }

  const RadarGenericModel& model() {
    tsx_GenericSARRead(&file_, nullptr);
    return model_;
  }

 private:
  TsxFile file_{};
  RadarGenericModel model_{};
};

gridkit::NonStandardData encoded(const RadarGenericModel& model) {
  gkd_Dictionary* const designs = gkd_DictionaryCreate(nullptr);
  gkd_Design* const design = tsx_CreateRadarDesign(designs, nullptr);
  void* data = nullptr;
  std::int32_t size = 0;
  char* dictionary = nullptr;
  char* type = nullptr;
  tsx_CreateMIFNode(&model, designs, design, &data, &size, &dictionary, &type, nullptr);
  gkd_DesignDestroy(design);
  gkd_ReleaseDictionaries();
  const HeapBlock<void> owned_data(data);
  const HeapBlock<char> owned_dictionary(dictionary);
  const HeapBlock<char> owned_type(type);
  gridkit::NonStandardData record;
  if (data == nullptr || dictionary == nullptr || type == nullptr) return record;
  const auto* bytes = static_cast<const std::byte*>(data);
  record = {type, dictionary, {bytes, bytes + size}};
  return record;
}

}  // namespace

std::optional<gridkit::NonStandardData> sensor_model_record(const std::string& path) {
  const CheckResult check = check_leniently(path);
  if (check.error != 0 || !missing_text(path, check.schema).empty()) return std::nullopt;
  return with_root(check.schema, [&](auto& root) -> std::optional<gridkit::NonStandardData> {
    bind_leniently(root, path);
    ModelledProduct product(root);
    if (!product.has_model()) return std::nullopt;
    const gridkit::ReportCollector reports;
    const gridkit::NonStandardData record = encoded(product.model());
    if (reports.text().empty()) return record;
    throw gridkit::Error(path + ": its sensor model cannot be made: " + reports.text());
  });
}
