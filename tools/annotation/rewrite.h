#pragma once

#include <string>

// Binds an annotation that is valid in the schema and writes it back to `target`, laid out so that
// a host recognises it. Whatever goes wrong, nothing that is not whole has the target's name.
// Throws gridkit::Error that says what failed, also where a file of the name is there already and
// is not to be overwritten.
void rewrite_annotation(const std::string& source, const std::string& schema,
                        const std::string& target, bool overwrite);
