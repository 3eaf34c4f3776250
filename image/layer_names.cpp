#include "image/layer_names.h"

#include "gridkit/text.h"

char* tsx_FileLayerNamesGet(TsxFile* file, std::int32_t index, gke_Report** err) {
  if (err != nullptr) *err = nullptr;
  if (file->product == nullptr) return nullptr;
  const std::int32_t image = image_of_layer(*file, index);
  const char* polarisation = file->product->polLayer(static_cast<std::uint32_t>(image));
  if (polarisation == nullptr) return nullptr;
  const bool has_second = polarisation[0] != '\0';
  const char* first = polarisation[0] == 'V' ? "V" : "H";
  const char* second = has_second && polarisation[1] == 'V' ? "V" : "H";
  const char* kind = is_phase(*file, index) ? "PHASE" : "MAGNITUDE";
  return gks_Sprintf(nullptr, "X_%s%s_%s_%ld", err, first, second, kind,
                     static_cast<long>(index) + 1);
}

std::int32_t tsx_LayerCheck(const TsxFile* file, const char* layerName) {
  if (layerName == nullptr) return -1;
  gks_REComp("^[A-Z]_[A-Z][A-Z]_[A-Z]*_[1-9][0-9]*$");
  if (gks_REExec(layerName) == 0) return -1;
  const char* number = gkt_Text_strrchr(layerName, '_') + 1;
  const std::int32_t index = gkt_Text_atol(number) - 1;
  // Kept on purpose: twice the number of layers, of which a complex product's is doubled already.
  return index < std::int64_t{2} * file->layerCount ? index : -1;
}
