// Licence: MIT, see LICENSE.
#include "platform/corefoundation/CalendarDate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/support/StressCount.h"

namespace tests::calendarDates {

using platform::corefoundation::formatDate;
using platform::corefoundation::parseDate;

TEST(CalendarDate, IsWrittenAndRead) {
  const struct {
    double time;
    const char* text;
  } cases[] = {{0, "2001-01-01T00:00:00Z"},
               {-1, "2000-12-31T23:59:59Z"},
               {-978307200, "1970-01-01T00:00:00Z"},
               {99446400 + 3661, "2004-02-26T01:01:01Z"},
               {99446400 + 3 * 86400, "2004-02-29T00:00:00Z"},
               {-63113904000, "0001-01-01T00:00:00Z"},
               {252423993599, "9999-12-31T23:59:59Z"}};
  for (const auto& each : cases) {
    EXPECT_EQ(formatDate(each.time).value_or("none"), each.text);
    EXPECT_EQ(parseDate(each.text).value_or(0.5), each.time) << each.text;
  }
}

TEST(CalendarDate, IsWrittenAsTheSecondBefore) {
  EXPECT_EQ(formatDate(0.999).value_or("none"), "2001-01-01T00:00:00Z");
  EXPECT_EQ(formatDate(-0.001).value_or("none"), "2000-12-31T23:59:59Z");
  // So little before midnight that the day's length swallowed it: it was written as hour 24.
  EXPECT_EQ(formatDate(-1e-12).value_or("none"), "2000-12-31T23:59:59Z");
}

TEST(CalendarDate, IsNotWrittenOutsideItsYears) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const double time : {252423993600.0, -63113904001.0, 1e300, -1e300, kInfinity, -kInfinity,
                            std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(formatDate(time)) << time;
  }
}

TEST(CalendarDate, IsReadOnlyInItsForm) {
  for (const char* text : {"", "2001-01-01", "2001-01-01T00:00:00", "2001-01-01t00:00:00Z",
                           "2001-01-01T00:00:00Z ", "2001-13-01T00:00:00Z", "2001-00-01T00:00:00Z",
                           "2001-02-29T00:00:00Z", "2001-01-00T00:00:00Z", "2001-01-01T24:00:00Z",
                           "2001-01-01T00:60:00Z", "2001-01-01T00:00:60Z", "0000-01-01T00:00:00Z",
                           "-001-01-01T00:00:00Z", "2001-01-01T00:00:0xZ"}) {
    EXPECT_FALSE(parseDate(text)) << text;
  }
}

TEST(CalendarDate, SurvivesBeingWritten) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> times(-63113904000.0, 252423993599.0);
  for (int i = 0; i < tests::stressCount(10000); ++i) {
    const double time = std::floor(times(random));
    EXPECT_EQ(parseDate(formatDate(time).value_or("")).value_or(0.5), time);
  }
}

}  // namespace tests::calendarDates
