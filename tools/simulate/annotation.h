#pragma once

#include <ostream>
#include <string>

#include "tools/simulate/annotation_source.h"

namespace simulate {

// Writes the product's annotation through the annotation classes of the schema that serves its
// version text. Throws std::runtime_error when writing fails.
void write_annotation(const AnnotationSource& source, std::ostream& out);

// The schema, "3.4", "3.5" or "4.0", that serves a version text; empty for a text that none serves.
std::string schema_for(const std::string& version_text);

}  // namespace simulate
