// A named file's own settings, kept in section "file" of its schedule file:
// the format its recordings are made in, whether they are trimmed, and
// whether automation may start it playing or recording.
#pragma once

#include <cstdint>
#include <string>

#include "store/ini_document.h"

namespace vantr {

// The two automation modes, as the File Properties lists show them. Both lists
// hold the same two texts, the play list's first entry included.
constexpr int32_t kScheduledOnly = 0;
constexpr int32_t kAutomatedOrScheduled = 1;
constexpr const char* kAutomationModeTexts[] = {"Scheduled Record Times Only", "Automated or Scheduled"};

// What a file without keys has.
struct FileProperties {
  bool defaultFormat = true;
  std::string sampleRate = "44100";  // as typed: recording replaces a rate it cannot use
  bool stereo = true;
  bool autoTrim = true;
  int32_t automatedRecord = kScheduledOnly;
  int32_t automatedPlay = kScheduledOnly;
};

FileProperties readFileProperties(const IniDocument& scheduleFile);
// Writes every key, creating the schedule file when it is not there yet.
bool writeFileProperties(const std::string& scheduleFile, const FileProperties& properties);

}  // namespace vantr
