// Prints the engine's figures with a full table (1024 items across 64 files)
// in whatever build runs it, so that the Windows build can be measured under
// Wine too (the benchmarks proper are native only).
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "base/civil.h"
#include "base/file.h"
#include "schedule/scheduler.h"
#include "test_support/temp_dir.h"

namespace {

class NullActions : public vantr::SchedulerActions {
 public:
  void play(const std::string&, int) override {}
  void record(const std::string&, int, int32_t) override {}
  void deleteFile(const std::string&) override {}
  void rebuild() override {}
};

double millisecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main() {
  vantr::TempDir dir;
  for (int file = 0; file < 64; ++file) {
    std::string text;
    for (int slot = 0; slot < 16; ++slot) {
      const int n = file * 16 + slot;
      char time[16];
      std::snprintf(time, sizeof time, "%02d:%02d:%02d", n % 24, n * 7 % 60, n * 13 % 60);
      text += "[sch" + std::to_string(slot) + "]\r\ntype=" + std::to_string(slot % 4 + 1) +
              "\r\nchan=1\r\ntime=" + time + "\r\ndays=127\r\ndate=05/03/30-14:07:09\r\nduration= 0:30:00.000\r\n";
    }
    vantr::replaceFileContents(dir.file("File" + std::to_string(file) + ".qsf"), text);
  }
  const int64_t now = vantr::secondsFromCivil({2004, 3, 1, 12, 0, 0});
  auto table = std::make_unique<vantr::ScheduleTable>();
  constexpr int kRounds = 50;
  auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kRounds; ++i) vantr::RebuildSchedules(*table, dir.path(), now);
  std::printf("RebuildSchedules, %zu items in 64 files: %.3f ms\n", table->count, millisecondsSince(start) / kRounds);

  NullActions actions;
  constexpr int kTicks = 2000;
  start = std::chrono::steady_clock::now();
  for (int i = 0; i < kTicks; ++i) {
    table->lastSecond = 0;
    vantr::SchedulerTick(*table, now, actions);
  }
  std::printf("SchedulerTick catching up 60 s: %.1f us\n", millisecondsSince(start) * 1000 / kTicks);
  return table->count == vantr::ScheduleTable::kCapacity ? 0 : 1;
}
