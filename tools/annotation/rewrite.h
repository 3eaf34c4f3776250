#pragma once

#include <string>

// Binds an annotation that is valid in the schema and writes it back to `target`, laid out so that
// a host recognises it. Nothing is left under the target's name when that fails. The text says what
// failed, empty on success.
std::string rewrite_annotation(const std::string& source, const std::string& schema,
                               const std::string& target);
