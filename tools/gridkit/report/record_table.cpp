#include "tools/gridkit/report/record_table.h"

#include <array>
#include <cmath>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "gridkit/record_decoder.h"
#include "tools/gridkit/report/html.h"

namespace report {

namespace {

struct FieldMeaning {
  std::string_view field;
  std::string_view unit;
  std::string_view meaning;
};

constexpr std::array<FieldMeaning, 49> meanings = {{
    {"sensor", "", "kind of sensor"},
    {"data_type", "", "what the pixels are"},
    {"coord_sys", "", "F: positions turn with the Earth"},
    {"year", "", "of the first line"},
    {"month", "", "of the first line"},
    {"day", "", "of the first line"},
    {"doy", "", "day of the year, from 1"},
    {"num_samples", "", "samples a line"},
    {"num_lines", "", "lines"},
    {"image_start_time", "s", "first line, second of the day"},
    {"image_end_time", "s", "last line, second of the day"},
    {"image_duration", "s", "first to last line"},
    {"first_pt_secs_of_day", "s", "first state vector, second of the day"},
    {"first_pt_org", "s", "the same, as first set"},
    {"time_interval", "s", "between state vectors"},
    {"time_interval_org", "s", "the same, as first set"},
    {"semimajor", "m", "axis of the ellipsoid"},
    {"semiminor", "m", "axis of the ellipsoid"},
    {"target_height", "m", "average height of the scene"},
    {"look_side", "°", "90 right, -90 left of the flight"},
    {"wavelength", "m", "of the radar"},
    {"sampling_rate", "Hz", "in range"},
    {"range_pix_spacing", "m", "between samples"},
    {"azimuth_line_spacing", "m", "between lines"},
    {"near_slant_range", "m", "to the nearest sample"},
    {"num_pos_pts", "", "state vectors"},
    {"projection", "", "1 ground range, 2 slant range"},
    {"gnd2slt_coeffs", "", "slant range by powers of ground range, metres"},
    {"time_dir_pixels", "", "range along a line"},
    {"time_dir_lines", "", "time across lines"},
    {"rsx", "m", "positions of the state vectors"},
    {"rsy", "m", "positions of the state vectors"},
    {"rsz", "m", "positions of the state vectors"},
    {"vsx", "m/s", "velocities of the state vectors"},
    {"vsy", "m/s", "velocities of the state vectors"},
    {"vsz", "m/s", "velocities of the state vectors"},
    {"orbitState", "", "original or corrected"},
    {"rs_coeffs", "", "position by powers of time from the middle, m, m/s, m/s²"},
    {"vs_coeffs", "", "velocity by powers of time from the middle, m/s, m/s², m/s³"},
    {"sub_unity_subset", "", "1: the whole image"},
    {"sub_range_start", "", "first sample"},
    {"sub_range_end", "", "last sample"},
    {"sub_range_degrade", "", "step of samples"},
    {"sub_range_num_samples", "", "samples"},
    {"sub_azimuth_start", "", "first line"},
    {"sub_azimuth_end", "", "last line"},
    {"sub_azimuth_degrade", "", "step of lines"},
    {"sub_azimuth_num_lines", "", "lines"},
    {"calibration_factor", "", "radar brightness is the factor times the squared digital number"},
}};

FieldMeaning meaning_of(std::string_view field) {
  for (const FieldMeaning& known : meanings) {
    if (known.field == field) return known;
  }
  return {field, "", ""};
}

constexpr int all_digits = 12;

std::string list_as_html(const std::vector<double>& values) {
  std::string items;
  for (const double value : values) items += "<li>" + number(value, all_digits) + "</li>";
  return "<details><summary>" + std::to_string(values.size()) +
         " values</summary><ol start=\"0\">" + items + "</ol></details>";
}

std::string value_as_html(const gridkit::DecodedField& field) {
  return std::visit(
      [](const auto& value) -> std::string {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, gridkit::EnumerationItem>) {
          return escape(value.text);
        } else if constexpr (std::is_same_v<Value, char>) {
          return escape(std::string_view(&value, 1));
        } else if constexpr (std::is_same_v<Value, double>) {
          return number(value, all_digits);
        } else if constexpr (std::is_same_v<Value, std::vector<double>>) {
          return list_as_html(value);
        } else {
          return std::to_string(value);
        }
      },
      field.value);
}

std::string table(const std::vector<gridkit::DecodedField>& fields) {
  std::string rows;
  for (const gridkit::DecodedField& field : fields) {
    const FieldMeaning known = meaning_of(field.name);
    rows += "<tr><th scope=\"row\">" + escape(field.name) + "</th><td>" + value_as_html(field) +
            "</td><td>" + escape(known.unit) + "</td><td>" + escape(known.meaning) + "</td></tr>\n";
    const auto* factor = std::get_if<double>(&field.value);
    if (field.name == "calibration_factor" && factor != nullptr && *factor > 0) {
      rows +=
          "<tr><th scope=\"row\">in decibels</th><td>" + fixed(10 * std::log10(*factor), 3) +
          "</td><td>dB</td><td>radar brightness in decibels is this plus 20 log10 of the digital "
          "number</td></tr>\n";
    }
  }
  return "<div class=\"wide\"><table><thead><tr><th>Field</th><th>Value</th><th>Unit</th>"
         "<th>Meaning</th></tr></thead><tbody>" +
         rows + "</tbody></table></div>";
}

}  // namespace

std::string record_tables(const gridkit::Product& product) {
  std::string html;
  for (const std::string& name : product.data_names()) {
    const auto data = product.read_data(name);
    if (!data) continue;
    html += "<h3>" + escape(name) + "</h3>" +
            table(gridkit::decode_record(data->dictionary, data->type, data->bytes));
  }
  return html.empty() ? "<p class=\"none\">The product publishes no data.</p>" : html;
}

}  // namespace report
