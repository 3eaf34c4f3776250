#include <initializer_list>

#include "record/exports.h"
#include "record/tsx_file.h"

// Data that products do not publish yet: maps and records beside the pixels. Each answers as it
// does for a product without that data.

// An image without a map is supported, and no projection is.
int32_t tsxInstanceMapProjectionIsSupported(void*, const char* projectionName, MifValue, MifValue,
                                            MifValue, MifValue mifValue5, MifValue, MifValue,
                                            MifValue, MifValue) {
  return projectionName == nullptr && mifValue5 == nullptr ? 1 : 0;
}

// No data: a variant outside the four has no list at all, the others have an empty one.
int32_t tsxFileRasterFormatsNonStandardDataNamesGet(TsxFile* file, int32_t* count, char*** names) {
  if (file->productVariant == variant_unknown) return -1;
  *count = 0;
  *names = nullptr;
  return 0;
}

// An unknown name is no failure, and the outs stay as they were.
int32_t tsxFileDataRead(TsxFile*, const char*, void**, int32_t*, char**, char**) {
  return 0;
}

// The outs stay as they were: the host reads that as no map.
int32_t tsxLayerMapInfoRead(TsxLayer*, char**, double*, double*, double*, double*, char**) {
  return 0;
}

int32_t tsxLayerMapProjectionRead(TsxLayer*, char** projectionName, MifValue* mifValue2,
                                  MifValue* mifValue3, MifValue* mifValue4, MifValue* mifValue5,
                                  MifValue* mifValue6, MifValue* mifValue7, MifValue* mifValue8,
                                  MifValue* mifValue9) {
  *projectionName = nullptr;
  for (MifValue* value :
       {mifValue2, mifValue3, mifValue4, mifValue5, mifValue6, mifValue7, mifValue8, mifValue9}) {
    *value = nullptr;
  }
  return 0;
}
