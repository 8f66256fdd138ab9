#include "asrun/as_run_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "base/civil.h"
#include "base/file.h"
#include "test_support/run_command.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

int64_t at(int64_t year, int64_t month, int64_t day, int64_t hour, int64_t minute, int64_t second, int64_t ms = 0) {
  return secondsFromCivil(CivilTime{year, month, day, hour, minute, second}) * 1000 + ms;
}

AsRunEntry entry(int64_t ms, std::string file, std::string result = "done") {
  return AsRunEntry{ms, "play 1", "play start", std::move(file), "schedule News sch3", std::move(result)};
}

TEST(AsRunLine, FormatAndParse) {
  const AsRunEntry e{at(2026, 11, 23, 9, 5, 7, 42), "record 3", "record start", "Morning\tNews", "operator",
                     "failed: device refused"};
  const std::string line = formatAsRunLine(e);
  EXPECT_EQ(line, "2026-11-23 09:05:07.042\trecord 3\trecord start\tMorning News\toperator\tfailed: device refused");
  AsRunEntry back;
  ASSERT_TRUE(parseAsRunLine(line + "\r", back));
  EXPECT_EQ(back.milliseconds, e.milliseconds);
  EXPECT_EQ(back.file, "Morning News") << "a tab inside a field became a space";
  EXPECT_EQ(back.result, e.result);

  // clang-format off
  const char* refused[] = {
      "2026-11-23 09:05:07.042\tplay 1\tplay start\tNews\toperator",              // five fields
      "2026-11-23 09:05:07.042\tplay 1\tplay start\tNews\toperator\tdone\tx",     // seven
      "2026-02-30 09:05:07.042\tplay 1\tplay start\tNews\toperator\tdone",        // no such day
      "2026-11-23 24:00:00.000\tplay 1\tplay start\tNews\toperator\tdone",        // no such hour
      "2026-11-23 09:05:07\tplay 1\tplay start\tNews\toperator\tdone",            // no milliseconds
      "2026-11-23 09:05:07.04x\tplay 1\tplay start\tNews\toperator\tdone",
      "2026-11-23 09:05:07.042\tplay 1\tplay start\tNews\toperator\tdone\r\r",  // a line end inside
      ""};
  // clang-format on
  for (const char* text : refused) EXPECT_FALSE(parseAsRunLine(text, back)) << text;
}

TEST(AsRunLog, DailyFilesReadBackInOrderWithinARange) {
  TempDir dir;
  const std::string logs = dir.file("Logs");  // made by the first line
  ManualClock clock;
  {
    AsRunLog log(logs, clock);
    log.append(entry(at(2026, 11, 23, 23, 59, 59, 998), "A"));
    log.append(entry(at(2026, 11, 23, 23, 59, 59, 998), "B"));  // same moment: kept in order
    log.append(entry(at(2026, 11, 24, 0, 0, 0, 1), "C"));
    log.append(entry(at(2026, 11, 24, 0, 0, 5), "D"));
  }  // the destructor writes what is queued
  std::vector<AsRunEntry> all;
  ASSERT_TRUE(readAsRun(logs, 0, INT64_MAX, all));
  std::string files;
  for (const AsRunEntry& e : all) files += e.file;
  EXPECT_EQ(files, "ABCD");
  std::string day1, day2;
  ASSERT_TRUE(readWholeFile(logs + "/asrun-2026-11-23.log", day1));
  ASSERT_TRUE(readWholeFile(logs + "/asrun-2026-11-24.log", day2));
  EXPECT_EQ(std::count(day1.begin(), day1.end(), '\n'), 2);
  EXPECT_EQ(std::count(day2.begin(), day2.end(), '\n'), 2);

  // A line cut short by a crash, and junk, are left out; the range is [from, to).
  std::ofstream(logs + "/asrun-2026-11-24.log", std::ios::app) << "junk\n2026-11-24 00:00:09.000\tplay 0\tpla";
  std::vector<AsRunEntry> some;
  ASSERT_TRUE(readAsRun(logs, at(2026, 11, 23, 23, 59, 59, 999), at(2026, 11, 24, 0, 0, 5), some));
  ASSERT_EQ(some.size(), 1u);
  EXPECT_EQ(some[0].file, "C");
  EXPECT_FALSE(readAsRun(dir.file("none"), 0, INT64_MAX, some));
}

