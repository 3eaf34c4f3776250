#include "tools/simulate/truth.h"

#include "tools/simulate/cosar.h"

namespace simulate {

namespace {

using json = nlohmann::ordered_json;

json place_as_json(const Geodetic& place) {
  return {{"latitude", place.latitude_radians / degree},
          {"longitude", place.longitude_radians / degree},
          {"height", place.height}};
}

json point_as_json(const Scene& scene, Pixel pixel, const Geodetic& place) {
  const RadarPoint seen = to_radar(scene.orbit, place);
  json point = place_as_json(place);
  point["line"] = pixel.line;
  point["sample"] = pixel.sample;
  point["azimuthTime"] = seen.time;
  point["rangeTime"] = delay_of(seen.range);
  return point;
}

json terrain_as_json(const Scene& scene) {
  if (!scene.terrain) return nullptr;
  return {{"file", scene.options.relief > 0 ? terrain_name : scene.options.terrain_file},
          {"lowest", scene.terrain->lowest()},
          {"highest", scene.terrain->highest()}};
}

// As the annotation tells it.
json corner_as_json(const Scene& scene, Pixel pixel) {
  const Geodetic place = scene.annotated_place(pixel);
  const RasterTimes times = scene.annotated_times(place);
  json point = place_as_json(place);
  point["line"] = pixel.line;
  point["sample"] = pixel.sample;
  point["azimuthTime"] = times.azimuth;
  point["rangeTime"] = times.range;
  return point;
}

json orbit_as_json(const Scene& scene) {
  json states = json::array();
  for (std::size_t i = 0; i < scene.states.count; ++i) {
    const double time = scene.states.at(i);
    const State s = scene.orbit.at(time);
    states.push_back({{"time", time},
                      {"position", {s.position.x, s.position.y, s.position.z}},
                      {"velocity", {s.velocity.x, s.velocity.y, s.velocity.z}}});
  }
  return states;
}

// Where each burst lies in every image file, and when its first line was seen.
json cosar_as_json(const Scene& scene) {
  const Options& o = scene.options;
  const CosarLayout layout = lay_out_cosar(o.lines, o.samples, o.cosar);
  json bursts = json::array();
  for (std::size_t i = 0; i < layout.bursts.size(); ++i) {
    const Burst& burst = layout.bursts[i];
    bursts.push_back(
        {{"index", i + 1},
         {"offset", layout.offset_of(i)},
         {"lines", burst.lines},
         {"firstLine", burst.first_line},
         {"startTime", scene.times_of({static_cast<double>(burst.first_line), 0}).azimuth}});
  }
  return {{"sampleType", o.cosar.sample_type == SampleType::half ? "half" : "int16"},
          {"recordBytes", layout.record_bytes()},
          {"edgeTaper", o.cosar.edge_taper},
          {"bursts", bursts}};
}

}  // namespace

json truth_of(const AnnotationSource& source, const std::vector<Target>& targets) {
  const Scene& scene = source.scene;
  const Options& o = scene.options;
  json truth = {{"product", source.name},
                {"variant", source.variant_text()},
                {"version", o.version_text},
                {"polarisations", o.polarisations},
                {"lines", o.lines},
                {"samples", o.samples},
                {"seed", o.seed},
                {"pass", o.pass == Pass::ascending ? "ascending" : "descending"},
                {"look", o.look == Look::right ? "right" : "left"},
                {"incidence", o.incidence},
                {"averageHeight", o.height},
                {"startWith", o.start_with},
                {"delays",
                 {{"troposphere", o.delays.troposphere},
                  {"ionosphere", o.delays.ionosphere},
                  {"azimuthShift", o.delays.azimuth_shift}}},
                {"terrain", terrain_as_json(scene)},
                {"epoch", scene.epoch.text()},
                {"start", scene.start},
                {"stop", scene.stop},
                {"prf", scene.prf},
                {"rsf", scene.rsf},
                {"firstRangeTime", scene.near_time},
                {"lastRangeTime", scene.far_time},
                {"lineSpacing", scene.annotated_line_spacing()},
                {"sampleSpacing", scene.annotated_sample_spacing()},
                {"groundVelocity", scene.ground_velocity},
                {"heading", scene.heading()},
                {"centre", place_as_json(scene.centre)}};
  if (scene.ground_range) {
    truth["slantToGround"] = {{"reference", scene.ground_range->reference},
                              {"coefficients", scene.ground_range->coefficients}};
  }
  if (scene.map) {
    truth["map"] = {{"epsg", scene.map->projection.epsg()},
                    {"upperLeftEasting", scene.map->upper_left.easting},
                    {"upperLeftNorthing", scene.map->upper_left.northing},
                    {"spacing", scene.map->spacing}};
  }
  if (scene.is_complex()) truth["cosar"] = cosar_as_json(scene);
  truth["targets"] = json::array();
  for (const Target& target : targets) {
    json point = {{"name", target.name}};
    point.update(point_as_json(scene, target.pixel, target.place));
    truth["targets"].push_back(point);
  }
  truth["corners"] = json::array();
  for (const Pixel& corner : corners_of(scene)) {
    truth["corners"].push_back(corner_as_json(scene, corner));
  }
  truth["orbit"] = orbit_as_json(scene);
  return truth;
}

}  // namespace simulate
