#include "base/civil.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace vantr {
namespace {

TEST(Civil, KnownDatesAndCarries) {
  struct Row {
    CivilTime in;
    int64_t seconds;
  } rows[] = {
      {{1970, 1, 1, 0, 0, 0}, 0},
      {{1970, 1, 1, 0, 0, 1}, 1},
      {{2004, 3, 5, 14, 7, 9}, 1078495629},
      {{2000, 2, 29, 0, 0, 0}, 951782400},   // leap day of a century leap year
      {{2000, 2, 30, 0, 0, 0}, 951868800},   // carries to 1 March
      {{2004, 4, 31, 0, 0, 0}, 1083369600},  // day 31 of a 30-day month is 1 May
      {{2004, 3, 5, 25, 0, 0}, 1078534800},  // hour 25 is 1 o'clock the next day
      {{2004, 13, 1, 0, 0, 0}, 1104537600},  // month 13 is January of the next year
      {{2004, 0, 1, 0, 0, 0}, 1070236800},   // month 0 is December of the year before
      {{1969, 12, 31, 23, 59, 59}, -1},
      {{2038, 1, 19, 3, 14, 7}, INT64_C(2147483647)},
      {{2100, 3, 1, 0, 0, 0}, INT64_C(4107542400)},  // 2100 is no leap year
  };
  for (const Row& row : rows) {
    EXPECT_EQ(secondsFromCivil(row.in), row.seconds) << row.in.year << "-" << row.in.month << "-" << row.in.day;
  }
}

TEST(Civil, RoundTripOverFourCenturies) {
  // Every 13th day over 400 years covers every month, leap rule and weekday.
  for (int64_t days = -50000; days < 146097; days += 13) {
    const CivilTime t = civilFromSeconds(days * kSecondsPerDay + 45296);
    EXPECT_EQ(t.hour, 12);
    EXPECT_EQ(t.minute, 34);
    EXPECT_EQ(t.second, 56);
    ASSERT_EQ(secondsFromCivil(t), days * kSecondsPerDay + 45296) << days;
    ASSERT_EQ(daysFromCivil(t.year, t.month, t.day), days);
  }
}

TEST(Civil, Weekdays) {
  EXPECT_EQ(weekdayFromDays(0), 4);                            // 1970-01-01 Thursday
  EXPECT_EQ(weekdayFromDays(daysFromCivil(2004, 3, 5)), 5);    // Friday
  EXPECT_EQ(weekdayFromDays(daysFromCivil(1969, 12, 28)), 0);  // Sunday before 1970
  EXPECT_EQ(weekdayFromDays(daysFromCivil(2026, 11, 23)), 1);  // Monday
}

}  // namespace
}  // namespace vantr
