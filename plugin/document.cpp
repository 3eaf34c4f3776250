#include "plugin/document.h"

#include <memory>

#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"
#include "plugin/required_texts.h"
#include "plugin/schema_version.h"

namespace {

// A valid document may still lack what the open reads; it must not end the host's process.
template <class Document>
level1bProductBase* construct(const char* fileName, lmx::elmx_error* error) {
  auto document = std::make_unique<Document>(fileName, error);
  if (*error == lmx::error_none &&
      missing_required_text(document->get_level1Product()) != nullptr) {
    *error = lmx::error_element_empty;
  }
  return document.release();
}

}  // namespace

level1bProductBase* tsx_ConstructDocument(std::int32_t versionIndex, const char* fileName,
                                          lmx::elmx_error* error) {
  switch (versionIndex) {
    case schema_text_34:
      return construct<version34::c_version34>(fileName, error);
    case schema_text_35:
    case schema_text_36:
      return construct<version35::c_version35>(fileName, error);
    case schema_text_37:
    case schema_text_40:
    case schema_text_41:
      return construct<version40::c_version40>(fileName, error);
    default:
      return nullptr;
  }
}
