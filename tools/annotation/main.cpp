#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "gridkit/error.h"
#include "gridkit/product_path.h"
#include "tools/annotation/annotation_file.h"
#include "tools/annotation/check.h"
#include "tools/annotation/image_check.h"
#include "tools/annotation/rewrite.h"
#include "tools/annotation/view.h"
#include "tools/command_line/existing_output.h"
#include "tools/command_line/exit_status.h"
#include "tools/command_line/help.h"
#include "tools/command_line/program.h"
#include "tools/command_line/terminal.h"

namespace {

constexpr const char* program = "tsx-annotation";

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

nlohmann::ordered_json faults_as_json(const CheckResult& result) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const lmx::Diagnostic& fault : result.faults) {
    list.push_back({{"error", static_cast<int>(fault.code)},
                    {"name", fault.name},
                    {"path", fault.path},
                    {"line", fault.line},
                    {"column", fault.column},
                    {"message", fault.message()}});
  }
  return list;
}

// Tells what is wrong with a refused file, one line a fault.
void print_faults(const CheckResult& result) {
  if (result.faults.empty()) complain(program, result.text());
  for (const lmx::Diagnostic& fault : result.faults) complain(program, result.text_of(fault));
  if (result.ends_early) {
    complain(program, result.file + ": what follows the last fault could not be checked");
  }
}

std::string dump(const nlohmann::ordered_json& json, int indent = 2) {
  return json.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

constexpr const char* footer =
    R"(A PRODUCT is given as its annotation or as the folder that holds it.

Examples:
  tsx-annotation check PRODUCT...                    whether the annotations are valid
  tsx-annotation check --all PRODUCT                 every fault of one
  tsx-annotation check --images PRODUCT              and the image files with them
  tsx-annotation view PRODUCT                        what the plug-in reads of it
  tsx-annotation rewrite PRODUCT again.xml           written anew from what was read

Results go to standard output, remarks and errors to standard error. Exit status: 0 valid, 1 refused
(of several at least one), 2 wrong use.)";

constexpr const char* product_help = "The product: its annotation (.xml) or its folder";

constexpr const char* lenient_help =
    "Pass over values that no pixel needs, and warn of them instead";

struct Options {
  std::vector<std::string> files;
  std::string file;
  std::string output;
  std::string schema;
  bool json = false;
  bool images = false;
  bool all = false;
  bool lenient = false;
  bool overwrite = false;

  std::optional<std::string> chosen_schema() const {
    return schema.empty() ? std::nullopt : std::optional(schema);
  }
};

// The annotation itself, from what the user gave. What else is wrong with a file is told when it is
// read. Throws gridkit::Error for a folder that does not tell one product, and for a packed
// product.
std::string annotation_of(const std::string& given) {
  std::error_code ignored;
  if (!std::filesystem::is_directory(given, ignored)) {
    if (std::filesystem::exists(given, ignored)) gridkit::refuse_packed(given);
    return given;
  }
  return gridkit::find_product(
      given, {[](const auto& file) { return gridkit::has_ending(file, ".xml"); },
              [](const auto& file) { return is_recognised(file.string()); }, what_several_are});
}

// The same for one of several, of which the others are still to be told.
CheckResult check_given(const std::string& given, const Options& options) try {
  const std::string annotation = annotation_of(given);
  if (options.lenient) return check_leniently(annotation, options.chosen_schema());
  return check_annotation(annotation, options.chosen_schema(),
                          options.all ? Faults::all : Faults::first);
} catch (const gridkit::Error& error) {
  CheckResult refused = check_annotation(given, options.chosen_schema());
  refused.path.clear();
  refused.line = refused.column = 0;
  refused.message = std::string(error.what()).substr(given.size() + 2);  // after the path
  return refused;
}

