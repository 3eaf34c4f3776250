#include "gridkit/radiometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "conversion/conversion.h"
#include "gridkit/error.h"
#include "gridkit/radiometry/gain_mesh.h"

namespace gridkit {

namespace {

// What is between two steps of a conversion stays in the first-level cache.
constexpr std::size_t samples_at_once = 1024;

double gain_of(Backscatter quantity, double angle) {
  return quantity == Backscatter::sigma0 ? std::sin(angle) : std::tan(angle);
}

std::optional<GainMesh> mesh_of(const Radiometry::Parts& parts) {
  if (parts.quantity == Backscatter::beta0) return std::nullopt;
  if (parts.incidence == nullptr) {
    throw Error("the angles of incidence are not known, which " +
                std::string(name_of(parts.quantity)) + " takes");
  }
  const Incidence& incidence = *parts.incidence;
  return GainMesh(
      parts.lines, parts.samples, {incidence.line_knots(), incidence.sample_knots()},
      [&](double line, double sample) {
        return gain_of(parts.quantity, incidence.at(line, sample));
      },
      Radiometry::gain_precision);
}

// The noise of every sample by each record, on the scale of beta0: [records][samples].
std::vector<double> noise_rows(const Radiometry::Parts& parts) {
  if (!parts.noise) return {};
  const std::vector<NoiseRecord>& records = parts.noise->records;
  if (records.empty()) throw Error("there is no record of noise");
  if (std::ssize(records) > most_noise_values / std::max<std::int64_t>(parts.samples, 1)) {
    throw Error("there are " + std::to_string(records.size()) + " records of noise for " +
                std::to_string(parts.samples) + " samples, too many to be kept");
  }
  std::vector<double> rows;
  rows.reserve(records.size() * static_cast<std::size_t>(parts.samples));
  std::vector<double> times;
  for (std::int64_t s = 0; s < parts.samples; ++s) {
    times.push_back(parts.times.range_time(static_cast<double>(s)));
  }
  for (const NoiseRecord& record : records) {
    if (record.polynomials.empty()) throw Error("a record of noise has no polynomial");
    for (const double time : times) {
      rows.push_back(parts.noise->factor * record.at(time));
      if (!std::isfinite(rows.back())) throw Error("a record of noise gives no finite number");
    }
  }
  return rows;
}

}  // namespace

const char* name_of(Backscatter quantity) {
  constexpr std::array names = {"beta0", "sigma0", "gamma0"};
  return names.at(static_cast<std::size_t>(quantity));
}

std::string formula_of(Backscatter quantity, bool with_noise, bool in_decibels) {
  const std::string power = "calFactor * DN^2";
  std::string value = with_noise ? power + " - noise" : power;
  if (quantity != Backscatter::beta0) {
    if (with_noise) value = '(' + value + ')';
    value += quantity == Backscatter::sigma0 ? " * sin(incidence)" : " * tan(incidence)";
  }
  if (in_decibels) value = "10 * log10(" + value + ')';
  return name_of(quantity) + (" = " + value);
}

Incidence::~Incidence() = default;

struct Radiometry::Tables {
  explicit Tables(Parts&& given)
      : parts(std::move(given)), mesh(mesh_of(parts)), noise(noise_rows(parts)) {}

  Parts parts;
  std::optional<GainMesh> mesh;  // of sines or tangents; none for beta0
  std::vector<double> noise;     // [records][samples]; empty where it is not subtracted

  const double* noise_row(std::size_t record) const {
    return noise.data() + record * static_cast<std::size_t>(parts.samples);
  }
};

Radiometry::Radiometry(Parts parts) {
  if (!(parts.factor > 0) || !std::isfinite(parts.factor)) {
    throw Error("the calibration factor is not a positive number");
  }
  if (parts.lines < 1 || parts.samples < 1) throw Error("the image has no pixels");
  if (parts.noise) {
    const auto& records = parts.noise->records;
    const bool in_order = std::is_sorted(
        records.begin(), records.end(),
        [](const auto& a, const auto& b) { return a.azimuth_time <= b.azimuth_time; });
    if (!in_order && records.size() > 1) {
      throw Error("the records of noise are not in the order of their azimuth times");
    }
  }
  tables_ = std::make_unique<const Tables>(std::move(parts));
}

Radiometry::Radiometry(Radiometry&&) noexcept = default;
Radiometry::~Radiometry() = default;

Backscatter Radiometry::quantity() const {
  return tables_->parts.quantity;
}

double Radiometry::factor() const {
  return tables_->parts.factor;
}

bool Radiometry::subtracts_noise() const {
  return tables_->parts.noise.has_value();
}

std::int64_t Radiometry::lines() const {
  return tables_->parts.lines;
}

std::int64_t Radiometry::samples() const {
  return tables_->parts.samples;
}

std::string Radiometry::formula(bool in_decibels) const {
  return formula_of(quantity(), subtracts_noise(), in_decibels);
}

std::string Radiometry::noise_in_words() const {
  if (!subtracts_noise()) return "not subtracted";
  const std::size_t records = tables_->parts.noise->records.size();
  return "subtracted: calFactor * polynomial of range time, " + std::to_string(records) +
         (records == 1 ? " record" : " records, linear between two in azimuth time");
}

std::string Radiometry::incidence_in_words() const {
  return quantity() == Backscatter::beta0 ? "" : tables_->parts.incidence->source();
}

struct RadiometricLines::Work {
  std::shared_ptr<const Radiometry> radiometry;
  const Radiometry::Tables& tables;
  double first_sample;
  std::size_t first;
  std::size_t step;

