#include "schedule/scheduler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/file.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

// The engine over real folders and a simulated clock: records what it starts, stamped
// with the second being evaluated, and carries out deletes.
struct Engine : SchedulerActions, NamedFileUsers {
  TempDir schedules, recordings;
  std::unique_ptr<ScheduleTable> table = std::make_unique<ScheduleTable>();
  ManualClock clock;
  std::vector<std::string> events;
  int starts = 0;

  explicit Engine(int64_t start) : clock(start) {}
  // Writes a schedule file from "|"-separated lines.
  void write(const std::string& name, std::string text) {
    std::replace(text.begin(), text.end(), '|', '\n');
    ASSERT_TRUE(replaceFileContents(schedules.file(name + ".qsf"), text));
  }
  void rebuild() override { RebuildSchedules(*table, schedules.path(), clock.now()); }
  // One tick at every second up to end.
  void runTo(int64_t end) {
    for (; clock.now() <= end; clock.advance(1)) SchedulerTick(*table, clock.now(), *this);
    clock.set(end);
  }
  // One line per second: "05 08:00:00 play Alpha 0, delete beta".
  void log(const std::string& what) {
    ++starts;
    const std::string t = FormatStoredDateTime(toScheduleTime(table->lastSecond));
    const std::string stamp = t.substr(0, 2) + " " + t.substr(9);
    const bool newSecond = events.empty() || events.back().compare(0, stamp.size(), stamp) != 0;
    if (newSecond) events.push_back(stamp);
    events.back() += (newSecond ? "" : ",") + what;
  }
  void play(const std::string& name, int channel) override { log(" play " + name + " " + std::to_string(channel)); }
  void record(const std::string& name, int channel, int32_t duration) override {
    log(" record " + name + " " + std::to_string(channel) + " " + std::to_string(duration));
  }
  void deleteFile(const std::string& name) override {
    log(" delete " + name);
    deleteNamedFile(*this, schedules.path(), recordings.path(), name);
  }
  void showTime(int64_t) override {}
  void stopEveryUserOf(const std::string& name) override {
    // The files must still be there when the users are stopped.
    log(" stop " + name + (fileExists(recordings.file(name + ".wav")) ? " (wav)" : " (no wav)"));
  }
};

TEST(Scheduler, AWeekOfRegularOnceAndDeleteItems) {
  Engine e(1078099200);  // 2004-03-01 00:00:00, a Monday
  e.write("Alpha",
          "[sch0]|type=2|chan=0|time=08:00:00|days=62|"                   // Monday to Friday
          "[sch1]|type=4|chan=2|time=20:00:00|days=65|duration=1:00:00|"  // weekends, inside the bounds
          "commence=06/03/04-20:00:00|expire=07/03/04-20:00:00|"          // both bounds inclusive
          "[sch2]|type=1|date=03/03/04-08:00:00|"                         // after sch0 in the same second
          "[sch3]|type=3|chan=3|date=04/03/04-23:59:59|duration=0:00:10|");
  // Files go in name order without regard to case: Alpha, then beta.
  e.write("beta", "[sch0]|type=2|chan=1|time=08:00:00|[sch1]|type=5|date=05/03/04-08:00:00|");
  ASSERT_TRUE(replaceFileContents(e.recordings.file("beta.wav"), "RIFF"));
  e.rebuild();
  e.runTo(1078790400);  // 2004-03-09 00:00:00

  const std::vector<std::string> expected = {
      "01 08:00:00 play Alpha 0, play beta 1",
      "02 08:00:00 play Alpha 0, play beta 1",
      "03 08:00:00 play Alpha 0, play Alpha -1, play beta 1",
      "04 08:00:00 play Alpha 0, play beta 1",
      "04 23:59:59 record Alpha 3 100000",
      "05 08:00:00 play Alpha 0, play beta 1, delete beta, stop beta (wav)",
      "06 20:00:00 record Alpha 2 36000000",
      "07 20:00:00 record Alpha 2 36000000",
      "08 08:00:00 play Alpha 0",
  };
  EXPECT_EQ(e.events, expected);
  EXPECT_EQ(e.schedules.entries(), std::vector<std::string>({"Alpha.qsf"}));
  EXPECT_TRUE(e.recordings.entries().empty());
}

