#include "automation/automation_dispatch.h"

#include "automation/automation_command.h"
#include "base/text.h"
#include "schedule/named_file.h"
#include "store/settings.h"

namespace vantr {

// The as-run log: a start that goes ahead is logged by the bank itself (its
// "play start" / "record start" line with the cause "automation", done or
// failed), and a stop that finds the file busy ends channels, each of which
// the bank logs as an end under the cause it was started with. What the bank
// never sees is logged here, one line per command, with the cause
// "automation": a name that is no file name, a start refused by the file's
// permission, a start of a file already busy, a stop that found nothing to
// stop, and a record start with no duration to record for.

namespace {

void logLine(AsRunLog* log, AsRunAction action, const std::string& channel, const std::string& name,
             const std::string& result) {
  if (log) log->append(action, channel, name, kAutomationCause, result);
}

// The channel that plays (or records) a file of this name, whatever its case; -1 if none.
int busyChannel(const ChannelBank& bank, bool play, const std::string& name) {
  for (int c = 0; c < kChannels; ++c) {
    const std::string& busy = play ? bank.playName(c) : bank.recordName(c);
    if (!busy.empty() && equalsNoCase(busy, name)) return c;
  }
  return -1;
}

// A file may be started from the line only when its schedule file says 1.
bool permitted(const std::string& scheduleFile, const char* key) { return readInt(scheduleFile, "file", key, 0) == 1; }

void playStart(ChannelBank& bank, const std::string& scheduleFile, const std::string& name, AsRunLog* log) {
  const int busy = busyChannel(bank, true, name);
  if (busy >= 0) {
    logLine(log, AsRunAction::PlayStart, asRunChannelText(true, busy), name, "already playing");
  } else if (!permitted(scheduleFile, "automatedplay")) {
    logLine(log, AsRunAction::PlayStart, "-", name, "refused: automated play is off");
  } else {
    bank.PlayFile(name, -1, kAutomationCause);
  }
}

void recordStart(ChannelBank& bank, const ChannelFolders& folders, const std::string& scheduleFile,
                 const std::string& name, AsRunLog* log) {
  const int busy = busyChannel(bank, false, name);
  if (busy >= 0) {
    logLine(log, AsRunAction::RecordStart, asRunChannelText(false, busy), name, "already recording");
  } else if (!permitted(scheduleFile, "automatedrecord")) {
    logLine(log, AsRunAction::RecordStart, "-", name, "refused: automated record is off");
  } else {
    const int32_t limit = automationRecordLimit(folders.settingsFile);
    // The bank starts nothing, and says nothing, for a duration below 1.
    if (limit < 1)
      logLine(log, AsRunAction::RecordStart, "-", name, "failed: no record duration");
    else
      bank.StartRecord(name, -1, limit, kAutomationCause);
  }
}

void stopEvery(ChannelBank& bank, bool play, const std::string& name, AsRunLog* log) {
  bool stopped = false;
  for (int c = 0; c < kChannels; ++c) {
    const std::string& busy = play ? bank.playName(c) : bank.recordName(c);
    if (busy.empty() || !equalsNoCase(busy, name)) continue;
    if (play)
      bank.stopPlay(c);
    else
      bank.stopRecord(c);
    stopped = true;
  }
  if (!stopped)
    logLine(log, play ? AsRunAction::PlayEnd : AsRunAction::RecordEnd, "-", name,
            play ? "not playing" : "not recording");
}

}  // namespace

int32_t automationRecordLimit(const std::string& settingsFile) {
  return readRecordDuration(settingsFile, "auto", "maxrec", kDefaultAutomationRecordLimit);
}

void RunAutomationCommand(ChannelBank& bank, const ChannelFolders& folders, int command, const std::string& name,
                          AsRunLog* log) {
  if (command < kAutomationPlayStart || command > kAutomationRecordStop) return;
  const std::string scheduleFile = scheduleFilePath(folders.schedulesFolder, name);
  if (scheduleFile.empty()) {
    // A name that would reach outside the folders (the line can send any
    // text) touches no file at all.
    static constexpr AsRunAction kActions[] = {AsRunAction::PlayStart, AsRunAction::RecordStart, AsRunAction::PlayEnd,
                                               AsRunAction::RecordEnd};
    logLine(log, kActions[command], "-", name, "failed: not a file name");
    return;
  }
  switch (command) {
    case kAutomationPlayStart: playStart(bank, scheduleFile, name, log); break;
    case kAutomationRecordStart: recordStart(bank, folders, scheduleFile, name, log); break;
    case kAutomationPlayStop: stopEvery(bank, true, name, log); break;
    case kAutomationRecordStop: stopEvery(bank, false, name, log); break;
  }
}

}  // namespace vantr
