// Calendar arithmetic of the program's own, on the proleptic Gregorian
// calendar. Every time value in Vantorel is the local wall clock counted as if
// it were UTC, so no time zone or daylight-saving rule may enter here: the C
// library's mktime/localtime are deliberately not used.
#pragma once

#include <cstdint>
#include <string>

namespace vantr {

struct CivilTime {
  int64_t year = 1970;
  int64_t month = 1;  // 1..12 once normalised
  int64_t day = 1;    // 1..31 once normalised
  int64_t hour = 0;
  int64_t minute = 0;
  int64_t second = 0;
};

// Days since 1970-01-01 of a valid civil date.
int64_t daysFromCivil(int64_t year, int64_t month, int64_t day);

// The civil date of a day count (inverse of daysFromCivil).
void civilFromDays(int64_t days, int64_t& year, int64_t& month, int64_t& day);

// Seconds since 1970 of a civil time whose fields may be out of range; they are
// carried over the way mktime does (day 31 of a 30-day month is the 1st of the
// next month, hour 25 is 1 o'clock of the next day, month 13 is January).
int64_t secondsFromCivil(const CivilTime& t);

// The normalised civil time of seconds since 1970.
CivilTime civilFromSeconds(int64_t seconds);

// "YYYY-MM-DD HH:MM:SS" of seconds since 1970, for logs and listings.
std::string formatCivilStamp(int64_t seconds);

// Day of the week of a day count: 0 Sunday ... 6 Saturday.
int weekdayFromDays(int64_t days);

constexpr int64_t kSecondsPerDay = 86400;

// Floor division and modulo for negative times (seconds before 1970).
constexpr int64_t floorDiv(int64_t a, int64_t b) { return a / b - ((a % b != 0) && ((a < 0) != (b < 0))); }
constexpr int64_t floorMod(int64_t a, int64_t b) { return a - floorDiv(a, b) * b; }

}  // namespace vantr
