// The schedule item dialogs' texts and writes, the File Properties keys, and
// the library's rename, apart from the windows that show them.
#include "schedule/schedule_dialog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "base/file.h"
#include "schedule/file_properties.h"
#include "schedule/named_file.h"
#include "schedule/schedule_item.h"
#include "schedule/schedule_time.h"
#include "store/settings.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr int64_t kNow = 1795425000;  // Monday 2026-11-23 09:10:00

std::string key(const std::string& path, int slot, const char* name) {
  return readText(path, scheduleSection(slot), name, "<missing>");
}

TEST(ScheduleDialog, NewItemsShowTheirDefaults) {
  const IniDocument empty;
  const struct {
    int32_t kind;
    const char* first;
    const char* second;
    int32_t days;
    const char* commence;
    const char* expire;
    const char* duration;
  } rows[] = {
      {kPlayRegular, "12:00:00", "", 127, "IMMEDIATE", "NEVER", ""},
      {kRecordRegular, "12:00:00", "", 127, "IMMEDIATE", "NEVER", "0:30:00.0"},
      {kPlayOnce, "23/11/26", "09:10:00", 0, "", "", ""},
      {kRecordOnce, "23/11/26", "09:10:00", 0, "", "", "0:30:00.0"},
      {kScheduledFileDelete, "23/11/26", "09:10:00", 0, "", "", ""},
  };
  for (const auto& row : rows) {
    const ScheduleDialogFields f = scheduleDialogFields(empty, 3, row.kind, kNow, kDayMonthYear);
    EXPECT_EQ(f.first, row.first) << row.kind;
    EXPECT_EQ(f.second, row.second) << row.kind;
    EXPECT_EQ(f.days, row.days) << row.kind;
    EXPECT_EQ(f.commence, row.commence) << row.kind;
    EXPECT_EQ(f.expire, row.expire) << row.kind;
    EXPECT_EQ(f.duration, row.duration) << row.kind;
    EXPECT_EQ(f.deviceIndex, 0) << row.kind;  // the default device
  }
}

TEST(ScheduleDialog, OkWritesWhatTheBoxesSay) {
  // One regular record item per row: the boxes as typed, then the stored keys.
  const struct {
    const char* time;
    int32_t days;
    const char* commence;
    const char* expire;
    const char* duration;
    int device;
    int order;
    const char* storedTime;
    const char* storedCommence;
    const char* storedExpire;
    const char* storedDuration;
    const char* storedChan;
  } rows[] = {
      // Confirmed unchanged.
      {"12:00:00", 127, "IMMEDIATE", "NEVER", "0:30:00.0", 0, kDayMonthYear, "12:00:00", "IMMEDIATE", "NEVER",
       "0:30:00.000", "-1"},
      // Day first: 25 December of this year; the expiry day included whole.
      {"06:30", 62, "25/12", "31/12/27", "1:00:00", 3, kDayMonthYear, "06:30:00", "25/12/26-00:00:00",
       "31/12/27-23:59:59", "1:00:00.000", "2"},
      // Month first, the same days.
      {"6:30:00", 62, "12/25", "12/31/27", "1:00:00", 1, kMonthDayYear, "06:30:00", "25/12/26-00:00:00",
       "31/12/27-23:59:59", "1:00:00.000", "0"},
      // A Y makes the date annual; words are taken by their first letter.
      {"23:00:00", 1, "Y", "nope", "0:00:05", 0, kDayMonthYear, "23:00:00", "23/11/YY-00:00:00", "NEVER", "0:00:05.000",
       "-1"},
      // Texts longer than the boxes take are cut: 8 characters of a time or date, 13 of a duration.
      {"12:34:56789", 127, "01/02/0345", "immediately", "0:00:01.5000009", 0, kDayMonthYear, "12:34:56",
       "01/02/03-00:00:00", "IMMEDIATE", "0:00:01.500", "-1"},
      // Nothing a parser can read: the base values (today, midnight) are written as they come.
      {"xx", 127, "??", "", "abc", 0, kDayMonthYear, "00:00:00", "23/11/26-00:00:00", "23/11/26-23:59:59",
       "0:00:00.000", "-1"},
  };
  for (const auto& row : rows) {
    TempDir dir;
    const std::string path = dir.file("News.qsf");
    const int slot = NewScheduleItem(path, kRecordRegular);
    ScheduleDialogFields f;
    f.first = row.time;
    f.days = row.days;
    f.commence = row.commence;
    f.expire = row.expire;
    f.duration = row.duration;
    f.deviceIndex = row.device;
    applyScheduleDialog(path, slot, kRecordRegular, f, kNow, row.order);
    SCOPED_TRACE(row.time);
    EXPECT_EQ(key(path, slot, "type"), "4");
    EXPECT_EQ(key(path, slot, "time"), row.storedTime);
    EXPECT_EQ(key(path, slot, "days"), std::to_string(row.days));
    EXPECT_EQ(key(path, slot, "commence"), row.storedCommence);
    EXPECT_EQ(key(path, slot, "expire"), row.storedExpire);
    EXPECT_EQ(key(path, slot, "duration"), row.storedDuration);
    EXPECT_EQ(key(path, slot, "chan"), row.storedChan);
    // What was written opens again as the canonical form of what was typed.
    const ScheduleDialogFields back =
        scheduleDialogFields(loadSettingsDocument(path), slot, kRecordRegular, kNow, row.order);
    EXPECT_EQ(back.first, row.storedTime);
    EXPECT_EQ(back.deviceIndex, row.device);
  }
}

