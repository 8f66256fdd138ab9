#include "ui/main_commands.h"

#include "resource.h"

namespace vantr {

namespace {

constexpr CommandRule kRules[] = {
    {CM_NEW_FILE, CommandNeeds::Nothing, 0},
    {CM_RENAME_FILE, CommandNeeds::FileSelected, kLockFileManagement},
    {CM_DELETE_FILE, CommandNeeds::FileSelected, kLockFileManagement},
    {CM_FILE_PROPERTIES, CommandNeeds::FileSelected, kLockFileManagement},
    {IDC_PLAY, CommandNeeds::FileSelected, 0},
    {CM_PLAY_CONTROL, CommandNeeds::Nothing, 0},
    {IDC_RECORD, CommandNeeds::FileSelected, 0},
    {IDC_STOP, CommandNeeds::Nothing, 0},
    {CM_LOAD_WAV_FILE, CommandNeeds::Nothing, kLockFileManagement},
    {CM_LOAD_PACKED_SCHEDULE, CommandNeeds::Nothing, 0},
    {CM_SAVE_PACKED_SCHEDULE, CommandNeeds::FileSelected, 0},
    {CM_PRINT_SCHEDULES, CommandNeeds::Nothing, 0},
    {CM_HARDWARE_SETTINGS, CommandNeeds::Nothing, kLockHardware},
    {CM_PASSWORD_SETTINGS, CommandNeeds::Nothing, 0},
    {CM_CLOSE_WINDOW, CommandNeeds::Nothing, 0},
    {CM_EXIT, CommandNeeds::Nothing, kLockExit},
    {CM_PLAY_ONCE, CommandNeeds::FileSelected, kLockScheduling},
    {CM_PLAY_REGULAR, CommandNeeds::FileSelected, kLockScheduling},
    {CM_RECORD_ONCE, CommandNeeds::FileSelected, kLockScheduling},
    {CM_RECORD_REGULAR, CommandNeeds::FileSelected, kLockScheduling},
    {CM_SCHEDULED_DELETE, CommandNeeds::FileSelected, kLockScheduling},
    {CM_DELETE_SCHEDULE_ITEM, CommandNeeds::ItemSelected, kLockScheduling},
    {CM_EDIT_SCHEDULE_ITEM, CommandNeeds::ItemSelected, kLockScheduling},
    {CM_HELP_CONTENTS, CommandNeeds::Nothing, 0},
    {CM_ABOUT, CommandNeeds::Nothing, 0},
};

}  // namespace

CommandRule commandRule(unsigned id) {
  for (const CommandRule& rule : kRules)
    if (rule.id == id) return rule;
  return CommandRule{id, CommandNeeds::Nothing, 0};
}

bool commandEnabled(unsigned id, bool fileSelected, bool itemSelected) {
  switch (commandRule(id).needs) {
    case CommandNeeds::FileSelected: return fileSelected;
    case CommandNeeds::ItemSelected: return itemSelected;
    case CommandNeeds::Nothing: break;
  }
  return true;
}

bool passwordRequired(uint32_t flags, std::string_view password, uint32_t mask) {
  return !password.empty() && (flags & mask) != 0;
}

}  // namespace vantr
