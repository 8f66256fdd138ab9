// Schedule times and items; whole files are listed through vantrctl in its own test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>

#include "base/file.h"
#include "schedule/schedule_item.h"
#include "schedule/schedule_time.h"
#include "store/settings.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr ScheduleTime kFriday = 1078495629;     // 2004-03-05 14:07:09
constexpr ScheduleTime kAnnualFriday = 5753231;  // 05/03/YY-14:07:09
constexpr int64_t kNow = 1795425000;             // 2026-11-23 09:10:00
constexpr ScheduleTime kUntouched = 123456789;   // what a failed parse keeps

TEST(ScheduleTime, StoredForm) {
  // The first six rows map both ways, with the edges of the annual and 32-bit ranges; then fields
  // past their range carry over, and a year with no 32-bit form leaves the value as it was.
  const std::pair<const char*, ScheduleTime> rows[] = {{"IMMEDIATE", kImmediate},
                                                       {"NEVER", kNever},
                                                       {"01/01/YY-00:00:00", 2},
                                                       {"10/01/71-00:00:00", 32313600},
                                                       {"05/03/YY-14:07:09", kAnnualFriday},
                                                       {"19/01/38-03:14:06", kNever - 1},
                                                       {"31/04/04", 1083369600},
                                                       {"05/03/04-25:00:00", 1078534800},
                                                       {"05/03/99", 920592000},
                                                       {"01/01/39", kUntouched},
                                                       {"01/01/1969", kUntouched}};
  for (size_t i = 0; i < std::size(rows); ++i) {
    ScheduleTime back = kUntouched;
    ParseStoredDateTime(back, rows[i].first);
    EXPECT_EQ(back, rows[i].second) << rows[i].first;
    if (i >= 6) continue;
    EXPECT_EQ(FormatStoredDateTime(rows[i].second), rows[i].first) << rows[i].second;
  }
  // Annual values, then absolute ones up to the end of 32 bits.
  for (int64_t v = 2; v < kNever; v += (v < kAnnualEnd ? 7919 : 1299709)) {
    ScheduleTime back = kUntouched;
    ParseStoredDateTime(back, FormatStoredDateTime(static_cast<ScheduleTime>(v)));
    ASSERT_EQ(back, v);
  }
}

TEST(ScheduleTime, DateInEachOrder) {
  // Each order formats kFriday as its text and reads it back into another
  // date, keeping that date's time; an unknown order is month/day/year.
  const std::pair<int, const char*> rows[] = {
      {kMonthDayYear, "03/05/04"}, {kDayMonthYear, "05/03/04"}, {kYearMonthDay, "04/03/05"}, {7, "03/05/04"}};
  for (const auto& [order, text] : rows) {
    EXPECT_EQ(FormatDate(kFriday, order), text) << order;
    ScheduleTime value = 1135519629;  // 2005-12-25 14:07:09
    ParseDate(value, text, order, kNow);
    EXPECT_EQ(value, kFriday) << order;
  }
}

TEST(ScheduleTime, TimeOfDay) {
  // Through both parsers; the letters of "pm" must stand together, and hours
  // past 23 run into the next day.
  const std::pair<const char*, TimeOfDay> clocks[] = {{"12AM", 0},       {"12:30 am", 1800}, {"12PM", 43200},
                                                      {"9.30pm", 77400}, {"3 p m", 10800},   {"25:01:01", 90061}};
  for (const auto& [text, seconds] : clocks) {
    EXPECT_EQ(ParseTimeOfDay(text), seconds) << text;
    ScheduleTime value = kFriday;
    ParseTime(value, text, kNow);
    EXPECT_EQ(value, 1078444800 + static_cast<ScheduleTime>(seconds)) << text;  // from 2004-03-05 00:00
  }
  EXPECT_EQ(FormatTimeOfDay(90061), "25:01:01");

  // Setting a time of day past midnight carries into the next day; the annual
  // form keeps day, month and time.
  ScheduleTime value = kFriday;
  SetTimeOfDay(value, 90061, kNow);
  EXPECT_EQ(value, 1078444800 + 90061);  // from 2004-03-05 00:00
  EXPECT_EQ(TimeOfDayOf(value), 3661u);
  MakeAnnual(value);
  EXPECT_EQ(FormatStoredDateTime(value), "06/03/YY-01:01:01");
}

TEST(ScheduleItem, NewItemsTakeTheLowestFreeSlot) {
  std::string full;  // all 256 slots taken
  for (int slot = 0; slot < 256; ++slot) full += "[sch" + std::to_string(slot) + "]\ntype=1\n";
  const std::pair<std::string, int> rows[] = {
      {"", 0},
      {"[sch0]\ntype=1\n[sch1]\ntype=-1\n[sch2]\ntype=0\n", 1},  // a deleted slot is free
      {"[sch0]\ntype=5\n[sch1]\ntype=7\n", 2},                   // an unknown kind holds its slot
      {full, -1},
  };
  TempDir dir;
  const std::string path = dir.file("f.qsf");
  for (const auto& [text, slot] : rows) {
    ASSERT_TRUE(replaceFileContents(path, text));
    EXPECT_EQ(NewScheduleItem(path, kRecordOnce), slot) << text.substr(0, 40);
    if (slot < 0) continue;
    EXPECT_EQ(readInt(path, scheduleSection(slot), "type", 0), kRecordOnce) << text;
  }

  // A deleted item is marked -1, not 0, so the items after it stay listed.
  ASSERT_TRUE(replaceFileContents(path, "[sch0]\ntype=1\n[sch1]\ntype=1\ndate=05/03/04-11:00:00\n"));
  DeleteScheduleItems(path, {0});
  const auto lines = FillScheduleList(loadSettingsDocument(path), kMonthDayYear);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].slot, 1);
}

TEST(ScheduleItem, ListText) {
  // {order, [sch0] with '|' for line breaks, text}; missing keys show defaults; no text ends the list.
  const std::tuple<int, const char*, const char*> rows[] = {
      {kDayMonthYear, "type=1|chan=0|date=03/05/04-09:00:00", "09:00:00 Play #0 file on 03/05/04"},
      {kDayMonthYear, "type=2|chan=3|time=25:00:00|days=0|commence=01/01/04-00:00:00|expire=31/12/04-23:59:59",
       "25:00:00 Play #3 file on smtwtfs from 01/01/04 until 31/12/04"},
      {kMonthDayYear, "type=3|date=05/03/04-14:07:30|duration=0:00:01.96", "14:07:30 Record 0:00:02.0 on 03/05/04"},
      {kYearMonthDay, "type=4|time=7pm|days=65", "19:00:00 Record 0:30:00.0 on SmtwtfS"},
      {kMonthDayYear, "type=5|chan=2", " Delete file on NEVER"},
      {kMonthDayYear, "type=-2", nullptr},
  };
  for (const auto& [order, section, expected] : rows) {
    std::string text = std::string("[sch0]|") + section, shown = "stale";
    std::replace(text.begin(), text.end(), '|', '\n');
    EXPECT_EQ(ScheduleItemText(IniDocument(text), 0, order, shown), expected != nullptr) << section;
    EXPECT_EQ(shown, expected ? expected : "") << section;
  }
}

}  // namespace
}  // namespace vantr