TEST(ScheduleDialog, OnceItemsJoinDateAndTimeAndKeepTheirKeys) {
  TempDir dir;
  const std::string path = dir.file("News.qsf");
  const struct {
    int32_t kind;
    const char* date;
    const char* time;
    const char* stored;
    bool hasChan, hasDuration;
  } rows[] = {
      {kPlayOnce, "24/11/26", "07:00:00", "24/11/26-07:00:00", true, false},
      {kRecordOnce, "y", "7", "23/11/YY-07:00:00", true, true},
      {kScheduledFileDelete, "NEVER", "07:00:00", "NEVER", false, false},
      {kPlayOnce, "", "", "23/11/26-00:00:00", true, false},
  };
  for (const auto& row : rows) {
    const int slot = NewScheduleItem(path, row.kind);
    ScheduleDialogFields f;
    f.first = row.date;
    f.second = row.time;
    f.duration = "0:10:00";
    f.deviceIndex = 2;
    applyScheduleDialog(path, slot, row.kind, f, kNow, kDayMonthYear);
    EXPECT_EQ(key(path, slot, "date"), row.stored) << row.date;
    EXPECT_EQ(key(path, slot, "chan"), row.hasChan ? "1" : "<missing>") << row.kind;
    EXPECT_EQ(key(path, slot, "duration"), row.hasDuration ? "0:10:00.000" : "<missing>") << row.kind;
    EXPECT_EQ(key(path, slot, "time"), "<missing>") << row.kind;
  }
  // The once items read back into their two boxes.
  const ScheduleDialogFields first =
      scheduleDialogFields(loadSettingsDocument(path), 0, kPlayOnce, kNow, kMonthDayYear);
  EXPECT_EQ(first.first, "11/24/26");
  EXPECT_EQ(first.second, "07:00:00");
}

TEST(FileProperties, DefaultsAndEveryKeyWritten) {
  TempDir dir;
  const std::string path = dir.file("News.qsf");
  const FileProperties defaults = readFileProperties(loadSettingsDocument(path));
  EXPECT_TRUE(defaults.defaultFormat);
  EXPECT_EQ(defaults.sampleRate, "44100");
  EXPECT_TRUE(defaults.stereo);
  EXPECT_TRUE(defaults.autoTrim);
  EXPECT_EQ(defaults.automatedRecord, 0);
  EXPECT_EQ(defaults.automatedPlay, 0);

  FileProperties changed;
  changed.defaultFormat = false;
  changed.sampleRate = "5000";  // kept as typed
  changed.stereo = false;
  changed.autoTrim = false;
  changed.automatedRecord = 1;
  changed.automatedPlay = 1;
  ASSERT_TRUE(writeFileProperties(path, changed));
  const char* expected[][2] = {{"defaultformat", "false"}, {"samplerate", "5000"},   {"stereo", "false"},
                               {"autotrim", "false"},      {"automatedrecord", "1"}, {"automatedplay", "1"}};
  for (const auto& kv : expected) EXPECT_EQ(readText(path, "file", kv[0], "<missing>"), kv[1]) << kv[0];
  const FileProperties back = readFileProperties(loadSettingsDocument(path));
  EXPECT_FALSE(back.defaultFormat);
  EXPECT_FALSE(back.stereo);
  EXPECT_EQ(back.automatedPlay, 1);
}

