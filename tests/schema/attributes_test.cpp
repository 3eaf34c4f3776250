// Attributes as they are written, beside a table of their own.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/schema/cases.h"

namespace {

using cases::Classes;

// The attributes of every class that has several, in the order of the schema.
struct Row {
  const char* class_ending;
  std::vector<std::string> names;
};
const Row table[] = {
    {"c_generalHeader", {"fileName", "fileVersion", "status"}},
    {"c_GPSAntennaPosition", {"GPSreceiver", "unit"}},
    {"c_rotMatrixCoeff", {"i", "j"}},
    {"c_attitudeHeader_coordSystemTransfrom_rotMatrixCoeff", {"i", "j"}},
    {"c_stateVec", {"num", "maneuver", "qualInd"}},
    {"c_attitudeData", {"num", "maneuver", "qualInd", "antsteerInd"}},
    {"c_absCalFactor",
     {"imagingMode", "beamID", "polarisationChannel", "lookDirection", "antennaMode"}},
};

const Row* row_of(const std::string& class_name) {
  const std::string last = class_name.substr(class_name.rfind(':') + 1);
  for (const Row& row : table) {
    if (last == row.class_ending) return &row;
  }
  return nullptr;
}

// Makes every attribute present, with a value that shows: lists get a token, the others stay as
// they are by default.
void fill_attributes(const binding::ClassDescription& description, void* object) {
  for (const binding::Member& m : description.attributes) {
    binding::part_of<bool>(object, m.flag_offset) = true;
    if (m.form == binding::Form::token_list) {
      binding::part_of<binding::TokenList>(object, m.offset).append("token");
    }
  }
}

std::vector<std::string> written_names(const binding::ClassDescription& description) {
  const binding::OwnedObject object(description);
  fill_attributes(description, object.get());
  std::ostringstream out;
  lmx::c_xml_writer writer(out, 0, "", "");
  binding::write_attributes(description, object.get(), writer);
  std::vector<std::string> names;
  std::istringstream words(out.str());
  for (std::string word; words >> word;) names.push_back(word.substr(0, word.find('=')));
  return names;
}

TEST(Attributes, AreWrittenInTheirOrderInEveryVersion) {
  for (const auto& [version, classes] : cases::all_versions()) {
    std::size_t seen = 0;
    for (const auto& [name, description] : classes.all()) {
      if (description->attributes.size() < 2) continue;
      const Row* row = row_of(name);
      ASSERT_NE(row, nullptr) << version << ' ' << name << " has several attributes";
      EXPECT_EQ(written_names(*description), row->names) << version << ' ' << name;
      ++seen;
    }
    EXPECT_EQ(seen, std::size(table)) << version;
  }
}

}  // namespace
