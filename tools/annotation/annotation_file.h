#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "binding/fault_collector.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"
#include "schema/lenience.h"

// An annotation by itself, apart from any product: which schema it asks for, and its document.

inline constexpr std::string_view schema_names[] = {"3.4", "3.5", "4.0"};

// What an annotation says of its version.
struct VersionLine {
  std::optional<std::string> text;  // the version text found on the seventh line
  std::string schema;               // the schema that serves it; "4.0" without a text
};

// Looks at the first seven lines only. A file that cannot be read has no version text.
VersionLine read_version_line(const std::string& path);

// Whether a host that takes sister satellites takes the file for an annotation, by its first seven
// lines.
bool is_recognised(const std::string& path);

// What several annotations of one folder are, in words: "a pair of products, ..." where two
// satellites took them together, else "several products".
std::string what_several_are(const std::vector<std::filesystem::path>& annotations);

// Calls `visit` with an empty document root of the schema ("3.4", "3.5" or "4.0").
template <class Visitor>
auto with_root(std::string_view schema, Visitor visit) {
  if (schema == "3.4") {
    version34::c_version34 root;
    return visit(root);
  }
  if (schema == "3.5") {
    version35::c_version35 root;
    return visit(root);
  }
  version40::c_version40 root;
  return visit(root);
}

// Binds the file to an empty root, over the values that schema/lenience.h tells: what looks into
// the annotation of a product that is open need not ask how it was opened.
template <class Root>
lmx::elmx_error bind_leniently(Root& root, const std::string& path) {
  lmx::c_xml_reader_file reader(path.c_str());
  if (!reader.is_open()) return lmx::elmx_error{lmx::error_cannot_open};
  binding::FaultCollector lenience(level1bProduct::may_be_passed_over);
  lenience.watch(reader);
  return root.unmarshal(reader);
}
