#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tools/command_line/help.h"
#include "tools/simulate/product.h"

namespace {

using namespace simulate;

constexpr int refused = 1;
constexpr int wrong_use = 2;

constexpr const char* footer =
    R"(The product's folder is made in FOLDER, and the path of its annotation printed. The same options give
the same bytes.

Examples:
  tsx-simulate out
  tsx-simulate out --variant MGD --polarisations HH,VV --lines 2000 --samples 1500
  tsx-simulate out --centre=-49.9,-73.2 --pass ascending --look left
  tsx-simulate --images-for annotation.xml out

Exit status: 0 done, 1 refused, 2 wrong use.)";

void add_kind_of_product(CLI::App& app, Options& o) {
  take_one_of<Variant>(
      app.add_option("--variant", o.variant,
                     "Complex, ground range, or on a map: on the ellipsoid or on a "
                     "terrain model")
          ->default_str("SSC"),
      {{"SSC", Variant::ssc}, {"MGD", Variant::mgd}, {"GEC", Variant::gec}, {"EEC", Variant::eec}});
  app.add_option("--polarisations", o.polarisations,
                 "Up to four of HH, HV, VH and VV, with commas between")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(CLI::IsMember(std::vector<std::string>{"HH", "HV", "VH", "VV"}).description(""))
      ->type_name("LIST")
      ->default_str("HH");
  app.add_option("--version-text", o.version_text,
                 "Of the annotation: 3.4 to 4.1, or longer, such as 4.11")
      ->type_name("TEXT")
      ->capture_default_str();
  take_one_of<Profile>(app.add_option("--profile", o.profile,
                                      "Optional members: none, those of usual products, or all")
                           ->default_str("typical"),
                       {{"minimal", Profile::minimal},
                        {"typical", Profile::typical},
                        {"maximal", Profile::maximal}});
  take_one_of<Mode>(
      app.add_option("--mode", o.mode, "Imaging mode")->default_str("stripmap"),
      {{"stripmap", Mode::stripmap}, {"spotlight", Mode::spotlight}, {"scansar", Mode::scansar}});
  take_one_of<bool>(
      app.add_option("--projection", o.polar_projection, "Of GEC and EEC")->default_str("UTM"),
      {{"UTM", false}, {"UPS", true}});
  auto* start_with =
      app.add_option("--start-with", o.start_with, "Corner that an MGD raster begins with");
  take_one_of(start_with, {"EARLYAZNEARRG", "EARLYAZFARRG", "LATEAZNEARRG", "LATEAZFARRG"});
  start_with->capture_default_str();
}

void add_size_and_content(CLI::App& app, Options& o) {
  app.add_option("--lines", o.lines, "64 to 40000")->type_name("COUNT")->capture_default_str();
  app.add_option("--samples", o.samples, "64 to 40000")->type_name("COUNT")->capture_default_str();
  app.add_option("--size-mb", o.annotation_megabytes,
                 "Size that the annotation grows to, megabytes")
      ->type_name("SIZE");
  app.add_flag("--empty-images", o.empty_images,
               "Image files of the right size with no samples, taking hardly any room");
  app.add_option("--seed", o.seed, "Of the image content")
      ->type_name("NUMBER")
      ->capture_default_str();
  take_range(
      app.add_option("--targets", o.targets, "Point targets, 0 to 400")->capture_default_str(),
      "COUNT", 0, 400);
}

void add_geometry(CLI::App& app, Options& o, std::vector<double>& centre) {
  app.add_option("--centre", centre, "Of the scene, degrees")
      ->delimiter(',')
      ->expected(2)
      ->type_name("LATITUDE,LONGITUDE")
      ->default_str("48.08,11.28");
  app.add_option("--height", o.height, "Average height of the scene above the ellipsoid")
      ->type_name("METRES")
      ->capture_default_str();
  take_one_of<Pass>(
      app.add_option("--pass", o.pass, "Direction of flight")->default_str("descending"),
      {{"ascending", Pass::ascending}, {"descending", Pass::descending}});
  take_one_of<Look>(app.add_option("--look", o.look, "Side of the track")->default_str("right"),
                    {{"right", Look::right}, {"left", Look::left}});
  app.add_option("--incidence", o.incidence, "At the centre")
      ->type_name("DEGREES")
      ->capture_default_str();
  app.add_option("--start", o.start, "Of the scene, UTC")->type_name("TIME")->capture_default_str();
}

int run(int argc, char** argv) {
  CLI::App app("Writes synthetic TerraSAR-X Level 1B products", "tsx-simulate");
  shape_help(app);
  app.footer(footer);
  Options options;
  std::vector<double> centre;
  std::string folder;
  std::string annotation;
  auto* out = app.add_option("FOLDER", folder, "Where the product's folder is made");
  auto* images =
      app.add_option("--images-for", annotation,
                     "Make image files for this annotation, in its own folder or FOLDER");
  images->type_name("ANNOTATION");
  add_kind_of_product(app, options);
  add_size_and_content(app, options);
  add_geometry(app, options, centre);
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
