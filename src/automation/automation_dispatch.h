// What the main window does with a play or record command from the serial
// line, on its own thread. A start obeys the named file's own permission
// ("automatedplay" / "automatedrecord" in its schedule file) and leaves a file
// that already plays or records alone; a stop stops the file wherever it
// plays or records, whatever the permission.
#pragma once

#include <cstdint>
#include <string>

#include "asrun/as_run_log.h"
#include "channels/channel_bank.h"

namespace vantr {

// The cause the as-run log gives for everything the serial line does.
constexpr const char* kAutomationCause = "automation";
// The longest recording a record command starts when settings.ini does not
// say ("maxrec" in section "auto"): four hours, in ten-thousandths of a second.
constexpr int32_t kDefaultAutomationRecordLimit = 144000000;

// "maxrec" of settings.ini as a duration in ten-thousandths of a second.
int32_t automationRecordLimit(const std::string& settingsFile);

// Carries out command 0..3 (kAutomationPlayStart ...) for the named file;
// other numbers do nothing. log may be null.
void RunAutomationCommand(ChannelBank& bank, const ChannelFolders& folders, int command, const std::string& name,
                          AsRunLog* log);

}  // namespace vantr
