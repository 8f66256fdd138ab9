// The scheduler engine with a full table (1024 items across 64 schedule
// files): rebuilding it from the folder, one tick that catches up a minute,
// and vantrctl agenda's simulated ticks: the engine walked second by second
// against the agenda worked out from due second to due second.
#include <benchmark/benchmark.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "base/civil.h"
#include "base/file.h"
#include "schedule/agenda.h"
#include "schedule/scheduler.h"
#include "test_support/temp_dir.h"

namespace {

const int64_t kStart = vantr::secondsFromCivil({2004, 3, 1, 0, 0, 0});

// 64 files of 16 items: regular plays and recordings spread over the day,
// once items and deletes far ahead, so that every kind is walked.
const vantr::TempDir& fullFolder() {
  static vantr::TempDir* dir = [] {
    auto* d = new vantr::TempDir;
    for (int file = 0; file < 64; ++file) {
      std::string text = "[file]\r\nautomatedplay=0\r\nautomatedrecord=0\r\n";
      for (int slot = 0; slot < 16; ++slot) {
        const int n = file * 16 + slot;
        text += "[sch" + std::to_string(slot) + "]\r\n";
        switch (slot % 4) {
          case 0:
          case 1: {
            char time[16];
            std::snprintf(time, sizeof time, "%02d:%02d:%02d", n % 24, n * 7 % 60, n * 13 % 60);
            text += std::string("type=") + (slot % 4 == 0 ? "2" : "4") + "\r\nchan=" + std::to_string(n % 5 - 1) +
                    "\r\ntime=" + time + "\r\ndays=" + std::to_string(n % 127 + 1) +
                    "\r\ncommence=IMMEDIATE\r\nexpire=NEVER\r\nduration= 0:30:00.000\r\n";
            break;
          }
          case 2: text += "type=1\r\nchan=0\r\ndate=05/03/30-14:07:09\r\n"; break;
          default: text += "type=3\r\nchan=1\r\ndate=06/03/30-14:07:09\r\nduration= 1:00:00.000\r\n"; break;
        }
      }
      vantr::replaceFileContents(d->file("File" + std::to_string(file) + ".qsf"), text);
    }
    return d;
  }();
  return *dir;
}

class NullActions : public vantr::SchedulerActions {
 public:
  void play(const std::string&, int) override { ++starts; }
  void record(const std::string&, int, int32_t) override { ++starts; }
  void deleteFile(const std::string&) override {}
  void rebuild() override {}
  int64_t starts = 0;
};

void BM_RebuildFullTable(benchmark::State& state) {
  const std::string folder = fullFolder().path();
  auto table = std::make_unique<vantr::ScheduleTable>();
  for (auto _ : state) {
    vantr::RebuildSchedules(*table, folder, kStart);
    benchmark::DoNotOptimize(table->count);
  }
  if (table->count != 1024) state.SkipWithError("table not full");
}
BENCHMARK(BM_RebuildFullTable)->Unit(benchmark::kMillisecond);

void BM_TickCatchingUpAMinute(benchmark::State& state) {
  auto table = std::make_unique<vantr::ScheduleTable>();
  vantr::RebuildSchedules(*table, fullFolder().path(), kStart);
  NullActions actions;
  for (auto _ : state) {
    table->lastSecond = 0;  // as at the first tick: the last 60 seconds are walked
    vantr::SchedulerTick(*table, kStart + 43200, actions);
  }
  benchmark::DoNotOptimize(actions.starts);
}
BENCHMARK(BM_TickCatchingUpAMinute)->Unit(benchmark::kMicrosecond);

// What vantrctl agenda does with a step of 1 second, printing into memory:
// the engine ticked second by second against the agenda worked out from due
// second to due second, over the same 7 days; and the latter over a year.
class PrintingOutput : public vantr::AgendaOutput {
 public:
  void play(int64_t second, const std::string& name, int channel) override {
    m_out << second << " play " << name << " chan=" << channel << '\n';
  }
  void record(int64_t second, const std::string& name, int channel, int32_t duration) override {
    m_out << second << " record " << name << " chan=" << channel << " duration=" << duration << '\n';
  }
  void deleteFile(int64_t second, const std::string& name) override { m_out << second << " delete " << name << '\n'; }
  size_t printed() const { return m_out.str().size(); }

 private:
  std::ostringstream m_out;
};

using AgendaFunction = void (*)(std::vector<vantr::NamedSchedule>, int64_t, int64_t, int64_t, vantr::AgendaOutput&);

void runAgenda(benchmark::State& state, AgendaFunction agenda, int64_t days) {
  std::vector<vantr::NamedSchedule> files;
  vantr::loadNamedSchedules(fullFolder().path(), files);
  size_t printed = 0;
  for (auto _ : state) {
    PrintingOutput output;
    agenda(files, kStart, kStart + days * 86400, 1, output);
    printed = output.printed();
    benchmark::DoNotOptimize(printed);
  }
  state.counters["printed_bytes"] = static_cast<double>(printed);
}

void BM_AgendaWalkSevenDays(benchmark::State& state) { runAgenda(state, vantr::walkAgenda, 7); }
BENCHMARK(BM_AgendaWalkSevenDays)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_AgendaSevenDays(benchmark::State& state) { runAgenda(state, vantr::computeAgenda, 7); }
BENCHMARK(BM_AgendaSevenDays)->Unit(benchmark::kMillisecond);

void BM_AgendaYear(benchmark::State& state) { runAgenda(state, vantr::computeAgenda, 365); }
BENCHMARK(BM_AgendaYear)->Unit(benchmark::kMillisecond);

}  // namespace
