#pragma once

#include "gridkit/dictionary.h"
#include "gridkit/report.h"

// The designs of the data that products publish beside their pixels. A new design of the
// dictionary's toolkit; null and a report when it cannot be made.

// "RADAR_Generic_v2.2": the fields of RadarGenericModel (rmdllib/radar_generic_model.h).
gkd_Design* tsx_CreateRadarDesign(gkd_Dictionary* dictionary, gke_Report** err);

// "TSX_Beta0": the fields of TsxBeta0 (record/tsx_file.h).
gkd_Design* tsx_CreateBeta0Design(gkd_Dictionary* dictionary, gke_Report** err);
