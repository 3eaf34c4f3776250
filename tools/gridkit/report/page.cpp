#include "tools/gridkit/report/page.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

#include "gridkit/indexed_png.h"
#include "report_assets.h"
#include "rmdllib/placement.h"
#include "tools/annotation/annotation_file.h"
#include "tools/gridkit/picture/colour_map.h"
#include "tools/gridkit/picture/quicklook.h"
#include "tools/gridkit/place/scene_points.h"
#include "tools/gridkit/read/line_ranges.h"
#include "tools/gridkit/report/acquisition.h"
#include "tools/gridkit/report/annotation_tree.h"
#include "tools/gridkit/report/footprint.h"
#include "tools/gridkit/report/histogram.h"
#include "tools/gridkit/report/html.h"
#include "tools/gridkit/report/incidence.h"
#include "tools/gridkit/report/record_table.h"
#include "tools/gridkit/report/svg_plot.h"

namespace report {

namespace {

std::string size_in_words(std::int32_t width, std::int32_t height) {
  return std::to_string(width) + " × " + std::to_string(height);
}

// A bar of the circle of colours, as a picture one line high.
std::string phase_key() {
  gridkit::IndexedPicture bar;
  bar.width = data_colours;
  bar.height = 1;
  bar.palette = cyclic_map();
  for (int i = 1; i <= data_colours; ++i) bar.pixels.push_back(static_cast<std::uint8_t>(i));
  return "<span class=\"key\">−180° <img alt=\"\" src=\"data:image/png;base64," +
         base64(gridkit::encode_png(bar)) + "\"> 180°</span>";
}

std::string caption(const Quicklook& quicklook) {
  std::string words = size_in_words(quicklook.image.width, quicklook.image.height) + " pixels";
  if (quicklook.spacing) {
    words += ", " + number(quicklook.spacing->sample, 3) + " m × " +
             number(quicklook.spacing->line, 3) + " m on the ground";
  } else {
    words += ", shown with their own aspect";
  }
  words = escape(words) + ". ";
  if (quicklook.meaning == PixelMeaning::phase) {
    return words + phase_key();
  }
  if (quicklook.stretch.high == 0) return words + "No pixel holds data.";
  words += "Black at " + number(quicklook.stretch.low, 4) + ", white at " +
           number(quicklook.stretch.high, 4) + ".";
  return words;
}

std::string picture(Quicklook quicklook, std::size_t index) {
  std::string words = caption(quicklook);
  for (const auto& [reason, lines, key] : unread_lines(quicklook.missing)) {
    words += " <strong>Lines " + reason + ", in part or in whole: " + escape(lines) + ".</strong>";
  }
  quicklook.picture.texts.clear();
  const std::string id = "picture" + std::to_string(index);
  return "<figure class=\"picture\"><figcaption>" + escape(quicklook.layer) +
         "</figcaption><img id=\"" + id + "\" width=\"" + std::to_string(quicklook.picture.width) +
         "\" height=\"" + std::to_string(quicklook.picture.height) + "\" alt=\"Quicklook of " +
         escape(quicklook.layer) + "\" src=\"data:image/png;base64," +
         base64(gridkit::encode_png(quicklook.picture)) + "\"><p>" + words + "</p></figure>\n";
}

struct Layers {
  std::string pictures;
  std::string histograms;
  std::string histogram_note;
};

constexpr const char* phase_note =
    "<p>A complex sample with I or Q equal to 0 has phase 0, whatever its direction: hence the "
    "peak "
    "of the phases at 0°.</p>";

Layers draw_layers(const gridkit::Product& product, std::int32_t picture_size,
                   const std::function<void(std::int32_t)>& advance) {
  Layers result;
  std::size_t index = 0;
  for (const std::string& layer : product.layer_names()) {
    Quicklook quicklook = make_quicklook(product, layer, picture_size, advance);
    result.histograms += draw(histogram(quicklook));
    if (quicklook.meaning == PixelMeaning::phase) result.histogram_note = phase_note;
    result.pictures += picture(std::move(quicklook), index++);
  }
  return result;
}

std::string maps(const gridkit::Product& product, const Acquisition& acquisition,
                 const std::string& schema) {
  Footprint footprint;
  footprint.orbit = acquisition.orbit;
  footprint.duration = acquisition.duration;
  for (const ScenePoint& point : read_scene_points(product.path(), schema)) {
    if (point.name != "centre") footprint.stated.push_back({point.latitude, point.longitude, 0});
  }
  try {
    const rmdllib::Placement placement(product);
    const gridkit::Layer layer = product.open_layer(product.layer_names().front());
    const double last_line = layer.height() - 0.5;
    const double last_sample = layer.width() - 0.5;
    const auto* radar = placement.radar();
    const double height = radar != nullptr ? radar->average_height() : 0;
    for (const rmdllib::Pixel pixel :
         {rmdllib::Pixel{-0.5, -0.5}, rmdllib::Pixel{-0.5, last_sample},
          rmdllib::Pixel{last_line, last_sample}, rmdllib::Pixel{last_line, -0.5}}) {
      footprint.corners.push_back(placement.ground_of(pixel, height));
    }
  } catch (const gridkit::Error& error) {
    return "<p class=\"none\">" + escape(error.sentence()) + "</p>";
  }
  return draw_scene_map(footprint) + draw_overview(footprint);
}

Plot curves(const char* title, const char* x_label, const char* y_label,
            const std::vector<Series>& series, double least_range) {
  Plot plot;
  plot.title = title;
  plot.x_label = x_label;
  plot.y_label = y_label;
  plot.series = series;
  plot.least_y_range = least_range;
  return plot;
}

std::string facts(const Acquisition& acquisition) {
  std::string html;
  for (const auto& [name, text] : acquisition.facts) {
    html += "<div><dt>" + escape(name) + "</dt><dd>" + escape(text) + "</dd></div>\n";
  }
  return html;
}

}  // namespace

std::string make_page(const gridkit::Product& product, std::int32_t picture_size,
                      const std::function<void(std::int32_t)>& advance) {
  const std::string schema = read_version_line(product.path()).schema;
  const Acquisition acquisition =
      read_acquisition(product.path(), schema, gridkit::facts_of(product));
  const std::string title = std::filesystem::path(product.path()).stem().string();
  const Layers layers = draw_layers(product, picture_size, advance);
  const AnnotationTree tree = annotation_tree(product.path());
  constexpr const char* azimuth_axis = "time from the scene's start, s";
  constexpr const char* range_axis = "two-way range time, ms";
  const std::string doppler =
      draw(curves("Along the flight, at the middle of the range", azimuth_axis,
                  "Doppler centroid, Hz", acquisition.doppler_over_time, 10)) +
      draw(curves("Across the swath", range_axis, "Doppler centroid, Hz",
                  acquisition.doppler_over_range, 10));
  const std::string noise =
      draw(curves("Along the flight, at the middle of the range", azimuth_axis,
                  "radar brightness, dB", acquisition.noise_over_time, 1)) +
      draw(curves("Across the swath", range_axis, "radar brightness, dB",
                  acquisition.noise_over_range, 1));
  const std::string left_out = tree.left_out == 0
                                   ? ""
                                   : "<p class=\"none\">" + std::to_string(tree.left_out) +
                                         " more elements are left out here: a page holds " +
                                         std::to_string(most_elements) + ".</p>";
  return fill(assets::page_html, {{"title", escape(title)},
                                  {"subtitle", escape(acquisition.subtitle)},
                                  {"format", escape(product.title())},
                                  {"path", escape(product.path())},
                                  {"script_digest", assets::script_digest},
                                  {"style_digest", assets::style_digest},
                                  {"style", assets::page_css},
                                  {"script", assets::page_js},
                                  {"pictures", layers.pictures},
                                  {"facts", facts(acquisition)},
                                  {"maps", maps(product, acquisition, schema)},
                                  {"histogram_note", layers.histogram_note},
                                  {"histograms", layers.histograms},
                                  {"doppler", doppler},
                                  {"noise", noise},
                                  {"incidence", draw_incidence(product)},
                                  {"records", record_tables(product)},
                                  {"tree", tree.html},
                                  {"left_out", left_out}});
}

}  // namespace report
