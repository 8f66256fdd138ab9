#include "base/civil.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>

namespace vantr {
namespace {

TEST(Civil, KnownDatesCarriesAndWeekdays) {
  // Weekday 0 is Sunday; out-of-range fields carry like mktime.
  const std::tuple<CivilTime, int64_t, int> rows[] = {
      {{1970, 1, 1, 0, 0, 0}, 0, 4},
      {{2000, 2, 29, 0, 0, 0}, 951782400, 2},   // leap day of a century leap year
      {{2000, 2, 30, 0, 0, 0}, 951868800, 3},   // carries to 1 March
      {{2004, 3, 5, 25, 0, 0}, 1078534800, 6},  // hour 25 is 1 o'clock the next day
      {{2004, 13, 1, 0, 0, 0}, 1104537600, 6},  // month 13 is January of the next year
      {{2004, 0, 1, 0, 0, 0}, 1070236800, 1},   // month 0 is December of the year before
      {{1969, 12, 31, 23, 59, 59}, -1, 3},
      {{2100, 3, 1, 0, 0, 0}, INT64_C(4107542400), 1},  // 2100 is no leap year
  };
  for (const auto& [in, seconds, weekday] : rows) {
    EXPECT_EQ(secondsFromCivil(in), seconds) << in.year << "-" << in.month << "-" << in.day;
    const CivilTime back = civilFromSeconds(seconds);
    EXPECT_EQ(secondsFromCivil(back), seconds);
    EXPECT_EQ(weekdayFromDays(daysFromCivil(back.year, back.month, back.day)), weekday) << seconds;
  }
}

}  // namespace
}  // namespace vantr
