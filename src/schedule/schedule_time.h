// The 32-bit date-time of every schedule field, and its text forms: the stored
// form of the schedule files (day first, always), the user's view in the
// locale's date order, and the parsers of text the user types.
//
// A ScheduleTime is seconds since 1970 of the local wall clock counted as if
// it were UTC, with three special ranges: below 1 means "from the beginning of
// time" (IMMEDIATE), 2147483647 "to the end of time" (NEVER), and 2 to
// 32313599 a day of the year and a time of day in any year (the annual form,
// shown with the year "YY"). Calendar arithmetic is the program's own
// (base/civil.h), so no time-zone setting can shift a value.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantr {

using ScheduleTime = int32_t;
// Seconds since midnight; hours above 23 are kept as they are.
using TimeOfDay = uint32_t;

constexpr ScheduleTime kImmediate = 0;
constexpr ScheduleTime kNever = 2147483647;
// The annual form: 2 + (month - 1) * 2678400 + (day - 1) * 86400 + time of
// day. Every month has a block of 31 days; the offset 2 keeps it clear of 0
// and 1. The end of the range lies above the largest value really built.
constexpr ScheduleTime kAnnualFirst = 2;
constexpr ScheduleTime kAnnualEnd = 32313600;
constexpr int32_t kAnnualMonthSeconds = 2678400;

inline bool isAnnual(ScheduleTime value) { return value >= kAnnualFirst && value < kAnnualEnd; }

// The locale's order of day, month and year in dates shown to the user:
// 0 month/day/year, 1 day/month/year, 2 year/month/day. Any other value reads
// as month/day/year.
enum DateOrder : int { kMonthDayYear = 0, kDayMonthYear = 1, kYearMonthDay = 2 };

// The order of this machine, found once on first use and kept: on Windows the
// "iDate" key of the "Intl" profile section, elsewhere the environment
// variable VANTR_DATE_ORDER; 0 when neither says.
int localeDateOrder();
// Replaces the kept order (a setting of the program's own, and tests).
void setLocaleDateOrder(int order);
// The order as the system states it, read afresh.
int systemDateOrder();

// A 64-bit count of seconds in the 32-bit stored form, clamped to its range.
ScheduleTime toScheduleTime(int64_t seconds);

// "IMMEDIATE", "NEVER", "05/03/YY-14:07:09" or "05/03/04-14:07:09".
std::string FormatStoredDateTime(ScheduleTime value);
// Reads the stored form back into value; text that names no representable
// moment leaves value as it was.
void ParseStoredDateTime(ScheduleTime& value, std::string_view text);

// The user's view: the date in the locale's order ("IMMEDIATE", "NEVER",
// "03/05/YY", "03/05/04") and the time ("14:07:09", empty for IMMEDIATE and
// NEVER).
std::string FormatDate(ScheduleTime value, int order);
std::string FormatDate(ScheduleTime value);
std::string FormatTime(ScheduleTime value);

// Edit the date part or the time part of value from the user's text, keeping
// the other part; now fills what the value lacks (the year of an annual value,
// the whole of a negative one).
void ParseDate(ScheduleTime& value, std::string_view text, int order, int64_t now);
void ParseDate(ScheduleTime& value, std::string_view text);
void ParseTime(ScheduleTime& value, std::string_view text, int64_t now);
void ParseTime(ScheduleTime& value, std::string_view text);

// Replaces the time part of an absolute value (a value below 1 becomes now
// first).
void SetTimeOfDay(ScheduleTime& value, TimeOfDay seconds, int64_t now);
void SetTimeOfDay(ScheduleTime& value, TimeOfDay seconds);
// The time part of an absolute value: 0 below 1, 86400 for NEVER.
TimeOfDay TimeOfDayOf(ScheduleTime value);
// An absolute value turned into the annual form of its day and time.
void MakeAnnual(ScheduleTime& value);

// "%.2d:%.2d:%.2d" with the hours not wrapped at 24, and its parser (with
// "am"/"pm" marks).
std::string FormatTimeOfDay(TimeOfDay seconds);
TimeOfDay ParseTimeOfDay(std::string_view text);

}  // namespace vantr
