#include "store/settings.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

#include "base/file.h"
#include "base/level.h"
#include "base/text.h"
#include "base/time_position.h"
#include "store/ini_document.h"

namespace vantr {

namespace {

// One lock for every ini file: a read-modify-write of one key must not
// interleave with another thread's, and Windows' own profile functions
// serialise the same way.
std::mutex& storeLock() {
  static std::mutex lock;
  return lock;
}

IniDocument load(const std::string& path) {
  std::string text;
  if (!readWholeFile(path, text)) return IniDocument();
  return IniDocument(text);
}

template <typename Change>
bool modify(const std::string& path, Change change) {
  if (path.empty()) return false;
  std::lock_guard<std::mutex> guard(storeLock());
  IniDocument doc = load(path);
  if (!change(doc)) return true;  // nothing to change: the file stays untouched
  return replaceFileContents(path, doc.text());
}

}  // namespace

IniDocument loadSettingsDocument(const std::string& path) {
  std::lock_guard<std::mutex> guard(storeLock());
  return load(path);
}

std::string readText(const IniDocument& doc, std::string_view section, std::string_view key,
                     std::string_view defaultText) {
  return profileString(doc, section, key, defaultText, kMaxSettingText);
}

int32_t readInt(const IniDocument& doc, std::string_view section, std::string_view key, int32_t defaultValue) {
  return parseLong(readText(doc, section, key, std::to_string(defaultValue)));
}

bool readBool(const IniDocument& doc, std::string_view section, std::string_view key, bool defaultValue) {
  return equalsNoCase(readText(doc, section, key, defaultValue ? "true" : ""), "true");
}

int8_t readLevel(const IniDocument& doc, std::string_view section, std::string_view key, int8_t defaultValue) {
  return parseLevel(readText(doc, section, key, formatLevel(defaultValue)));
}

uint32_t readClockDuration(const IniDocument& doc, std::string_view section, std::string_view key,
                           uint32_t defaultSeconds) {
  return parseClockText(readText(doc, section, key, formatClockText(defaultSeconds)));
}

int32_t readRecordDuration(const IniDocument& doc, std::string_view section, std::string_view key,
                           int32_t defaultDuration) {
  return parsePosition(readText(doc, section, key, formatPosition(defaultDuration, PositionFormat::Milliseconds)));
}

std::string readText(const std::string& path, std::string_view section, std::string_view key,
                     std::string_view defaultText) {
  return readText(loadSettingsDocument(path), section, key, defaultText);
}

bool writeText(const std::string& path, std::string_view section, std::string_view key,
               std::optional<std::string_view> value) {
  return modify(path,
                [&](IniDocument& doc) { return value ? doc.set(section, key, *value) : doc.removeKey(section, key); });
}

bool deleteSection(const std::string& path, std::string_view section) {
  return modify(path, [&](IniDocument& doc) { return doc.removeSection(section); });
}

int32_t readInt(const std::string& path, std::string_view section, std::string_view key, int32_t defaultValue) {
  return readInt(loadSettingsDocument(path), section, key, defaultValue);
}

bool writeInt(const std::string& path, std::string_view section, std::string_view key, int32_t value) {
  return writeText(path, section, key, std::to_string(value));
}

bool readBool(const std::string& path, std::string_view section, std::string_view key, bool defaultValue) {
  return readBool(loadSettingsDocument(path), section, key, defaultValue);
}

bool writeBool(const std::string& path, std::string_view section, std::string_view key, bool value) {
  return writeText(path, section, key, value ? "true" : "false");
}

int8_t readLevel(const std::string& path, std::string_view section, std::string_view key, int8_t defaultValue) {
  return readLevel(loadSettingsDocument(path), section, key, defaultValue);
}

bool writeLevel(const std::string& path, std::string_view section, std::string_view key, int8_t value) {
  return writeText(path, section, key, formatLevel(value));
}

uint32_t readClockDuration(const std::string& path, std::string_view section, std::string_view key,
                           uint32_t defaultSeconds) {
  return readClockDuration(loadSettingsDocument(path), section, key, defaultSeconds);
}

bool writeClockDuration(const std::string& path, std::string_view section, std::string_view key, uint32_t seconds) {
  return writeText(path, section, key, formatClockText(seconds));
}

int32_t readRecordDuration(const std::string& path, std::string_view section, std::string_view key,
                           int32_t defaultDuration) {
  return readRecordDuration(loadSettingsDocument(path), section, key, defaultDuration);
}

bool writeRecordDuration(const std::string& path, std::string_view section, std::string_view key, int32_t duration) {
  return writeText(path, section, key, formatPosition(duration, PositionFormat::Milliseconds));
}

int32_t readCount(const std::string& path, std::string_view section, std::string_view name) {
  return readInt(path, section, std::string(name) + "count", 0);
}

bool writeCount(const std::string& path, std::string_view section, std::string_view name, int32_t count) {
  return writeInt(path, section, std::string(name) + "count", count);
}

int32_t nextNumber(const std::string& path, std::string_view section, std::string_view name) {
  // Read and increment under one hold of the lock, so two threads never get
  // the same number.
  const std::string key = std::string(name) + "count";
  int32_t number = 0;
  modify(path, [&](IniDocument& doc) {
    number = parseLong(profileString(doc, section, key, "0", kMaxSettingText));
    return doc.set(section, key, std::to_string(number + 1));
  });
  return number;
}

void flushSettings(const std::string& /*path*/) {}

ClockFields readClockFields(std::string_view text) {
  constexpr int64_t kFieldCap = INT64_C(100000000000);
  ClockFields f;
  int64_t* fields[3] = {&f.hour, &f.minute, &f.second};
  int index = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool nextIsM = i + 1 < text.size() && (text[i + 1] == 'm' || text[i + 1] == 'M');
    if (c >= '0' && c <= '9') {
      *fields[index] = std::min(*fields[index] * 10 + (c - '0'), kFieldCap);
    } else if (c == '.' || c == '\\' || c == ':') {
      if (index < 2) ++index;
    } else if ((c == 'p' || c == 'P') && nextIsM) {
      if (f.hour < 12) f.hour += 12;
    } else if ((c == 'a' || c == 'A') && nextIsM) {
      if (f.hour == 12) f.hour = 0;
    }
  }
  return f;
}

uint32_t parseClockText(std::string_view text) {
  const ClockFields f = readClockFields(text);
  return static_cast<uint32_t>(static_cast<uint64_t>(f.hour * 3600 + f.minute * 60 + f.second));
}

std::string formatClockText(uint32_t seconds) {
  char text[40];
  std::snprintf(text, sizeof text, "%.2u:%.2u:%.2u", seconds / 3600, seconds / 60 % 60, seconds % 60);
  return text;
}

}  // namespace vantr
