#include "schedule/schedule_time.h"

#include <algorithm>
#include <cstdio>

#include "base/civil.h"
#include "base/clock.h"
#include "store/settings.h"

namespace vantr {

namespace {

// Typed fields accumulate digits without a limit of their own; they are held
// at this bound so that absurd text cannot overflow the 64-bit arithmetic. Any
// field this large names no representable moment anyway.
constexpr int64_t kFieldCap = INT64_C(100000000000);

int64_t appendDigit(int64_t field, char digit) { return std::min(field * 10 + (digit - '0'), kFieldCap); }

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isFieldSeparator(char c) { return c == '/' || c == '\\' || c == '.' || c == ':'; }

// What mktime does for the program: seconds of a calendar time whose fields
// may be out of range. False when the result has no 32-bit stored form (before
// 1970, or past 2038).
bool toStored(const CivilTime& t, ScheduleTime& value) {
  const int64_t seconds = secondsFromCivil(t);
  if (seconds < 0 || seconds > INT32_MAX) return false;
  value = static_cast<ScheduleTime>(seconds);
  return true;
}

// The annual form of a month (1-based), day and time of day; false when the
// fields give no 32-bit value.
bool toAnnual(int64_t month, int64_t day, int64_t timeOfDay, ScheduleTime& value) {
  const int64_t annual = 2 + (month - 1) * kAnnualMonthSeconds + (day - 1) * kSecondsPerDay + timeOfDay;
  if (annual < INT32_MIN || annual > INT32_MAX) return false;
  value = static_cast<ScheduleTime>(annual);
  return true;
}

struct AnnualParts {
  int month, day, hour, minute, second;
};

AnnualParts decodeAnnual(ScheduleTime value) {
  const int32_t v = value - 2;
  return {v / kAnnualMonthSeconds + 1, v % kAnnualMonthSeconds / 86400 + 1, v / 3600 % 24, v / 60 % 60, v % 60};
}

// A calendar time to work on: the breakdown of an absolute value, or now's
// date carrying the day and time of an annual one.
CivilTime workingTime(ScheduleTime value, int64_t now) {
  if (!isAnnual(value)) return civilFromSeconds(value);
  CivilTime t = civilFromSeconds(now);
  const AnnualParts a = decodeAnnual(value);
  t.month = a.month;
  t.day = a.day;
  t.hour = a.hour;
  t.minute = a.minute;
  t.second = a.second;
  return t;
}

// Two-digit years below 70 are 2000 onward, 70 to 99 the 1900s; 1900 and
// above are full years; anything else counts years since 1900.
int64_t widenYear(int64_t year) {
  if (year < 70) return 2000 + year;
  if (year >= 1900) return year;
  return 1900 + year;
}

// "IMMEDIATE" and "NEVER" are known by their first letter, typed before any
// digit or separator.
bool readSpecialWord(char c, ScheduleTime& value) {
  const bool immediate = c == 'I' || c == 'i';
  const bool never = c == 'N' || c == 'n';
  if (immediate || never) value = immediate ? kImmediate : kNever;
  return immediate || never;
}

// Typed digits fill date fields one after the other: the first digit of a
// field replaces what it held, further digits append to it, and a separator
// moves on to the next field (the last one keeps what follows). The position
// counts two steps per field: even before the field's first digit, odd after.
class FieldWalk {
 public:
  FieldWalk(int64_t* const* fields, int count) : m_fields(fields), m_count(count) {}
  void digit(char c) {
    if (m_position >= 2 * m_count) return;  // past the last field
    int64_t& field = *m_fields[m_position / 2];
    if (m_position % 2 == 0) {
      field = c - '0';
      ++m_position;
    } else {
      field = appendDigit(field, c);
    }
  }
  void separator() { m_position = std::min(m_position / 2 + 1, m_count) * 2; }
  // A digit or a separator taken as above; false for any other character.
  bool take(char c) {
    if (isDigit(c))
      digit(c);
    else if (isFieldSeparator(c))
      separator();
    else
      return false;
    return true;
  }
  void moveTo(int field) { m_position = 2 * field; }
  // Whether the walk waits for the first digit of this field.
  bool before(int field) const { return m_position == 2 * field; }

