// Reads arbitrary text as a stored date-time and checks what the stored form
// promises: the reader never fails loudly, and whatever value it gives is
// written as text that reads back to the same value.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_check.h"
#include "schedule/schedule_time.h"

using vantr::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  vantr::ScheduleTime value = 77;
  vantr::ParseStoredDateTime(value, text);
  const std::string stored = vantr::FormatStoredDateTime(value);
  vantr::ScheduleTime back = 77;
  vantr::ParseStoredDateTime(back, stored);
  // Below 1 is all IMMEDIATE; an annual value outside real days (month 13)
  // or a value past 2069 may not come back, everything else must.
  if (value >= 1 && value < 32140802) check(back == value);
  if (value < 1) check(back == 0);
  if (value >= 32313600) check(back == value);
  (void)vantr::FormatDate(value, 0);
  (void)vantr::FormatDate(value, 1);
  (void)vantr::FormatDate(value, 2);
  (void)vantr::FormatTime(value);
  return 0;
}
