#include "plugin/document.h"

#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"
#include "plugin/schema_version.h"

level1bProductBase* tsx_ConstructDocument(std::int32_t versionIndex, const char* fileName,
                                          lmx::elmx_error* error) {
  switch (versionIndex) {
    case schema_text_34:
      return new version34::c_version34(fileName, error);
    case schema_text_35:
    case schema_text_36:
      return new version35::c_version35(fileName, error);
    case schema_text_37:
    case schema_text_40:
    case schema_text_41:
      return new version40::c_version40(fileName, error);
    default:
      return nullptr;
  }
}