 private:
  int64_t* const* m_fields;
  int m_count;
  int m_position = 0;
};

// "%.2d": at least two digits.
std::string twoDigits(int64_t value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2lld", static_cast<long long>(value));
  return text;
}

std::string joined(int64_t a, int64_t b, int64_t c, char separator) {
  return twoDigits(a) + separator + twoDigits(b) + separator + twoDigits(c);
}

int twoDigitYear(int64_t year) { return static_cast<int>(floorMod(year, 100)); }

}  // namespace

ScheduleTime toScheduleTime(int64_t seconds) {
  return static_cast<ScheduleTime>(std::clamp<int64_t>(seconds, INT32_MIN, INT32_MAX));
}

std::string FormatStoredDateTime(ScheduleTime value) {
  if (value < 1) return "IMMEDIATE";
  if (value == kNever) return "NEVER";
  if (isAnnual(value)) {
    const AnnualParts a = decodeAnnual(value);
    return twoDigits(a.day) + '/' + twoDigits(a.month) + "/YY-" + joined(a.hour, a.minute, a.second, ':');
  }
  const CivilTime t = civilFromSeconds(value);
  return joined(t.day, t.month, twoDigitYear(t.year), '/') + '-' + joined(t.hour, t.minute, t.second, ':');
}

void ParseStoredDateTime(ScheduleTime& value, std::string_view text) {
  // Fields day, month, year, hour, minute, second.
  int64_t fields[6] = {1, 1, 0, 0, 0, 0};
  int64_t* const order[6] = {&fields[0], &fields[1], &fields[2], &fields[3], &fields[4], &fields[5]};
  FieldWalk walk(order, 6);
  bool seenAny = false;
  bool annual = false;
  for (const char c : text) {
    if (walk.take(c)) {
      seenAny = true;
    } else if (c == '-') {
      seenAny = true;
      walk.moveTo(3);  // the time of day follows
    } else if (!seenAny && readSpecialWord(c, value)) {
      return;
    } else if ((c == 'Y' || c == 'y') && walk.before(2)) {
      annual = true;
    }
  }
  const int64_t timeOfDay = fields[3] * 3600 + fields[4] * 60 + fields[5];
  if (annual) {
    toAnnual(fields[1], fields[0], timeOfDay, value);
    return;
  }
  CivilTime t;
  t.day = fields[0];
  t.month = fields[1];
  t.year = widenYear(fields[2]);
  t.hour = fields[3];
  t.minute = fields[4];
  t.second = fields[5];
  toStored(t, value);
}

std::string FormatDate(ScheduleTime value, int order) {
  if (value < 1) return "IMMEDIATE";
  if (value == kNever) return "NEVER";
  if (isAnnual(value)) {
    const AnnualParts a = decodeAnnual(value);
    if (order == kDayMonthYear) return twoDigits(a.day) + '/' + twoDigits(a.month) + "/YY";
    if (order == kYearMonthDay) return "YY/" + twoDigits(a.month) + '/' + twoDigits(a.day);
    return twoDigits(a.month) + '/' + twoDigits(a.day) + "/YY";
  }
  const CivilTime t = civilFromSeconds(value);
  const int year = twoDigitYear(t.year);
  if (order == kDayMonthYear) return joined(t.day, t.month, year, '/');
  if (order == kYearMonthDay) return joined(year, t.month, t.day, '/');
  return joined(t.month, t.day, year, '/');
}

std::string FormatDate(ScheduleTime value) { return FormatDate(value, localeDateOrder()); }

std::string FormatTime(ScheduleTime value) {
  if (value < 1 || value == kNever) return "";
  if (isAnnual(value)) {
    const AnnualParts a = decodeAnnual(value);
    return joined(a.hour, a.minute, a.second, ':');
  }
  const CivilTime t = civilFromSeconds(value);
  return joined(t.hour, t.minute, t.second, ':');
}

void ParseDate(ScheduleTime& value, std::string_view text, int order, int64_t now) {
  if (value < 0) value = toScheduleTime(now);
  CivilTime t = workingTime(value, now);
  t.year = floorMod(t.year, 100);
  // The three fields in the order the user types them.
  int64_t* fields[3];
  if (order == kDayMonthYear) {
    fields[0] = &t.day, fields[1] = &t.month, fields[2] = &t.year;
  } else if (order == kYearMonthDay) {
    fields[0] = &t.year, fields[1] = &t.month, fields[2] = &t.day;
  } else {
    fields[0] = &t.month, fields[1] = &t.day, fields[2] = &t.year;
  }
  FieldWalk walk(fields, 3);
  bool seenAny = false;
  bool ended = false;  // a '-' ends the date: a time written after it is not read here
  bool annual = false;
  for (const char c : text) {
    if (c == 'Y' || c == 'y') {
      annual = true;
    } else if (ended) {
      continue;
    } else if (walk.take(c)) {
      seenAny = true;
    } else if (c == '-') {
      ended = true;
    } else if (!seenAny && readSpecialWord(c, value)) {
      return;
    }
  }
  if (annual) {
    toAnnual(t.month, t.day, t.hour * 3600 + t.minute * 60 + t.second, value);
    return;
  }
  t.year = widenYear(t.year);
  toStored(t, value);
}

void ParseDate(ScheduleTime& value, std::string_view text) {
  ParseDate(value, text, localeDateOrder(), systemClock().now());
}

void ParseTime(ScheduleTime& value, std::string_view text, int64_t now) {
  if (value == kImmediate || value == kNever) return;
  const bool annual = isAnnual(value);
  CivilTime t = workingTime(value, now);
  const ClockFields clock = readClockFields(text);
  t.hour = clock.hour;
  t.minute = clock.minute;
  t.second = clock.second;
  if (annual) {
    toAnnual(t.month, t.day, t.hour * 3600 + t.minute * 60 + t.second, value);
  } else {
    toStored(t, value);
  }
}

void ParseTime(ScheduleTime& value, std::string_view text) { ParseTime(value, text, systemClock().now()); }

void SetTimeOfDay(ScheduleTime& value, TimeOfDay seconds, int64_t now) {
  if (value < 1) value = toScheduleTime(now);
  CivilTime t = civilFromSeconds(value);
  t.hour = seconds / 3600;
  t.minute = seconds / 60 % 60;
  t.second = seconds % 60;
  toStored(t, value);
}

void SetTimeOfDay(ScheduleTime& value, TimeOfDay seconds) { SetTimeOfDay(value, seconds, systemClock().now()); }

TimeOfDay TimeOfDayOf(ScheduleTime value) {
  if (value < 1) return 0;
  if (value == kNever) return 86400;
  return static_cast<TimeOfDay>(floorMod(value, kSecondsPerDay));
}

void MakeAnnual(ScheduleTime& value) {
  if (value < 1 || value == kNever || isAnnual(value)) return;
  const CivilTime t = civilFromSeconds(value);
  toAnnual(t.month, t.day, t.hour * 3600 + t.minute * 60 + t.second, value);
}

std::string FormatTimeOfDay(TimeOfDay seconds) { return formatClockText(seconds); }

TimeOfDay ParseTimeOfDay(std::string_view text) { return parseClockText(text); }

}  // namespace vantr
