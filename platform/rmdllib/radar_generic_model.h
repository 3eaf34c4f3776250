#pragma once

#include <cstdint>

// The record of the generic sensor model, shared by whoever fills it, models its orbit or publishes
// it. Order and widths of the fields are those of the design "RADAR_Generic_v2.2", because the
// host's encoding walks the record by the design.

// Items of the record's enumerations, in the order of their numbers.
enum RmdlSensor : std::int32_t { RMDL_GENERIC_SAR, RMDL_RADARSAT, RMDL_ERS };
enum RmdlDataType : std::int32_t {
  RMDL_MAG,
  RMDL_MAG_BETA0,
  RMDL_MAG_BETA0DB,
  RMDL_MAG_PHASE,
  RMDL_REAL_IMG,
  RMDL_COMPLEX
};
enum RmdlTimeDirection : std::int32_t { RMDL_INCREASE, RMDL_DECREASE };
enum RmdlOrbitState : std::int32_t { RMDL_ORIGINAL, RMDL_CORRECTED };

// Values of the field `projection`.
enum RmdlProjection : std::int32_t { rmdl_ground_range = 1, rmdl_slant_range = 2 };

// A variable array of doubles, allocated with gkm_HeapMalloc and owned by its record.
struct RadarArray {
  std::int32_t count;
  double* elements;
};

// A generic description of a SAR acquisition. Times are seconds, lengths metres, frequencies hertz,
// angles degrees; positions and velocities are Earth-fixed.
struct RadarGenericModel {
  std::int32_t sensor;     // RmdlSensor
  std::int32_t data_type;  // RmdlDataType
  char coord_sys;          // 'F': Earth-fixed
  std::int32_t year;
  std::int32_t month;
  std::int32_t day;
  std::int32_t doy;  // day of the year, from 1
  std::int32_t num_samples;
  std::int32_t num_lines;
  double image_start_time;      // first line, second of the day
  double first_pt_secs_of_day;  // first state vector; see rmdllib/model_ephemeris.h
  double first_pt_org;
  double time_interval;
  double time_interval_org;
  double image_duration;
  double image_end_time;
  double semimajor;
  double semiminor;
  double target_height;
  double look_side;
  double wavelength;
  double sampling_rate;
  double range_pix_spacing;
  double azimuth_line_spacing;
  double near_slant_range;
  std::int32_t num_pos_pts;
  std::int32_t projection;       // RmdlProjection
  double gnd2slt_coeffs[6];      // slant range by powers of ground range from the first pixel
  std::int32_t time_dir_pixels;  // RmdlTimeDirection
  std::int32_t time_dir_lines;   // RmdlTimeDirection
  RadarArray rsx;
  RadarArray rsy;
  RadarArray rsz;
  RadarArray vsx;
  RadarArray vsy;
  RadarArray vsz;
  std::int32_t orbitState;  // RmdlOrbitState
  double rs_coeffs[9];
  double vs_coeffs[9];
  std::int32_t sub_unity_subset;
  std::int32_t sub_range_start;
  std::int32_t sub_range_end;
  std::int32_t sub_range_degrade;
  std::int32_t sub_range_num_samples;
  std::int32_t sub_azimuth_start;
  std::int32_t sub_azimuth_end;
  std::int32_t sub_azimuth_degrade;
  std::int32_t sub_azimuth_num_lines;
};