TEST(Scheduler, CatchUpLooksBackOneMinute) {
  // A regular and a once item at T; ticks every second from T + first, and the clock jumps
  // after the tick at T + jumpAt. Runs counts how often the second T is carried out.
  const int64_t T = 1078480800;  // 2004-03-05 10:00:00
  struct Row {
    int64_t first, jumpAt, jump;
    int runs;
  } rows[] = {
      {40, 0, 0, 1},        {60, 0, 0, 0},         // late starts
      {-5, 10, 30, 2},      {-5, 10, 50, 1},       // stalls
      {-5, 3659, -3600, 2}, {-5, 3660, -3600, 1},  // the clock set back an hour
  };
  for (const Row& row : rows) {
    Engine e(T + row.first);
    e.write("News", "[sch0]|type=2|time=10:00:00|[sch1]|type=1|date=05/03/04-10:00:00|");
    e.rebuild();
    if (row.jump != 0) {
      e.runTo(T + row.jumpAt);
      e.clock.advance(row.jump);
    }
    e.runTo(e.clock.now() + 120);
    EXPECT_EQ(e.starts, 2 * row.runs) << row.first << " " << row.jumpAt << " " << row.jump;
  }
}

TEST(Scheduler, BadInputLoadsWhatItCanAndCrashesNowhere) {
  Engine e(1078444800);  // 2004-03-05 00:00:00
  // Binary junk with NULs and lone CRs; ten megabytes of one item and then
  // long junk lines; 300 sections, of which only sch0 to sch255 count.
  std::string junk, big = "[sch0]\r\ntype=1\r\ndate=06/03/04-00:00:00\r\n", many;
  for (int i = 0; i < 4096; ++i) junk += static_cast<char>((i * 7919) % 256);
  while (big.size() < 10 * 1024 * 1024) big += std::string(1000, 'x') + "=" + std::string(23, 'y') + "\r\n";
  for (int slot = 0; slot < 300; ++slot) many += "[sch" + std::to_string(slot) + "]|type=1|date=NEVER|";
  ASSERT_TRUE(replaceFileContents(e.schedules.file("Binary.qsf"), junk));
  ASSERT_TRUE(replaceFileContents(e.schedules.file("Big.qsf"), big));
  e.write("Many", many);
  // Absurd numbers in the keys of a regular item that runs for ever: it loads,
  // its days masked to the week.
  e.write("Absurd",
          "[sch0]|type=2|chan=99999999999|time=-99999999999|days=-1|commence=9/9/99999999|expire=NEVER|"
          "duration=99999999999999|");
  // A name of 200 characters: the table keeps 47 of them.
  const std::string longName(200, 'n');
  // Windows refuses the path when the temporary folder's own name takes it
  // past 260 characters; other systems take it.
  const bool longNameWritten = replaceFileContents(e.schedules.file(longName + ".qsf"), "[sch0]\ntype=2\n");
#ifndef _WIN32
  ASSERT_TRUE(longNameWritten);
#endif

  EXPECT_EQ(RebuildSchedules(*e.table, e.schedules.path(), e.clock.now()).size(), longNameWritten ? 5u : 4u);
  const auto itemsOf = [&](const std::string& name) {
    return std::count_if(e.table->entries.begin(), e.table->entries.begin() + e.table->count,
                         [&](const ScheduleEntry& entry) { return name == entry.fileName; });
  };
  EXPECT_EQ(itemsOf("Big"), 1);
  ASSERT_EQ(itemsOf("Absurd"), 1);
  EXPECT_EQ(e.table->entries[0].days, 127);
  EXPECT_EQ(itemsOf("Many"), 256);
  EXPECT_EQ(itemsOf(longName.substr(0, 47)), longNameWritten ? 1 : 0);
  e.runTo(e.clock.now() + 86400);  // a day of ticks over whatever loaded
  EXPECT_FALSE(e.events.empty());
}

TEST(Scheduler, TheTableHoldsAtMost1024Items) {
  Engine e(1078444800);
  std::string full;
  for (int slot = 0; slot < 256; ++slot) full += "[sch" + std::to_string(slot) + "]|type=2|";
  for (const char* name : {"A", "B", "C", "D", "E"}) e.write(name, full);
  RebuildSchedules(*e.table, e.schedules.path(), e.clock.now());
  EXPECT_EQ(e.table->count, ScheduleTable::kCapacity);
  EXPECT_STREQ(e.table->entries[ScheduleTable::kCapacity - 1].fileName, "D") << "E contributes nothing";
}

}  // namespace
}  // namespace vantr
