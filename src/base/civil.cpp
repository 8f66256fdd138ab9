#include "base/civil.h"

#include <cstdio>

namespace vantr {

// Days-from-civil on 400-year eras (each era is 146097 days), with the year
// taken to start in March so that the leap day falls at its end.
int64_t daysFromCivil(int64_t year, int64_t month, int64_t day) {
  year -= month <= 2;
  const int64_t era = floorDiv(year, 400);
  const int64_t yoe = year - era * 400;                                          // [0, 399]
  const int64_t doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;  // [0, 365]
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;                     // [0, 146096]
  return era * 146097 + doe - 719468;
}

void civilFromDays(int64_t days, int64_t& year, int64_t& month, int64_t& day) {
  days += 719468;
  const int64_t era = floorDiv(days, 146097);
  const int64_t doe = days - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  day = doy - (153 * mp + 2) / 5 + 1;
  month = mp < 10 ? mp + 3 : mp - 9;
  year = yoe + era * 400 + (month <= 2);
}

int64_t secondsFromCivil(const CivilTime& t) {
  // Carry months into years first; days, hours, minutes and seconds then add
  // linearly, which is exactly mktime's carrying.
  const int64_t monthIndex = t.month - 1;
  const int64_t year = t.year + floorDiv(monthIndex, 12);
  const int64_t month = floorMod(monthIndex, 12) + 1;
  const int64_t days = daysFromCivil(year, month, 1) + (t.day - 1);
  return days * kSecondsPerDay + t.hour * 3600 + t.minute * 60 + t.second;
}

CivilTime civilFromSeconds(int64_t seconds) {
  CivilTime t;
  const int64_t days = floorDiv(seconds, kSecondsPerDay);
  int64_t rest = seconds - days * kSecondsPerDay;
  civilFromDays(days, t.year, t.month, t.day);
  t.hour = rest / 3600;
  rest %= 3600;
  t.minute = rest / 60;
  t.second = rest % 60;
  return t;
}

int weekdayFromDays(int64_t days) {
  // 1970-01-01 was a Thursday.
  return static_cast<int>(floorMod(days + 4, 7));
}

std::string formatCivilStamp(int64_t seconds) {
  const CivilTime t = civilFromSeconds(seconds);
  char text[64];
  std::snprintf(text, sizeof text, "%04lld-%02lld-%02lld %02lld:%02lld:%02lld", static_cast<long long>(t.year),
                static_cast<long long>(t.month), static_cast<long long>(t.day), static_cast<long long>(t.hour),
                static_cast<long long>(t.minute), static_cast<long long>(t.second));
  return text;
}

}  // namespace vantr
