#include "gridkit/dictionary.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "gridkit/memory.h"

namespace {

// The slot of a report, and the message in it.
class Slot {
 public:
  Slot() = default;
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;
  ~Slot() { gke_DeleteErrorReportEx(&report_); }
  operator gke_Report**() { return &report_; }
  // "WORD: MESSAGE", empty without a report; the slot is cleared.
  std::string take() {
    if (report_ == nullptr) return "";
    std::string text = std::string(gke_ReportWord(report_)) + ": " + gke_ReportMessage(report_);
    gke_DeleteErrorReportEx(&report_);
    return text;
  }

 private:
  gke_Report* report_ = nullptr;
};

class Dictionary : public testing::Test {
 protected:
  ~Dictionary() override { gkd_ReleaseDictionaries(); }

  std::string text() {
    char* encoded = gkd_DictionaryEncodeToString(dictionary, err);
    std::string copy = encoded == nullptr ? "" : encoded;
    gkm_HeapFree(encoded);
    return copy;
  }
  std::vector<unsigned> bytes_of(const void* object, const gkd_Design* design) {
    const int32_t size = gkd_ObjectSize(object, design, err);
    std::vector<unsigned char> encoded(size < 0 ? 0 : static_cast<std::size_t>(size), 0xEE);
    gkd_ConvertToMIF(0, object, design, encoded.data(), err);
    return {encoded.begin(), encoded.end()};
  }

