#include "gridkit/record_decoder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "gridkit/dictionary.h"
#include "gridkit/error.h"
#include "gridkit/memory.h"
#include "rmdllib/radar_generic_model.h"

namespace {

using gridkit::decode_record;
using gridkit::DecodedField;
using gridkit::encode_record;
using gridkit::EnumerationItem;
using gridkit::Error;

std::vector<std::byte> bytes(std::initializer_list<unsigned> values) {
  std::vector<std::byte> result;
  for (const unsigned value : values) result.push_back(static_cast<std::byte>(value));
  return result;
}

const std::string every_type =
    "gridkit-dictionary 1\n"
    "design OTHER\n"
    "int i\n"
    "design T\n"
    "enum e A B C\n"
    "char c\n"
    "int i\n"
    "double d\n"
    "double[2] a\n"
    "double[*] v\n"
    "end\n";

const std::vector<std::byte> every_value = bytes({
    2,    0,    0,    0,                                                  // e: item 2, C
    'F',                                                                  // c
    0xFF, 0xFF, 0xFF, 0x7F,                                               // i: 2147483647
    0,    0,    0,    0,    0, 0, 0xF8, 0xBF,                             // d: -1.5
    0,    0,    0,    0,    0, 0, 0xF0, 0x3F, 0, 0, 0, 0,    0, 0, 0, 0,  // a: 1, 0
    1,    0,    0,    0,    0, 0, 0,    0,    0, 0, 0, 0x40,              // v: one element, 2
});

std::string refusal(std::string_view dictionary, std::string_view type,
                    const std::vector<std::byte>& record) {
  try {
    decode_record(dictionary, type, record);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

// What is wrong with a record of one field of the type, after an int.
std::string field_refusal(const std::string& field, const std::vector<std::byte>& record) {
  const std::string text =
      refusal("gridkit-dictionary 1\ndesign T\nint i\n" + field + "\nend\n", "T", record);
  const std::string start = "record of the design \"T\": ";
  return text.starts_with(start) ? text.substr(start.size()) : text;
}

TEST(RecordDecoder, TakesEveryTypeApart) {
  const std::vector<DecodedField> fields = decode_record(every_type, "T", every_value);
  ASSERT_EQ(fields.size(), 6U);
  EXPECT_EQ(fields[0].name, "e");
  EXPECT_EQ(std::get<EnumerationItem>(fields[0].value).number, 2);
  EXPECT_EQ(std::get<EnumerationItem>(fields[0].value).text, "C");
  EXPECT_EQ(fields[1].name, "c");
  EXPECT_EQ(std::get<char>(fields[1].value), 'F');
  EXPECT_EQ(std::get<std::int32_t>(fields[2].value), 2147483647);
  EXPECT_EQ(std::get<double>(fields[3].value), -1.5);
  EXPECT_EQ(std::get<std::vector<double>>(fields[4].value), (std::vector<double>{1, 0}));
  EXPECT_EQ(fields[5].name, "v");
  EXPECT_EQ(std::get<std::vector<double>>(fields[5].value), (std::vector<double>{2}));
}

TEST(RecordDecoder, GivesTheSameBytesBack) {
  EXPECT_EQ(encode_record(every_type, "T", decode_record(every_type, "T", every_value)),
            every_value);
}

TEST(RecordDecoder, KeepsTheBitsOfANotANumber) {
  const std::string dictionary = "gridkit-dictionary 1\ndesign T\ndouble d\nend\n";
  const auto record = bytes({0x37, 0x13, 0, 0, 0, 0, 0xF8, 0x7F});
  const auto fields = decode_record(dictionary, "T", record);
  EXPECT_TRUE(std::isnan(std::get<double>(fields[0].value)));
  EXPECT_EQ(encode_record(dictionary, "T", fields), record);
}

TEST(RecordDecoder, TakesVectorsOfAnyLength) {
  const std::string dictionary = "gridkit-dictionary 1\ndesign T\ndouble[*] v\nend\n";
  for (const std::size_t count : {0U, 1U, 1000U}) {
    std::vector<std::byte> record(4 + 8 * count);
    record[0] = static_cast<std::byte>(count & 0xFF);
    record[1] = static_cast<std::byte>(count >> 8);
    for (std::size_t i = 0; i < count; ++i) record[4 + 8 * i + 7] = std::byte{0x40};  // 2.0
    const auto fields = decode_record(dictionary, "T", record);
    EXPECT_EQ(std::get<std::vector<double>>(fields[0].value), std::vector<double>(count, 2.0));
    EXPECT_EQ(encode_record(dictionary, "T", fields), record);
  }
}

// --- Records that do not fit ---------------------------------------------------------------------

TEST(RecordDecoder, NamesTheTypeThatTheDictionaryLacks) {
  EXPECT_EQ(refusal(every_type, "U", every_value), "the dictionary has no design \"U\"");
  EXPECT_EQ(refusal(every_type, "", every_value), "the dictionary has no design \"\"");
}

TEST(RecordDecoder, RefusesARecordOfAnyShorterLength) {
  for (std::size_t size = 0; size < every_value.size(); ++size) {
    const std::vector<std::byte> cut(every_value.begin(),
                                     every_value.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_NE(refusal(every_type, "T", cut), "") << size;
  }
}

TEST(RecordDecoder, SaysWhereARecordStops) {
  EXPECT_EQ(field_refusal("double d", bytes({1, 0, 0, 0, 9, 9, 9})),
            "field \"d\" at byte 4: 8 bytes are expected, 3 are left");
  EXPECT_EQ(field_refusal("char c", bytes({1, 0, 0, 0})),
            "field \"c\" at byte 4: 1 bytes are expected, 0 are left");
  EXPECT_EQ(field_refusal("double[2147483647] a", bytes({1, 0, 0, 0, 1})),
            "field \"a\" at byte 4: 17179869176 bytes are expected, 1 are left");
  EXPECT_EQ(field_refusal("enum e A", bytes({1, 0, 0, 0, 0})),
            "field \"e\" at byte 4: 4 bytes are expected, 1 are left");
}

TEST(RecordDecoder, RefusesALongerRecord) {
  EXPECT_EQ(field_refusal("char c", bytes({1, 0, 0, 0, 'F', 0, 0})),
            "7 bytes are given, the fields end at byte 5");
}

TEST(RecordDecoder, RefusesHostileCounts) {
  EXPECT_EQ(field_refusal("double[*] v", bytes({1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF})),
            "field \"v\" at byte 4: a count of -1");
  EXPECT_EQ(field_refusal("double[*] v", bytes({1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0x7F, 0})),
            "field \"v\" at byte 8: 17179869176 bytes are expected, 1 are left");
  EXPECT_EQ(field_refusal("double[*] v", bytes({1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})),
            "field \"v\" at byte 8: 16 bytes are expected, 8 are left");
}

TEST(RecordDecoder, RefusesItemsOutsideTheEnumeration) {
  EXPECT_EQ(field_refusal("enum e A B", bytes({1, 0, 0, 0, 2, 0, 0, 0})),
            "field \"e\" at byte 4: there is no item 2 among 2");
  EXPECT_EQ(field_refusal("enum e A B", bytes({1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF})),
            "field \"e\" at byte 4: there is no item -1 among 2");
}

// --- Fields that are not the design's ------------------------------------------------------------

std::string encode_refusal(const std::vector<DecodedField>& fields) {
  const std::string dictionary = "gridkit-dictionary 1\ndesign T\nenum e A B\ndouble[2] a\nend\n";
  try {
    encode_record(dictionary, "T", fields);
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

TEST(RecordDecoder, EncodesOnlyTheFieldsOfTheDesign) {
  const DecodedField e{"e", EnumerationItem{1, "B"}};
  const DecodedField a{"a", std::vector<double>{1, 2}};
  const std::string start = "record of the design \"T\": ";
  EXPECT_EQ(encode_refusal({e, a}), "");
  EXPECT_EQ(encode_refusal({e}), start + "1 fields are given for 2");
  EXPECT_EQ(encode_refusal({a, e}), start + "expected the field \"e\", not \"a\"");
  EXPECT_EQ(encode_refusal({e, {"a", 1.0}}), start + "field \"a\": expected doubles");
  EXPECT_EQ(encode_refusal({{"e", 1}, a}),
            start + "field \"e\": expected an item of an enumeration");
  EXPECT_EQ(encode_refusal({e, {"a", std::vector<double>{1}}}),
            start + "field \"a\": 1 elements are given for 2");
  EXPECT_EQ(encode_refusal({{"e", EnumerationItem{1, "A"}}, a}),
            start + "field \"e\": there is no item 1 \"A\"");
  EXPECT_EQ(encode_refusal({{"e", EnumerationItem{2, "B"}}, a}),
            start + "field \"e\": there is no item 2 \"B\"");
  EXPECT_EQ(encode_refusal({{"e", EnumerationItem{-1, "B"}}, a}),
            start + "field \"e\": there is no item -1 \"B\"");
}

// --- Dictionaries that are damaged ---------------------------------------------------------------

struct Damage {
  std::string text;
  std::string message;
};

const std::string no_name = " is no name of letters, digits, '_' and '.'";
const std::string no_type = "expected a field's type, \"design\" or \"end\"";

const Damage damages[] = {
    {"", "line 1: the text stops before \"end\""},
    {"gridkit-dictionary 2\nend\n", "line 1: expected \"gridkit-dictionary 1\""},
    {"gridkit-dictionary 1", "line 1: expected a line feed at the line's end"},
    {" gridkit-dictionary 1\nend\n", "line 1: expected \"gridkit-dictionary 1\""},
    {"gridkit-dictionary 1\r\nend\r\n",
     "line 1: expected a line feed alone, without carriage return"},
    {"gridkit-dictionary 1\n", "line 2: the text stops before \"end\""},
    {"gridkit-dictionary 1\nend", "line 2: expected a line feed at the line's end"},
    {"gridkit-dictionary 1\nend\n\n", "line 3: expected nothing after \"end\""},
    {"gridkit-dictionary 1\nend \n", "line 2: " + no_type},
    {"gridkit-dictionary 1\n\nend\n", "line 2: " + no_type},
    {"gridkit-dictionary 1\nint i\nend\n", "line 2: expected \"design\" before the first field"},
    {"gridkit-dictionary 1\ndesign\nint i\nend\n", "line 2: expected one name after \"design\""},
    {"gridkit-dictionary 1\ndesign T U\nint i\nend\n",
     "line 2: expected one name after \"design\""},
    {"gridkit-dictionary 1\ndesign T-1\nint i\nend\n", "line 2: \"T-1\"" + no_name},
    {"gridkit-dictionary 1\ndesign T\nend\n", "line 3: expected a field of the design \"T\""},
    {"gridkit-dictionary 1\ndesign T\ndesign U\nint i\nend\n",
     "line 3: expected a field of the design \"T\""},
    {"gridkit-dictionary 1\ndesign T\nint i\ndesign T\nint i\nend\n",
     "line 4: there is a design \"T\" already"},
    {"gridkit-dictionary 1\ndesign T\nint i\n", "line 4: the text stops before \"end\""},
    {"gridkit-dictionary 1\ndesign T\nint\nend\n",
     "line 3: expected a field's name after its type"},
    {"gridkit-dictionary 1\ndesign T\nint  i\nend\n",
     "line 3: expected nothing after the field's name"},
    {"gridkit-dictionary 1\ndesign T\nint i \nend\n",
     "line 3: expected nothing after the field's name"},
    {"gridkit-dictionary 1\ndesign T\nint \nend\n", "line 3: \"\"" + no_name},
    {"gridkit-dictionary 1\ndesign T\nint i\nchar i\nend\n",
     "line 4: there is a field \"i\" already"},
    {"gridkit-dictionary 1\ndesign T\nfloat f\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\nINT i\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\ndouble[] a\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\ndouble[0] a\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\ndouble[-1] a\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\ndouble[06] a\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\ndouble[6 a\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\ndouble[6x] a\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\ndouble[2147483648] a\nend\n", "line 3: " + no_type},
    {"gridkit-dictionary 1\ndesign T\nenum e\nend\n", "line 3: the enumeration \"e\" has no items"},
    {"gridkit-dictionary 1\ndesign T\nenum e A A\nend\n",
     "line 3: the enumeration \"e\" has the item \"A\" twice"},
    {"gridkit-dictionary 1\ndesign T\nenum e A  B\nend\n", "line 3: \"\"" + no_name},
    {std::string("gridkit-dictionary 1\ndesign T\nint i\0\nend\n", 40), "line 3: \"i?\"" + no_name},
    {"gridkit-dictionary 1\ndesign " + std::string(60, '-') + "\nint i\nend\n",
     "line 2: \"" + std::string(40, '-') + "...\"" + no_name},
    {"gridkit-dictionary 1\ndesign " + std::string(256, 'x') + "\nint i\nend\n",
     "line 2: a name has 256 characters, at most 255 are allowed"},
};

TEST(RecordDecoder, RefusesDamagedDictionariesWithTheLine) {
  for (const Damage& damage : damages) {
    EXPECT_EQ(refusal(damage.text, "T", {}), "dictionary " + damage.message) << damage.text;
  }
}

TEST(RecordDecoder, RefusesDictionariesBeyondTheLimits) {
  EXPECT_EQ(refusal(std::string(1048577, 'x'), "T", {}),
            "the dictionary has 1048577 bytes, at most 1048576 are allowed");
  std::string fields = "gridkit-dictionary 1\ndesign T\n";
  for (int i = 0; i < 1001; ++i) fields += "int i" + std::to_string(i) + "\n";
  EXPECT_EQ(refusal(fields + "end\n", "T", {}),
            "dictionary line 1003: a design has at most 1000 fields");
  std::string items = "gridkit-dictionary 1\ndesign T\nenum e";
  for (int i = 0; i < 257; ++i) items += " I" + std::to_string(i);
  EXPECT_EQ(refusal(items + "\nend\n", "T", {}),
            "dictionary line 3: the enumeration \"e\" has more than 256 items");
  std::string designs = "gridkit-dictionary 1\n";
  for (int i = 0; i < 257; ++i) designs += "design T" + std::to_string(i) + "\nint i\n";
  EXPECT_EQ(refusal(designs + "end\n", "T", {}),
            "dictionary line 514: a dictionary has at most 256 designs");
}

TEST(RecordDecoder, RefusesADictionaryThatIsCutAnywhere) {
  for (std::size_t size = 0; size < every_type.size(); ++size) {
    EXPECT_NE(refusal(every_type.substr(0, size), "T", every_value), "") << size;
  }
}

// --- The whole way: a record in memory, encoded, decoded, encoded again --------------------------

char* const end_of_items = nullptr;

gkd_Design* radar_design(gkd_Dictionary* dictionary) {
  return gkd_DesignCreate(
      dictionary, "RADAR_Generic_v2.2", nullptr,                                           //
      3, "sensor", "RMDL_GENERIC_SAR", "RMDL_RADARSAT", "RMDL_ERS", end_of_items,          //
      3, "data_type", "RMDL_MAG", "RMDL_MAG_BETA0", "RMDL_MAG_BETA0DB", "RMDL_MAG_PHASE",  //
      "RMDL_REAL_IMG", "RMDL_COMPLEX", end_of_items,                                       //
      8, "coord_sys", 12, "year", 12, "month", 12, "day", 12, "doy",                       //
      12, "num_samples", 12, "num_lines", 14, "image_start_time",                          //
      14, "first_pt_secs_of_day", 14, "first_pt_org", 14, "time_interval",                 //
      14, "time_interval_org", 14, "image_duration", 14, "image_end_time",                 //
      14, "semimajor", 14, "semiminor", 14, "target_height", 14, "look_side",              //
      14, "wavelength", 14, "sampling_rate", 14, "range_pix_spacing",                      //
      14, "azimuth_line_spacing", 14, "near_slant_range", 12, "num_pos_pts",               //
      12, "projection", 270, "gnd2slt_coeffs", 6,                                          //
      3, "time_dir_pixels", "RMDL_INCREASE", "RMDL_DECREASE", end_of_items,                //
      3, "time_dir_lines", "RMDL_INCREASE", "RMDL_DECREASE", end_of_items,                 //
      526, "rsx", 526, "rsy", 526, "rsz", 526, "vsx", 526, "vsy", 526, "vsz",              //
      3, "orbitState", "RMDL_ORIGINAL", "RMDL_CORRECTED", end_of_items,                    //
      270, "rs_coeffs", 9, 270, "vs_coeffs", 9, 12, "sub_unity_subset",                    //
      12, "sub_range_start", 12, "sub_range_end", 12, "sub_range_degrade",                 //
      12, "sub_range_num_samples", 12, "sub_azimuth_start", 12, "sub_azimuth_end",         //
      12, "sub_azimuth_degrade", 12, "sub_azimuth_num_lines", 0);
}

struct EncodedModel {
  std::string dictionary;
  std::vector<std::byte> bytes;
};

EncodedModel encoded(const RadarGenericModel& model) {
  gkd_Dictionary* dictionary = gkd_DictionaryCreate(nullptr);
  gkd_Design* design = radar_design(dictionary);
  gkd_DictionaryAddDesign(dictionary, design, nullptr);
  char* text = gkd_DictionaryEncodeToString(dictionary, nullptr);
  EncodedModel result{text, {}};
  gkm_HeapFree(text);
  result.bytes.resize(static_cast<std::size_t>(gkd_ObjectSize(&model, design, nullptr)));
  gkd_ConvertToMIF(0, &model, design, result.bytes.data(), nullptr);
  gkd_ReleaseDictionaries();
  return result;
}

template <class Type>
Type value(const std::vector<DecodedField>& fields, std::string_view name) {
  for (const DecodedField& field : fields) {
    if (field.name == name) return std::get<Type>(field.value);
  }
  throw Error("no such field");
}

TEST(RecordDecoder, ReadsTheSensorModelByItsDictionary) {
  std::vector<double> x = {1, 2, 3}, y = {4, 5, 6}, z = {7, 8, 9};
  RadarGenericModel model{};
  model.data_type = 3;
  model.coord_sys = 'F';
  model.year = 2008;
  model.image_start_time = 61234.5;
  model.near_slant_range = 6e5;
  model.num_pos_pts = 3;
  model.gnd2slt_coeffs[5] = 5.5;
  model.time_dir_lines = 1;
  model.rsx = model.vsz = {3, x.data()};
  model.rsy = model.vsy = {3, y.data()};
  model.rsz = model.vsx = {3, z.data()};
  model.rs_coeffs[8] = 88;
  model.vs_coeffs[0] = -1;
  model.sub_unity_subset = 1;
  model.sub_azimuth_num_lines = 4711;
  const auto [dictionary, bytes] = encoded(model);
  // 5 enumerations, 17 integers and 6 counts of 4 bytes; 1 character; 16 doubles, arrays of 6, 9
  // and 9, vectors of 3 by 6: 28 * 4 + 1 + (16 + 24 + 18) * 8.
  EXPECT_EQ(bytes.size(), 28U * 4 + 1 + 58 * 8);
  const auto fields = decode_record(dictionary, "RADAR_Generic_v2.2", bytes);
  ASSERT_EQ(fields.size(), 48U);
  EXPECT_EQ(value<EnumerationItem>(fields, "sensor").text, "RMDL_GENERIC_SAR");
  EXPECT_EQ(value<EnumerationItem>(fields, "data_type").text, "RMDL_MAG_PHASE");
  EXPECT_EQ(value<EnumerationItem>(fields, "time_dir_lines").text, "RMDL_DECREASE");
  EXPECT_EQ(value<char>(fields, "coord_sys"), 'F');
  EXPECT_EQ(value<std::int32_t>(fields, "year"), 2008);
  EXPECT_EQ(value<double>(fields, "image_start_time"), 61234.5);
  EXPECT_EQ(value<double>(fields, "near_slant_range"), 6e5);
  EXPECT_EQ(value<std::vector<double>>(fields, "gnd2slt_coeffs"),
            (std::vector<double>{0, 0, 0, 0, 0, 5.5}));
  EXPECT_EQ(value<std::vector<double>>(fields, "rsx"), x);
  EXPECT_EQ(value<std::vector<double>>(fields, "rsz"), z);
  EXPECT_EQ(value<std::vector<double>>(fields, "vsx"), z);
  EXPECT_EQ(value<std::vector<double>>(fields, "rs_coeffs")[8], 88);
  EXPECT_EQ(value<std::vector<double>>(fields, "vs_coeffs")[0], -1);
  EXPECT_EQ(value<std::int32_t>(fields, "sub_azimuth_num_lines"), 4711);
  EXPECT_EQ(encode_record(dictionary, "RADAR_Generic_v2.2", fields), bytes);
}

TEST(RecordDecoder, ReadsASensorModelWithoutStateVectors) {
  const auto [dictionary, bytes] = encoded(RadarGenericModel{});
  const auto fields = decode_record(dictionary, "RADAR_Generic_v2.2", bytes);
  for (const char* name : {"rsx", "rsy", "rsz", "vsx", "vsy", "vsz"}) {
    EXPECT_TRUE(value<std::vector<double>>(fields, name).empty()) << name;
  }
}

}  // namespace
