#include "tools/gridkit/quicklook.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <span>
#include <utility>

#include "gridkit/whole_file.h"
#include "tools/gridkit/colour_map.h"
#include "tools/gridkit/commands.h"
#include "tools/gridkit/ground_spacing.h"
#include "tools/gridkit/progress.h"

namespace {

constexpr std::size_t pixel_values = 65536;

constexpr const char* footer =
    R"(Magnitudes are averaged as intensities and stretched from black to white, phases are averaged as unit
phasors and shown in a circle of colours. Where there are no data the picture is transparent.

Examples:
  gridkit quicklook PRODUCT picture.png
  gridkit quicklook PRODUCT X_HH_PHASE_2 phase.png --size 2048)";

// "12.5" and the like.
std::string short_number(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.4g", value);
  return text.data();
}

std::string meaning_as_text(const Quicklook& quicklook) {
  if (quicklook.meaning == PixelMeaning::phase) {
    return "direction of the mean phasor, -pi to pi around the circle of colours";
  }
  return "root of the mean intensity, black at " + short_number(quicklook.stretch.low) +
         " and white at " + short_number(quicklook.stretch.high);
}

std::string aspect_as_text(const Quicklook& quicklook) {
  if (!quicklook.spacing) return "the pixels' own";
  const auto& [sample, line] = *quicklook.spacing;
  return "the ground's; pixels of the layer lie " + short_number(sample) +
         " m apart along a line and " + short_number(line) + " m across lines";
}

std::vector<std::pair<std::string, std::string>> texts_of(const Quicklook& quicklook,
                                                          const std::string& source) {
  std::vector<std::pair<std::string, std::string>> texts = {{"Source", source},
                                                            {"Layer", quicklook.layer},
                                                            {"Shows", meaning_as_text(quicklook)},
                                                            {"Aspect", aspect_as_text(quicklook)}};
  if (!quicklook.missing.empty()) {
    texts.emplace_back("Lines without data", lines_as_text(quicklook.missing));
  }
  return texts;
}

struct Request {
  std::vector<std::string> names;  // product, layer or none, output
  std::int32_t size = 1024;
  bool overwrite = false;
  bool quiet = false;

  const std::string& product() const { return names.front(); }
  const std::string& output() const { return names.back(); }
};

std::string chosen_layer(const gridkit::Product& product, const Request& request) {
  if (request.names.size() == 3) return request.names[1];
  const auto names = product.layer_names();
  if (names.empty()) throw gridkit::Error(product.path() + ": it has no layers");
  return names.front();
}

int save_quicklook(const Host& host, const Request& request) {
  gridkit::refuse_existing(request.output(), request.overwrite);
  const gridkit::Product product = host.open(request.product());
  const std::string layer = chosen_layer(product, request);
  const Quicklook quicklook = [&] {
    LineProgress progress(product.open_layer(layer).height(), request.quiet);
    return make_quicklook(product, layer, request.size,
                          [&](std::int32_t lines) { progress.advance(lines); });
  }();
  gridkit::write_whole_file(request.output(), gridkit::encode_png(quicklook.picture),
                            request.overwrite);
  if (!quicklook.spacing) {
    std::cerr << "gridkit: " << request.output()
              << ": the picture has the pixels' own aspect: " << quicklook.why_no_spacing << '\n';
  }
  if (!quicklook.missing.empty()) {
    std::cerr << "gridkit: " << request.output()
              << ": lines of the image without data, in part or in whole, are transparent: "
              << lines_as_text(quicklook.missing) << '\n';
  }
  return 0;
}

}  // namespace

Quicklook make_quicklook(const gridkit::Product& product, const std::string& layer,
                         std::int32_t longest, const std::function<void(std::int32_t)>& advance) {
  Quicklook result;
  result.layer = layer;
  {
    const gridkit::Layer open = product.open_layer(layer);
    result.image = {open.width(), open.height()};
    result.meaning = open.pixel_type() == "s16" ? PixelMeaning::phase : PixelMeaning::magnitude;
  }
  if (result.image.width < 1 || result.image.height < 1) {
    throw gridkit::Error(product.path() + ": the layer " + layer + " has no pixels");
  }
  try {
    result.spacing = ground_spacing(product, result.image);
  } catch (const gridkit::Error& error) {
    result.why_no_spacing = error.what();
  }
  const PictureSize size =
      fitting_size(result.image, result.spacing.value_or(GroundSpacing{}), longest);
  result.counts.resize(pixel_values);
  Multilook looks(result.meaning, result.image, size);
  result.missing =
      gridkit::read_window(product, layer, {0, 0, result.image.width, result.image.height},
                           [&](std::span<const std::uint16_t> pixels, std::int32_t lines) {
                             looks.add(pixels, lines);
                             for (const std::uint16_t pixel : pixels) ++result.counts[pixel];
                             advance(lines);
                           });
  const FloatPicture reduced = looks.finish(result.missing);
  result.picture.width = size.width;
  result.picture.height = size.height;
  if (result.meaning == PixelMeaning::phase) {
    result.picture.pixels = stretch_phases(reduced.values);
    result.picture.palette = cyclic_map();
  } else {
    result.stretch = percentile_stretch(reduced.values, {});
    result.picture.pixels = stretch_values(reduced.values, result.stretch);
    result.picture.palette = grey_map();
  }
  result.picture.texts = texts_of(result, product.path());
  return result;
}

std::string lines_as_text(const std::vector<gridkit::LineRange>& ranges) {
  std::string text;
  for (const gridkit::LineRange& range : ranges) {
    if (!text.empty()) text += ", ";
    text += std::to_string(range.first);
    if (range.last > range.first) text += '-' + std::to_string(range.last);
  }
  return text;
}

void add_quicklook(CLI::App& app, Action& chosen) {
  const auto request = std::make_shared<Request>();
  CLI::App* command = app.add_subcommand(
      "quicklook", "Make a small picture of a layer (of the first one, where none is named)");
  command->footer(footer);
  command
      ->add_option("PRODUCT [LAYER] OUT.png", request->names,
                   "The product's annotation or folder, a layer's name, the picture to write")
      ->required()
      ->expected(2, 3)
      ->option_text(" ");
  command->add_option("--size", request->size, "Most pixels on the longer side")
      ->check(CLI::Range(smallest_picture, largest_picture))
      ->capture_default_str();
  command->add_flag("--overwrite", request->overwrite, "Replace an existing file");
  command->add_flag("-q,--quiet", request->quiet, "No progress bar");
  command->callback([request, &chosen] {
    chosen = [request](const Host& host) { return save_quicklook(host, *request); };
  });
}