  Slot err;
  gkd_Dictionary* dictionary = gkd_DictionaryCreate(err);
};

char* const end_of_items = nullptr;

TEST_F(Dictionary, IsEmptyAtFirst) {
  EXPECT_EQ(text(), "gridkit-dictionary 1\nend\n");
  EXPECT_EQ(err.take(), "");
}

TEST_F(Dictionary, TellsEveryTypeOfField) {
  gkd_Design* first =
      gkd_DesignCreate(dictionary, "FIRST_v2.2", err, 3, "e", "A.1", "B_2", end_of_items, 8, "c",
                       12, "i", 14, "d", 270, "a", 6, 526, "v", 0);
  ASSERT_NE(first, nullptr) << err.take();
  EXPECT_STREQ(first->name, "FIRST_v2.2");
  gkd_Design* second = gkd_DesignCreate(dictionary, "SECOND", err, 14, "d", 0);
  gkd_DictionaryAddDesign(dictionary, second, err);
  gkd_DictionaryAddDesign(dictionary, first, err);
  EXPECT_EQ(text(),
            "gridkit-dictionary 1\n"
            "design SECOND\n"
            "double d\n"
            "design FIRST_v2.2\n"
            "enum e A.1 B_2\n"
            "char c\n"
            "int i\n"
            "double d\n"
            "double[6] a\n"
            "double[*] v\n"
            "end\n");
  EXPECT_EQ(err.take(), "");
}

TEST_F(Dictionary, HoldsOnlyDesignsThatWereAdded) {
  gkd_DesignCreate(dictionary, "LEFT", err, 14, "d", 0);
  EXPECT_EQ(text(), "gridkit-dictionary 1\nend\n");
}

TEST_F(Dictionary, LosesADesignThatIsDestroyed) {
  gkd_Design* kept = gkd_DesignCreate(dictionary, "KEPT", err, 12, "i", 0);
  gkd_Design* gone = gkd_DesignCreate(dictionary, "GONE", err, 14, "d", 0);
  gkd_DictionaryAddDesign(dictionary, gone, err);
  gkd_DictionaryAddDesign(dictionary, kept, err);
  gkd_DesignDestroy(gone);
  EXPECT_EQ(text(), "gridkit-dictionary 1\ndesign KEPT\nint i\nend\n");
  gkd_DesignDestroy(nullptr);
}

TEST_F(Dictionary, RefusesASecondDesignOfItsName) {
  gkd_Design* one = gkd_DesignCreate(dictionary, "T", err, 14, "d", 0);
  gkd_Design* two = gkd_DesignCreate(dictionary, "T", err, 12, "i", 0);
  ASSERT_NE(two, nullptr);
  gkd_DictionaryAddDesign(dictionary, one, err);
  EXPECT_EQ(err.take(), "");
  gkd_DictionaryAddDesign(dictionary, one, err);
  EXPECT_EQ(err.take(), "gkd_DictionaryAddDesign: there is a design \"T\" already");
  gkd_DictionaryAddDesign(dictionary, two, err);
  EXPECT_EQ(err.take(), "gkd_DictionaryAddDesign: there is a design \"T\" already");
  gkd_DesignDestroy(one);
  gkd_DictionaryAddDesign(dictionary, two, err);
  EXPECT_EQ(err.take(), "");
}

TEST_F(Dictionary, RefusesADesignOfAnotherDictionary) {
  gkd_Design* design = gkd_DesignCreate(gkd_DictionaryCreate(err), "T", err, 14, "d", 0);
  gkd_DictionaryAddDesign(dictionary, design, err);
  EXPECT_EQ(err.take(), "gkd_DictionaryAddDesign: design \"T\" belongs to another dictionary");
}

TEST_F(Dictionary, RefusesMoreThan256Designs) {
  for (int i = 0; i < 256; ++i) {
    const std::string name = "T" + std::to_string(i);
    gkd_DictionaryAddDesign(dictionary, gkd_DesignCreate(dictionary, name.c_str(), err, 14, "d", 0),
                            err);
  }
  EXPECT_EQ(err.take(), "");
  gkd_DictionaryAddDesign(dictionary, gkd_DesignCreate(dictionary, "more", err, 14, "d", 0), err);
  EXPECT_EQ(err.take(), "gkd_DictionaryAddDesign: a dictionary has at most 256 designs");
}

TEST_F(Dictionary, RefusesATextOfMoreThanAMebibyte) {
  // 256 designs with 17 names of 254 characters each: 1.1 million characters.
  for (int k = 0; k < 256; ++k) {
    std::vector<std::string> n;
    for (char c = 'a'; c <= 'q'; ++c) n.emplace_back(254, c);
    const std::string name = "T" + std::to_string(k);
    gkd_Design* design = gkd_DesignCreate(
        dictionary, name.c_str(), err, 3, n[0].c_str(), n[1].c_str(), n[2].c_str(), n[3].c_str(),
        n[4].c_str(), n[5].c_str(), n[6].c_str(), n[7].c_str(), n[8].c_str(), n[9].c_str(),
        n[10].c_str(), n[11].c_str(), n[12].c_str(), n[13].c_str(), n[14].c_str(), n[15].c_str(),
        n[16].c_str(), end_of_items, 0);
    gkd_DictionaryAddDesign(dictionary, design, err);
  }
  EXPECT_EQ(err.take(), "");
  EXPECT_EQ(gkd_DictionaryEncodeToString(dictionary, err), nullptr);
  EXPECT_EQ(err.take(),
            "gkd_DictionaryEncodeToString: the text would have more than 1048576 bytes");
}

// --- Designs that are refused --------------------------------------------------------------------

TEST_F(Dictionary, RefusesMissingArguments) {
  const double object = 1;
  double buffer = 2;
  gkd_Design* design = gkd_DesignCreate(dictionary, "T", err, 14, "d", 0);
  EXPECT_EQ(gkd_DesignCreate(nullptr, "T", err, 14, "d", 0), nullptr);
  EXPECT_EQ(err.take(), "gkd_DesignCreate: no dictionary was given");
  EXPECT_EQ(gkd_DesignCreate(dictionary, nullptr, err, 14, "d", 0), nullptr);
  EXPECT_EQ(err.take(), "gkd_DesignCreate: no name was given");
  gkd_DictionaryAddDesign(nullptr, design, err);
  EXPECT_EQ(err.take(), "gkd_DictionaryAddDesign: no dictionary was given");
  gkd_DictionaryAddDesign(dictionary, nullptr, err);
  EXPECT_EQ(err.take(), "gkd_DictionaryAddDesign: no design was given");
  EXPECT_EQ(gkd_DictionaryEncodeToString(nullptr, err), nullptr);
  EXPECT_EQ(err.take(), "gkd_DictionaryEncodeToString: no dictionary was given");
  EXPECT_EQ(gkd_ObjectSize(nullptr, design, err), -1);
  EXPECT_EQ(err.take(), "gkd_ObjectSize: no record was given");
  EXPECT_EQ(gkd_ObjectSize(&object, nullptr, err), -1);
  EXPECT_EQ(err.take(), "gkd_ObjectSize: no design was given");
  gkd_ConvertToMIF(0, nullptr, design, &buffer, err);
  EXPECT_EQ(err.take(), "gkd_ConvertToMIF: no record was given");
  gkd_ConvertToMIF(0, &object, nullptr, &buffer, err);
  EXPECT_EQ(err.take(), "gkd_ConvertToMIF: no design was given");
  gkd_ConvertToMIF(0, &object, design, nullptr, err);
  EXPECT_EQ(err.take(), "gkd_ConvertToMIF: no buffer was given");
  EXPECT_EQ(buffer, 2);
}

TEST_F(Dictionary, TakesNoSlotForReports) {
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", nullptr, 99, 0), nullptr);
  EXPECT_EQ(gkd_ObjectSize(nullptr, nullptr, nullptr), -1);
}

TEST_F(Dictionary, RefusesUnknownTypeCodes) {
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 14, "d", 99, "x", 0), nullptr);
  EXPECT_EQ(err.take(), "gkd_DesignCreate: design \"T\", field 2: 99 is no type code");
}

