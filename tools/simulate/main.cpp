#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "tools/simulate/product.h"

namespace {

using namespace simulate;

constexpr int refused = 1;
constexpr int wrong_use = 2;

template <class T>
CLI::CheckedTransformer one_of(const std::map<std::string, T>& names) {
  return CLI::CheckedTransformer(names, CLI::ignore_case);
}

void add_options(CLI::App& app, Options& o, std::vector<double>& centre, std::string& projection) {
  const std::vector<std::string> layers = {"HH", "HV", "VH", "VV"};
  const std::vector<std::string> corners = {"EARLYAZNEARRG", "EARLYAZFARRG", "LATEAZNEARRG",
                                            "LATEAZFARRG"};
  const std::map<std::string, Variant> variants = {
      {"SSC", Variant::ssc}, {"MGD", Variant::mgd}, {"GEC", Variant::gec}, {"EEC", Variant::eec}};
  const std::map<std::string, Profile> profiles = {
      {"minimal", Profile::minimal}, {"typical", Profile::typical}, {"maximal", Profile::maximal}};
  const std::map<std::string, Mode> modes = {
      {"stripmap", Mode::stripmap}, {"spotlight", Mode::spotlight}, {"scansar", Mode::scansar}};
  const std::map<std::string, Pass> passes = {{"ascending", Pass::ascending},
                                              {"descending", Pass::descending}};
  const std::map<std::string, Look> looks = {{"right", Look::right}, {"left", Look::left}};
  app.add_option("--variant", o.variant, "SSC, MGD, GEC or EEC")->transform(one_of(variants));
  app.add_option("--polarisations", o.polarisations, "Such as HH,VV")
      ->delimiter(',')
      ->check(CLI::IsMember(layers));
  app.add_option("--version-text", o.version_text, "3.4 to 4.1, or longer, such as 4.11");
  app.add_option("--lines", o.lines, "64 to 40000");
  app.add_option("--samples", o.samples, "64 to 40000");
  app.add_option("--seed", o.seed, "Of the image content");
  app.add_option("--centre", centre, "Latitude and longitude of the scene, degrees")
      ->delimiter(',')
      ->expected(2);
  app.add_option("--height", o.height, "Average height of the scene, metres");
  app.add_option("--pass", o.pass, "ascending or descending")->transform(one_of(passes));
  app.add_option("--look", o.look, "right or left")->transform(one_of(looks));
  app.add_option("--incidence", o.incidence, "At the centre, degrees");
  app.add_option("--start", o.start, "Scene start, UTC");
  app.add_option("--profile", o.profile, "Optional members: minimal, typical or maximal")
      ->transform(one_of(profiles));
  app.add_option("--mode", o.mode, "stripmap, spotlight or scansar")->transform(one_of(modes));
  app.add_option("--projection", projection, "UTM or UPS, of GEC and EEC")
      ->check(CLI::IsMember(std::vector<std::string>{"UTM", "UPS"}));
  app.add_option("--start-with", o.start_with, "Corner that an MGD raster begins with")
      ->check(CLI::IsMember(corners));
  app.add_option("--size-mb", o.annotation_megabytes, "Size of the annotation, megabytes");
  app.add_flag("--empty-images", o.empty_images,
               "Image files of the right size with no samples, taking hardly any room");
  app.add_option("--targets", o.targets, "Point targets")->check(CLI::Range(0, 400));
}

int run(int argc, char** argv) {
  CLI::App app("Writes synthetic TerraSAR-X Level 1B products");
  Options options;
  std::vector<double> centre;
  std::string projection;
  std::string folder;
  std::string annotation;
  auto* out = app.add_option("FOLDER", folder, "Where the product's folder is made");
  auto* images =
      app.add_option("--images-for", annotation,
                     "Make image files for this annotation, in its own folder or FOLDER");
  add_options(app, options, centre, projection);
  try {
    app.parse(argc, argv);
    if (out->count() + images->count() == 0) throw CLI::RequiredError("FOLDER or --images-for");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : wrong_use;
  }
  if (!annotation.empty()) {
    std::cout << write_images_for(annotation, folder) << '\n';
    return 0;
  }
  if (centre.size() == 2) {
    options.latitude = centre[0];
    options.longitude = centre[1];
  }
  options.polar_projection = projection == "UPS";
  std::cout << write_product_folder(options, folder) << '\n';
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  return run(argc, argv);
} catch (const std::exception& error) {
  std::fprintf(stderr, "tsx-simulate: %s\n", error.what());
  return refused;
}
