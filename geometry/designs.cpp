#include "geometry/designs.h"

namespace {

// Closes the items of an enumeration.
constexpr const char* end_of_items = nullptr;

// Closes a design's fields.
constexpr int end_of_fields = 0;

}  // namespace

gkd_Design* tsx_CreateRadarDesign(gkd_Dictionary* dictionary, gke_Report** err) {
  // clang-format off
  return gkd_DesignCreate(dictionary, "RADAR_Generic_v2.2", err,
      gkd_Enumeration, "sensor", "RMDL_GENERIC_SAR", "RMDL_RADARSAT", "RMDL_ERS", end_of_items,
      gkd_Enumeration, "data_type", "RMDL_MAG", "RMDL_MAG_BETA0", "RMDL_MAG_BETA0DB", "RMDL_MAG_PHASE", "RMDL_REAL_IMG", "RMDL_COMPLEX", end_of_items,
      gkd_Character, "coord_sys",
      gkd_Integer, "year",
      gkd_Integer, "month",
      gkd_Integer, "day",
      gkd_Integer, "doy",
      gkd_Integer, "num_samples",
      gkd_Integer, "num_lines",
      gkd_Double, "image_start_time",
      gkd_Double, "first_pt_secs_of_day",
      gkd_Double, "first_pt_org",
      gkd_Double, "time_interval",
      gkd_Double, "time_interval_org",
      gkd_Double, "image_duration",
      gkd_Double, "image_end_time",
      gkd_Double, "semimajor",
      gkd_Double, "semiminor",
      gkd_Double, "target_height",
      gkd_Double, "look_side",
      gkd_Double, "wavelength",
      gkd_Double, "sampling_rate",
      gkd_Double, "range_pix_spacing",
      gkd_Double, "azimuth_line_spacing",
      gkd_Double, "near_slant_range",
      gkd_Integer, "num_pos_pts",
      gkd_Integer, "projection",
      gkd_DoubleArray, "gnd2slt_coeffs", 6,
      gkd_Enumeration, "time_dir_pixels", "RMDL_INCREASE", "RMDL_DECREASE", end_of_items,
      gkd_Enumeration, "time_dir_lines", "RMDL_INCREASE", "RMDL_DECREASE", end_of_items,
      gkd_DoubleVector, "rsx",
      gkd_DoubleVector, "rsy",
      gkd_DoubleVector, "rsz",
      gkd_DoubleVector, "vsx",
      gkd_DoubleVector, "vsy",
      gkd_DoubleVector, "vsz",
      gkd_Enumeration, "orbitState", "RMDL_ORIGINAL", "RMDL_CORRECTED", end_of_items,
      gkd_DoubleArray, "rs_coeffs", 9,
      gkd_DoubleArray, "vs_coeffs", 9,
      gkd_Integer, "sub_unity_subset",
      gkd_Integer, "sub_range_start",
      gkd_Integer, "sub_range_end",
      gkd_Integer, "sub_range_degrade",
      gkd_Integer, "sub_range_num_samples",
      gkd_Integer, "sub_azimuth_start",
      gkd_Integer, "sub_azimuth_end",
      gkd_Integer, "sub_azimuth_degrade",
      gkd_Integer, "sub_azimuth_num_lines",
      end_of_fields);
  // clang-format on
}

gkd_Design* tsx_CreateBeta0Design(gkd_Dictionary* dictionary, gke_Report** err) {
  return gkd_DesignCreate(dictionary, "TSX_Beta0", err, gkd_Double, "calibration_factor",
                          end_of_fields);
}
