// The scheduler engine: one table of every active item of every named file,
// walked one second at a time by the main window's timer, starting the plays,
// recordings and file deletions whose second has come.
//
// The engine decides only what is due; what a start means is the business of
// the SchedulerActions it is given (the main window in the program, a recorder
// of calls in tests and in vantrctl's agenda).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "schedule/schedule_item.h"
#include "store/ini_document.h"

namespace vantr {

constexpr size_t kMaxNameLength = 47;
constexpr uint8_t kDefaultChannelByte = 255;  // the stored -1

struct ScheduleEntry {
  uint8_t kind = 0;  // 0 marks a free slot
  char fileName[kMaxNameLength + 1] = {};
  uint8_t channel = 0;             // kDefaultChannelByte for the default device
  int32_t duration = 0;            // record kinds only
  ScheduleTime date = kNever;      // once kinds
  TimeOfDay timeOfDay = 0;         // regular kinds
  uint8_t days = 0;                // regular kinds: bit 0 Sunday ... bit 6 Saturday
  ScheduleTime commence = kNever;  // regular kinds
  ScheduleTime expire = kNever;    // regular kinds
  int16_t slot = -1;               // the item's section number ("sch%d") in its file
};

struct ScheduleTable {
  static constexpr size_t kCapacity = 1024;
  std::array<ScheduleEntry, kCapacity> entries{};
  size_t count = 0;
  // The last second evaluated (seconds since 1970 of the local wall clock).
  int64_t lastSecond = 0;
};

// What the engine starts. Channels are 0 to 3, or -1 for the default device.
class SchedulerActions {
 public:
  virtual ~SchedulerActions() = default;
  // The entry whose start follows (the as-run log names the item it came from).
  virtual void starting(const ScheduleEntry& /*entry*/) {}
  virtual void play(const std::string& fileName, int channel) = 0;
  virtual void record(const std::string& fileName, int channel, int32_t duration) = 0;
  // Deletes the named file (deleteNamedFile below in the program).
  virtual void deleteFile(const std::string& fileName) = 0;
  // RebuildSchedules with no names to select, after a scheduled delete.
  virtual void rebuild() = 0;
  // The second just evaluated, for the main window's clock field (shown with
  // FormatTime).
  virtual void showTime(int64_t /*second*/) {}
};

// A named file's schedule file, already parsed.
struct NamedSchedule {
  std::string name;
  IniDocument doc;
};

// The names of the named files of a schedules folder (its files ending in
// ".qsf" in any case, without the extension), ordered by name without regard
// to case. False when the folder cannot be read.
bool listNamedFiles(const std::string& schedulesFolder, std::vector<std::string>& names);
// Every named file of the folder with its schedule file (found as
// schedule/named_file.h says) parsed; a file that cannot be read has no items.
bool loadNamedSchedules(const std::string& schedulesFolder, std::vector<NamedSchedule>& files);

// Appends the items of one schedule file to the table, dropping those that can
// never fire again (a once item dated before now - 60, a regular item expired
// before now - 60) and stopping when the table is full.
void loadScheduleItems(ScheduleTable& table, const std::string& name, const IniDocument& doc, int64_t now);

// Reloads the whole table from the named files, in their order, then section
// order. lastSecond is kept.
void RebuildSchedules(ScheduleTable& table, const std::vector<NamedSchedule>& files, int64_t now);
// The same from the schedules folder; returns the names found (the file list)
// and gives an empty table when the folder cannot be read.
std::vector<std::string> RebuildSchedules(ScheduleTable& table, const std::string& schedulesFolder, int64_t now);

// The calendar facts of one second that the due rules ask about, worked out
// once per second for the whole table.
struct DaySecond {
  int64_t second;
  int64_t timeOfDay;    // seconds since midnight
  unsigned weekdayBit;  // 1 << weekday, bit 0 Sunday
};
DaySecond daySecond(int64_t second);

// Whether an entry is due in a second: a once item or a file delete in the
// second of its date; a regular item at its time of day on one of its days,
// from its commence to its expiry, both inclusive. Dates compare as the
// stored numbers they are: IMMEDIATE and an annual (YY) value lie before any
// second walked, NEVER after every one.
bool isDue(const ScheduleEntry& entry, const DaySecond& second);

constexpr int64_t kNeverDue = INT64_MAX;
// The first second after `after` in which isDue holds for the entry, or
// kNeverDue: the agenda's way of skipping the seconds in which nothing is due.
int64_t nextDueSecond(const ScheduleEntry& entry, int64_t after);

// The second after which a tick at now starts its walk, given the last second
// evaluated: a last second more than 20 seconds behind now, or ahead of it,
// gives now - 60. The rule depends only on how far apart the two are.
int64_t catchUpStart(int64_t lastSecond, int64_t now);

// Starts one due item: a play, a recording, or a file delete followed by the
// rebuild. The entry is a copy, as the rebuild rewrites the table.
void startItem(ScheduleEntry entry, SchedulerActions& actions);

// Starts the items of the table due in one second, in table order, from index
// first on. The count is read afresh at every step: a scheduled delete
// rebuilds the table under the walk, which goes on with the next index.
void runDueItems(ScheduleTable& table, const DaySecond& second, size_t first, SchedulerActions& actions);

// Walks the seconds since the last tick up to now and carries out the items
// due in each. Returns whether a new second was reached. A last second more
// than 20 seconds behind now, or ahead of it, restarts the walk at now - 60:
// the first tick after start, a stalled timer and a clock set back all
// evaluate the last minute (again).
bool SchedulerTick(ScheduleTable& table, int64_t now, SchedulerActions& actions);

// Something that can stop every player and recorder holding a named file.
class NamedFileUsers {
 public:
  virtual ~NamedFileUsers() = default;
  // Stops each of the four players and four recorders whose current file name
  // equals fileName without regard to case.
  virtual void stopEveryUserOf(const std::string& fileName) = 0;
};

// The delete-file operation: stops every player and recorder of the file,
// then removes its schedule file and its audio file (every spelling of them
// where case tells names apart). Failures are ignored.
void deleteNamedFile(NamedFileUsers& users, const std::string& schedulesFolder, const std::string& recordingsFolder,
                     const std::string& fileName);

}  // namespace vantr
