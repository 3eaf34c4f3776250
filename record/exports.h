#pragma once

#include <stdint.h>

// The plug-in's whole contract with its host. Texts are zero-ended and 8-bit. What a function hands
// out is allocated with gkm_HeapMalloc and belongs to the host. Results are 0 for success and -1
// for failure where nothing else is said; what failed was printed as a report.

#define TSX_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

typedef struct TsxFile TsxFile;    // opaque to the host
typedef struct TsxLayer TsxLayer;  // opaque to the host
typedef void* MifValue;            // opaque to the plug-in

// The format's descriptors: constant, a fresh copy at each call. Templates, extensions and short
// names are as many as the titles, one; the template list comes with one byte of value 0 a
// template.
TSX_EXPORT int32_t tsxInstanceDescriptionGet(char** description);
TSX_EXPORT int32_t tsxInstanceTitleListGet(int32_t* count, char*** titles);
TSX_EXPORT int32_t tsxInstanceTemplateListGet(char*** templates, unsigned char** flags);
TSX_EXPORT int32_t tsxInstanceExtListGet(char*** extensions);
TSX_EXPORT int32_t tsxInstanceShortNameListGet(char*** shortNames);
TSX_EXPORT int32_t tsxInstancePixelTypesGet(int32_t* count, char*** pixelTypes);  // always 0
TSX_EXPORT int32_t tsxInstanceLayerTypesGet(int32_t* count, char*** layerTypes);  // always 0

// 1 when a projection in MIF form can be held, else 0.
TSX_EXPORT int32_t tsxInstanceMapProjectionIsSupported(void* instance, const char* projectionName,
                                                       MifValue mifValue2, MifValue mifValue3,
                                                       MifValue mifValue4, MifValue mifValue5,
                                                       MifValue mifValue6, MifValue mifValue7,
                                                       MifValue mifValue8, MifValue mifValue9);

// Identifies a file, and opens it unless `mode` is null. titleIndex (may be null) receives 0 for a
// file of this format, else -1. A second open of a path gives the same record. An open that fails
// late gives its unfinished record: it is not in the registry and must not be used.
TSX_EXPORT TsxFile* tsxFileTitleIdentifyAndOpen(const char* fileName, int32_t* titleIndex,
                                                const char* mode);

// Takes a record out of the registry, which ends it. Null is accepted. Always 0.
TSX_EXPORT int32_t tsxFileClose(TsxFile* file);

// -1 as out value when the product has no sensor model, else 0. Always 0.
TSX_EXPORT int32_t tsxFileDataModTimeGet(TsxFile* file, const char* dataName, int64_t* time);

TSX_EXPORT int32_t tsxFileLayerNamesGet(TsxFile* file, int32_t* count, char*** names);
TSX_EXPORT int32_t tsxFileRasterFormatsNonStandardDataNamesGet(TsxFile* file, int32_t* count,
                                                               char*** names);
TSX_EXPORT int32_t tsxFileDataRead(TsxFile* file, const char* dataName, void** data, int32_t* size,
                                   char** dictionary, char** typeName);

// Always 0; `layer` is null when the name is refused or memory ran out. pixelType and layerType are
// indices into the lists above. The block size is the number preference "default_block_size" of the
// group "import".
TSX_EXPORT int32_t tsxLayerOpen(TsxFile* file, const char* layerName, int32_t* pixelType,
                                int32_t* width, int32_t* height, int32_t* layerType,
                                int32_t* blockWidth, int32_t* blockHeight, TsxLayer** layer);
TSX_EXPORT int32_t tsxLayerClose(TsxLayer* layer);  // always 0

// One block of [blockHeight][blockWidth] 16-bit pixels into the buffer at *pixelData, which is set
// to null when a complex layer has no data for the block.
TSX_EXPORT int32_t tsxLayerRasterRead(TsxLayer* layer, int32_t blockRow, int32_t blockColumn,
                                      void** pixelData);

TSX_EXPORT int32_t tsxLayerMapInfoRead(TsxLayer* layer, char** projectionName, double* upperLeftX,
                                       double* upperLeftY, double* pixelWidth, double* pixelHeight,
                                       char** units);
TSX_EXPORT int32_t tsxLayerMapProjectionRead(TsxLayer* layer, char** projectionName,
                                             MifValue* mifValue2, MifValue* mifValue3,
                                             MifValue* mifValue4, MifValue* mifValue5,
                                             MifValue* mifValue6, MifValue* mifValue7,
                                             MifValue* mifValue8, MifValue* mifValue9);

#ifdef __cplusplus
}
#endif
