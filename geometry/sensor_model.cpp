#include "geometry/sensor_model.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include "geometry/ground_to_slant.h"
#include "geometry/physical_constants.h"
#include "gridkit/memory.h"
#include "record/day_of_year.h"
#include "record/report_frame.h"
#include "record/text_equality.h"
#include "rmdllib/model_ephemeris.h"

namespace {

// One less, where the least number gives the largest.
std::int32_t one_less(std::int32_t count) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(count) - 1);
}

void set_subset(RadarGenericModel& model, const TsxFile& file) {
  model.sub_unity_subset = 1;
  model.sub_range_start = 0;
  model.sub_range_end = one_less(file.width);
  model.sub_range_degrade = 1;
  model.sub_range_num_samples = file.width;
  model.sub_azimuth_start = 0;
  model.sub_azimuth_end = one_less(file.height);
  model.sub_azimuth_degrade = 1;
  model.sub_azimuth_num_lines = file.height;
  model.num_samples = file.width;
  model.num_lines = file.height;
}

// Second of the day. Kept on purpose: whole seconds are an integer, the rest has the single
// precision of the view.
double second_of_day(std::int32_t hour, std::int32_t minute, float second) {
  return (hour * 60 + minute) * 60 + static_cast<double>(second);
}

// Kept on purpose: a scene that ends after midnight is told by its hours alone.
void set_scene_times(RadarGenericModel& model, level1bProductBase& product) {
  model.year = product.sceneStartYear();
  model.month = product.sceneStartMonth();
  model.day = product.sceneStartDay();
  const std::int32_t start_hour = product.sceneStartHour();
  const std::int32_t stop_hour = product.sceneStopHour();
  model.image_start_time =
      second_of_day(start_hour, product.sceneStartMinute(), product.sceneStartSecond());
  model.image_end_time =
      second_of_day(stop_hour, product.sceneStopMinute(), product.sceneStopSecond());
  const double next_day = stop_hour < start_hour ? 86400.0 : 0.0;
  model.image_duration = model.image_end_time + next_day - model.image_start_time;
}

void set_geometry(RadarGenericModel& model, const TsxFile& file) {
  level1bProductBase& product = *file.product;
  model.doy = tsx_DayOfYear(model.year, model.month, model.day);
  model.semimajor = published_semimajor;
  model.semiminor = published_semiminor;
  model.wavelength = speed_of_light / product.centerFrequency();
  if (file.productVariant == variant_ssc) {
    model.range_pix_spacing = product.projectedSpacingSlantRange();
    model.azimuth_line_spacing = product.projectedSpacingAzimuth();
  } else {
    // Kept on purpose: not the spacing in slant range.
    model.range_pix_spacing = product.columnSpacing();
    model.azimuth_line_spacing = product.rowSpacing();
  }
  model.sampling_rate = product.rangeSamplingRate();
  model.near_slant_range = product.firstPixelRangeTime() * speed_of_light * 0.5;
  model.target_height = product.sceneAverageHeight();
  model.coord_sys = 'F';
}

// Kept on purpose: the days are compared by their number in the year alone, and a vector of the day
// before has the form that clients of the record know; rmdllib/model_ephemeris.h tells how to read
// it.
void set_first_state_time(RadarGenericModel& model, level1bProductBase& product) {
  const std::int32_t doy =
      tsx_DayOfYear(product.firstStateYear(), product.firstStateMonth(), product.firstStateDay());
  const std::int32_t hour = product.firstStateHour();
  const std::int32_t minute = product.firstStateMinute();
  const auto second = static_cast<double>(product.firstStateSecond());
  std::int32_t whole = (hour * 60 + minute) * 60;
  if (doy < model.doy) whole = ((24 - hour) * 60 - minute) * 60;
  if (doy > model.doy) whole = ((hour + 24) * 60 + minute) * 60;
  model.first_pt_secs_of_day = model.first_pt_org = whole + second;
}

