#pragma once

#include "tools/simulate/annotation_common.h"

// The branch platform: reference data, orbit and attitude.

namespace simulate {

template <class Header>
void fill_orbit_header(const AnnotationSource& source, Header& header) {
  const Orbit& orbit = source.scene.orbit;
  const auto count = orbit.states().size();
  const Utc first = source.scene.utc(orbit.first_time());
  const Utc last = first.after(orbit.spacing() * static_cast<double>(count - 1));
  // Optional in the oldest schema, required since.
  constexpr bool may_miss = requires {
    header.isset_stateVectorRefFrame();
  };
  if (!may_miss || source.has_optional()) {
    header.get_generationSystem().set_generationSystem("tsx-simulate");
    if (source.has_optional()) header.get_generationSystem().set_version("1.0");
    header.set_stateVectorRefFrame("ITRF2000");
    header.set_stateVectorRefTime("GPS");
    header.set_stateVecFormat("pos(m),vel(m/s)");
  }
  header.set_sensor("GPSD");
  header.set_accuracy("SCIE");
  if (source.has_all()) {
    auto& transform = header.get_coordSystemTransfrom();
    for (int i = 1; i <= 3; ++i) {
      for (int j = 1; j <= 3; ++j) {
        transform.append_rotMatrixCoeff();
        transform.back_rotMatrixCoeff().set_i(i);
        transform.back_rotMatrixCoeff().set_j(j);
        transform.back_rotMatrixCoeff().set_rotMatrixCoeff(i == j ? 1.0 : 0.0);
      }
    }
    transform.get_shift().set_x(0.0);
    transform.get_shift().set_y(0.0);
    transform.get_shift().set_z(0.0);
  }
  header.set_numStateVectors(count);
  header.get_firstStateTime().set_firstStateTimeUTC(date_time(first, false));
  header.get_firstStateTime().set_firstStateTimeGPS(
      static_cast<std::uint32_t>(first.gps_seconds()));
  header.get_firstStateTime().set_firstStateTimeGPSFraction(first.fraction());
  header.get_lastStateTime().set_lastStateTimeUTC(date_time(last, false));
  header.get_lastStateTime().set_lastStateTimeGPS(static_cast<std::uint32_t>(last.gps_seconds()));
  header.get_lastStateTime().set_lastStateTimeGPSFraction(last.fraction());
  header.set_stateVectorTimeSpacing(orbit.spacing());
  header.set_positionAccuracyMargin(0.2F);
  header.set_velocityAccuracyMargin(0.005F);
  header.set_recProcessingTechnique("Hermite");
  header.set_recPolDegree(3);
  header.set_dataGapIndicator(0);
}

template <class Branch>
void fill_orbit(const AnnotationSource& source, Branch& branch) {
  fill_orbit_header(source, branch.get_orbitHeader());
  const Orbit& orbit = source.scene.orbit;
  for (std::size_t i = 0; i < orbit.states().size(); ++i) {
    branch.append_stateVec();
    auto& vector = branch.back_stateVec();
    const Utc time =
        source.scene.utc(orbit.first_time() + orbit.spacing() * static_cast<double>(i));
    const State& state = orbit.states()[i];
    constexpr bool may_miss = requires {
      vector.isset_num();
    };
    if (!may_miss || source.has_optional()) {
      vector.set_num(i + 1);
      vector.set_maneuver("NO");
      vector.set_qualInd(1);
    }
    vector.set_timeUTC(date_time(time, false));
    vector.set_timeGPS(static_cast<std::uint64_t>(time.gps_seconds()));
    vector.set_timeGPSFraction(time.fraction());
    vector.set_posX(state.position.x);
    vector.set_posY(state.position.y);
    vector.set_posZ(state.position.z);
    vector.set_velX(state.velocity.x);
    vector.set_velY(state.velocity.y);
    vector.set_velZ(state.velocity.z);
  }
}

template <class Attitude>
void fill_attitude(const AnnotationSource& source, Attitude& attitude) {
  const Scene& scene = source.scene;
  const int count = 130 * source.repeats;
  constexpr double spacing = 0.5;
  const Utc first = scene.utc(scene.orbit.first_time());
  const Utc last = first.after(spacing * (count - 1));
  auto& header = attitude.get_attitudeHeader();
  header.get_generationSystem().set_generationSystem("tsx-simulate");
  header.get_generationSystem().set_version("1.0");
  header.set_sensor("AOCS");
  header.set_accuracy("STD");
  header.get_attitudeDataRefFrames().set_FromFrame("J2000");
  header.get_attitudeDataRefFrames().set_ToFrame("Body");
  if (source.has_all()) {
    auto& transform = header.get_coordSystemTransfrom();
    transform.append_rotMatrixCoeff();
    transform.back_rotMatrixCoeff().set_i(1);
    transform.back_rotMatrixCoeff().set_j(1);
    transform.back_rotMatrixCoeff().set_rotMatrixCoeff(1.0);
    transform.get_shift().set_x(0.0);
    transform.get_shift().set_y(0.0);
    transform.get_shift().set_z(0.0);
  }
  header.set_attitudeDataRefTime("GPS");
  header.set_attitudeDataFormat("q0,q1,q2,q3");
  header.set_numRecords(static_cast<std::uint64_t>(count));
  header.get_firstAttitudeTime().set_firstAttitudeTimeUTC(date_time(first, false));
  header.get_firstAttitudeTime().set_firstAttitudeTimeGPS(
      static_cast<std::uint32_t>(first.gps_seconds()));
  header.get_firstAttitudeTime().set_firstAttitudeTimeGPSFraction(first.fraction());
  header.get_lastAttitudeTime().set_lastAttitudeTimeUTC(date_time(last, false));
  header.get_lastAttitudeTime().set_lastAttitudeTimeGPS(
      static_cast<std::uint32_t>(last.gps_seconds()));
  header.get_lastAttitudeTime().set_lastAttitudeTimeGPSFraction(last.fraction());
  header.set_attitudeDataTimeSpacing(spacing);
  header.set_accuracyMargin(0.01F);
  header.set_recInterpolTechnique("Spherical linear");
  header.set_recInterpolPolDegree(1);
  header.set_dataGapIndicator(0);
  header.set_steeringLawIndicator("TOTAL_ZERO_DOPPLER");
  for (int i = 0; i < count; ++i) {
    // A body that turns with the orbit, about one axis.
    const double half_turn = 0.5 * 1.1e-3 * spacing * i;
    const Utc time = first.after(spacing * i);
    attitude.append_attitudeData();
    auto& data = attitude.back_attitudeData();
    data.set_num(static_cast<std::uint64_t>(i) + 1);
    data.set_maneuver("NO");
    data.set_qualInd(1);
    data.set_antsteerInd("boresightAzimuth");
    data.set_timeUTC(date_time(time, false));
    data.set_timeGPS(static_cast<std::uint64_t>(time.gps_seconds()));
    data.set_timeGPSFraction(time.fraction());
    data.set_q0(std::cos(half_turn));
    data.set_q1(0.0);
    data.set_q2(std::sin(half_turn));
    data.set_q3(0.0);
  }
}

template <class Platform>
void fill_platform(const AnnotationSource& source, Platform& platform) {
  auto& reference = platform.get_referenceData();
  reference.set_SARAntennaMechanicalBoresight(33.8);
  reference.append_SARAntennaPosition();
  reference.back_SARAntennaPosition().append_DRAoffset("SRA");
  reference.back_SARAntennaPosition().set_x(0.0F);
  reference.back_SARAntennaPosition().set_y(0.4F);
  reference.back_SARAntennaPosition().set_z(0.5F);
  reference.append_GPSAntennaPosition();
  reference.back_GPSAntennaPosition().set_GPSreceiver("L1");
  reference.back_GPSAntennaPosition().set_unit("Main");
  reference.back_GPSAntennaPosition().set_x(1.0F);
  reference.back_GPSAntennaPosition().set_y(0.0F);
  reference.back_GPSAntennaPosition().set_z(-0.8F);
  fill_orbit(source, platform.get_orbit());
  if (source.has_optional()) fill_attitude(source, platform.get_attitude());
}

}  // namespace simulate