// Compares the images of a valid annotation; adds what was found to `json`. Whether they can be
// trusted.
bool check_its_images(const CheckResult& valid, bool as_text, nlohmann::ordered_json& json) {
  const auto check = check_images(valid.file, valid.schema);
  if (!check) throw std::runtime_error(valid.file + ": changed while it was read");
  for (const ImageFinding& finding : check->findings) {
    (finding.serious ? complain : warn)(program, finding.line());
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

// Tells what a lenient check passed over.
void warn_of_faults(const CheckResult& result) {
  for (const lmx::Diagnostic& fault : result.faults) {
    warn(program, result.text_of(fault) + "; passed over");
  }
}

int check(const Options& options) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  bool all_good = true;
  for (const std::string& file : options.files) {
    const CheckResult result = check_given(file, options);
    nlohmann::ordered_json json = as_json(result);
    if (options.all || options.lenient) json["faults"] = faults_as_json(result);
    if (options.lenient) warn_of_faults(result);
    if (result.error != 0) {
      if (options.lenient) {
        complain(program, result.text());
      } else {
        print_faults(result);
      }
      all_good = false;
    } else {
      if (!options.json) {
        std::cout << result.file << ": valid in schema " << result.schema << ", version text "
                  << result.version.value_or("not found on line 7")
                  << (result.faults.empty() ? "" : ", but for what was passed over") << '\n';
      }
      if (options.images) all_good = check_its_images(result, !options.json, json) && all_good;
    }
    list.push_back(std::move(json));
  }
  if (options.json) std::cout << dump(list) << '\n';
  return all_good ? exit_done : exit_refused;
}

// A valid annotation and its schema. Throws gridkit::Error otherwise.
CheckResult valid_annotation(const Options& options) {
  const std::string annotation = annotation_of(options.file);
  CheckResult result = options.lenient ? check_leniently(annotation, options.chosen_schema())
                                       : check_annotation(annotation, options.chosen_schema());
  if (result.error != 0) throw gridkit::Error(result.text());
  warn_of_faults(result);
  return result;
}

int view(const Options& options) {
  const CheckResult annotation = valid_annotation(options);
  const nlohmann::ordered_json values = view_of(annotation.file, annotation.schema);
  if (options.json) {
    std::cout << dump(values) << '\n';
    return 0;
  }
  const bool is_complex = values["imageDataFormat"] == "COSAR";
  for (const auto& [accessor, value] : values.items()) {
    const std::string unit = unit_of(accessor, is_complex);
    std::cout << accessor << ": " << dump(value, -1) << (unit.empty() ? "" : " ") << unit << '\n';
  }
  return 0;
}

int rewrite(const Options& options) {
  check_existing(options.output, options.overwrite);
  const CheckResult annotation = valid_annotation(options);
  rewrite_annotation(annotation.file, annotation.schema, options.output, options.overwrite);
  return 0;
}

int run(int argc, char** argv) {
  CLI::App app("Checks, shows and rewrites TerraSAR-X Level 1B annotations", program);
  begin_program(app);
  app.require_subcommand(1);
  Options options;
  const auto add_schema = [&](CLI::App* command) {
    take_one_of(command->add_option("--schema", options.schema,
                                    "Bind to this schema, whatever the file says"),
                {std::begin(schema_names), std::end(schema_names)});
  };

  CLI::App* check_command = app.add_subcommand("check", "Tell whether annotations are valid");
  check_command
      ->add_option("PRODUCT", options.files, "Products: their annotations (.xml) or their folders")
      ->required();
  check_command->add_flag("--json", options.json, "As JSON on standard output");
  auto* all = check_command->add_flag("--all", options.all,
                                      "List every fault that can be told, not the first");
  check_command->add_flag("--lenient", options.lenient, lenient_help)->excludes(all);
  check_command->add_flag("--images", options.images,
                          "Compare the image files' headers with the annotation too");
  add_schema(check_command);

  CLI::App* view_command =
      app.add_subcommand("view", "Show what the plug-in reads of an annotation, one value a line");
  view_command->add_option("PRODUCT", options.file, product_help)->required();
  view_command->add_flag("--json", options.json, "As JSON on standard output");
  view_command->add_flag("--lenient", options.lenient, lenient_help);
  add_schema(view_command);

  CLI::App* rewrite_command =
      app.add_subcommand("rewrite", "Write an annotation anew from what was read");
  rewrite_command->add_option("PRODUCT", options.file, product_help)->required();
  rewrite_command->add_option("OUTPUT", options.output, "Annotation to write")->required();
  rewrite_command->add_flag("--overwrite", options.overwrite, "Replace an output that exists");
  add_schema(rewrite_command);

  head_verbs(app);
  app.footer(footer);  // not the verbs' own
  return run_program(app, argc, argv, [&] {
    if (check_command->parsed()) return check(options);
    if (view_command->parsed()) return view(options);
    return rewrite(options);
  });
}

}  // namespace

int main(int argc, char** argv) try { return run(argc, argv); } catch (...) {
  return tell_refusal(program);
}
