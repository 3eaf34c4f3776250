// Reads every document of the generated cases and compares code and name with what the rules say.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "binding/engine.h"
#include "level1bProduct34/version34.h"
#include "level1bProduct35/version35.h"
#include "level1bProduct40/version40.h"

namespace {

using binding::class_description;

// The classes that descriptions reach, by their qualified names.
class Classes {
 public:
  void add(const class_description& description) {
    if (!by_name_.emplace(description.class_name, &description).second) return;
    for (const binding::member& m : description.elements) {
      if (m.nested != nullptr) add(*m.nested);
    }
  }

  const class_description* find(const std::string& name) const {
    const auto found = by_name_.find(name);
    return found == by_name_.end() ? nullptr : found->second;
  }

 private:
  std::map<std::string, const class_description*> by_name_;
};

// Everything that stands directly in a version's namespace, and what is nested in it.
#define ADD_VERSION(classes, version)                                 \
  classes.add(version::c_level1Product::s_description);               \
  classes.add(version::c_chirpSlope::s_description);                  \
  classes.add(version::c_polLayer::s_description);                    \
  classes.add(version::c_lookDirection::s_description);               \
  classes.add(version::c_antennaReceiveConfiguration::s_description); \
  classes.add(version::c_imagingMode::s_description);                 \
  classes.add(version::c_polarisationMode::s_description);            \
  classes.add(version::c_floatVector::s_description)

std::map<std::string, Classes> all_versions() {
  std::map<std::string, Classes> versions;
  ADD_VERSION(versions["3.4"], version34);
  ADD_VERSION(versions["3.5"], version35);
  ADD_VERSION(versions["4.0"], version40);
  return versions;
}

struct Outcome {
  int code = 0;
  std::string name;
};

Outcome read(const class_description& description, const std::string& document) {
  const binding::owned_object object(description);
  lmx::c_xml_reader_memory reader(document.data(), document.size());
  Outcome outcome;
  outcome.code = binding::read_document(description, object.get(), reader);
  if (reader.diagnostic() != nullptr) outcome.name = reader.diagnostic()->name;
  return outcome;
}

}  // namespace

TEST(Faults, EveryRowOfTheTablesGivesItsCodeAndName) {
  const char* path = std::getenv("TSX_CASES");
  ASSERT_NE(path, nullptr) << "TSX_CASES must name the file that make_cases.py wrote";
  std::ifstream cases(path);
  ASSERT_TRUE(cases.is_open()) << path;
  const auto versions = all_versions();

  std::map<std::string, int> counts;
  int failures = 0;
  std::string line;
  while (std::getline(cases, line)) {
    const auto c = nlohmann::json::parse(line);
    const auto* description = versions.at(c.at("version")).find(c.at("class"));
    ASSERT_NE(description, nullptr) << c.at("class");
    const Outcome outcome = read(*description, c.at("document"));
    const std::string name = c.at("name").is_null() ? "" : c.at("name").get<std::string>();
    ++counts[c.at("kind")];
    if (outcome.code == c.at("code").get<int>() && outcome.name == name) continue;
    ++failures;
    if (failures <= 20) {
      ADD_FAILURE() << c.at("version") << ' ' << c.at("class") << ' ' << c.at("row") << ", "
                    << c.at("kind") << ": code " << outcome.code << " name '" << outcome.name
                    << "', expected " << c.at("code") << " '" << name << "' for "
                    << c.at("document").get<std::string>().substr(0, 400);
    }
  }
  int total = 0;
  for (const auto& [kind, count] : counts) {
    total += count;
    std::printf("%6d  %s\n", count, kind.c_str());
  }
  std::printf("%6d  documents, %d not as expected\n", total, failures);
  EXPECT_EQ(failures, 0);
  EXPECT_GT(total, 40000) << "the cases are not those of the whole schema";
}
