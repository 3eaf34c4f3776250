#include "bridges/gdal/connection.h"

#include <gtest/gtest.h>
#include <stdexcept>

using gridkit_gdal::Connection;
using gridkit_gdal::has_prefix;
using gridkit_gdal::name_of;
using gridkit_gdal::Quantity;
using gridkit_gdal::readings_of;

namespace {

using Readings = std::vector<Connection>;

std::string refusal_of(const std::string& name) {
  try {
    readings_of(name);
  } catch (const std::invalid_argument& refusal) {
    return refusal.what();
  }
  return "nothing";
}

}  // namespace

TEST(Connection, IsKnownByItsPrefixAlone) {
  EXPECT_TRUE(has_prefix("GRIDKIT:x"));
  EXPECT_TRUE(has_prefix("gridkit:x"));
  for (const char* other : {"", "GRIDKIT", "GRIDKIT/x", "/GRIDKIT:x", "GTIFF_DIR:1:x"}) {
    EXPECT_FALSE(has_prefix(other)) << other;
  }
}

TEST(Connection, WithQuotesMeansOneThing) {
  EXPECT_EQ(readings_of(R"(GRIDKIT:"/a b/c:d.xml")"), (Readings{{"/a b/c:d.xml", "", {}}}));
  EXPECT_EQ(readings_of(R"(GRIDKIT:"a":HH)"), (Readings{{"a", "HH", Quantity::samples}}));
  EXPECT_EQ(readings_of(R"(GRIDKIT:"a":HH:SIGMA0)"), (Readings{{"a", "HH", Quantity::sigma0}}));
  EXPECT_EQ(readings_of(R"(GRIDKIT:"a":HH:phase)"), (Readings{{"a", "HH", Quantity::phase}}));
  EXPECT_EQ(readings_of(R"(GRIDKIT:"a\"b\\c\d")"), (Readings{{R"(a"b\c\d)", "", {}}}));
}

TEST(Connection, WithoutQuotesTakesThePathAsLongAsPossibleFirst) {
  EXPECT_EQ(readings_of("GRIDKIT:a/b.xml"), (Readings{{"a/b.xml", "", {}}}));
  EXPECT_EQ(readings_of("GRIDKIT:a:HH"), (Readings{{"a:HH", "", {}}, {"a", "HH", {}}}));
  EXPECT_EQ(
      readings_of("GRIDKIT:a:HH:BETA0"),
      (Readings{{"a:HH:BETA0", "", {}}, {"a:HH", "BETA0", {}}, {"a", "HH", Quantity::beta0}}));
  EXPECT_EQ(readings_of("GRIDKIT:a:b/c.xml"), (Readings{{"a:b/c.xml", "", {}}}));
  EXPECT_EQ(readings_of("GRIDKIT::HH"), (Readings{{":HH", "", {}}}));
  EXPECT_EQ(readings_of("GRIDKIT:a:"), (Readings{{"a:", "", {}}}));
}

TEST(Connection, ThatMeansNothingIsToldInWords) {
  EXPECT_NE(refusal_of("GRIDKIT:").find("the path is missing"), std::string::npos);
  EXPECT_NE(refusal_of("GRIDKIT:\"\"").find("the path is missing"), std::string::npos);
  EXPECT_NE(refusal_of("GRIDKIT:\"a").find("the quote after the path is missing"),
            std::string::npos);
  EXPECT_NE(refusal_of("GRIDKIT:\"a\\\"").find("the quote after the path"), std::string::npos);
  EXPECT_NE(refusal_of("GRIDKIT:\"a\"HH").find("a colon is missing"), std::string::npos);
  EXPECT_NE(refusal_of("GRIDKIT:\"a\":").find("the name of an image is missing"),
            std::string::npos);
  EXPECT_NE(refusal_of("GRIDKIT:\"a\":HH:dB").find("\"dB\" is none of AMPLITUDE"),
            std::string::npos);
  EXPECT_NE(refusal_of("GRIDKIT:\"a\":HH:BETA0:x").find("\"BETA0:x\" is none"), std::string::npos);
}

TEST(Connection, ReadsBackFromItsName) {
  for (const char* path : {"a", "/a b/c", "a:HH", "a\"b", "a\\", "\\\"", "\xC3\xA4"}) {
    for (const Connection& one : {Connection{path, "", {}}, Connection{path, "HH", {}},
                                  Connection{path, "HH", Quantity::gamma0}}) {
      EXPECT_EQ(readings_of(name_of(one)), Readings{one}) << name_of(one);
    }
  }
}
