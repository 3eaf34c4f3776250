#pragma once

#include <gdal.h>
#include <gdal_frmts.h>
#include <gtest/gtest.h>
#include <ogr_srs_api.h>

#include <array>
#include <memory>
#include <string>
#include <type_traits>

#include "gridkit/instance.h"
#include "gridkit/layer.h"
#include "gridkit/report.h"

// GeoTIFF files with maps of every kind, written with the GDAL library itself, and what the layers
// of the toolkit answer for them.

using Grid = std::array<double, 6>;  // GDAL's coefficients, at pixel corners

inline constexpr Grid upright = {500010, 2.5, 0, 5200020, 0, -1.25};

struct ReferenceDeleter {
  void operator()(void* reference) const {
    OSRDestroySpatialReference(static_cast<OGRSpatialReferenceH>(reference));
  }
};
using Reference = std::unique_ptr<std::remove_pointer_t<OGRSpatialReferenceH>, ReferenceDeleter>;

// A reference by code ("EPSG:32633") or as WKT.
inline Reference reference_by(const std::string& definition) {
  Reference reference(OSRNewSpatialReference(nullptr));
  EXPECT_EQ(OSRSetFromUserInput(reference.get(), definition.c_str()), OGRERR_NONE) << definition;
  return reference;
}

struct MapImage {
  std::string definition;         // of the reference; empty for none
  const Grid* grid = &upright;    // null for none
  const char* pixel_is = "Area";  // or "Point"
};

inline void write_map_image(const std::string& path, const MapImage& image) {
  GDALRegister_GTiff();
  GDALDatasetH file =
      GDALCreate(GDALGetDriverByName("GTiff"), path.c_str(), 4, 3, 1, GDT_UInt16, nullptr);
  ASSERT_NE(file, nullptr);
  if (!image.definition.empty()) {
    const Reference reference = reference_by(image.definition);
    EXPECT_EQ(GDALSetSpatialRef(file, reference.get()), CE_None);
  }
  if (image.grid != nullptr) {
    Grid grid = *image.grid;
    EXPECT_EQ(GDALSetGeoTransform(file, grid.data()), CE_None);
  }
  GDALSetMetadataItem(file, "AREA_OR_POINT", image.pixel_is, nullptr);
  GDALClose(file);
}

struct LayerCloser {
  void operator()(gkl_Layer* layer) const { gkl_LayerClose(layer, nullptr); }
};
using OpenLayer = std::unique_ptr<gkl_Layer, LayerCloser>;

inline OpenLayer open_layer(const std::string& path) {
  return OpenLayer(gkl_LayerOpen(("1:" + path).c_str(), gki_GetInit(nullptr), nullptr, 0));
}

// What an operation reported as "WORD: MESSAGE", empty for nothing.
template <class Operation>
std::string report_of(Operation operation) {
  gke_Report* report = nullptr;
  operation(&report);
  std::string text = report == nullptr
                         ? ""
                         : std::string(gke_ReportWord(report)) + ": " + gke_ReportMessage(report);
  gke_DeleteErrorReportEx(&report);
  return text;
}
