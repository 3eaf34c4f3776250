#include "tools/simulate/terrain.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

#include "gridkit/instance.h"
#include "gridkit/layer.h"
#include "gridkit/map_point.h"
#include "gridkit/raster_header.h"
#include "gridkit/raster_writer.h"
#include "gridkit/report.h"
#include "gridkit/string_list.h"
#include "tools/simulate/noise.h"
#include "tools/simulate/pixel.h"

namespace simulate {

namespace {

constexpr double least_height = -1000;  // m; what lies beyond stands for a height that is not known
constexpr double most_height = 9500;

// Heights by line and sample, and the blend between them.
class HeightGrid {
 public:
  HeightGrid(std::size_t lines, std::size_t samples)
      : lines_(lines), samples_(samples), heights_(lines * samples) {}

  std::size_t lines() const { return lines_; }
  std::size_t samples() const { return samples_; }
  std::span<float> line(std::size_t l) { return {heights_.data() + l * samples_, samples_}; }
  std::span<const float> line(std::size_t l) const {
    return {heights_.data() + l * samples_, samples_};
  }

  // Pixel centres lie at whole numbers. Nothing outside of them, and where one of the heights
  // around is not known.
  std::optional<double> at(double line_place, double sample_place) const {
    const double last_line = static_cast<double>(lines_ - 1);
    const double last_sample = static_cast<double>(samples_ - 1);
    if (!(line_place >= 0 && line_place <= last_line && sample_place >= 0 &&
          sample_place <= last_sample)) {
      return std::nullopt;
    }
    const auto l = static_cast<std::size_t>(std::min(std::floor(line_place), last_line - 1));
    const auto s = static_cast<std::size_t>(std::min(std::floor(sample_place), last_sample - 1));
    const double down = line_place - static_cast<double>(l);
    const double across = sample_place - static_cast<double>(s);
    const double height = (line(l)[s] * (1 - across) + line(l)[s + 1] * across) * (1 - down) +
                          (line(l + 1)[s] * (1 - across) + line(l + 1)[s + 1] * across) * down;
    const bool known = is_known(line(l)[s]) && is_known(line(l)[s + 1]) &&
                       is_known(line(l + 1)[s]) && is_known(line(l + 1)[s + 1]);
    return known ? std::optional(height) : std::nullopt;
  }

  double lowest() const {
    return extreme([](float a, float b) { return a < b; });
  }
  double highest() const {
    return extreme([](float a, float b) { return a > b; });
  }

 private:
  static bool is_known(float height) { return height >= least_height && height <= most_height; }

  template <class Beats>
  double extreme(Beats beats) const {
    std::optional<float> found;
    for (const float height : heights_) {
      if (is_known(height) && (!found || beats(height, *found))) found = height;
    }
    if (!found) throw std::domain_error("the terrain model has no heights");
    return *found;
  }

  std::size_t lines_;
  std::size_t samples_;
  std::vector<float> heights_;
};

[[noreturn]] void refuse_place(double latitude, double longitude) {
  throw std::domain_error("the terrain model has no height at latitude " +
                          std::to_string(latitude / degree) + ", longitude " +
                          std::to_string(longitude / degree));
}

constexpr double arcsecond = degree / 3600;

double hills(double east, double north) {
  constexpr double width = 4000;  // m, of the widest
  constexpr double shares[] = {0.54, 0.24, 0.12, 0.06, 0.04};
  double sum = 0;
  double scale = 1;
  std::uint64_t seed = 21;
  for (const double share : shares) {
    sum += share * noise(east * scale / width, north * scale / width, seed++);
    scale *= 2;
  }
  return sum;
}

// Nodes stand at whole arcseconds.
class SyntheticTerrain final : public Terrain {
 public:
  explicit SyntheticTerrain(const TerrainPlan& plan)
      : centre_(plan.centre),
        north_(std::ceil((centre_.latitude_radians + plan.extent / wgs84::semiminor) / arcsecond)),
        west_(std::floor((centre_.longitude_radians - plan.extent / around()) / arcsecond)),
        grid_(nodes(2 * plan.extent / wgs84::semiminor), nodes(2 * plan.extent / around())) {
    for (std::size_t l = 0; l < grid_.lines(); ++l) {
      for (std::size_t s = 0; s < grid_.samples(); ++s) {
        const double latitude = (north_ - static_cast<double>(l)) * arcsecond;
        const double longitude = (west_ + static_cast<double>(s)) * arcsecond;
        const double rise = hills((longitude - centre_.longitude_radians) * around(),
                                  (latitude - centre_.latitude_radians) * wgs84::semiminor);
        grid_.line(l)[s] = static_cast<float>(centre_.height + plan.relief * (rise - 0.5));
      }
    }
    lowest_ = grid_.lowest();
    highest_ = grid_.highest();
  }

