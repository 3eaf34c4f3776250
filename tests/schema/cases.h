#pragma once

#include <istream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "binding/document.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"

// Cases written beforehand, one a line: a document of one class of one version, and the code and
// name that reading it must give.

namespace cases {

using binding::ClassDescription;

// The classes that descriptions reach, by their qualified names.
class Classes {
 public:
  void add(const ClassDescription& description) {
    if (!by_name_.emplace(description.class_name, &description).second) return;
    for (const binding::Member& m : description.elements) {
      if (m.nested != nullptr) add(*m.nested);
    }
  }

  const ClassDescription* find(const std::string& name) const {
    const auto found = by_name_.find(name);
    return found == by_name_.end() ? nullptr : found->second;
  }

  const std::map<std::string, const ClassDescription*>& all() const { return by_name_; }

 private:
  std::map<std::string, const ClassDescription*> by_name_;
};

// Everything that stands directly in a version's namespace, and what is nested in it.
inline std::map<std::string, Classes> all_versions() {
  std::map<std::string, Classes> versions;
  for (const ClassDescription* d :
       {&version34::c_level1Product::s_description, &version34::c_chirpSlope::s_description,
        &version34::c_polLayer::s_description, &version34::c_lookDirection::s_description,
        &version34::c_antennaReceiveConfiguration::s_description,
        &version34::c_imagingMode::s_description, &version34::c_polarisationMode::s_description,
        &version34::c_floatVector::s_description}) {
    versions["3.4"].add(*d);
  }
  for (const ClassDescription* d :
       {&version35::c_level1Product::s_description, &version35::c_chirpSlope::s_description,
        &version35::c_polLayer::s_description, &version35::c_lookDirection::s_description,
        &version35::c_antennaReceiveConfiguration::s_description,
        &version35::c_imagingMode::s_description, &version35::c_polarisationMode::s_description,
        &version35::c_floatVector::s_description}) {
    versions["3.5"].add(*d);
  }
  for (const ClassDescription* d :
       {&version40::c_level1Product::s_description, &version40::c_chirpSlope::s_description,
        &version40::c_polLayer::s_description, &version40::c_lookDirection::s_description,
        &version40::c_antennaReceiveConfiguration::s_description,
        &version40::c_imagingMode::s_description, &version40::c_polarisationMode::s_description,
        &version40::c_floatVector::s_description}) {
    versions["4.0"].add(*d);
  }
  return versions;
}

struct Outcome {
  int code = 0;
  std::string name;
};

inline Outcome read(const ClassDescription& description, const std::string& document) {
  const binding::OwnedObject object(description);
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  Outcome outcome;
  outcome.code = binding::read_document(description, object.get(), reader);
  if (reader.diagnostic() != nullptr) outcome.name = reader.diagnostic()->name;
  return outcome;
}

// What became of the cases of a stream.
struct Tally {
  std::map<std::string, int> counts;  // of each kind
  int failures = 0;
  std::string told;  // the first twenty failures

  int total() const {
    int sum = 0;
    for (const auto& [kind, count] : counts) sum += count;
    return sum;
  }
};

inline Tally run(std::istream& lines) {
  const auto versions = all_versions();
  Tally tally;
  std::string line;
  while (std::getline(lines, line)) {
    const auto c = nlohmann::json::parse(line);
    const std::string document = c.at("document");
    const std::string name = c.at("name").is_null() ? "" : c.at("name").get<std::string>();
    const ClassDescription* description = versions.at(c.at("version")).find(c.at("class"));
    const Outcome outcome =
        description == nullptr ? Outcome{-1, "no such class"} : read(*description, document);
    ++tally.counts[c.at("kind")];
    if (outcome.code == c.at("code").get<int>() && outcome.name == name) continue;
    if (++tally.failures > 20) continue;
    tally.told += c.at("version").get<std::string>() + ' ' + c.at("class").get<std::string>() +
                  ' ' + c.at("row").get<std::string>() + ", " + c.at("kind").get<std::string>() +
                  ": code " + std::to_string(outcome.code) + " name '" + outcome.name +
                  "', expected " + c.at("code").dump() + " '" + name + "' for " +
                  document.substr(0, 400) + '\n';
  }
  return tally;
}

}  // namespace cases