// Each row: the files there before, the rename, the files there after.
TEST(Library, RenameMovesBothFiles) {
  const struct {
    std::vector<std::string> before;
    const char* from;
    const char* to;
    std::vector<std::string> after;
  } rows[] = {
      {{"s/News.qsf", "r/News.wav"}, "News", "Sport", {"r/Sport.wav", "s/Sport.qsf"}},
      // Only the case changes: both files are renamed in place, nothing is lost.
      {{"s/News.qsf", "r/News.wav"}, "News", "NEWS", {"r/NEWS.wav", "s/NEWS.qsf"}},
      // A file of the new name is replaced.
      {{"s/News.qsf", "r/News.wav", "s/Sport.qsf", "r/Sport.wav"}, "News", "Sport", {"r/Sport.wav", "s/Sport.qsf"}},
      // No audio yet: the schedule file alone moves.
      {{"s/News.qsf"}, "News", "Sport", {"s/Sport.qsf"}},
      // Names the library does not take change nothing.
      {{"s/News.qsf", "r/News.wav"}, "News", "..\\Sport", {"r/News.wav", "s/News.qsf"}},
      {{"s/News.qsf", "r/News.wav"}, "News", "COM1", {"r/News.wav", "s/News.qsf"}},
      {{"s/News.qsf", "r/News.wav"}, "News", "a:b", {"r/News.wav", "s/News.qsf"}},
      {{"s/News.qsf", "r/News.wav"},
       "News",
       "123456789012345678901234567890123456789012345678",
       {"r/News.wav", "s/News.qsf"}},
      {{"s/News.qsf", "r/News.wav"},
       "News",
       "12345678901234567890123456789012345678901234567",
       {"r/12345678901234567890123456789012345678901234567.wav",
        "s/12345678901234567890123456789012345678901234567.qsf"}},
  };
  for (const auto& row : rows) {
    TempDir dir;
    makeDirectory(dir.file("s"));
    makeDirectory(dir.file("r"));
    for (const std::string& f : row.before) ASSERT_TRUE(replaceFileContents(dir.file(f), f));
    renameNamedFile(dir.file("s"), dir.file("r"), row.from, row.to);
    std::vector<std::string> after;
    for (const char* folder : {"r", "s"}) {
      std::vector<std::string> listed;
      for (const auto& entry : std::filesystem::directory_iterator(dir.file(folder)))
        listed.push_back(entry.path().filename().string());
      std::sort(listed.begin(), listed.end());
      for (const std::string& name : listed) after.push_back(std::string(folder) + "/" + name);
    }
    EXPECT_EQ(after, row.after) << row.to;
    // The schedule file there afterwards is always News's own, moved or not.
    std::string contents;
    EXPECT_TRUE(readWholeFile(dir.file(row.after.back()), contents));
    EXPECT_EQ(contents, "s/News.qsf") << row.to;
  }
}

TEST(Library, NamesAndUse) {
  const std::vector<std::string> names = {"News", "Sport"};
  EXPECT_TRUE(nameUsed(names, "news"));
  EXPECT_TRUE(nameUsed(names, "SPORT"));
  EXPECT_FALSE(nameUsed(names, "News2"));
  EXPECT_EQ(nameOfChosenFile("C:\\Audio\\Jingle One.WAV"), "Jingle One");
  EXPECT_EQ(nameOfChosenFile("/tmp/x.y.wav"), "x.y");
  EXPECT_EQ(nameOfChosenFile("plain"), "plain");
}

}  // namespace
}  // namespace vantr