  std::int64_t line = -1;
  std::vector<double> nodes;  // gains of the line at the mesh's samples
  const double* before = nullptr;
  const double* after = nullptr;
  double weight = 0;  // of the record after

  std::vector<double> gains = std::vector<double>(samples_at_once, 1.0);
  std::vector<double> noise = std::vector<double>(samples_at_once, 0.0);

  Work(std::shared_ptr<const Radiometry> given, const Radiometry::Tables& its_tables,
       std::int64_t from, std::int64_t by)
      : radiometry(std::move(given)),
        tables(its_tables),
        first_sample(static_cast<double>(from)),
        first(static_cast<std::size_t>(from)),
        step(static_cast<std::size_t>(by)),
        nodes(tables.mesh ? tables.mesh->samples().size() : 0) {}

  void go_to(std::int64_t to) {
    if (line == to) return;
    line = to;
    const auto place = static_cast<double>(line);
    if (tables.mesh) tables.mesh->at_line(place, nodes);
    if (tables.noise.empty()) return;
    const auto& records = tables.parts.noise->records;
    const double time = tables.parts.times.first_line + place * tables.parts.times.line_interval;
    const auto later = std::upper_bound(
        records.begin(), records.end(), time,
        [](double t, const NoiseRecord& record) { return t < record.azimuth_time; });
    const auto next = static_cast<std::size_t>(later - records.begin());
    const std::size_t last = next == 0 ? 0 : next - 1;
    const std::size_t following = std::min(next, records.size() - 1);
    before = tables.noise_row(last);
    after = tables.noise_row(following);
    weight = last == following ? 0
                               : (time - records[last].azimuth_time) /
                                     (records[following].azimuth_time - records[last].azimuth_time);
  }

  // Straight pieces between the nodes of the line.
  void take_gains(std::size_t index, std::size_t count) {
    if (!tables.mesh) return;
    const std::span<const double> places = tables.mesh->samples();
    if (places.size() < 2) {
      std::fill_n(gains.begin(), count, nodes.front());
      return;
    }
    const auto by = static_cast<double>(step);
    const auto place_of = [&](std::size_t k) {
      return first_sample + static_cast<double>(index + k) * by;
    };
    std::size_t node = static_cast<std::size_t>(
        std::upper_bound(places.begin() + 1, places.end() - 1, place_of(0)) - places.begin() - 1);
    for (std::size_t done = 0; done < count; ++node) {
      std::size_t until = count;
      if (node + 2 < places.size()) {
        const double pieces = std::ceil((places[node + 1] - place_of(0)) / by);
        until = std::min(count, static_cast<std::size_t>(std::max(pieces, 0.0)));
      }
      if (until <= done) continue;
      const double slope = (nodes[node + 1] - nodes[node]) / (places[node + 1] - places[node]);
      conversion::ramp(nodes[node] + (place_of(done) - places[node]) * slope, slope * by,
                       gains.data() + done, until - done);
      done = until;
    }
  }

  void take_noise(std::size_t index, std::size_t count) {
    if (tables.noise.empty()) return;
    const std::size_t from = first + index * step;
    if (step == 1) {
      conversion::blend(before + from, after + from, weight, noise.data(), count);
      return;
    }
    for (std::size_t k = 0; k < count; ++k) {
      const std::size_t sample = from + k * step;
      noise[k] = before[sample] + weight * (after[sample] - before[sample]);
    }
  }

  void weigh_some(std::size_t index, const double* powers, double* values, std::size_t count) {
    take_gains(index, count);
    take_noise(index, count);
    conversion::weigh(powers, tables.parts.factor, noise.data(), gains.data(), values, count);
  }
};

RadiometricLines::RadiometricLines(std::shared_ptr<const Radiometry> radiometry,
                                   std::int64_t first_sample, std::int64_t sample_step)
    : work_(std::make_unique<Work>(radiometry, *radiometry->tables_, first_sample, sample_step)) {}

RadiometricLines::RadiometricLines(RadiometricLines&&) noexcept = default;
RadiometricLines::~RadiometricLines() = default;

void RadiometricLines::weigh(std::int64_t line, std::size_t index, std::span<const double> powers,
                             std::span<double> values) {
  work_->go_to(line);
  for (std::size_t done = 0; done < powers.size(); done += samples_at_once) {
    const std::size_t count = std::min(powers.size() - done, samples_at_once);
    work_->weigh_some(index + done, powers.data() + done, values.data() + done, count);
  }
}

void RadiometricLines::weigh(std::int64_t line, std::size_t index,
                             std::span<const std::uint16_t> amplitudes, bool in_decibels,
                             std::span<float> values) {
  work_->go_to(line);
  std::array<float, samples_at_once> floats;
  std::array<double, samples_at_once> powers;
  std::array<double, samples_at_once> weighed;
  for (std::size_t done = 0; done < amplitudes.size(); done += samples_at_once) {
    const std::size_t count = std::min(amplitudes.size() - done, samples_at_once);
    conversion::widen_pixels(amplitudes.data() + done, floats.data(), count);
    conversion::squares(floats.data(), powers.data(), count);
    work_->weigh_some(index + done, powers.data(), weighed.data(), count);
    (in_decibels ? conversion::decibels : conversion::scale)(weighed.data(), 1,
                                                             values.data() + done, count);
  }
}

}  // namespace gridkit
