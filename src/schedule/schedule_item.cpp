#include "schedule/schedule_item.h"

#include <algorithm>

#include "base/time_position.h"
#include "store/settings.h"

namespace vantr {

namespace {

char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

std::string channelPrefix(int32_t channel) { return channel >= 0 ? "#" + std::to_string(channel) + " " : ""; }

// Durations in the list: the tenths form without its sign character.
std::string listDuration(int32_t duration) { return formatPosition(duration, PositionFormat::Tenths).substr(1); }

std::string fromUntil(const ScheduleItem& item, int dateOrder) {
  std::string text;
  if (item.commence != kImmediate) text += " from " + FormatDate(item.commence, dateOrder);
  if (item.expire != kNever) text += " until " + FormatDate(item.expire, dateOrder);
  return text;
}

}  // namespace

std::string scheduleSection(int slot) { return "sch" + std::to_string(slot); }

int32_t readScheduleType(const IniDocument& doc, int slot) { return readInt(doc, scheduleSection(slot), "type", 0); }

ScheduleTime readStoredDateTime(const IniDocument& doc, std::string_view section, std::string_view key,
                                ScheduleTime defaultValue) {
  ScheduleTime value = defaultValue;
  ParseStoredDateTime(value, readText(doc, section, key, FormatStoredDateTime(defaultValue)));
  return value;
}

bool writeStoredDateTime(const std::string& path, std::string_view section, std::string_view key, ScheduleTime value) {
  return writeText(path, section, key, FormatStoredDateTime(value));
}

ScheduleItem readScheduleItem(const IniDocument& doc, int slot) {
  const std::string section = scheduleSection(slot);
  ScheduleItem item;
  item.type = readInt(doc, section, "type", 0);
  if (!isKnownKind(item.type)) return item;
  item.channel = readInt(doc, section, "chan", kDefaultChannel);
  if (isRegularKind(item.type)) {
    item.timeOfDay = ParseTimeOfDay(readText(doc, section, "time", FormatTimeOfDay(kDefaultTimeOfDay)));
    item.days = readInt(doc, section, "days", kEveryDay) & kEveryDay;
    item.commence = readStoredDateTime(doc, section, "commence", kImmediate);
    item.expire = readStoredDateTime(doc, section, "expire", kNever);
  } else {
    item.date = readStoredDateTime(doc, section, "date", kNever);
  }
  if (isRecordKind(item.type)) item.duration = readRecordDuration(doc, section, "duration", kDefaultRecordDuration);
  return item;
}

bool writeScheduleItem(const std::string& scheduleFile, int slot, const ScheduleItem& item) {
  const std::string section = scheduleSection(slot);
  bool ok = writeInt(scheduleFile, section, "type", item.type);
  if (isRegularKind(item.type)) {
    ok &= writeText(scheduleFile, section, "time", FormatTimeOfDay(item.timeOfDay));
    ok &= writeInt(scheduleFile, section, "days", item.days);
    ok &= writeStoredDateTime(scheduleFile, section, "commence", item.commence);
    ok &= writeStoredDateTime(scheduleFile, section, "expire", item.expire);
  } else if (isKnownKind(item.type)) {
    ok &= writeStoredDateTime(scheduleFile, section, "date", item.date);
  }
  if (isRecordKind(item.type)) ok &= writeRecordDuration(scheduleFile, section, "duration", item.duration);
  if (hasChannel(item.type)) ok &= writeInt(scheduleFile, section, "chan", item.channel);
  flushSettings(scheduleFile);
  return ok;
}

int NewScheduleItem(const std::string& scheduleFile, int32_t kind) {
  const IniDocument doc = loadSettingsDocument(scheduleFile);
  for (int slot = 0; slot < kScheduleSlots; ++slot) {
    if (readScheduleType(doc, slot) < 1) {
      writeInt(scheduleFile, scheduleSection(slot), "type", kind);
      flushSettings(scheduleFile);
      return slot;
    }
  }
  return -1;
}

void DeleteScheduleItems(const std::string& scheduleFile, const std::vector<int>& slots) {
  for (const int slot : slots) writeInt(scheduleFile, scheduleSection(slot), "type", kDeletedSlot);
  flushSettings(scheduleFile);
}

std::string daysText(int32_t days) {
  static const char kLetters[] = "SMTWTFS";
  std::string text;
  for (int day = 0; day < 7; ++day) {
    const char c = kLetters[day];
    text += (days & (1 << day)) ? c : lowerAscii(c);
  }
  return text;
}

bool ScheduleItemText(const IniDocument& doc, int slot, int dateOrder, std::string& text) {
  text.clear();
  const ScheduleItem item = readScheduleItem(doc, slot);
  const std::string channel = channelPrefix(item.channel);
  switch (item.type) {
    case kPlayOnce:
      text = FormatTime(item.date) + " Play " + channel + "file on " + FormatDate(item.date, dateOrder);
      return true;
    case kPlayRegular:
      text = FormatTimeOfDay(item.timeOfDay) + " Play " + channel + "file on " + daysText(item.days) +
             fromUntil(item, dateOrder);
      return true;
    case kRecordOnce:
      text = FormatTime(item.date) + " Record " + channel + listDuration(item.duration) + " on " +
             FormatDate(item.date, dateOrder);
      return true;
    case kRecordRegular:
      text = FormatTimeOfDay(item.timeOfDay) + " Record " + channel + listDuration(item.duration) + " on " +
             daysText(item.days) + fromUntil(item, dateOrder);
      return true;
    case kScheduledFileDelete:
      text = FormatTime(item.date) + " Delete file on " + FormatDate(item.date, dateOrder);
      return true;
    case kDeletedSlot: return true;
    default: return false;
  }
}

bool listTextLess(std::string_view a, std::string_view b) {
  // Without regard to case first; texts that differ only in case put a small
  // letter before a capital at the first place they differ, as the system's
  // sorted lists do (sMTWTFs before SmtwtfS).
  const size_t n = std::min(a.size(), b.size());
  int caseOrder = 0;
  for (size_t i = 0; i < n; ++i) {
    const auto x = static_cast<unsigned char>(lowerAscii(a[i]));
    const auto y = static_cast<unsigned char>(lowerAscii(b[i]));
    if (x != y) return x < y;
    if (caseOrder == 0 && a[i] != b[i]) caseOrder = a[i] > b[i] ? -1 : 1;  // 's' > 'S' in ASCII
  }
  if (a.size() != b.size()) return a.size() < b.size();
  return caseOrder < 0;
}

std::vector<ScheduleListLine> FillScheduleList(const IniDocument& doc, int dateOrder) {
  std::vector<ScheduleListLine> lines;
  std::string text;
  for (int slot = 0; slot < kScheduleSlots; ++slot) {
    if (!ScheduleItemText(doc, slot, dateOrder, text)) break;
    if (!text.empty()) lines.push_back({text, slot});  // a deleted slot has no line
  }
  // A sorted list box puts a line after those that compare equal to it.
  std::stable_sort(lines.begin(), lines.end(),
                   [](const ScheduleListLine& a, const ScheduleListLine& b) { return listTextLess(a.text, b.text); });
  return lines;
}

}  // namespace vantr
