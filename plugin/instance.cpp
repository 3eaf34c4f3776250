#include <cstddef>
#include <cstdint>

#include "gridkit/memory.h"
#include "gridkit/text.h"
#include "plugin/string_lists.h"
#include "record/exports.h"

// The format's descriptors. They need no product and touch no state.

namespace {

constexpr const char* description_text =
    "Raster DLL for TerraSAR-X Radar Sensor, launched: June 15, 2007";
constexpr const char* titles_list[] = {"TerraSAR-X"};
constexpr const char* templates_list[] = {"TSX1*.xml"};
constexpr const char* short_names_list[] = {"xml"};
constexpr const char* extensions_list[] = {".xml"};
constexpr const char* pixel_types_list[] = {"u16", "s16"};
constexpr const char* layer_types_list[] = {"athematic"};
constexpr unsigned char template_flag = 0;  // one a template; the host receives a zero

template <std::size_t count>
std::int32_t hand_out(const char* const (&list)[count], char*** target) {
  return tsx_StringListCopy(target, list, static_cast<std::int32_t>(count));
}

// These lists answer success whatever happened; an entry without memory is null.
template <std::size_t count>
std::int32_t hand_out_always(const char* const (&list)[count], std::int32_t* number,
                             char*** target) {
  *number = static_cast<std::int32_t>(count);
  *target = static_cast<char**>(gkm_HeapMalloc(count * sizeof(char*)));
  for (std::size_t i = 0; *target != nullptr && i < count; ++i) {
    (*target)[i] = gks_Duplicate(list[i]);
  }
  return 0;
}

}  // namespace

int32_t tsxInstanceDescriptionGet(char** description) {
  *description = gks_Duplicate(description_text);
  return *description != nullptr ? 0 : -1;
}

int32_t tsxInstanceTitleListGet(int32_t* count, char*** titles) {
  const std::int32_t result = hand_out(titles_list, titles);
  *count = result == 0 ? 1 : 0;
  return result;
}

int32_t tsxInstanceTemplateListGet(char*** templates, unsigned char** flags) {
  if (hand_out(templates_list, templates) != 0) return -1;
  *flags = static_cast<unsigned char*>(gkm_MemDup(&template_flag, sizeof template_flag));
  if (*flags != nullptr) return 0;
  tsx_StringListFree(templates, 1);
  return -1;
}

int32_t tsxInstanceExtListGet(char*** extensions) {
  return hand_out(extensions_list, extensions);
}

int32_t tsxInstanceShortNameListGet(char*** shortNames) {
  return hand_out(short_names_list, shortNames);
}

int32_t tsxInstancePixelTypesGet(int32_t* count, char*** pixelTypes) {
  return hand_out_always(pixel_types_list, count, pixelTypes);
}

int32_t tsxInstanceLayerTypesGet(int32_t* count, char*** layerTypes) {
  return hand_out_always(layer_types_list, count, layerTypes);
}
