#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tools/command_line/exit_status.h"
#include "tools/command_line/help.h"
#include "tools/command_line/program.h"
#include "tools/command_line/wrong_use.h"
#include "tools/simulate/images_for.h"
#include "tools/simulate/product.h"

namespace {

using namespace simulate;

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
  take_one_of(app.add_option("--satellite", o.satellite, "TerraSAR-X or one of its sisters")
                  ->capture_default_str(),
              {"TSX-1", "TDX-1", "PAZ-1"});
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
  take_range(app.add_option("--lines", o.lines, "64 to 40000")->capture_default_str(), "COUNT", 64,
             40000);
  take_range(app.add_option("--samples", o.samples, "64 to 40000")->capture_default_str(), "COUNT",
             64, 40000);
  app.add_option("--size-mb", o.annotation_megabytes,
                 "Size that the annotation grows to, megabytes")
      ->type_name("SIZE");
  app.add_flag("--empty-images", o.empty_images,
               "Image files of the right size with no samples, taking hardly any room");
  app.add_flag("--overwrite", o.overwrite, "Replace files that exist");
  app.add_option("--seed", o.seed, "Of the image content")
      ->type_name("NUMBER")
      ->capture_default_str();
  take_range(
      app.add_option("--targets", o.targets, "Point targets, 0 to 400")->capture_default_str(),
      "COUNT", 0, 400);
}

void add_kind_of_cosar(CLI::App& app, Options& o) {
  take_one_of<SampleType>(
      app.add_option("--sample-type", o.cosar.sample_type,
                     "Of SSC images: 16-bit integers, or the half-precision floats of bistatic "
                     "products")
          ->default_str("int16"),
      {{"int16", SampleType::int16}, {"half", SampleType::half}});
  take_range(app.add_option("--bursts", o.cosar.bursts,
                            "Bursts of a ScanSAR SSC image, which overlap, 1 to 64; more than one "
                            "brings --mode scansar")
                 ->capture_default_str(),
             "COUNT", 1, 64);
  take_range(app.add_option("--record-padding", o.cosar.record_padding,
                            "Samples by which the records of SSC images are wider than their "
                            "lines, 0 to 10000")
                 ->capture_default_str(),
             "COUNT", 0, 10000);
  take_range(app.add_option("--edge-taper", o.cosar.edge_taper,
                            "Samples by which the valid area of SSC images leans, 0 to 1000")
                 ->capture_default_str(),
             "COUNT", 0, 1000);
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
  take_range(
      app.add_option("--incidence", o.incidence, "At the centre, 15 to 60")->capture_default_str(),
      "DEGREES", 15.0, 60.0);
  app.add_option("--start", o.start, "Of the scene, UTC")->type_name("TIME")->capture_default_str();
}

// Seconds from a smaller unit, of which so many are a second.
CLI::Option* add_delay(CLI::App& app, const char* name, double& seconds, double a_second,
                       const char* unit_name, const char* what) {
  return app
      .add_option_function<double>(
          name, [&seconds, a_second](double value) { seconds = value / a_second; }, what)
      ->type_name(unit_name)
      ->default_str("0");
}

void add_terrain_and_signal(CLI::App& app, Options& o) {
  app.add_option("--dem", o.terrain_file,
                 "Terrain model of an SSC, MGD or EEC: a GeoTIFF of heights above "
                 "the ellipsoid that reaches beyond the scene")
      ->type_name("FILE");
  app.add_option("--relief", o.relief,
                 "Or a terrain of hills, from the lowest to the highest that may occur; written "
                 "beside the truth as terrain.tif")
      ->type_name("METRES")
      ->capture_default_str();
  add_delay(app, "--troposphere", o.delays.troposphere, 1e9, "NANOSECONDS",
            "Delay of the range times in the raster, as the geolocation grid tells it");
  add_delay(app, "--ionosphere", o.delays.ionosphere, 1e9, "NANOSECONDS", "The same");
  add_delay(app, "--azimuth-shift", o.delays.azimuth_shift, 1e6, "MICROSECONDS",
            "Of the azimuth times in the raster, usually negative");
}

// What the images of an annotation that exists can be asked to be.
constexpr std::string_view image_options[] = {
    "--images-for",     "--seed",       "--targets",   "--empty-images", "--sample-type",
    "--record-padding", "--edge-taper", "--overwrite", "--help",         "FOLDER"};

void refuse_options_of_scenes(const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    const std::string name = option->get_name();
    const bool serves = std::find(std::begin(image_options), std::end(image_options),
                                  std::string_view(name)) != std::end(image_options);
    if (option->count() > 0 && !serves) {
      throw WrongUse(name + " cannot be used with --images-for: the annotation tells it");
    }
  }
}

// What the options ask for and cannot be is wrong use.
template <class Work>
auto as_asked(Work work) try {
  return work();
} catch (const std::invalid_argument& error) {
  throw WrongUse(error.what());
}

// The annotation's path on standard output, what was done on standard error.
void make_images(const std::string& annotation, const std::string& folder, const Options& o) {
  const MadeImages made = as_asked([&] {
    return write_images_for(annotation, folder,
                            {o.seed, o.targets, o.cosar, o.empty_images, o.overwrite});
  });
  for (const std::string& path : made.kept) {
    std::cerr << "tsx-simulate: " << path << ": kept as it is; --overwrite replaces it\n";
  }
  std::cerr << "tsx-simulate: " << made.in_words() << '\n';
  std::cout << made.annotation << '\n';
}

int run(int argc, char** argv) {
  CLI::App app("Writes synthetic TerraSAR-X Level 1B products", "tsx-simulate");
  begin_program(app);
  app.footer(footer);
  Options options;
  options.overwrite = false;
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
  add_kind_of_cosar(app, options);
  add_geometry(app, options, centre);
  add_terrain_and_signal(app, options);
  return run_program(app, argc, argv, [&] {
    if (out->count() + images->count() == 0) {
      throw WrongUse("FOLDER or --images-for is required");
    }
    if (!annotation.empty()) {
      refuse_options_of_scenes(app);
      make_images(annotation, folder, options);
      return exit_done;
    }
    if (options.cosar.bursts > 1 && app.count("--mode") == 0) options.mode = Mode::scansar;
    if (centre.size() == 2) {
      options.latitude = centre[0];
      options.longitude = centre[1];
    }
    std::cout << as_asked([&] { return write_product_folder(options, folder); }) << '\n';
    return exit_done;
  });
}

}  // namespace

int main(int argc, char** argv) try { return run(argc, argv); } catch (...) {
  return tell_refusal("tsx-simulate");
}
