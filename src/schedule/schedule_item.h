// Schedule items as they are kept in a named file's schedule file: sections
// "sch0" to "sch255", one item each, with the item's kind under "type".
//
// Slots are stable: an item keeps its section number for life, a deleted item
// leaves "type" = -1 behind, and a new item takes the lowest slot whose type is
// below 1, so the used slots stay contiguous from "sch0". The item list ends at
// the first slot whose type is 0 or missing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "schedule/schedule_time.h"
#include "store/ini_document.h"

namespace vantr {

enum ScheduleKind : int32_t {
  kPlayOnce = 1,
  kPlayRegular = 2,
  kRecordOnce = 3,
  kRecordRegular = 4,
  kScheduledFileDelete = 5,
};
constexpr int32_t kDeletedSlot = -1;
constexpr int kScheduleSlots = 256;

inline bool isKnownKind(int32_t type) { return type >= kPlayOnce && type <= kScheduledFileDelete; }
inline bool isRegularKind(int32_t type) { return type == kPlayRegular || type == kRecordRegular; }
inline bool isRecordKind(int32_t type) { return type == kRecordOnce || type == kRecordRegular; }
inline bool hasChannel(int32_t type) { return type >= kPlayOnce && type <= kRecordRegular; }

// Defaults of missing keys.
constexpr int32_t kDefaultChannel = -1;               // the default device
constexpr TimeOfDay kDefaultTimeOfDay = 43200;        // 12:00:00
constexpr int32_t kEveryDay = 127;                    // bit 0 Sunday ... bit 6 Saturday
constexpr int32_t kDefaultRecordDuration = 18000000;  // 30 minutes in 1/10000 s

// One item. Keys a kind does not use are neither read nor written and keep
// their defaults here.
struct ScheduleItem {
  int32_t type = 0;
  int32_t channel = kDefaultChannel;
  ScheduleTime date = kNever;                 // once kinds and file deletes
  TimeOfDay timeOfDay = kDefaultTimeOfDay;    // regular kinds
  int32_t days = kEveryDay;                   // regular kinds, masked with 127
  ScheduleTime commence = kImmediate;         // regular kinds
  ScheduleTime expire = kNever;               // regular kinds
  int32_t duration = kDefaultRecordDuration;  // record kinds
};

// "sch%d".
std::string scheduleSection(int slot);

// The "type" of a slot (0 when missing).
int32_t readScheduleType(const IniDocument& doc, int slot);
// A slot's item with the keys of its kind; for a type that is no kind only
// the type is read.
ScheduleItem readScheduleItem(const IniDocument& doc, int slot);
// Writes every key of the item's kind into the slot of the schedule file.
bool writeScheduleItem(const std::string& scheduleFile, int slot, const ScheduleItem& item);

// Date-times in the stored form, read with the default standing in for a
// missing key.
ScheduleTime readStoredDateTime(const IniDocument& doc, std::string_view section, std::string_view key,
                                ScheduleTime defaultValue);
bool writeStoredDateTime(const std::string& path, std::string_view section, std::string_view key, ScheduleTime value);

// Claims the first slot from 0 to 255 whose type is below 1 for a new item of
// kind by writing its type there, and returns the slot; -1 when all 256 are
// taken. The caller opens the kind's dialog on the slot and, if the user
// cancels it, deletes the slot again.
int NewScheduleItem(const std::string& scheduleFile, int32_t kind);
// Marks the slots deleted (type -1); nothing is renumbered.
void DeleteScheduleItems(const std::string& scheduleFile, const std::vector<int>& slots);

// "SMTWTFS" with the letters of days not set in small letters.
std::string daysText(int32_t days);

// The list text of one slot. Returns false where the list ends (type 0 or
// missing, or a type that is no kind); a deleted slot gives true with no text.
bool ScheduleItemText(const IniDocument& doc, int slot, int dateOrder, std::string& text);

struct ScheduleListLine {
  std::string text;
  int slot;
};
// The schedule list of one file in the order the main window shows it: a
// sorted list, ordered by text without regard to case, so by the time at the
// start of each line and then by the rest.
std::vector<ScheduleListLine> FillScheduleList(const IniDocument& doc, int dateOrder);

// The order of the sorted lists (file names and schedule lines): by text
// without regard to case, then small letters before capitals.
bool listTextLess(std::string_view a, std::string_view b);

}  // namespace vantr
