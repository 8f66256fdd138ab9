#include "schedule/schedule_dialog.h"

#include "base/time_position.h"
#include "store/settings.h"

namespace vantr {

namespace {

std::string cut(const std::string& text, size_t chars) { return text.substr(0, chars); }

// Durations in the edit box: the tenths form, without the blank that stands
// for a plus sign.
std::string durationText(int32_t duration) {
  std::string text = formatPosition(duration, PositionFormat::Tenths);
  if (!text.empty() && text.front() == ' ') text.erase(0, 1);
  return text;
}

// A commence or expiry box: the date parsed on today, then its time part
// forced; IMMEDIATE and NEVER keep no time part.
ScheduleTime dayBoundary(const std::string& text, const char* time, int64_t now, int dateOrder) {
  ScheduleTime value = toScheduleTime(now);
  ParseDate(value, cut(text, kDialogDateChars), dateOrder, now);
  ParseTime(value, time, now);
  return value;
}

}  // namespace

ScheduleDialogFields scheduleDialogFields(const IniDocument& doc, int slot, int32_t kind, int64_t now, int dateOrder) {
  const std::string section = scheduleSection(slot);
  ScheduleDialogFields f;
  if (isRegularKind(kind)) {
    f.first = FormatTimeOfDay(ParseTimeOfDay(readText(doc, section, "time", FormatTimeOfDay(kDefaultTimeOfDay))));
    f.days = readInt(doc, section, "days", kEveryDay) & kEveryDay;
    f.commence = FormatDate(readStoredDateTime(doc, section, "commence", kImmediate), dateOrder);
    f.expire = FormatDate(readStoredDateTime(doc, section, "expire", kNever), dateOrder);
  } else {
    const ScheduleTime date = readStoredDateTime(doc, section, "date", toScheduleTime(now));
    f.first = FormatDate(date, dateOrder);
    f.second = FormatTime(date);
  }
  if (isRecordKind(kind))
    f.duration = durationText(readRecordDuration(doc, section, "duration", kDefaultRecordDuration));
  if (hasChannel(kind)) f.deviceIndex = readInt(doc, section, "chan", kDefaultChannel) + 1;
  return f;
}

void applyScheduleDialog(const std::string& path, int slot, int32_t kind, const ScheduleDialogFields& f, int64_t now,
                         int dateOrder) {
  const std::string section = scheduleSection(slot);
  if (isRegularKind(kind)) {
    writeText(path, section, "time", FormatTimeOfDay(ParseTimeOfDay(cut(f.first, kDialogDateChars))));
    writeInt(path, section, "days", f.days & kEveryDay);
    writeStoredDateTime(path, section, "commence", dayBoundary(f.commence, "00:00:00", now, dateOrder));
    // The expiry day is included whole.
    writeStoredDateTime(path, section, "expire", dayBoundary(f.expire, "23:59:59", now, dateOrder));
  } else {
    ScheduleTime date = toScheduleTime(now);
    ParseDate(date, cut(f.first, kDialogDateChars), dateOrder, now);
    ParseTime(date, cut(f.second, kDialogDateChars), now);
    writeStoredDateTime(path, section, "date", date);
  }
  if (isRecordKind(kind))
    writeRecordDuration(path, section, "duration", parsePosition(cut(f.duration, kDialogDurationChars)));
  if (hasChannel(kind)) writeInt(path, section, "chan", f.deviceIndex - 1);
  flushSettings(path);
}

}  // namespace vantr