  double height_at(double latitude, double longitude) const override {
    const double east = std::remainder(longitude - centre_.longitude_radians, 2 * std::numbers::pi);
    const auto height = grid_.at(north_ - latitude / arcsecond,
                                 (centre_.longitude_radians + east) / arcsecond - west_);
    if (!height) refuse_place(latitude, longitude);
    return *height;
  }

  double lowest() const override { return lowest_; }
  double highest() const override { return highest_; }

  void write(const std::string& path) const {
    constexpr int wgs84_degrees = 4326;
    constexpr double step = arcsecond / degree;
    gridkit::RasterOptions options;
    options.type = gridkit::SampleType::f32;
    options.unit = "m";
    options.band_name = "height above the ellipsoid";
    options.georeference = gridkit::Georeference{
        wgs84_degrees, {(west_ - 0.5) * step, step, 0, (north_ + 0.5) * step, 0, -step}};
    const auto writer = gridkit::create_geotiff(path, static_cast<std::int32_t>(grid_.samples()),
                                                static_cast<std::int32_t>(grid_.lines()), options);
    for (std::size_t l = 0; l < grid_.lines(); ++l) {
      writer->write_lines(std::as_bytes(grid_.line(l)), 1);
    }
    writer->finish();
  }

 private:
  // Metres to a radian of longitude.
  double around() const { return wgs84::semimajor * std::cos(centre_.latitude_radians); }
  static std::size_t nodes(double angle) { return static_cast<std::size_t>(angle / arcsecond) + 3; }

  Geodetic centre_;
  double north_;  // arcseconds, of the first line
  double west_;   // of the first sample
  HeightGrid grid_;
  double lowest_ = 0;
  double highest_ = 0;
};

// From geodetic radians to pixels, in the map system of a file.
class Placing {
 public:
  Placing(const std::string& path, const gridkit::RasterHeader& header) {
    if (!header.map) {
      throw std::runtime_error(path + ": a terrain model without a map (" + header.why_no_map +
                               ')');
    }
    map_ = *header.map;
    middle_ = map_.upper_left[0] + header.width * map_.pixel_size[0] / 2;
    if (header.projection) {
      projected_.emplace(map_, *header.projection);
    } else if (map_.projection != "Geographic") {
      throw std::runtime_error(path + ": its map, " + map_.projection + ", is not known here");
    }
  }

  Pixel of(double latitude, double longitude) const {
    if (projected_) {
      const auto place = projected_->to_image({latitude / degree, longitude / degree});
      return {place.line, place.sample};
    }
    constexpr double turn = 360;
    const double east = middle_ + std::remainder(longitude / degree - middle_, turn);
    return {(latitude / degree - map_.upper_left[1]) / map_.pixel_size[1] - 0.5,
            (east - map_.upper_left[0]) / map_.pixel_size[0] - 0.5};
  }

