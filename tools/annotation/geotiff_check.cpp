#include "tools/annotation/geotiff_check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <utility>

#include "tools/annotation/map_text.h"

namespace {

using Authority = ImageFinding::Authority;
using Pair = std::array<double, 2>;

constexpr double exact_pixels = 0.1;
constexpr double tolerable_pixels = 0.6;
constexpr double spacing_tolerance = 1e-6;

// Two numbers as "A x B m" or "A, B m".
std::string metres(const Pair& pair, const char* format) {
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), format, pair[0], pair[1]);
  return text.data();
}
std::string spacing_text(const Pair& spacing) {
  return metres(spacing, "%.9g x %.9g m");
}
std::string place_text(const Pair& place) {
  return metres(place, "%.3f, %.3f m");
}

std::string size_text(std::int64_t width, std::int64_t height) {
  return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

std::string samples_text(gridkit::SampleKind kind, int bits) {
  std::string depth = std::to_string(bits) + " bits";
  switch (kind) {
    case gridkit::SampleKind::unsigned_integer:
      return depth;
    case gridkit::SampleKind::signed_integer:
      return depth + ", signed";
    case gridkit::SampleKind::floating:
      return depth + ", floating";
    case gridkit::SampleKind::complex:
      return depth + ", complex";
  }
  return depth;
}

// How the file tells its map, in words that compare with the annotation's.
std::string own_map_text(const gridkit::RasterHeader& header) {
  return header.projection ? map_text(*header.projection) : header.map->projection;
}

Pair own_spacing(const gridkit::RasterHeader& header) {
  return {header.map->pixel_size[0], -header.map->pixel_size[1]};
}

// The centre of a pixel.
Pair own_place(const gridkit::RasterHeader& header, std::int32_t column, std::int32_t line) {
  const gridkit::MapInfo& map = *header.map;
  return {map.upper_left[0] + (column + 0.5) * map.pixel_size[0],
          map.upper_left[1] + (line + 0.5) * map.pixel_size[1]};
}

bool agrees(double annotated, double own) {
  // Whether the annotation counts a spacing towards the south or the north is left open.
  return std::abs(std::abs(annotated) - own) <= spacing_tolerance * std::abs(own);
}

// How far from the pixel's centre, in pixels of the larger axis, and whether it is one of the two
// places that the annotation may mean. `outer` is -0.5 for the first pixel, 0.5 for the last.
struct Offset {
  double pixels = 0;
  bool fits = false;
};
Offset offset_of(const Pair& annotated, const Pair& centre, const Pair& spacing, double outer) {
  const double across = (annotated[0] - centre[0]) / spacing[0];
  const double down = (centre[1] - annotated[1]) / spacing[1];
  const auto near = [&](double place) {
    return std::abs(across - place) <= exact_pixels && std::abs(down - place) <= exact_pixels;
  };
  return {std::max(std::abs(across), std::abs(down)), near(0) || near(outer)};
}

class Check {
 public:
  Check(const std::string& path, const gridkit::RasterHeader& header,
        const AnnotatedImages& annotated)
      : path_(path), header_(header), annotated_(annotated) {}

  void raster() {
    if (!has_the_size()) {
      add("image size", size_text(header_.width, header_.height),
          size_text(annotated_.samples, annotated_.lines));
    }
    const auto unsigned_integer = gridkit::SampleKind::unsigned_integer;
    if (header_.sample_bits != annotated_.bits || header_.kind != unsigned_integer) {
      add("bit depth", samples_text(header_.kind, header_.sample_bits),
          samples_text(unsigned_integer, annotated_.bits));
    }
    if (header_.bands != 1) {
      add("bands", std::to_string(header_.bands), "1, for one polarisation", Authority::annotation,
          false);
    }
  }

  void length(std::uint64_t file_bytes) {
    if (header_.pixels_end <= file_bytes) return;
    add("file length", std::to_string(file_bytes) + " bytes",
        std::to_string(header_.pixels_end) + " bytes or more", Authority::header);
  }

  void map(const AnnotatedMap& annotated) {
    const auto expected = map_text(annotated);
    if (!header_.map) {
      add("map", "none (" + header_.why_no_map + ")",
          expected.value_or(annotated.projection + " zone " + annotated.zone));
      return;
    }
    projection(annotated, expected);
    const Pair spacing = own_spacing(header_);
    if (!agrees(annotated.spacing[0], spacing[0]) || !agrees(annotated.spacing[1], spacing[1])) {
      add("pixel spacing", spacing_text(spacing), spacing_text(annotated.spacing));
    }
    corner("upper left pixel", annotated.upper_left, own_place(header_, 0, 0), -0.5);
    // In an image of another size the last pixel is another one.
    if (!has_the_size()) return;
    corner("lower right pixel", annotated.lower_right,
           own_place(header_, header_.width - 1, header_.height - 1), 0.5);
  }

  std::vector<ImageFinding> take() { return std::move(findings_); }

 private:
  bool has_the_size() const {
    return header_.width == annotated_.samples && header_.height == annotated_.lines;
  }

  void projection(const AnnotatedMap& annotated, const std::optional<std::string>& expected) {
    const std::string own = own_map_text(header_);
    if (!expected) {
      add("map projection", own,
          '"' + annotated.projection + "\" zone \"" + annotated.zone +
              "\", which cannot be compared",
          Authority::annotation, false);
    } else if (own != *expected) {
      add("map projection", own, *expected);
    }
  }

  void corner(const char* what, const Pair& annotated, const Pair& centre, double outer) {
    const Offset offset = offset_of(annotated, centre, own_spacing(header_), outer);
    if (offset.fits) return;
    add(what, place_text(centre), place_text(annotated), Authority::annotation,
        !(offset.pixels <= tolerable_pixels));
  }

  void add(std::string what, std::string found, std::string expected,
           Authority authority = Authority::annotation, bool serious = true) {
    findings_.push_back(
        {path_, std::move(what), std::move(found), std::move(expected), authority, serious});
  }

  const std::string& path_;
  const gridkit::RasterHeader& header_;
  const AnnotatedImages& annotated_;
  std::vector<ImageFinding> findings_;
};

}  // namespace

std::vector<ImageFinding> check_geotiff(const std::string& path,
                                        const gridkit::RasterHeader& header,
                                        std::uint64_t file_bytes,
                                        const AnnotatedImages& annotated) {
  Check check(path, header, annotated);
  check.raster();
  check.length(file_bytes);
  if (annotated.map) check.map(*annotated.map);
  return check.take();
}

std::string describe_geotiff(const gridkit::RasterHeader& header,
                             const AnnotatedImages& annotated) {
  std::string text = "GeoTIFF, " + size_text(header.width, header.height) + " of " +
                     samples_text(header.kind, header.sample_bits);
  if (annotated.map && header.map) {
    text += ", " + own_map_text(header) + ", spacing " + spacing_text(own_spacing(header));
  }
  return text;
}
