#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"
#include "tools/annotation/image_check.h"
#include "tools/annotation/rewrite.h"
#include "tools/annotation/view.h"

namespace {

constexpr int refused = 1;
constexpr int wrong_use = 2;

nlohmann::ordered_json as_json(const CheckResult& result) {
  nlohmann::ordered_json json;
  json["file"] = result.file;
  json["version"] = result.version ? nlohmann::ordered_json(*result.version) : nullptr;
  json["schema"] = result.schema;
  json["error"] = result.error;
  json["name"] = result.error != 0 ? nlohmann::ordered_json(result.name) : nullptr;
  json["path"] = result.path;
  json["line"] = result.line;
  json["column"] = result.column;
  json["message"] = result.message;
  return json;
}

nlohmann::ordered_json findings_as_json(const std::vector<ImageFinding>& findings) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const ImageFinding& finding : findings) {
    list.push_back({{"file", finding.path},
                    {"what", finding.what},
                    {"found", finding.found},
                    {"expected", finding.expected},
                    {"authority", name_of(finding.authority)},
                    {"serious", finding.serious}});
  }
  return list;
}

nlohmann::ordered_json images_as_json(const std::vector<CheckedImage>& images) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const CheckedImage& image : images) {
    list.push_back({{"file", image.path}, {"facts", image.facts}, {"agrees", image.agrees}});
  }
  return list;
}

std::string dump(const nlohmann::ordered_json& json) {
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

struct Options {
  std::vector<std::string> files;
  std::string file;
  std::string output;
  std::string schema;
  bool json = false;
  bool images = false;

  std::optional<std::string> chosen_schema() const {
    return schema.empty() ? std::nullopt : std::optional(schema);
  }
};

// Compares the images of a valid annotation; adds what was found to `json`. Whether they can be
// trusted.
bool check_its_images(const CheckResult& valid, bool as_text, nlohmann::ordered_json& json) {
  const auto check = check_images(valid.file, valid.schema);
  if (!check) throw std::runtime_error(valid.file + ": changed while it was read");
  for (const ImageFinding& finding : check->findings) {
    std::cerr << "tsx-annotation: " << (finding.serious ? "" : "warning: ") << finding.line()
              << '\n';
  }
  json["images"] = images_as_json(check->images);
  json["findings"] = findings_as_json(check->findings);
  if (!as_text) return !check->has_serious();
  for (const CheckedImage& image : check->images) {
    if (image.agrees) {
      std::cout << image.path << ": as the annotation says: " << image.facts << '\n';
    }
  }
  return !check->has_serious();
}

int check(const Options& options) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  bool all_good = true;
  for (const std::string& file : options.files) {
    const CheckResult result = check_annotation(file, options.chosen_schema());
    nlohmann::ordered_json json = as_json(result);
    if (result.error != 0) {
      std::cerr << "tsx-annotation: " << result.text() << '\n';
      all_good = false;
    } else {
      if (!options.json) {
        std::cout << file << ": valid in schema " << result.schema << ", version text "
                  << result.version.value_or("not found on line 7") << '\n';
      }
      if (options.images) all_good = check_its_images(result, !options.json, json) && all_good;
    }
    list.push_back(std::move(json));
  }
  if (options.json) std::cout << dump(list) << '\n';
  return all_good ? 0 : refused;
}

// The schema in which the file is valid; refuses with a message otherwise.
bool is_valid(const Options& options, std::string* schema) {
  const CheckResult result = check_annotation(options.file, options.chosen_schema());
  *schema = result.schema;
  if (result.error != 0) std::cerr << "tsx-annotation: " << result.text() << '\n';
  return result.error == 0;
}

int view(const Options& options) {
  std::string schema;
  if (!is_valid(options, &schema)) return refused;
  const nlohmann::ordered_json values = view_of(options.file, schema);
  if (options.json) {
    std::cout << dump(values) << '\n';
    return 0;
  }
  for (const auto& [accessor, value] : values.items()) {
    std::cout << accessor << ": " << value.dump() << '\n';
  }
  return 0;
}

int rewrite(const Options& options) {
  std::string schema;
  if (!is_valid(options, &schema)) return refused;
  const std::string failure = rewrite_annotation(options.file, schema, options.output);
  if (failure.empty()) return 0;
  std::cerr << "tsx-annotation: " << failure << '\n';
  return refused;
}

int run(int argc, char** argv) {
  CLI::App app("Checks, shows and rewrites TerraSAR-X Level 1B annotations");
  app.require_subcommand(1);
  Options options;
  const auto add_schema = [&](CLI::App* command) {
    command->add_option("--schema", options.schema, "Bind to this schema, whatever the file says")
        ->check(CLI::IsMember(std::vector<std::string>{"3.4", "3.5", "4.0"}));
  };

  CLI::App* check_command = app.add_subcommand("check", "Bind annotations strictly");
  check_command->add_option("FILE", options.files, "Annotations")->required();
  check_command->add_flag("--json", options.json, "Results as JSON on standard output");
  check_command->add_flag("--images", options.images,
                          "Compare the image files' headers with the annotation too");
  add_schema(check_command);

  CLI::App* view_command = app.add_subcommand("view", "Show what the plug-in reads");
  view_command->add_option("FILE", options.file, "Annotation")->required();
  view_command->add_flag("--json", options.json, "As one JSON object");
  add_schema(view_command);

  CLI::App* rewrite_command = app.add_subcommand("rewrite", "Bind an annotation and write it back");
  rewrite_command->add_option("FILE", options.file, "Annotation")->required();
  rewrite_command->add_option("OUTPUT", options.output, "File to write")->required();
  add_schema(rewrite_command);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : wrong_use;
  }
  if (check_command->parsed()) return check(options);
  if (view_command->parsed()) return view(options);
  return rewrite(options);
}

}  // namespace

int main(int argc, char** argv) try {
  return run(argc, argv);
} catch (const std::exception& error) {
  std::fprintf(stderr, "tsx-annotation: %s\n", error.what());
  return refused;
}
