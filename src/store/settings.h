// Typed reads and writes of ini keys: the settings file and every schedule file
// go through these, one key at a time, with no cache.
//
// The ini rules are those of Windows' private profile functions (sections and
// keys compared without regard to case, the first match wins, blanks around
// names and values and a pair of matching quotes around a value dropped), with
// two additions for a machine that may lose power at any moment: a write
// replaces the file as a whole (never a truncated or half-written file), and
// reads and writes from different threads are serialised.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/ini_document.h"

namespace vantr {

// Longest text a read gives back (a 260-character buffer less its terminator).
constexpr size_t kMaxSettingText = 259;

// The whole file parsed once, for a reader that wants many keys of it (the
// scheduler reads every item of every schedule file). A missing or unreadable
// file gives an empty document, so every key reads as its default.
IniDocument loadSettingsDocument(const std::string& path);

// The typed reads over a document already parsed; the reads that take a path
// below are these over the file as it is on disk at that moment.
std::string readText(const IniDocument& doc, std::string_view section, std::string_view key,
                     std::string_view defaultText);
int32_t readInt(const IniDocument& doc, std::string_view section, std::string_view key, int32_t defaultValue);
bool readBool(const IniDocument& doc, std::string_view section, std::string_view key, bool defaultValue);
int8_t readLevel(const IniDocument& doc, std::string_view section, std::string_view key, int8_t defaultValue);
uint32_t readClockDuration(const IniDocument& doc, std::string_view section, std::string_view key,
                           uint32_t defaultSeconds);
int32_t readRecordDuration(const IniDocument& doc, std::string_view section, std::string_view key,
                           int32_t defaultDuration);

// Text. A missing key (or a line with no '=') gives the default.
std::string readText(const std::string& path, std::string_view section, std::string_view key,
                     std::string_view defaultText);
// Writes a value; std::nullopt deletes the key. A missing file is created.
bool writeText(const std::string& path, std::string_view section, std::string_view key,
               std::optional<std::string_view> value);
// Deletes a whole section (its header and every line up to the next header).
bool deleteSection(const std::string& path, std::string_view section);

int32_t readInt(const std::string& path, std::string_view section, std::string_view key, int32_t defaultValue);
bool writeInt(const std::string& path, std::string_view section, std::string_view key, int32_t value);

// True only for "true" in any case; a default of false is passed as "".
bool readBool(const std::string& path, std::string_view section, std::string_view key, bool defaultValue);
bool writeBool(const std::string& path, std::string_view section, std::string_view key, bool value);

// Levels in whole dB as "%ddB", or "--dB" for -127 and below.
int8_t readLevel(const std::string& path, std::string_view section, std::string_view key, int8_t defaultValue);
bool writeLevel(const std::string& path, std::string_view section, std::string_view key, int8_t value);

// Durations of a clock in seconds, written "%.2d:%.2d:%.2d" and read with the
// clock-text rule.
uint32_t readClockDuration(const std::string& path, std::string_view section, std::string_view key,
                           uint32_t defaultSeconds);
bool writeClockDuration(const std::string& path, std::string_view section, std::string_view key, uint32_t seconds);

// Record durations in ten-thousandths of a second, in the millisecond
// time-position text (" 4:00:00.000").
int32_t readRecordDuration(const std::string& path, std::string_view section, std::string_view key,
                           int32_t defaultDuration);
bool writeRecordDuration(const std::string& path, std::string_view section, std::string_view key, int32_t duration);

// A counter kept under "<name>count" (default 0).
int32_t readCount(const std::string& path, std::string_view section, std::string_view name);
bool writeCount(const std::string& path, std::string_view section, std::string_view name, int32_t count);
// Reads the count for name, stores count + 1, and returns the count read, so
// numbers are handed out from 0 upward.
int32_t nextNumber(const std::string& path, std::string_view section, std::string_view name);

// After a series of writes to a schedule file, writers ask for its cached copy
// to be flushed. The store keeps no cache and every write is already on disk,
// so nothing is left to do; the call stays so that writers say what they mean.
void flushSettings(const std::string& path);

// The clock-text rule: hours, minutes and seconds separated by '.', '\\' or
// ':' ('/' is no time separator; separators past the seconds stay on them);
// "pm" adds 12 to an hour below 12 and "am" turns 12 into 0 where the letters
// stand. No field is limited to its range (each stops growing at 10^11).
struct ClockFields {
  int64_t hour = 0, minute = 0, second = 0;
};
ClockFields readClockFields(std::string_view text);
// The same as seconds, wrapped to 32 bits as the stored count is.
uint32_t parseClockText(std::string_view text);
std::string formatClockText(uint32_t seconds);

}  // namespace vantr
