// What the schedule item dialogs show and what their OK writes, apart from
// the windows: the dialogs (ui/library_dialogs_win) only move these texts in
// and out of their controls.
#pragma once

#include <cstdint>
#include <string>

#include "schedule/schedule_item.h"
#include "store/ini_document.h"

namespace vantr {

// The controls' contents. Which fields a kind uses:
//   regular kinds: first = time of day, days, commence, expire;
//   once kinds and file deletes: first = date, second = time;
//   record kinds: duration; play and record kinds: device.
struct ScheduleDialogFields {
  std::string first;
  std::string second;
  int32_t days = 0;
  std::string commence;
  std::string expire;
  std::string duration;
  int deviceIndex = 0;  // the device list's entry: "chan" + 1
};

// The longest texts OK reads from the boxes.
constexpr size_t kDialogDateChars = 8;
constexpr size_t kDialogDurationChars = 13;

// The dialog of kind opened on a slot: the stored values, or for missing keys
// the defaults of a new item (once items propose now).
ScheduleDialogFields scheduleDialogFields(const IniDocument& doc, int slot, int32_t kind, int64_t now, int dateOrder);

// OK: reads the fields in the dialog's order and writes each value as soon as
// it is read. Text that cannot be parsed leaves the parser's base values
// (today for dates), which are written as they are.
void applyScheduleDialog(const std::string& scheduleFile, int slot, int32_t kind, const ScheduleDialogFields& fields,
                         int64_t now, int dateOrder);

}  // namespace vantr