// A log that cannot be written (here its folder's name is taken by a file)
// loses lines but never blocks or stops its caller, and says how many it
// lost once it can write again.
TEST(AsRunLog, LinesThatCannotBeWrittenAreCountedAndNoted) {
  TempDir dir;
  const std::string logs = dir.file("Logs");
  ASSERT_TRUE(replaceFileContents(logs, "not a folder"));
  ManualClock clock;
  AsRunLog log(logs, clock);
  for (int i = 0; i < 3; ++i) log.append(entry(at(2026, 11, 23, 10, 0, i), "lost"));
  log.flush();
  ASSERT_TRUE(removeFile(logs));
  log.append(entry(at(2026, 11, 23, 10, 0, 9), "kept"));
  log.flush();
  std::vector<AsRunEntry> read;
  ASSERT_TRUE(readAsRun(logs, 0, INT64_MAX, read));
  ASSERT_EQ(read.size(), 2u);
  EXPECT_EQ(read[0].action, "log");
  EXPECT_EQ(read[0].result, "3 earlier lines could not be written");
  EXPECT_EQ(read[1].file, "kept");
}

TEST(AsRunLog, ManyThreadsWriteWholeLines) {
  TempDir dir;
  ManualClock clock(at(2026, 11, 23, 12, 0, 0) / 1000);
  constexpr int kThreads = 4, kLines = 200;
  {
    AsRunLog log(dir.path(), clock);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([&log, t] {
        for (int i = 0; i < kLines; ++i)
          log.append(AsRunAction::RecordEnd, asRunChannelText(false, t), "F" + std::to_string(t), "automation",
                     std::to_string(i));
      });
    for (std::thread& thread : threads) thread.join();
  }
  std::vector<AsRunEntry> read;
  ASSERT_TRUE(readAsRun(dir.path(), 0, INT64_MAX, read));
  ASSERT_EQ(read.size(), static_cast<size_t>(kThreads * kLines));
  int next[kThreads] = {};
  for (const AsRunEntry& e : read) {
    const int t = e.file[1] - '0';
    EXPECT_EQ(e.channel, "record " + std::to_string(t));
    EXPECT_EQ(e.action, "record end");
    EXPECT_EQ(e.milliseconds, at(2026, 11, 23, 12, 0, 0));
    EXPECT_EQ(e.result, std::to_string(next[t]++)) << "each thread's lines in its own order";
  }
}

TEST(AsRunCommand, PrintsTheLinesOfASpan) {
  TempDir dir;
  ManualClock clock;
  {
    AsRunLog log(dir.path(), clock);
    log.append(entry(at(2026, 11, 23, 9, 59, 59), "early"));
    log.append(entry(at(2026, 11, 23, 10, 0, 0), "kept"));
    log.append(entry(at(2026, 11, 23, 10, 0, 1), "late"));
  }
  std::string out, err;
  ASSERT_EQ(runCommand(ctl::kAsRunCommands, "asrun",
                       {"--logs", dir.path(), "--from", "23/11/26-10:00:00", "--to", "23/11/26-10:00:01"}, out, err),
            0)
      << err;
  EXPECT_EQ(out, "2026-11-23 10:00:00.000\tplay 1\tplay start\tkept\tschedule News sch3\tdone\n");
  ASSERT_EQ(runCommand(ctl::kAsRunCommands, "asrun", {"--logs", dir.path()}, out, err), 0);
  EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 3);
  // clang-format off
  const std::vector<ctl::Args> wrong = {{}, {"--logs"}, {"--logs", dir.file("none")}, {"--logs", dir.path(), "--from", "soon"},
                                        {"--logs", dir.path(), "--until", "23/11/26-10:00:00"}};
  // clang-format on
  for (const ctl::Args& args : wrong) {
    EXPECT_EQ(runCommand(ctl::kAsRunCommands, "asrun", args, out, err), 2) << (args.empty() ? "" : args.back());
    EXPECT_EQ(err.rfind("vantrctl: ", 0), 0u) << err;
  }
}

}  // namespace
}  // namespace vantr