TEST_F(Dictionary, RefusesBadNames) {
  EXPECT_EQ(gkd_DesignCreate(dictionary, "my design", err, 14, "d", 0), nullptr);
  EXPECT_EQ(err.take(),
            "gkd_DesignCreate: \"my design\" is no name of letters, digits, '_' and '.'");
  EXPECT_EQ(gkd_DesignCreate(dictionary, "", err, 14, "d", 0), nullptr);
  EXPECT_EQ(err.take(), "gkd_DesignCreate: \"\" is no name of letters, digits, '_' and '.'");
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 14, "d\n", 0), nullptr);
  EXPECT_EQ(err.take(),
            "gkd_DesignCreate: design \"T\", field 1: \"d?\" is no name of letters, digits, '_' "
            "and '.'");
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 3, "e", "A", "\xE4", end_of_items, 0), nullptr);
  EXPECT_EQ(err.take(),
            "gkd_DesignCreate: design \"T\", field 1: \"?\" is no name of letters, digits, '_' "
            "and '.'");
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 14, (char*)nullptr, 0), nullptr);
  EXPECT_EQ(err.take(), "gkd_DesignCreate: design \"T\", field 1: its name is missing");
}

TEST_F(Dictionary, RefusesNamesOfMoreThan255Characters) {
  EXPECT_NE(gkd_DesignCreate(dictionary, std::string(255, 'x').c_str(), err, 14, "d", 0), nullptr);
  EXPECT_EQ(gkd_DesignCreate(dictionary, std::string(256, 'x').c_str(), err, 14, "d", 0), nullptr);
  EXPECT_EQ(err.take(), "gkd_DesignCreate: a name has 256 characters, at most 255 are allowed");
}

TEST_F(Dictionary, RefusesWhatOccursTwice) {
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 14, "d", 12, "d", 0), nullptr);
  EXPECT_EQ(err.take(), "gkd_DesignCreate: design \"T\", field 2: there is a field \"d\" already");
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 3, "e", "A", "A", end_of_items, 0), nullptr);
  EXPECT_EQ(err.take(),
            "gkd_DesignCreate: design \"T\", field 1: the enumeration \"e\" has the item \"A\" "
            "twice");
}

TEST_F(Dictionary, RefusesWhatIsEmpty) {
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 0), nullptr);
  EXPECT_EQ(err.take(), "gkd_DesignCreate: design \"T\" has no fields");
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 3, "e", end_of_items, 0), nullptr);
  EXPECT_EQ(err.take(),
            "gkd_DesignCreate: design \"T\", field 1: the enumeration \"e\" has no items");
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 270, "a", 0, 0), nullptr);
  EXPECT_EQ(err.take(),
            "gkd_DesignCreate: design \"T\", field 1: the array \"a\" has a count of 0");
  EXPECT_EQ(gkd_DesignCreate(dictionary, "T", err, 270, "a", -6, 0), nullptr);
  EXPECT_EQ(err.take(),
            "gkd_DesignCreate: design \"T\", field 1: the array \"a\" has a count of -6");
}

// --- Encoded records, their bytes by hand --------------------------------------------------------

TEST_F(Dictionary, EncodesEveryTypeWithoutGapsAndLittleEndian) {
  // The compiler's own layout, with gaps of 3 bytes after c, 3 after k and 4 after i.
  struct {
    char c;
    int32_t i;
    char k;
    double d;
    int32_t e;
    struct {
      int32_t count;
      double* elements;
    } v;
    double a[2];
  } record{};
  double elements[] = {-2};
  std::memset(&record, 0x77, sizeof record);
  record.c = 'F';
  record.i = -2;
  record.k = '\x80';
  record.d = 1;
  record.e = 1;
  record.v.count = 1;
  record.v.elements = elements;
  record.a[0] = 0.5;
  record.a[1] = -0.0;
  gkd_Design* design = gkd_DesignCreate(dictionary, "T", err, 8, "c", 12, "i", 8, "k", 14, "d", 3,
                                        "e", "A", "B", end_of_items, 526, "v", 270, "a", 2, 0);
  const std::vector<unsigned> expected = {
      'F',                                       // c
      0xFE, 0xFF, 0xFF, 0xFF,                    // i: -2, two's complement
      0x80,                                      // k
      0,    0,    0,    0,    0, 0, 0xF0, 0x3F,  // d: 1 = exponent 1023, mantissa 0
      1,    0,    0,    0,                       // e: the second item
      1,    0,    0,    0,                       // v: one element
      0,    0,    0,    0,    0, 0, 0,    0xC0,  // -2 = sign, exponent 1024
      0,    0,    0,    0,    0, 0, 0xE0, 0x3F,  // a: 0.5 = exponent 1022
      0,    0,    0,    0,    0, 0, 0,    0x80,  // -0: the sign alone
  };
  EXPECT_EQ(gkd_ObjectSize(&record, design, err), 46);
  EXPECT_EQ(bytes_of(&record, design), expected);
  EXPECT_EQ(err.take(), "");
}

