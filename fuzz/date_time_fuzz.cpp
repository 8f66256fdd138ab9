// Feeds arbitrary text to the parsers of typed dates and times, with every
// date order and a fixed now, on an absolute, an annual and a special base.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_check.h"
#include "schedule/schedule_time.h"

using vantr::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  constexpr int64_t kNow = 1795425000;  // 2026-11-23 09:10:00
  const vantr::ScheduleTime bases[] = {1078495629, 5753231, 0, -1, vantr::kNever};
  for (const vantr::ScheduleTime base : bases) {
    for (int order = 0; order < 4; ++order) {
      vantr::ScheduleTime value = base;
      vantr::ParseDate(value, text, order, kNow);
      vantr::ParseTime(value, text, kNow);
      (void)vantr::FormatDate(value, order);
    }
    vantr::ScheduleTime timed = base;
    vantr::ParseTime(timed, text, kNow);
    // The special values never take a time.
    if (base == 0 || base == vantr::kNever) check(timed == base);
  }
  const vantr::TimeOfDay seconds = vantr::ParseTimeOfDay(text);
  // Within a day the text form reads back to the same count.
  if (seconds < 86400) check(vantr::ParseTimeOfDay(vantr::FormatTimeOfDay(seconds)) == seconds);
  vantr::ScheduleTime value = 1078495629;
  vantr::SetTimeOfDay(value, seconds, kNow);
  vantr::MakeAnnual(value);
  (void)vantr::TimeOfDayOf(value);
  return 0;
}
