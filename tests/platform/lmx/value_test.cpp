#include "lmx/value.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>

#include "lmx/list_tokeniser.h"
#include "tests/support/made_locale.h"

namespace {

using namespace lmx;

template <class T>
std::string written(const T& value) {
  std::ostringstream out;
  out << c_as_xml<T>(value);
  return out.str();
}

TEST(MaxLength, CountsCharactersAndIncludesTheMaximum) {
  EXPECT_TRUE(is_max_length_ok("12345", 5));
  EXPECT_FALSE(is_max_length_ok("123456", 5));
  EXPECT_TRUE(is_max_length_ok("\xC3\xA4\xC3\xB6\xC3\xBC", 3)) << "three letters of two bytes";
  EXPECT_FALSE(is_max_length_ok("\xC3\xA4\xC3\xB6\xC3\xBC", 2));
}

TEST(Integers, HaveASignAndDigits) {
  for (const char* text : {"0", "-0", "+7", "007", "99999999999999999999999"}) {
    EXPECT_TRUE(is_valid_integer(text)) << text;
  }
  for (const char* text : {"", "+", "-", "1.0", "1e3", " 1", "1 ", "0x1", "--1"}) {
    EXPECT_FALSE(is_valid_integer(text)) << text;
  }
}

TEST(Floats, TakeDecimalScientificAndSpecialForms) {
  for (const char* text : {"0", "-1.5", "+.5", "5.", "1E+03", "1e-3", "INF", "-INF", "NaN"}) {
    EXPECT_TRUE(is_valid_float(text)) << text;
  }
  for (const char* text : {"", ".", "1e", "1e+", "+INF", "nan", "inf", "0x10", "1,5", "1 2"}) {
    EXPECT_FALSE(is_valid_float(text)) << text;
  }
}

TEST(Booleans, TakeFourForms) {
  for (const char* text : {"true", "false", "1", "0"}) EXPECT_TRUE(is_valid_bool(text)) << text;
  EXPECT_TRUE(to_bool("1"));
  EXPECT_TRUE(to_bool("true"));
  EXPECT_FALSE(to_bool("0"));
  EXPECT_FALSE(to_bool("maybe")) << "an invalid text that a policy lets pass reads as false";
  EXPECT_FALSE(is_valid_bool("True"));
}

TEST(BigInt, ComparesValuesOfAnyLength) {
  const c_big_int highest("18446744073709551615");
  EXPECT_TRUE(std::string("18446744073709551615") <= highest);
  EXPECT_FALSE(std::string("18446744073709551616") <= highest);
  EXPECT_FALSE(std::string("100000000000000000000") <= highest) << "21 digits";
  EXPECT_TRUE(std::string("00000000000000000000000001") <= highest);
  const c_big_int lowest("-2147483648");
  EXPECT_TRUE(std::string("-2147483648") >= lowest);
  EXPECT_FALSE(std::string("-2147483649") >= lowest);
  EXPECT_TRUE(std::string("-0") >= c_big_int("0"));
  EXPECT_TRUE(std::string("+5") >= c_big_int("5"));
  EXPECT_FALSE(std::string("-5") >= c_big_int("0"));
}

TEST(Conversions, TakeTheEndsOfEveryIntegerType) {
  EXPECT_EQ(to_int32("-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(to_int64("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(to_uint64("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(to_uint32("+4294967295"), std::numeric_limits<std::uint32_t>::max());
  EXPECT_EQ(to_int64("-5"), -5);
  EXPECT_EQ(to_int32("-7"), -7);
  EXPECT_EQ(to_int64("+9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(to_uint64("007x9"), 7U) << "up to the first that is no digit";
  EXPECT_EQ(to_uint64("x"), 0U);
  EXPECT_EQ(to_uint64("99999999999999999999999"), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(to_uint8("300"), 44) << "the low 8 bits of 300 = 256 + 44";
}

TEST(Conversions, GiveInfinitiesAndNotANumber) {
  EXPECT_TRUE(std::isnan(to_double("NaN")));
  EXPECT_EQ(to_double("INF"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(to_double("-INF"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(to_double("1e999"), std::numeric_limits<double>::infinity()) << "as atof does";
  EXPECT_EQ(to_double("1e-999"), 0.0);
}

TEST(Conversions, AreTheLibrarysToTheBit) {
  for (const char* text : {"1.23456789012345678E+03", "-1.58021809609726421E+06", "0.1", "+4.5",
                           "4.9406564584124654E-324", "9.10032937895266514E-09"}) {
    const double expected = std::strtod(text, nullptr);
    const double value = to_double(text);
    EXPECT_EQ(std::memcmp(&value, &expected, sizeof value), 0) << text;
  }
}

bool same_bits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Both in one must be the two one by one.
TEST(ValidDouble, IsTheCheckAndTheConversion) {
  for (const std::string text : {"0",
                                 "-0",
                                 "-0.000",
                                 "+4.5",
                                 "5.",
                                 ".5",
                                 "-.5",
                                 "007",
                                 "9007199254740992",
                                 "9007199254740993",
                                 "0.9007199254740993",
                                 "9999999999999999999",
                                 "99999999999999999999",
                                 "0.0000000000000000001",
                                 "0.00000000000000000001",
                                 "1E+03",
                                 "5.e1",
                                 "+.5e-1",
                                 "1e999",
                                 "-1e999",
                                 "1e-999",
                                 "INF",
                                 "-INF",
                                 "4.9406564584124654E-324"}) {
    const auto value = to_valid_double(text);
    ASSERT_TRUE(value.has_value()) << text;
    EXPECT_TRUE(is_valid_float(text)) << text;
    EXPECT_TRUE(same_bits(*value, to_double(text))) << text;
  }
  EXPECT_TRUE(std::isnan(to_valid_double("NaN").value()));
  for (const std::string text :
       {"",     "+",     "-",   ".",   "-.",   "1..2",     "1.2.3",  "1e",
        "1e+",  "+INF",  "nan", "inf", "-inf", "infinity", "nan(1)", "nan(1).",
        "0x10", "0x1p3", "1,5", "1 2", " 1",   "1 ",       "+-1",    "--1"}) {
    EXPECT_FALSE(to_valid_double(text).has_value()) << text;
    EXPECT_FALSE(is_valid_float(text)) << text;
  }
}

// Digits drawn at random, the point anywhere among them: short texts take the short way, longer
// ones the library's. The library's own answer is the reference.
TEST(ValidDouble, OfAnyDecimalIsTheLibrarysToTheBit) {
  std::mt19937_64 random(20080310);
  for (int i = 0; i < 200000; ++i) {
    std::string text = random() % 2 == 0 ? "-" : "";
    const auto size = 1 + random() % 21;
    const auto point = random() % (size + 1);
    for (std::size_t digit = 0; digit < size; ++digit) {
      if (digit == point) text += '.';
      text += static_cast<char>('0' + random() % 10);
    }
    const auto value = to_valid_double(text);
    ASSERT_TRUE(value.has_value()) << text;
    ASSERT_TRUE(same_bits(*value, std::strtod(text.c_str(), nullptr))) << text;
  }
}

TEST(Locale, WithACommaChangesNoNumber) {
  const MadeLocale german("de_DE");
  ASSERT_STREQ(std::localeconv()->decimal_point, ",");
  EXPECT_EQ(to_double("1.5"), 1.5);
  EXPECT_EQ(to_double("+1.25"), 1.25);
  EXPECT_EQ(to_double("1.5e999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(to_double("0.75e309"), std::numeric_limits<double>::infinity()) << "and not 0";
  EXPECT_EQ(written(1.5), "1.5");
  EXPECT_EQ(written(2.5F), "2.5");
}

TEST(Writing, GivesNumbersThatReadBackToTheBit) {
  for (const double value : {0.1, 1.0 / 3, 1e300, -4.9406564584124654e-324, 3.75e-3}) {
    EXPECT_EQ(to_double(written(value)), value);
  }
  EXPECT_EQ(written(0.1F), "0.1");
  EXPECT_EQ(written(std::numeric_limits<double>::infinity()), "INF");
  EXPECT_EQ(written(-std::numeric_limits<float>::infinity()), "-INF");
  EXPECT_EQ(written(std::nan("")), "NaN");
  EXPECT_EQ(written(true), "true");
}

// Reading rounds to double and then to float. A text within half a step of double of the middle
// between two floats goes to that middle first, and from there to the even one of the two.
TEST(Writing, GivesFloatsThatReadBackToTheBitAlthoughTheyAreReadAsDoubles) {
  const auto expect_back = [](std::uint32_t bits) {
    const auto value = std::bit_cast<float>(bits);
    const auto read = static_cast<float>(to_double(written(value)));
    ASSERT_EQ(std::bit_cast<std::uint32_t>(read), bits) << written(value);
  };
  // The one float whose shortest text, 7.038531e-26, does so: prove-floats goes through them all.
  expect_back(std::bit_cast<std::uint32_t>(0x1.5c87fap-84F));
  expect_back(std::bit_cast<std::uint32_t>(-0x1.5c87fap-84F));
  EXPECT_EQ(written(0x1.5c87fap-84F), "7.03853069e-26");
  // Its neighbours, and the floats with its digits at every other power of two.
  constexpr std::uint32_t one_power = std::uint32_t{1} << 23;
  constexpr std::uint32_t last = 0xFE;
  for (std::uint32_t power = 0; power <= last; ++power) {
    const std::uint32_t digits = std::bit_cast<std::uint32_t>(0x1.5c87fap0F) % one_power;
    for (std::uint32_t near = digits - 500; near <= digits + 500; ++near) {
      expect_back(power * one_power + near);
    }
    // The ends of the power of two, and steps between them that share no factor with it.
    for (std::uint32_t step = 0; step < 200; ++step) {
      expect_back(power * one_power + step);
      expect_back(power * one_power + one_power - 1 - step);
      expect_back(power * one_power + step * 41'941);
    }
  }
}

TEST(Writing, EscapesMarkupAndLineBreaks) {
  EXPECT_EQ(written(std::string("a<b>&\"c\"\r\n\t")), "a&lt;b&gt;&amp;&quot;c&quot;&#13;&#10;&#9;");
}

TEST(Collapse, StripsEndsAndReducesRuns) {
  std::string text = " \n a  b\t\tc ";
  collapse(text);
  EXPECT_EQ(text, "a b c");
  text = "\r\na\r b\r\n";
  collapse(text);
  EXPECT_EQ(text, "a b");
  text = "  ";
  collapse(text);
  EXPECT_EQ(text, "");
}

TEST(ListTokeniser, YieldsNoEmptyToken) {
  const std::string text = "  SRA \n\t DRAFore ";
  c_xml_list_tokeniser tokens(text);
  std::string token;
  ASSERT_TRUE(tokens.get(&token));
  EXPECT_EQ(token, "SRA");
  ASSERT_TRUE(tokens.get(&token));
  EXPECT_EQ(token, "DRAFore");
  EXPECT_FALSE(tokens.get(&token));
  EXPECT_FALSE(tokens.get(&token));
}

TEST(DateTime, TakesTheLexicalForms) {
  for (const char* text :
       {"2008-03-10T13:32:20", "2008-03-10T13:32:20Z", "2008-02-29T00:00:00.000001+01:00",
        "2008-12-31T24:00:00", "-0044-03-15T12:00:00", "12008-01-01T00:00:00-14:00"}) {
    EXPECT_TRUE(c_datetime::is_valid(text)) << text;
  }
}

TEST(DateTime, RefusesWhatIsNoTime) {
  for (const char* text : {"",
                           "2008-03-10",
                           "2008-03-10 13:32:20",
                           "2007-02-29T00:00:00",
                           "1900-02-29T00:00:00",
                           "2008-13-01T00:00:00",
                           "2008-04-31T00:00:00",
                           "2008-03-10T24:00:01",
                           "2008-03-10T13:60:00",
                           "2008-03-10T13:32:60",
                           "2008-03-10T13:32:20.",
                           "208-03-10T13:32:20",
                           "2008-03-10T13:32:20+15:00",
                           "2008-03-10T13:32:20+14:30",
                           "2008-03-10T13:32:20+01:60",
                           "2008-12-31T24:01:00",
                           "2008-12-31T25:00:00",
                           "2008-03-10T13:32:20z",
                           "0000-01-01T00:00:00",
                           "02008-01-01T00:00:00",
                           "2008-03-10T13:32:20 "}) {
    EXPECT_FALSE(c_datetime::is_valid(text)) << text;
  }
}

TEST(DateTime, GivesItsPartsAndItsTextBack) {
  c_datetime time;
  time = "2008-03-10T23:59:59.999999Z";
  EXPECT_EQ(time.year, 2008);
  EXPECT_EQ(time.month, 3);
  EXPECT_EQ(time.day, 10);
  EXPECT_EQ(time.hour, 23);
  EXPECT_EQ(time.minute, 59);
  EXPECT_EQ(time.seconds, 59.999999F);
  std::ostringstream out;
  out << time;
  EXPECT_EQ(out.str(), "2008-03-10T23:59:59.999999Z");
  time = "-0044-03-15T12:07:00";
  EXPECT_EQ(time.year, -44);
  EXPECT_EQ(time.hour, 12);
  EXPECT_EQ(time.minute, 7);
  time = "nonsense";
  EXPECT_EQ(time.year, 0);
  EXPECT_EQ(time.text(), "");
}

TEST(DateTime, KeepsTheZoneBehindAnOverlongFraction) {
  const std::string fraction(80, '3');
  c_datetime time;
  time = "2008-03-10T13:32:20." + fraction + "+01:00";
  EXPECT_TRUE(time.text().ends_with("333+01:00"));
  EXPECT_TRUE(c_datetime::is_valid(std::string(time.text())));
}

}  // namespace