struct Vector {
  int32_t count;
  const double* elements;
};
// The vector starts at a multiple of 8, after a gap of 4 bytes.
struct NestedRecord {
  int32_t before;
  Vector vector;
  char behind;
};

class VectorField : public Dictionary {
 protected:
  gkd_Design* design =
      gkd_DesignCreate(dictionary, "T", err, 12, "before", 526, "v", 8, "behind", 0);
};

TEST_F(VectorField, OfNoElementsNeedsNone) {
  const NestedRecord record = {7, {0, nullptr}, 'z'};
  EXPECT_EQ(bytes_of(&record, design), (std::vector<unsigned>{7, 0, 0, 0, 0, 0, 0, 0, 'z'}));
}

TEST_F(VectorField, OfAThousandElements) {
  const std::vector<double> elements(1000, 1.0);
  const NestedRecord record = {7, {1000, elements.data()}, 'z'};
  const std::vector<unsigned> bytes = bytes_of(&record, design);
  ASSERT_EQ(bytes.size(), 4U + 4U + 8000U + 1U);
  EXPECT_EQ(bytes[4], 0xE8U) << "1000 = 0x03E8";
  EXPECT_EQ(bytes[5], 0x03U);
  EXPECT_EQ(bytes[8 + 8 * 999 + 7], 0x3FU) << "the last element's sign and exponent";
  EXPECT_EQ(bytes.back(), 'z');
}

TEST_F(VectorField, WithANegativeCountIsRefused) {
  const double element = 0;
  const NestedRecord record = {7, {-1, &element}, 'z'};
  EXPECT_EQ(gkd_ObjectSize(&record, design, err), -1);
  EXPECT_EQ(err.take(), "gkd_ObjectSize: field \"v\" has a count of -1");
  char untouched[64] = "untouched";
  gkd_ConvertToMIF(0, &record, design, untouched, err);
  EXPECT_EQ(err.take(), "gkd_ConvertToMIF: field \"v\" has a count of -1");
  EXPECT_STREQ(untouched, "untouched");
}

TEST_F(VectorField, WithoutItsElementsIsRefused) {
  const NestedRecord record = {7, {3, nullptr}, 'z'};
  EXPECT_EQ(gkd_ObjectSize(&record, design, err), -1);
  EXPECT_EQ(err.take(), "gkd_ObjectSize: field \"v\" has a count of 3, but no elements");
}

TEST_F(VectorField, ThatMakesTheRecordTooLargeIsRefused) {
  // The elements are not looked at. 4 + 4 + 8 n + 1 bytes: n = 268435454 gives 2147483641.
  const double element = 0;
  const NestedRecord fits = {7, {268435454, &element}, 'z'};
  EXPECT_EQ(gkd_ObjectSize(&fits, design, err), 2147483641);
  const NestedRecord large = {7, {268435455, &element}, 'z'};
  EXPECT_EQ(gkd_ObjectSize(&large, design, err), -1);
  EXPECT_EQ(err.take(), "gkd_ObjectSize: the encoded record would have more than 2147483647 bytes");
  const NestedRecord largest = {7, {INT32_MAX, &element}, 'z'};
  EXPECT_EQ(gkd_ObjectSize(&largest, design, err), -1);
  EXPECT_EQ(err.take(), "gkd_ObjectSize: the encoded record would have more than 2147483647 bytes");
}

TEST_F(Dictionary, RefusesAnArrayThatMakesTheRecordTooLarge) {
  const double object = 0;
  gkd_Design* design = gkd_DesignCreate(dictionary, "T", err, 270, "a", INT32_MAX, 14, "d", 0);
  EXPECT_EQ(gkd_ObjectSize(&object, design, err), -1);
  EXPECT_EQ(err.take(), "gkd_ObjectSize: the encoded record would have more than 2147483647 bytes");
}

}  // namespace
