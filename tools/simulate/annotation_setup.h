#pragma once

#include "tools/simulate/annotation_common.h"

// The branches setup and instrument.

namespace simulate {

template <class Order>
void fill_order(const AnnotationSource& source, Order& order) {
  const Scene& scene = source.scene;
  const auto& layers = source.options().polarisations;
  order.set_orderType("SIMULATION");
  order.set_processingPriority("NORMAL");
  order.set_orbitAccuracy("SCIE");
  order.append_sceneSpecification("CENTERCOORDS");
  auto& centre = order.get_orderedScene().get_sceneCenterCoord();
  centre.set_lat(as_float(in_degrees(scene.centre.latitude_radians)));
  centre.set_lon(as_float(in_degrees(scene.centre.longitude_radians)));
  if (source.has_all()) centre.set_centerCoordHeight(scene.centre.height);
  order.append_imagingMode(source.mode_text());
  order.set_lookDirection(source.look_text());
  order.append_antennaReceiveConfiguration("SRA");
  order.append_polarisationMode(layers.size() == 1 ? "SINGLE"
                                                   : (layers.size() == 2 ? "DUAL" : "QUAD"));
  for (const std::string& layer : layers) order.get_polList().append_polLayer(layer);
  order.set_elevationBeamConfiguration(source.beam());
  order.append_productVariant(source.variant_text());
  order.append_resolutionVariant("SE");
  order.append_projection(scene.map ? "MAP" : (scene.is_complex() ? "SLANTRANGE" : "GROUNDRANGE"));
  if (scene.map && source.has_optional()) {
    auto& geocoding = order.get_geocodingOrder();
    geocoding.append_mapProjection("AUTO");
    geocoding.set_countryID("WGS84");
    geocoding.set_datumID("WGS84");
  }
  if constexpr (requires { order.get_userData(); }) {
    if (!source.has_all()) return;
    auto& user = order.get_userData();
    user.set_customerOrderItemID("1");
    if constexpr (requires { user.set_customerOrderID(""); }) {
      user.set_customerOrderID("SIM-1");
      user.set_customerOrderName("simulation");
    } else {
      user.set_acquisitionOrderID("SIM-1");
      user.set_assocName("simulation");
    }
    order.set_procGainAttenuation(0.0);
  }
}

template <class Input>
void fill_input(const AnnotationSource& source, Input& input) {
  const auto made = date_time(source.generated);
  input.set_logicalDataTakeID("SIM_DT_1");
  input.set_uniqueDataTakeID("SIM_UNIQUE_1");
  input.set_level0ProductID("SIM_L0_1");
  input.set_L0BaseGenerationTimeUTC(made);
  input.set_L0SARGenerationTimeUTC(made);
  input.set_IOCSAuxProductID("SIM_AUX_1");
  input.set_IOCSAuxProductFileName("SIM_AUX_1.xml");
  input.set_IOCSAuxProductVersion("1.0");
  input.set_IOCSAuxProductGenerationTimeUTC(made);
  input.set_orbitProductID("SIM_ORBIT_1");
  input.set_orbitProductFileName("SIM_ORBIT_1.xml");
  input.set_orbitAccuracy("SCIE");
  input.set_orbitProductGenerationTimeUTC(made);
  if (source.has_optional()) {
    input.set_attitudeProductID("SIM_ATTITUDE_1");
    input.set_attitudeProductFileName("SIM_ATTITUDE_1.xml");
    input.set_attitudeProductGenerationTimeUTC(made);
  }
  input.set_configurationID("SIM_CONFIG_1");
  input.set_configurationFileName("SIM_CONFIG_1.xml");
  input.set_configurationGenerationTimeUTC(made);
}

template <class Setup>
void fill_setup(const AnnotationSource& source, Setup& setup) {
  fill_order(source, setup.get_orderInfo());
  fill_input(source, setup.get_inputData());
  const int count = source.has_optional() ? 40 : 1;
  for (int i = 0; i < count; ++i) {
    setup.get_processingSteps().append_software();
    auto& software = setup.get_processingSteps().back_software();
    software.set_softwareID("step_" + std::to_string(i + 1));
    software.set_softwareVersion("1." + std::to_string(i));
    if (source.has_all()) software.set_algorithm("simulation");
  }
}

template <class Settings>
void fill_settings(const AnnotationSource& source, const std::string& layer, Settings& settings) {
  const Scene& scene = source.scene;
  const auto start = date_time(scene.utc(scene.start));
  const auto stop = date_time(scene.utc(scene.stop));
  settings.set_polLayer(layer);
  if (source.has_all()) settings.append_DRAoffset("SRA");
  settings.set_beamID(source.beam());
  settings.set_numberOfRxGainChanges(0);
  settings.append_rxGainSetting();
  settings.back_rxGainSetting().set_startTimeUTC(start);
  settings.back_rxGainSetting().set_stopTimeUTC(stop);
  auto& gain = settings.back_rxGainSetting().get_rxGain();
  if (source.has_optional()) gain.set_code("20");
  gain.set_rxGain(20.0F);
  settings.set_quantisationID("BAQ");
  settings.get_quantisationControl().set_quantisationControl("8/3");
  settings.get_rxBandwidth().set_code("1");
  settings.get_rxBandwidth().set_rxBandwidth(pulse_bandwidth(scene));
  settings.get_RSF().set_code("1");
  settings.get_RSF().set_RSF(scene.rsf);
  settings.set_numberOfPRFChanges(0);
  settings.set_numberOfEchoWindowPositionChanges(0);
  settings.set_numberOfEchoWindowLengthChanges(0);
  const std::int32_t records = std::min(source.repeats, scene.options.lines);
  settings.set_numberOfSettingRecords(records);
  for (std::int32_t i = 0; i < records; ++i) {
    const std::int64_t from = std::int64_t{scene.options.lines} * i / records;
    const std::int64_t to = std::int64_t{scene.options.lines} * (i + 1) / records;
    settings.append_settingRecord();
    auto& record = settings.back_settingRecord();
    record.get_dataSegment().set_segmentID(i + 1);
    record.get_dataSegment().set_startTimeUTC(date_time(source.time_of_line(from)));
    record.get_dataSegment().set_stopTimeUTC(date_time(source.time_of_line(to - 1)));
    record.get_dataSegment().set_numberOfRows(static_cast<std::int32_t>(to - from));
    record.get_PRF().set_code("0");
    record.get_PRF().set_PRF(scene.prf);
    record.get_echoWindowPosition().set_code("1");
    record.get_echoWindowPosition().set_echoWindowPosition(scene.near_time);
    record.get_echowindowLength().set_code("1");
    record.get_echowindowLength().set_echowindowLength(scene.far_time - scene.near_time);
    record.set_pulseType("Standard");
    // Pulses under way at once: echoes arrive that many intervals behind their pulse.
    record.set_echoIndex(static_cast<std::int32_t>(scene.near_time * scene.prf));
  }
}

template <class Instrument>
void fill_instrument(const AnnotationSource& source, Instrument& instrument) {
  instrument.set_instrumentInfoCoordinateType("RAW");
  instrument.get_radarParameters().set_centerFrequency(centre_frequency);
  for (const std::string& layer : source.options().polarisations) {
    instrument.append_settings();
    fill_settings(source, layer, instrument.back_settings());
  }
}

}  // namespace simulate
