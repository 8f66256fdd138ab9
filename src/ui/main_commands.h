// The main window's commands as a table: what each needs to be enabled and
// which password protection it asks for. The window's menus, popups, keys
// and buttons all go through it, so a rule is written once.
#pragma once

#include <cstdint>
#include <string_view>

namespace vantr {

// Password protections (the "flags" bits of section "security").
constexpr uint32_t kLockHardware = 1;
constexpr uint32_t kLockFileManagement = 2;
constexpr uint32_t kLockScheduling = 4;
constexpr uint32_t kLockExit = 64;
constexpr uint32_t kLockEverything = 65535;

enum class CommandNeeds { Nothing, FileSelected, ItemSelected };

struct CommandRule {
  unsigned id;
  CommandNeeds needs;
  uint32_t lock;  // 0: never locked
};

// The rule of a command id; an id the table does not know needs nothing and
// is never locked.
CommandRule commandRule(unsigned id);
bool commandEnabled(unsigned id, bool fileSelected, bool itemSelected);

// Whether an action under `mask` needs the password: only when one is set and
// the flags protect the action.
bool passwordRequired(uint32_t flags, const std::string_view password, uint32_t mask);

}  // namespace vantr
