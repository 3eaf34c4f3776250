#pragma once

#include <cstdint>

#include "binding/level1bProductBase.h"
#include "lmx/error.h"

// Binds the annotation at `fileName` to the classes that a schema index stands for: 3.4 serves its
// own text, 3.5 the texts 3.5 and 3.6, and 4.0 the texts 3.7, 4.0 and 4.1. The whole file is parsed
// here, strictly; `*error` is 0 or the first fault, or error_element_empty for a valid annotation
// that lacks a text the open reads (plugin/required_texts.h). Null, and `*error` as it was, for an
// index above the last. The caller owns the document. Allocation failures are exceptions.
level1bProductBase* tsx_ConstructDocument(std::int32_t versionIndex, const char* fileName,
                                          lmx::elmx_error* error);
