#include "tools/simulate/utc.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using simulate::Utc;

TEST(Utc, ParsesAndWrites) {
  EXPECT_EQ(Utc::parse("2008-03-10T13:32:20.083162Z").text(), "2008-03-10T13:32:20.083162Z");
  EXPECT_EQ(Utc::parse("2008-03-10T13:32:20").text(false), "2008-03-10T13:32:20.000000");
  EXPECT_EQ(Utc::parse("2008-03-10T13:32:20.083162").compact(), "20080310T133220");
  EXPECT_THROW(Utc::parse("yesterday"), std::invalid_argument);
  EXPECT_THROW(Utc::parse("2008-03-10T13:32:20X"), std::invalid_argument);
}

TEST(Utc, CrossesMidnightAndYears) {
  EXPECT_EQ(Utc::parse("2008-12-31T23:59:59.5").after(1).text(), "2009-01-01T00:00:00.500000Z");
  EXPECT_EQ(Utc::parse("2008-03-01T00:00:00").after(-0.25).text(), "2008-02-29T23:59:59.750000Z");
  EXPECT_EQ(Utc::parse("2008-03-01T00:00:00").after(-0.25).whole_second().text(),
            "2008-02-29T23:59:59.000000Z");
  EXPECT_DOUBLE_EQ(Utc::parse("2008-03-01T00:00:10").since(Utc::parse("2008-02-29T23:59:55")), 15);
}

// 2008-03-10 is day 10,291 after 1980-01-06; 10291 x 86400 + 13:32:16 = 889,191,136, and 14 leap
// seconds.
TEST(Utc, CountsGpsSecondsWithLeapSeconds) {
  EXPECT_EQ(Utc::parse("2008-03-10T13:32:20").gps_seconds(), 10291LL * 86400 + 48740 + 14);
  EXPECT_EQ(Utc::parse("2018-01-01T00:00:00").gps_seconds() -
                Utc::parse("2016-12-31T00:00:00").gps_seconds(),
            366LL * 86400 + 1)
      << "one leap second at the turn of 2017";
}

}  // namespace
