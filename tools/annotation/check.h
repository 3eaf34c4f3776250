#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "lmx/diagnostic.h"

// The result of binding an annotation strictly.
struct CheckResult {
  std::string file;
  std::optional<std::string> version;  // text on the version line
  std::string schema;
  int error = 0;
  std::string name;  // element or class that the fault was reported with
  std::string path;  // of the element concerned
  std::uint64_t line = 0;
  std::uint64_t column = 0;
  std::string message;  // one sentence

  // With every fault asked for: all that could be told, the first of which is the one above, and
  // whether the rest of the document could not be looked at.
  std::vector<lmx::Diagnostic> faults;
  bool ends_early = false;

  // "FILE:LINE:COLUMN: PATH: MESSAGE", as far as there are such parts.
  std::string text() const;
  std::string text_of(const lmx::Diagnostic& fault) const;
};

enum class Faults { first, all };

// Binds the file to the classes of `schema`, or of the schema that its version line asks for.
CheckResult check_annotation(const std::string& path, const std::optional<std::string>& schema = {},
                             Faults wanted = Faults::first);

// The same, over the values that schema/lenience.h tells: without an error where there are no other
// faults. `faults` are those that were passed over.
CheckResult check_leniently(const std::string& path, const std::optional<std::string>& schema = {});

// The element without which a plug-in cannot open a valid annotation, empty where there is none.
std::string missing_text(const std::string& path, const std::string& schema);

// What is wrong with the image files that a valid annotation names, one sentence each: how many
// there should be, and each that is not there or is no file that can be read.
std::vector<std::string> image_faults(const std::string& path, const std::string& schema);