// The quicklook is turned as the image is.
void set_time_directions(RadarGenericModel& model, level1bProductBase& product) {
  const char* start = product.quicklookDataStartWith();
  const bool early_far = tsx_TextEqual(start, "EARLYAZFARRG");
  const bool late_near = tsx_TextEqual(start, "LATEAZNEARRG");
  const bool late_far = tsx_TextEqual(start, "LATEAZFARRG");
  model.time_dir_pixels = early_far || late_far ? RMDL_DECREASE : RMDL_INCREASE;
  model.time_dir_lines = late_near || late_far ? RMDL_DECREASE : RMDL_INCREASE;
}

// The number that the annotation states, in its low 32 bits, if a model can have that many.
std::optional<std::int32_t> state_vector_count(level1bProductBase& product) {
  const auto count = static_cast<std::int32_t>(product.numStateVectors());
  if (count < 0 || count > most_state_vectors) return std::nullopt;
  return count;
}

// Until all arrays are filled their counts are 0, so that a record left unfinished tells no
// vectors.
bool read_state_vectors(RadarGenericModel& model, level1bProductBase& product, ReportFrame& frame) {
  const auto count = state_vector_count(product);
  if (!count) {
    frame.report(
        "The annotation's numStateVectors must be 0 to 100000 state vectors in its low 32 bits");
    return false;
  }
  RadarArray* const arrays[] = {&model.rsx, &model.rsy, &model.rsz,
                                &model.vsx, &model.vsy, &model.vsz};
  for (RadarArray* array : arrays) {
    const std::size_t bytes = static_cast<std::size_t>(*count) * sizeof(double);
    array->elements = static_cast<double*>(gkm_HeapMalloc(bytes));
    // Of no vectors there are no bytes, for which a toolkit may give nothing.
    if (array->elements != nullptr || *count == 0) continue;
    frame.report("No memory for the state vectors");
    return false;
  }
  for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(*count); ++i) {
    model.rsx.elements[i] = product.stateVecPosX(i);
    model.rsy.elements[i] = product.stateVecPosY(i);
    model.rsz.elements[i] = product.stateVecPosZ(i);
    model.vsx.elements[i] = product.stateVecVelX(i);
    model.vsy.elements[i] = product.stateVecVelY(i);
    model.vsz.elements[i] = product.stateVecVelZ(i);
  }
  model.num_pos_pts = *count;
  for (RadarArray* array : arrays) array->count = *count;
  return true;
}

}  // namespace

void tsx_GenericSARRead(TsxFile* file, gke_Report** err) {
  static const char* const function_word = "tsx_GenericSARRead";
  if (file == nullptr) return;
  ReportFrame frame(function_word, err);
  RadarGenericModel& model = *file->sarModel;
  level1bProductBase& product = *file->product;
  const bool is_complex = file->productVariant == variant_ssc;
  model = {};
  set_subset(model, *file);
  model.look_side = tsx_TextEqual(product.lookDirection(), "LEFT") ? -90.0 : 90.0;
  model.projection =
      tsx_TextEqual(product.projection(), "SLANTRANGE") ? rmdl_slant_range : rmdl_ground_range;
  model.sensor = RMDL_GENERIC_SAR;
  set_scene_times(model, product);
  set_geometry(model, *file);
  set_first_state_time(model, product);
  model.data_type = is_complex ? RMDL_MAG_PHASE : RMDL_MAG;
  if (!is_complex) {
    set_time_directions(model, product);
    // Kept on purpose: a fit that fails passes in silence, and the model has no coefficients then.
    tsx_ComputeGnd2slt_coeffs(file);
  }
  model.time_interval = model.time_interval_org = product.stateVectorTimeSpacing();
  if (!read_state_vectors(model, product, frame)) return;
  model.orbitState = RMDL_ORIGINAL;
  rmdl_modelEphemeris(&model, frame.slot());
  frame.failed("rmdl_modelEphemeris failed");
}
