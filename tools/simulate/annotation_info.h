#pragma once

#include "tools/simulate/annotation_common.h"
#include "tools/simulate/auxiliary_files.h"

// The branch productInfo, with the scene's times, corners and previews.

namespace simulate {

template <class Info>
void fill_generation(const AnnotationSource& source, Info& info) {
  info.set_logicalProductID("simulated");
  info.set_receivingStation("SIM");
  info.set_level0ProcessingFacility("tsx-simulate");
  info.set_level1ProcessingFacility("tsx-simulate");
  info.append_groundOperationsType("test");
  info.set_deliveryInfo("NOMINAL");
  info.set_copyrightInfo("none: synthetic data");
  info.get_qualityInfo().set_qualityInspection("AUTO_APPROVED");
  if (source.has_optional()) info.get_qualityInfo().set_qualityRemark("simulated");
}

// The ground track repeats after 167 orbits in 11 days.
inline constexpr int orbits_in_cycle = 167;

struct OrbitCount {
  int cycle;
  int absolute;
  int relative;  // in the cycle, from 1
};

// Counted from orbit 4009, the first of cycle 25.
inline OrbitCount count_orbits(const Utc& time) {
  const double days = time.since(Utc::parse("2008-03-05T03:54:00")) / 86400;
  const int since = static_cast<int>(std::floor(days * orbits_in_cycle / 11));
  const int cycles = static_cast<int>(std::floor(since / double{orbits_in_cycle}));
  return {25 + cycles, 4009 + since, since - cycles * orbits_in_cycle + 1};
}

template <class Mission>
void fill_mission(const AnnotationSource& source, Mission& mission) {
  mission.set_mission(source.options().satellite);
  const OrbitCount orbit = count_orbits(source.scene.epoch);
  mission.set_orbitPhase(1);
  mission.set_orbitCycle(orbit.cycle);
  mission.set_absOrbit(std::max(-1, orbit.absolute));
  mission.set_relOrbit(orbit.relative);
  mission.set_numOrbitsInCycle(orbits_in_cycle);
  mission.append_orbitDirection(source.options().pass == Pass::ascending ? "ASCENDING"
                                                                         : "DESCENDING");
}

template <class Specific>
void fill_mode(const AnnotationSource& source, Specific& specific) {
  switch (source.options().mode) {
    case Mode::stripmap:
      specific.get_stripMap().set_azimuthBeamID("boresightAzimuth");
      return;
    case Mode::spotlight: {
      auto& spot = specific.get_spotLight();
      spot.set_numberOfAzimuthBeams(125);
      spot.set_azimuthBeamIDFirst("spot_001");
      spot.set_azimuthBeamIDLast("spot_125");
      spot.set_azimuthSteeringAngleFirst(0.75F);
      spot.set_azimuthSteeringAngleLast(-0.75F);
      return;
    }
    case Mode::scansar: {
      // Detected images are made of all beams, the files of a complex one hold the bursts of one.
      const std::int32_t beams = source.scene.is_complex() ? 1 : 4;
      const std::int32_t bursts = source.scene.is_complex() ? source.options().cosar.bursts : 48;
      auto& scan = specific.get_scanSAR();
      scan.set_numberOfBeams(beams);
      for (std::int32_t beam = 3; beam < 3 + beams; ++beam) {
        scan.get_beamList().append_beamID("strip_00" + std::to_string(beam));
      }
      scan.set_azimuthBeamID("boresightAzimuth");
      scan.set_numberOfBursts(bursts);
      if (source.has_all()) {
        scan.set_burstIndexLast(bursts);
        scan.set_burstIndexFirst(1);
      }
    }
  }
}

template <class Acquisition>
void fill_acquisition(const AnnotationSource& source, Acquisition& acquisition) {
  const auto& layers = source.options().polarisations;
  acquisition.set_sensor("SAR");
  acquisition.append_imagingMode(source.mode_text());
  acquisition.set_lookDirection(source.look_text());
  acquisition.append_antennaReceiveConfiguration("SRA");
  acquisition.append_polarisationMode(source.polarisation_mode());
  for (const std::string& layer : layers) {
    acquisition.get_polarisationList().append_polLayer(layer);
  }
  acquisition.set_elevationBeamConfiguration(source.beam());
  fill_mode(source, acquisition.get_imagingModeSpecificInfo());
}

template <class VariantInfo>
void fill_variant(const AnnotationSource& source, VariantInfo& info) {
  const bool is_map = source.scene.map.has_value();
  info.set_productType(source.variant_text() + (source.scene.is_complex() ? "____" : "_SE_") +
                       source.mode_text() + '_' + source.polarisation_letter());
  info.append_productVariant(source.variant_text());
  info.append_projection(is_map ? "MAP"
                                : (source.scene.is_complex() ? "SLANTRANGE" : "GROUNDRANGE"));
  if (is_map) {
    info.append_mapProjection(source.scene.map->projection.is_ups() ? "UPS" : "UTM");
  }
  info.append_resolutionVariant(source.scene.is_complex() ? "UNDEFINED" : "SE");
  info.set_radiometricCorrection("CALIBRATED");
}

template <class ImageInfo>
void fill_image_info(const AnnotationSource& source, ImageInfo& info) {
  const Scene& scene = source.scene;
  const bool is_complex = scene.is_complex();
  info.set_pixelValueID("RADAR BRIGHTNESS");
  info.append_imageDataType(is_complex ? "COMPLEX" : "DETECTED");
  info.set_imageDataFormat(is_complex ? "COSAR" : "GEOTIFF");
  info.set_numberOfLayers(static_cast<std::int32_t>(scene.options.polarisations.size()));
  info.set_imageDataDepth(is_complex ? 32 : 16);
  info.append_imageStorageOrder("ROWBYROW");
  info.set_rowContent(scene.map ? "MAPLINES" : "RANGELINES");
  info.set_columnContent(scene.map ? "MAPCOLUMNS" : "AZIMUTHLINES");
  info.append_imageRaster();
  auto& raster = info.back_imageRaster();
  if (source.has_all()) raster.set_beamID(source.beam());
  raster.set_numberOfRows(scene.options.lines);
  raster.set_numberOfColumns(scene.options.samples);
  // rowSpacing is the spacing along a row, that is in range.
  raster.get_rowSpacing().set_rowSpacing(as_float(scene.annotated_sample_spacing()));
  raster.get_columnSpacing().set_columnSpacing(as_float(scene.annotated_line_spacing()));
  if (source.has_optional()) {
    raster.get_rowSpacing().append_units(is_complex ? "s" : "m");
    raster.get_columnSpacing().append_units(is_complex ? "s" : "m");
  }
  raster.set_groundRangeResolution(2.79);
  raster.set_azimuthResolution(3.0);
  raster.set_azimuthLooks(is_complex ? 1.0F : 2.0F);
  raster.set_rangeLooks(is_complex ? 1.0F : 2.0F);
}

template <class Instant>
void fill_instant(const Utc& utc, Instant& instant) {
  instant.set_timeUTC(date_time(utc));
  instant.set_timeGPS(utc.gps_seconds());
  instant.set_timeGPSFraction(as_float(utc.fraction()));
}

template <class Coordinate>
void fill_coordinate(const AnnotationSource& source, Pixel pixel, Coordinate& coordinate) {
  const Scene& scene = source.scene;
  const Geodetic place = scene.annotated_place(pixel);
  const RasterTimes times = scene.annotated_times(place);
  if (source.has_optional()) {
    coordinate.set_refRow(static_cast<std::int32_t>(std::lround(pixel.line)) + 1);
    coordinate.set_refColumn(static_cast<std::int32_t>(std::lround(pixel.sample)) + 1);
  }
  coordinate.set_lat(as_float(in_degrees(place.latitude_radians)));
  coordinate.set_lon(as_float(in_degrees(place.longitude_radians)));
  coordinate.set_azimuthTimeUTC(date_time(scene.utc(times.azimuth)));
  coordinate.set_rangeTime(times.range);
  coordinate.set_incidenceAngle(in_degrees(scene.incidence_at(place)));
}

template <class SceneInfo>
void fill_scene_info(const AnnotationSource& source, SceneInfo& info) {
  const Scene& scene = source.scene;
  const GroundSpacing spacing = scene.ground_spacing();
  const OrbitCount orbit = count_orbits(scene.epoch);
  info.set_sceneID("C" + std::to_string(orbit.cycle) + "_N" + std::to_string(orbit.relative) + "_" +
                   (scene.options.pass == Pass::ascending ? "A_" : "D_") + source.mode_text() +
                   "_" + source.beam() + "_" + source.look_text().substr(0, 1) + "_" +
                   scene.utc(scene.start).text());
  fill_instant(scene.utc(scene.start), info.get_start());
  fill_instant(scene.utc(scene.stop), info.get_stop());
  info.get_rangeTime().set_firstPixel(scene.near_time);
  info.get_rangeTime().set_lastPixel(scene.far_time);
  info.set_sceneAzimuthExtent(spacing.line_metres * (scene.options.lines - 1));
  if constexpr (requires { info.set_sceneRangeExtent(0.0); }) {
    if (source.has_optional())
      info.set_sceneRangeExtent(spacing.sample_metres * (scene.options.samples - 1));
  }
  const Pixel middle{std::floor(scene.options.lines / 2.0),
                     std::floor(scene.options.samples / 2.0)};
  fill_coordinate(source, middle, info.get_sceneCenterCoord());
  info.set_sceneAverageHeight(scene.options.height);
  for (const Pixel& corner : corners_of(scene)) {
    info.append_sceneCornerCoord();
    fill_coordinate(source, corner, info.back_sceneCornerCoord());
  }
  if (source.has_all()) {
    auto& accuracy = info.get_sceneLocalisationAccuracy();
    accuracy.set_referenceProjection("WGS84");
    accuracy.set_latError(1.0e-5F);
    accuracy.set_lonError(1.0e-5F);
  }
  info.set_headingAngle(as_float(scene.heading()));
}

template <class Preview>
void fill_preview(const AnnotationSource& source, Preview& preview) {
  const Scene& scene = source.scene;
  auto& quicklooks = preview.get_quicklooks();
  quicklooks.set_imageDataFormat("TIFF");
  quicklooks.set_imageDataDepth(16);
  if (source.has_optional()) {
    quicklooks.append_imageDataScaling();
    auto& scaling = quicklooks.back_imageDataScaling();
    scaling.set_polLayer(scene.options.polarisations.front());
    if (source.has_all()) {
      scaling.set_beamID(source.beam());
      scaling.append_DRAoffset("SRA");
    }
    scaling.set_gamma(1.0);
    scaling.set_scalingFactor(1.0);
    scaling.set_clipUpper(65535.0);
    scaling.set_clipLower(0.0);
  }
  quicklooks.append_imageRaster();
  auto& raster = quicklooks.back_imageRaster();
  constexpr int reduction = preview_reduction;
  if (source.has_all()) raster.set_beamID(source.beam());
  raster.set_numberOfRows(preview_size(scene.options.lines));
  raster.set_numberOfColumns(preview_size(scene.options.samples));
  raster.set_columnBlockLength(reduction);
  raster.set_rowBlockLength(reduction);
  raster.get_rowSpacing().set_rowSpacing(as_float(scene.annotated_sample_spacing() * reduction));
  raster.get_columnSpacing().set_columnSpacing(
      as_float(scene.annotated_line_spacing() * reduction));
  if (source.has_all()) {
    const GroundSpacing spacing = scene.ground_spacing();
    raster.get_rowSpacing().set_units(scene.is_complex() ? "s" : "m");
    raster.get_columnSpacing().set_units(scene.is_complex() ? "s" : "m");
    raster.set_projectedSpacingAzimuth(as_float(spacing.line_metres * reduction));
    raster.get_projectedSpacingRange().set_groundNear(as_float(spacing.sample_metres * reduction));
    raster.get_projectedSpacingRange().set_groundFar(as_float(spacing.sample_metres * reduction));
    raster.get_projectedSpacingRange().set_slantRange(
        as_float(spacing.sample_metres * reduction / 2));
  }
  auto& composite = preview.get_compositeQuicklook();
  composite.set_imageDataFormat("TIFF");
  composite.set_imageDataDepth(8);
  for (const std::string& layer : scene.options.polarisations) {
    composite.append_polLayerCode();
    composite.back_polLayerCode().set_polarisation(layer);
    composite.back_polLayerCode().set_colour("GREY");
  }
  preview.get_browseImage().set_imageDataFormat("TIFF");
  preview.get_browseImage().set_imageDataDepth(8);
  preview.set_mapPlotFormat("PNG");
}

template <class Info>
void fill_product_info(const AnnotationSource& source, Info& info) {
  fill_generation(source, info.get_generationInfo());
  fill_mission(source, info.get_missionInfo());
  fill_acquisition(source, info.get_acquisitionInfo());
  fill_variant(source, info.get_productVariantInfo());
  fill_image_info(source, info.get_imageDataInfo());
  fill_scene_info(source, info.get_sceneInfo());
  fill_preview(source, info.get_previewInfo());
}

}  // namespace simulate
