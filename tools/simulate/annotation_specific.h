#pragma once

#include "tools/simulate/annotation_common.h"
#include "tools/simulate/auxiliary_files.h"

// The branch productSpecific: complex, projected and geocoded image information.

namespace simulate {

template <class Complex>
void fill_complex_info(const AnnotationSource& source, Complex& info) {
  const Scene& scene = source.scene;
  const double slant = speed_of_light / 2 / scene.rsf;
  if (source.has_all()) info.set_beamID(source.beam());
  info.set_commonPRF(scene.prf);
  info.set_commonRSF(scene.rsf);
  info.set_slantRangeResolution(1.17);
  info.set_projectedSpacingAzimuth(as_float(scene.ground_velocity / scene.prf));
  const auto& options = scene.options;
  const double middle = options.lines / 2.0;
  const Geodetic near = scene.to_ground({middle, 0});
  const Geodetic far = scene.to_ground({middle, options.samples - 1.0});
  auto& range = info.get_projectedSpacingRange();
  range.set_groundNear(as_float(slant / std::sin(scene.incidence_at(near))));
  range.set_groundFar(as_float(slant / std::sin(scene.incidence_at(far))));
  range.set_slantRange(as_float(slant));
  info.set_imageCoordinateType("ZERODOPPLER");
  info.append_imageDataStartWith("EARLYAZNEARRG");
  info.append_quicklookDataStartWith(options.variant == Variant::mgd ? options.start_with
                                                                     : "EARLYAZNEARRG");
}

template <class Grid>
void fill_grid(const AnnotationSource& source, Grid& grid) {
  const Scene& scene = source.scene;
  grid.set_pixelValueID("t and tau");
  grid.set_imageDataFormat("plain binary");
  grid.set_imageDataDepth(64);
  grid.append_imageStorageOrder("ROWBYROW");
  auto& reference = grid.get_gridReferenceTime();
  reference.set_tReferenceTimeUTC(date_time(scene.utc(scene.start)));
  reference.set_tauReferenceTime(scene.near_time);
  reference.set_refRow(1);
  reference.set_refCol(1);
  auto& raster = grid.get_imageRaster();
  raster.set_numberOfRows(grid_size(scene.options.lines));
  raster.set_numberOfColumns(grid_size(scene.options.samples));
  raster.set_rowSpacing(as_float(scene.annotated_sample_spacing() * grid_step));
  raster.set_columnSpacing(as_float(scene.annotated_line_spacing() * grid_step));
}

template <class Projected>
void fill_projected_info(const AnnotationSource& source, Projected& info) {
  const GroundRangePolynomial& ground = *source.scene.ground_range;
  auto& polynomial = info.get_slantToGroundRangeProjection();
  polynomial.set_validityRangeMin(ground.reference);
  polynomial.set_validityRangeMax(ground.last);
  polynomial.set_referencePoint(ground.reference);
  polynomial.set_polynomialDegree(5);
  for (std::size_t k = 0; k < ground.coefficients.size(); ++k) {
    polynomial.append_coefficient();
    polynomial.back_coefficient().set_exponent(static_cast<std::uint32_t>(k));
    polynomial.back_coefficient().set_coefficient(ground.coefficients[k]);
  }
  fill_grid(source, info.get_mappingGridInfo());
}

struct MapCorner {
  Geodetic ground;
  MapPoint map;
};

inline MapCorner map_corner(const Scene& scene, double line, double sample) {
  const MapGrid& grid = *scene.map;
  const MapPoint point{grid.upper_left.easting + sample * grid.spacing,
                       grid.upper_left.northing - line * grid.spacing};
  return {grid.projection.to_ground(point, 0), point};
}

template <class Geographic, class Cartographic>
void fill_corners(const Scene& scene, Geographic& geographic, Cartographic& cartographic) {
  const double bottom = scene.options.lines - 1.0;
  const double right = scene.options.samples - 1.0;
  const MapCorner ul = map_corner(scene, 0, 0);
  const MapCorner ur = map_corner(scene, 0, right);
  const MapCorner lr = map_corner(scene, bottom, right);
  const MapCorner ll = map_corner(scene, bottom, 0);
  geographic.set_upperLeftLongitude(as_float(in_degrees(ul.ground.longitude_radians)));
  geographic.set_upperLeftLatitude(as_float(in_degrees(ul.ground.latitude_radians)));
  geographic.set_upperRightLongitude(as_float(in_degrees(ur.ground.longitude_radians)));
  geographic.set_upperRightLatitude(as_float(in_degrees(ur.ground.latitude_radians)));
  geographic.set_lowerRightLongitude(as_float(in_degrees(lr.ground.longitude_radians)));
  geographic.set_lowerRightLatitude(as_float(in_degrees(lr.ground.latitude_radians)));
  geographic.set_lowerLeftLongitude(as_float(in_degrees(ll.ground.longitude_radians)));
  geographic.set_lowerLeftLatitude(as_float(in_degrees(ll.ground.latitude_radians)));
  cartographic.set_upperLeftEasting(ul.map.easting);
  cartographic.set_upperLeftNorthing(ul.map.northing);
  cartographic.set_upperRightEasting(ur.map.easting);
  cartographic.set_upperRightNorthing(ur.map.northing);
  cartographic.set_lowerRightEasting(lr.map.easting);
  cartographic.set_lowerRightNorthing(lr.map.northing);
  cartographic.set_lowerLeftEasting(ll.map.easting);
  cartographic.set_lowerLeftNorthing(ll.map.northing);
}

template <class Mask>
void fill_mask(const Scene& scene, const char* what, Mask& mask) {
  mask.set_pixelValueID(what);
  mask.set_imageDataFormat("GEOTIFF");
  mask.set_imageDataDepth(16);
  auto& raster = mask.get_imageRaster();
  raster.set_numberOfRows(scene.options.lines);
  raster.set_numberOfColumns(scene.options.samples);
  raster.set_rowSpacing(as_float(scene.map->spacing));
  raster.set_columnSpacing(as_float(scene.map->spacing));
}

template <class Geocoded>
void fill_geocoded_info(const AnnotationSource& source, Geocoded& info) {
  const Scene& scene = source.scene;
  const MapGrid& grid = *scene.map;
  auto& setup = info.get_geocodingSetup();
  setup.set_geocodingFacility("tsx-simulate");
  setup.set_softwareVersion("1.0");
  setup.set_generationFlagGIM(false);
  auto& projection = info.get_mapProjection();
  projection.set_geodeticDatumID("WGS84");
  projection.set_projectionID(grid.projection.is_ups() ? "UPS" : "UTM");
  projection.set_zoneID(grid.projection.is_ups() ? (grid.projection.is_north() ? "N" : "S")
                                                 : std::to_string(grid.projection.zone()));
  const Geodetic centre = grid.projection.centre();
  projection.get_projectionCenter().set_longitude(as_float(in_degrees(centre.longitude_radians)));
  projection.get_projectionCenter().set_latitude(as_float(in_degrees(centre.latitude_radians)));
  projection.get_mapOrigin().set_easting(as_float(grid.projection.origin().easting));
  projection.get_mapOrigin().set_northing(as_float(grid.projection.origin().northing));
  projection.set_scaleFactor(as_float(grid.projection.scale_factor()));
  auto& geo = info.get_geoParameter();
  geo.get_pixelSpacing().set_easting(as_float(grid.spacing));
  geo.get_pixelSpacing().set_northing(as_float(grid.spacing));
  fill_corners(scene, geo.get_frameCoordsGeographic(), geo.get_frameCoordsCartographic());
  fill_corners(scene, geo.get_sceneCoordsGeographic(), geo.get_sceneCoordsCartographic());
  const MapCorner middle =
      map_corner(scene, (scene.options.lines - 1) / 2.0, (scene.options.samples - 1) / 2.0);
  auto& at = geo.get_sceneCenterCoordsGeographic();
  at.set_centerCoordLongitude(as_float(in_degrees(middle.ground.longitude_radians)));
  at.set_centerCoordLatitude(as_float(in_degrees(middle.ground.latitude_radians)));
  geo.get_sceneCenterCoordsCartographic().set_centerCoordEasting(middle.map.easting);
  geo.get_sceneCenterCoordsCartographic().set_centerCoordNorthing(middle.map.northing);
  geo.set_imageResamplingMethod("NONE");
  if (source.has_optional()) {
    auto& elevation = info.get_elevationData();
    elevation.get_DEM_DB_ContentVersion().set_DEM_DB_ContentVersion("analytic");
    const double swing = scene.options.variant == Variant::eec ? 40 : 0;
    elevation.set_minimumHeight(as_float(scene.options.height - swing));
    elevation.set_meanHeight(as_float(scene.options.height));
    elevation.set_maximumHeight(as_float(scene.options.height + swing));
  }
  fill_grid(source, info.get_mappingGridInfo());
  if (!source.has_all()) return;
  fill_mask(scene, "INCIDENCE ANGLE", info.get_incidenceAngleMaskDescription());
  fill_mask(scene, "DEM COVERAGE", info.get_DEMCoverageMapDescription());
}

template <class Specific>
void fill_product_specific(const AnnotationSource& source, Specific& specific) {
  specific.append_complexImageInfo();
  fill_complex_info(source, specific.back_complexImageInfo());
  if (source.scene.ground_range) fill_projected_info(source, specific.get_projectedImageInfo());
  if (source.scene.map) fill_geocoded_info(source, specific.get_geocodedImageInfo());
}

}  // namespace simulate
