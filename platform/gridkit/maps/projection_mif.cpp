#include "gridkit/maps/projection_mif.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

#include "gridkit/error.h"

namespace gridkit {

namespace {

constexpr std::size_t longest_text = 200;
constexpr double least_scale = 0.01;
constexpr double largest_scale = 100;
constexpr double largest_offset = 1e9;  // metres
// The latitude of true scale keeps clear of the pole, where a scale factor takes its place, and of
// the equator.
constexpr double least_latitude = 0.0001;
constexpr double largest_latitude = 89.9999;

// What each value is, as messages name it.
constexpr const char* meaning(ProjectionForm::Method method, std::size_t number) {
  const bool utm = method == ProjectionForm::Method::utm;
  switch (number) {
    case 2:
      return "the datum";
    case 3:
      return "the units";
    case 4:
      return utm ? "the zone" : "the longitude from the pole";
    case 5:
      return utm ? "the hemisphere" : "the pole";
    case 6:
      return utm ? "the scale factor" : "the latitude of true scale";
    case 7:
      return "the scale factor at the pole";
    case 8:
      return "the false easting";
    default:
      return "the false northing";
  }
}

// Shortest digits that read back to the same bits; without an exponent where that stays short.
std::string text_of(double value) {
  const double size = std::abs(value);
  const bool plain = size == 0 || (size >= 1e-6 && size < 1e15);
  std::array<char, 64> digits{};
  const auto written =
      std::to_chars(digits.data(), digits.data() + digits.size(), value,
                    plain ? std::chars_format::fixed : std::chars_format::scientific);
  return std::string(digits.data(), written.ptr);
}

// Reads the values of one projection; each refusal names the value.
class ValueReader {
 public:
  ValueReader(const MapProjection& mif, ProjectionForm::Method method)
      : mif_(mif), method_(method) {}

  [[noreturn]] void refuse(std::size_t number, const std::string& what) const {
    throw Error("value " + std::to_string(number) + ", " + meaning(method_, number) + ", " + what);
  }
  const std::string& text(std::size_t number) const {
    const auto& value = mif_.value(number);
    if (!value || value->empty()) refuse(number, "is missing");
    return *value;
  }
  // A text that is one of two: whether it is the second.
  bool is_second(std::size_t number, std::string_view first, std::string_view second) const {
    const std::string& value = text(number);
    if (value != first && value != second) {
      refuse(number, "is \"" + value + "\", not \"" + std::string(first) + "\" or \"" +
                         std::string(second) + "\"");
    }
    return value == second;
  }
  double number(std::size_t number, double least, double most) const {
    const double value = parse<double>(number, "not a number");
    if (value >= least && value <= most) return value;
    refuse(number, "is " + text_of(value) + ", not in " + text_of(least) + " to " + text_of(most));
  }
  int zone() const {
    const int value = parse<int>(4, "not a whole number");
    if (value >= 1 && value <= 60) return value;
    refuse(4, "is " + std::to_string(value) + ", not in 1 to 60");
  }
  void require_none(std::size_t number, const char* why) const {
    if (mif_.value(number)) refuse(number, why);
  }

 private:
  template <class Number>
  Number parse(std::size_t number, const char* complaint) const {
    const std::string& value = text(number);
    const char* end = value.data() + value.size();
    Number parsed{};
    const auto read = std::from_chars(value.data(), end, parsed);
    if (read.ec != std::errc() || read.ptr != end || !std::isfinite(static_cast<double>(parsed))) {
      refuse(number, "is \"" + value + "\", " + complaint);
    }
    return parsed;
  }

  const MapProjection& mif_;
  ProjectionForm::Method method_;
};

void require_short_texts(const MapProjection& mif) {
  const std::string limit = " characters";
  if (mif.name.size() > longest_text) {
    throw Error("the name is longer than " + std::to_string(longest_text) + limit);
  }
  for (std::size_t number = 2; number <= 9; ++number) {
    if (mif.value(number).value_or("").size() <= longest_text) continue;
    throw Error("value " + std::to_string(number) + " is longer than " +
                std::to_string(longest_text) + limit);
  }
}

ProjectionForm::Method method_of(const std::string& name) {
  for (const auto method :
       {ProjectionForm::Method::utm, ProjectionForm::Method::polar_stereographic}) {
    if (name == name_of(method)) return method;
  }
  throw Error("the projection \"" + name + "\" is none of UTM and Polar Stereographic");
}

}  // namespace

MapProjection mif_of(const ProjectionForm& form) {
  MapProjection mif{name_of(form.method), {}};
  auto& [datum, units, zone, side, value6, value7, easting, northing] = mif.values;
  datum = form.datum;
  units = "metre";
  side = form.south ? "S" : "N";
  if (form.method == ProjectionForm::Method::utm) {
    zone = std::to_string(form.zone);
    value6 = text_of(form.scale_factor);
  } else {
    zone = text_of(form.longitude);
    if (form.true_scale_latitude) value6 = text_of(*form.true_scale_latitude);
    if (!form.true_scale_latitude) value7 = text_of(form.scale_factor);
  }
  easting = text_of(form.false_easting);
  northing = text_of(form.false_northing);
  return mif;
}

ProjectionForm form_of(const MapProjection& mif) {
  require_short_texts(mif);
  ProjectionForm form;
  form.method = method_of(mif.name);
  const ValueReader read(mif, form.method);
  form.datum = read.text(2);
  if (read.text(3) != "metre") read.refuse(3, "is \"" + read.text(3) + "\", not \"metre\"");
  form.south = read.is_second(5, "N", "S");
  if (form.method == ProjectionForm::Method::utm) {
    form.zone = read.zone();
    form.scale_factor = read.number(6, least_scale, largest_scale);
    read.require_none(7, "is none of UTM's");
  } else {
    form.longitude = read.number(4, -360, 360);
    if (mif.value(6)) {
      read.require_none(7, "stands beside the latitude of true scale");
      form.true_scale_latitude = form.south ? read.number(6, -largest_latitude, -least_latitude)
                                            : read.number(6, least_latitude, largest_latitude);
    } else {
      form.scale_factor = read.number(7, least_scale, largest_scale);
    }
  }
  form.false_easting = read.number(8, -largest_offset, largest_offset);
  form.false_northing = read.number(9, -largest_offset, largest_offset);
  return form;
}

}  // namespace gridkit
