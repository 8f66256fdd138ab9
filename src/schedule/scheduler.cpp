#include "schedule/scheduler.h"

#include <algorithm>
#include <cstring>

#include "base/civil.h"
#include "base/dir.h"
#include "base/file.h"
#include "base/path.h"
#include "store/settings.h"

namespace vantr {

namespace {

constexpr const char kScheduleExtension[] = ".qsf";
constexpr const char kAudioExtension[] = ".wav";

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

}  // namespace

bool listNamedFiles(const std::string& schedulesFolder, std::vector<std::string>& names) {
  if (!listFolder(schedulesFolder, kScheduleExtension, names)) return false;
  for (std::string& name : names) name.resize(name.size() - (sizeof kScheduleExtension - 1));
  // The file system's own order differs between systems; the order of names
  // makes the table (and so the order of items due in one second) the same
  // everywhere, and matches the sorted file list.
  std::stable_sort(names.begin(), names.end(),
                   [](const std::string& a, const std::string& b) { return listTextLess(a, b); });
  return true;
}

bool loadNamedSchedules(const std::string& schedulesFolder, std::vector<NamedSchedule>& files) {
  files.clear();
  std::vector<std::string> names;
  if (!listNamedFiles(schedulesFolder, names)) return false;
  for (std::string& name : names) {
    IniDocument doc = loadSettingsDocument(joinPath(schedulesFolder, name + kScheduleExtension));
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
    if (canStillFire(item, now)) table.entries[table.count++] = entryOf(name, item);
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

bool SchedulerTick(ScheduleTable& table, int64_t now, SchedulerActions& actions) {
  if (now == table.lastSecond) return false;
  if (table.lastSecond < now - kLateTickSeconds || table.lastSecond > now) table.lastSecond = now - kCatchUpSeconds;
  while (table.lastSecond < now) {
    const int64_t t = ++table.lastSecond;
    const int64_t day = floorDiv(t, kSecondsPerDay);
    const int64_t timeOfDay = t - day * kSecondsPerDay;
    const unsigned weekdayBit = 1u << (weekdayFromDays(day) % 7);
    // The count is read afresh at every step: a scheduled delete rebuilds the
    // table under the walk, which goes on with the next index.
    for (size_t i = 0; i < table.count; ++i) {
      const ScheduleEntry e = table.entries[i];
      bool due = false;
      if (isRegularKind(e.kind)) {
        due = e.timeOfDay == timeOfDay && (e.days & weekdayBit) != 0 && e.commence <= t && t <= e.expire;
      } else {
        due = e.date == t;
      }
      if (!due) continue;
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
    actions.showTime(t);
  }
  return true;
}

void deleteNamedFile(NamedFileUsers& users, const std::string& schedulesFolder, const std::string& recordingsFolder,
                     const std::string& fileName) {
  // Players and recorders hold the audio file open; they let go first.
  users.stopEveryUserOf(fileName);
  removeFile(joinPath(schedulesFolder, fileName + kScheduleExtension));
  removeFile(joinPath(recordingsFolder, fileName + kAudioExtension));
}

}  // namespace vantr
