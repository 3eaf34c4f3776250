#pragma once

#include "tools/simulate/annotation_common.h"

// The branch platform: reference data, orbit and attitude.

namespace simulate {

template <class Transform>
void fill_identity(Transform& transform) {
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

template <class Header>
void fill_orbit_header(const AnnotationSource& source, Header& header) {
  const StateTimes& states = source.scene.states;
  const Utc first = source.scene.utc(states.first);
  const Utc last = source.scene.utc(states.at(states.count - 1));
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
  if (source.has_all()) fill_identity(header.get_coordSystemTransfrom());
  header.set_numStateVectors(states.count);
  header.get_firstStateTime().set_firstStateTimeUTC(date_time(first, false));
  header.get_firstStateTime().set_firstStateTimeGPS(
      static_cast<std::uint32_t>(first.gps_seconds()));
  header.get_firstStateTime().set_firstStateTimeGPSFraction(first.fraction());
  header.get_lastStateTime().set_lastStateTimeUTC(date_time(last, false));
  header.get_lastStateTime().set_lastStateTimeGPS(static_cast<std::uint32_t>(last.gps_seconds()));
  header.get_lastStateTime().set_lastStateTimeGPSFraction(last.fraction());
  header.set_stateVectorTimeSpacing(states.spacing);
  header.set_positionAccuracyMargin(0.2F);
  header.set_velocityAccuracyMargin(0.005F);
  header.set_recProcessingTechnique("Lagrange");
  header.set_recPolDegree(7);
  header.set_dataGapIndicator(0);
}

template <class Branch>
void fill_orbit(const AnnotationSource& source, Branch& branch) {
  fill_orbit_header(source, branch.get_orbitHeader());
  const Scene& scene = source.scene;
  for (std::size_t i = 0; i < scene.states.count; ++i) {
    branch.append_stateVec();
    auto& vector = branch.back_stateVec();
    const Utc time = scene.utc(scene.states.at(i));
    const State state = scene.orbit.at(scene.states.at(i));
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

// Unit quaternion, real part first, that turns vectors of the body into the Earth-fixed frame.
struct Quaternion {
  std::array<double, 4> q;
};

// Attitude for zero Doppler: x along the Earth-fixed velocity, and the antenna's boresight, tilted
// off nadir about x, to the side of the look.
inline Quaternion zero_doppler_attitude(const State& state, Look look, double boresight) {
  const Vector3 x = unit(state.velocity);
  const Vector3 right = unit(cross(-1 * state.position, x));
  const Vector3 down = cross(x, right);
  const double roll = (look == Look::right ? -1 : 1) * boresight;
  const Vector3 y = std::cos(roll) * right + std::sin(roll) * down;
  const Vector3 z = cross(x, y);
  // Largest component by the traces of the rotation matrix [x y z], as numerically safest.
  const std::array<double, 4> squares = {1 + x.x + y.y + z.z, 1 + x.x - y.y - z.z,
                                         1 - x.x + y.y - z.z, 1 - x.x - y.y + z.z};
  const auto largest = std::max_element(squares.begin(), squares.end());
  const double twice = std::sqrt(*largest);
  const double part = 0.5 / twice;
  switch (largest - squares.begin()) {
    case 0:
      return {{twice / 2, (y.z - z.y) * part, (z.x - x.z) * part, (x.y - y.x) * part}};
    case 1:
      return {{(y.z - z.y) * part, twice / 2, (x.y + y.x) * part, (z.x + x.z) * part}};
    case 2:
      return {{(z.x - x.z) * part, (x.y + y.x) * part, twice / 2, (y.z + z.y) * part}};
    default:
      return {{(x.y - y.x) * part, (z.x + x.z) * part, (y.z + z.y) * part, twice / 2}};
  }
}

template <class Header>
void fill_attitude_header(const AnnotationSource& source, int count, double spacing,
                          const Utc& first, Header& header) {
  const Utc last = first.after(spacing * (count - 1));
  header.get_generationSystem().set_generationSystem("tsx-simulate");
  header.get_generationSystem().set_version("1.0");
  header.set_sensor("AOCS");
  header.set_accuracy("STD");
  header.get_attitudeDataRefFrames().set_FromFrame("MECH");
  header.get_attitudeDataRefFrames().set_ToFrame("ITRF2000");
  if (source.has_all()) fill_identity(header.get_coordSystemTransfrom());
  header.set_attitudeDataRefTime("GPS");
  header.set_attitudeDataFormat("quaternions");
  header.set_numRecords(static_cast<std::uint64_t>(count));
  auto& from = header.get_firstAttitudeTime();
  from.set_firstAttitudeTimeUTC(date_time(first, false));
  from.set_firstAttitudeTimeGPS(static_cast<std::uint32_t>(first.gps_seconds()));
  from.set_firstAttitudeTimeGPSFraction(first.fraction());
  auto& to = header.get_lastAttitudeTime();
  to.set_lastAttitudeTimeUTC(date_time(last, false));
  to.set_lastAttitudeTimeGPS(static_cast<std::uint32_t>(last.gps_seconds()));
  to.set_lastAttitudeTimeGPSFraction(last.fraction());
  header.set_attitudeDataTimeSpacing(spacing);
  header.set_accuracyMargin(0.01F);
  header.set_recInterpolTechnique("LINEAR");
  header.set_recInterpolPolDegree(1);
  header.set_dataGapIndicator(0);
  header.set_steeringLawIndicator("TZDS");
}

template <class Attitude>
void fill_attitude(const AnnotationSource& source, Attitude& attitude) {
  const Scene& scene = source.scene;
  // Some seconds more than the state vectors cover, a second apart or, for many records, less.
  const double spacing = std::max(1.0, std::round(1e6 / source.repeats)) * 1e-6;
  const double from = scene.states.first - 10;
  const double covered = scene.states.at(scene.states.count - 1) + 10 - from;
  const int count = static_cast<int>(covered / spacing) + 1;
  const Utc first = scene.utc(from);
  fill_attitude_header(source, count, spacing, first, attitude.get_attitudeHeader());
  for (int i = 0; i < count; ++i) {
    const Utc time = first.after(spacing * i);
    const auto [q] = zero_doppler_attitude(scene.orbit.at(from + spacing * i), scene.options.look,
                                           mechanical_boresight);
    attitude.append_attitudeData();
    auto& data = attitude.back_attitudeData();
    data.set_num(static_cast<std::uint64_t>(i) + 1);
    data.set_maneuver("NO");
    data.set_qualInd(1);
    data.set_antsteerInd("TZDS");
    data.set_timeUTC(date_time(time, false));
    data.set_timeGPS(static_cast<std::uint64_t>(time.gps_seconds()));
    data.set_timeGPSFraction(time.fraction());
    data.set_q0(q[0]);
    data.set_q1(q[1]);
    data.set_q2(q[2]);
    data.set_q3(q[3]);
  }
}

template <class Platform>
void fill_platform(const AnnotationSource& source, Platform& platform) {
  auto& reference = platform.get_referenceData();
  reference.set_SARAntennaMechanicalBoresight(in_degrees(mechanical_boresight));
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
