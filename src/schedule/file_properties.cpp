#include "schedule/file_properties.h"

#include "store/settings.h"

namespace vantr {

namespace {
constexpr char kSection[] = "file";
}

FileProperties readFileProperties(const IniDocument& doc) {
  const FileProperties defaults;
  FileProperties p;
  p.defaultFormat = readBool(doc, kSection, "defaultformat", defaults.defaultFormat);
  p.sampleRate = readText(doc, kSection, "samplerate", defaults.sampleRate);
  p.stereo = readBool(doc, kSection, "stereo", defaults.stereo);
  p.autoTrim = readBool(doc, kSection, "autotrim", defaults.autoTrim);
  p.automatedRecord = readInt(doc, kSection, "automatedrecord", defaults.automatedRecord);
  p.automatedPlay = readInt(doc, kSection, "automatedplay", defaults.automatedPlay);
  return p;
}

bool writeFileProperties(const std::string& scheduleFile, const FileProperties& p) {
  bool ok = writeBool(scheduleFile, kSection, "defaultformat", p.defaultFormat);
  ok &= writeText(scheduleFile, kSection, "samplerate", p.sampleRate);
  ok &= writeBool(scheduleFile, kSection, "stereo", p.stereo);
  ok &= writeBool(scheduleFile, kSection, "autotrim", p.autoTrim);
  ok &= writeInt(scheduleFile, kSection, "automatedrecord", p.automatedRecord);
  ok &= writeInt(scheduleFile, kSection, "automatedplay", p.automatedPlay);
  flushSettings(scheduleFile);
  return ok;
}

}  // namespace vantr