 private:
  gridkit::MapInfo map_;
  double middle_ = 0;  // column's coordinate, for longitudes to be counted from there
  std::optional<gridkit::MapTransform> projected_;
};

class ReadTerrain final : public Terrain {
 public:
  explicit ReadTerrain(const std::string& path)
      : header_(checked(path, gridkit::read_raster_header(path))),
        placing_(path, header_),
        grid_(static_cast<std::size_t>(header_.height), static_cast<std::size_t>(header_.width)) {
    read_heights(path);
    lowest_ = grid_.lowest();
    highest_ = grid_.highest();
  }

  double height_at(double latitude, double longitude) const override {
    const Pixel place = placing_.of(latitude, longitude);
    const auto height = grid_.at(place.line, place.sample);
    if (!height) refuse_place(latitude, longitude);
    return *height;
  }

  double lowest() const override { return lowest_; }
  double highest() const override { return highest_; }

 private:
  static gridkit::RasterHeader checked(const std::string& path, gridkit::RasterHeader header) {
    constexpr std::int64_t most_pixels = 100'000'000;
    if (std::int64_t{header.width} * header.height > most_pixels) {
      throw std::runtime_error(path + ": more than 100 million pixels; cut the terrain model");
    }
    if (header.width < 2 || header.height < 2) {
      throw std::runtime_error(path + ": a terrain model of one line or sample");
    }
    return header;
  }

  void read_heights(const std::string& path);

  gridkit::RasterHeader header_;
  Placing placing_;
  HeightGrid grid_;
  double lowest_ = 0;
  double highest_ = 0;
};

// The host's operations on layers report instead of throwing.
class Reports {
 public:
  explicit Reports(std::string path) : path_(std::move(path)) {}
  Reports(const Reports&) = delete;
  Reports& operator=(const Reports&) = delete;
  ~Reports() { gke_DeleteErrorReportEx(&report_); }
  gke_Report** slot() { return &report_; }
  void check() const {
    if (report_ == nullptr) return;
    throw std::runtime_error(path_ + ": " + gke_ReportMessage(report_));
  }

 private:
  std::string path_;
  gke_Report* report_ = nullptr;
};

void ReadTerrain::read_heights(const std::string& path) {
  Reports reports(path);
  gki_Instance* token = gki_GetInit(nullptr);
  const std::unique_ptr<gks_StringList, void (*)(gks_StringList*)> names(
      gkl_LayerGetNames(path.c_str(), token, reports.slot()),
      [](gks_StringList* list) { gks_StringListDelete(list, nullptr); });
  reports.check();
  const std::unique_ptr<gkl_Layer, void (*)(gkl_Layer*)> layer(
      gkl_LayerOpen(names->strings[0], token, reports.slot(), gkl_OptionReadOnly, 0),
      [](gkl_Layer* open) { gkl_LayerClose(open, nullptr); });
  reports.check();
  const std::unique_ptr<gkl_PixelRect, void (*)(gkl_PixelRect*)> rect(
      gkl_PixelRectCreate(header_.width, 1, gkl_PixelF32, reports.slot()),
      [](gkl_PixelRect* made) { gkl_PixelRectDelete(made, nullptr); });
  reports.check();
  for (std::size_t l = 0; l < grid_.lines(); ++l) {
    gkl_LayerRead(layer.get(), 0, static_cast<std::int32_t>(l), header_.width, 1, rect.get(),
                  reports.slot());
    reports.check();
    const std::span<const float> heights(static_cast<const float*>(rect->data), grid_.samples());
    std::copy(heights.begin(), heights.end(), grid_.line(l).begin());
  }
}

}  // namespace

std::shared_ptr<const Terrain> make_terrain(const TerrainPlan& plan) {
  return std::make_shared<SyntheticTerrain>(plan);
}

void write_terrain(const std::string& path, const TerrainPlan& plan) {
  SyntheticTerrain(plan).write(path);
}

std::shared_ptr<const Terrain> read_terrain(const std::string& path) {
  return std::make_shared<ReadTerrain>(path);
}

}  // namespace simulate
