#include "schedule/scheduler.h"

#include <algorithm>
#include <cstring>

#include "base/civil.h"
#include "base/dir.h"
#include "base/file.h"
#include "schedule/named_file.h"
#include "store/settings.h"

namespace vantr {

namespace {

// Items whose second lies more than this far back can never fire again: the
// catch-up rule never looks further back than a minute.
constexpr int64_t kCatchUpSeconds = 60;
// A tick more than this far behind is treated as a stall and widened to the
// full catch-up minute.
constexpr int64_t kLateTickSeconds = 20;

ScheduleEntry entryOf(const std::string& name, const ScheduleItem& item) {
  ScheduleEntry e;
  e.kind = static_cast<uint8_t>(item.type);
  const size_t length = std::min(name.size(), kMaxNameLength);
  std::memcpy(e.fileName, name.data(), length);
  e.fileName[length] = '\0';
  e.channel = static_cast<uint8_t>(item.channel);
  e.duration = isRecordKind(item.type) ? item.duration : 0;
  if (isRegularKind(item.type)) {
    e.timeOfDay = item.timeOfDay;
    e.days = static_cast<uint8_t>(item.days & kEveryDay);
    e.commence = item.commence;
    e.expire = item.expire;
  } else {
    e.date = item.date;
  }
  return e;
}

bool canStillFire(const ScheduleItem& item, int64_t now) {
  const int64_t last = isRegularKind(item.type) ? item.expire : item.date;
  return last >= now - kCatchUpSeconds;
}

int channelOf(const ScheduleEntry& e) { return e.channel == kDefaultChannelByte ? -1 : e.channel; }

void clearFreeSlots(ScheduleTable& table) {
  std::fill(table.entries.begin() + static_cast<std::ptrdiff_t>(table.count), table.entries.end(), ScheduleEntry{});
}

// The named files' names from the file names of the schedules folder.
std::vector<std::string> namesOf(const std::vector<std::string>& listed) {
  std::vector<std::string> names;
  for (const std::string& file : listed) names.push_back(file.substr(0, file.size() - (sizeof kScheduleExtension - 1)));
  // The file system's own order differs between systems; the order of names
  // makes the table (and so the order of items due in one second) the same
  // everywhere, and matches the sorted file list.
  std::stable_sort(names.begin(), names.end(),
                   [](const std::string& a, const std::string& b) { return listTextLess(a, b); });
  return names;
}

}  // namespace

bool listNamedFiles(const std::string& schedulesFolder, std::vector<std::string>& names) {
  std::vector<std::string> listed;
  if (!listFolder(schedulesFolder, kScheduleExtension, listed)) return false;
  names = namesOf(listed);
  return true;
}

bool loadNamedSchedules(const std::string& schedulesFolder, std::vector<NamedSchedule>& files) {
  files.clear();
  std::vector<std::string> listed;
  if (!listFolder(schedulesFolder, kScheduleExtension, listed)) return false;
  for (std::string& name : namesOf(listed)) {
    IniDocument doc = loadSettingsDocument(namedFilePath(schedulesFolder, listed, name, kScheduleExtension));
    files.push_back({std::move(name), std::move(doc)});
  }
  return true;
}

void loadScheduleItems(ScheduleTable& table, const std::string& name, const IniDocument& doc, int64_t now) {
  for (int slot = 0; slot < kScheduleSlots && table.count < ScheduleTable::kCapacity; ++slot) {
    const int32_t type = readScheduleType(doc, slot);
    if (type == 0) break;
    if (!isKnownKind(type)) continue;  // deleted slots, and kinds this program does not know
    const ScheduleItem item = readScheduleItem(doc, slot);
    if (canStillFire(item, now)) {
      table.entries[table.count] = entryOf(name, item);
      table.entries[table.count++].slot = static_cast<int16_t>(slot);
    }
  }
}

void RebuildSchedules(ScheduleTable& table, const std::vector<NamedSchedule>& files, int64_t now) {
  table.count = 0;
  for (const NamedSchedule& file : files) loadScheduleItems(table, file.name, file.doc, now);
  clearFreeSlots(table);
}

std::vector<std::string> RebuildSchedules(ScheduleTable& table, const std::string& schedulesFolder, int64_t now) {
  std::vector<NamedSchedule> files;
  loadNamedSchedules(schedulesFolder, files);
  RebuildSchedules(table, files, now);
  std::vector<std::string> names;
  for (NamedSchedule& file : files) names.push_back(std::move(file.name));
  return names;
}

DaySecond daySecond(int64_t second) {
  const int64_t day = floorDiv(second, kSecondsPerDay);
  return {second, second - day * kSecondsPerDay, 1u << weekdayFromDays(day)};
}

bool isDue(const ScheduleEntry& e, const DaySecond& s) {
  if (isRegularKind(e.kind)) {
    return e.timeOfDay == s.timeOfDay && (e.days & s.weekdayBit) != 0 && e.commence <= s.second && s.second <= e.expire;
  }
  return e.date == s.second;
}

int64_t nextDueSecond(const ScheduleEntry& e, int64_t after) {
  // Only candidates are worked out here; isDue decides each. A once item can
  // only be due at its date. A regular item can only be due at its time of day,
  // and not before it commences; from the first such second on, the days of the
  // week repeat every seven days and the expiry only closes, so when none of
  // seven candidates in a row is due, none later is.
  if (!isRegularKind(e.kind)) return e.date > after && isDue(e, daySecond(e.date)) ? e.date : kNeverDue;
  const int64_t first = std::max<int64_t>(after + 1, e.commence);
  const int64_t timeOfDay = e.timeOfDay;
  // The first day whose candidate lies at or after first.
  const int64_t day = floorDiv(first - timeOfDay + kSecondsPerDay - 1, kSecondsPerDay);
  for (int64_t d = day; d < day + 7; ++d) {
    const int64_t candidate = d * kSecondsPerDay + timeOfDay;
    if (isDue(e, daySecond(candidate))) return candidate;
  }
  return kNeverDue;
}

int64_t catchUpStart(int64_t lastSecond, int64_t now) {
  return lastSecond < now - kLateTickSeconds || lastSecond > now ? now - kCatchUpSeconds : lastSecond;
}

void startItem(ScheduleEntry e, SchedulerActions& actions) {
  actions.starting(e);
  switch (e.kind) {
    case kPlayOnce:
    case kPlayRegular: actions.play(e.fileName, channelOf(e)); break;
    case kRecordOnce:
    case kRecordRegular: actions.record(e.fileName, channelOf(e), e.duration); break;
    case kScheduledFileDelete:
      actions.deleteFile(e.fileName);
      actions.rebuild();
      break;
    default: break;
  }
}

void runDueItems(ScheduleTable& table, const DaySecond& second, size_t first, SchedulerActions& actions) {
  for (size_t i = first; i < table.count; ++i) {
    if (isDue(table.entries[i], second)) startItem(table.entries[i], actions);
  }
}

bool SchedulerTick(ScheduleTable& table, int64_t now, SchedulerActions& actions) {
  if (now == table.lastSecond) return false;
  table.lastSecond = catchUpStart(table.lastSecond, now);
  while (table.lastSecond < now) {
    const int64_t t = ++table.lastSecond;
    runDueItems(table, daySecond(t), 0, actions);
    actions.showTime(t);
  }
  return true;
}

void deleteNamedFile(NamedFileUsers& users, const std::string& schedulesFolder, const std::string& recordingsFolder,
                     const std::string& fileName) {
  // Players and recorders hold the audio file open; they let go first.
  users.stopEveryUserOf(fileName);
  removeEverySpelling(schedulesFolder, fileName, kScheduleExtension);
  removeEverySpelling(recordingsFolder, fileName, kAudioExtension);
}

}  // namespace vantr
