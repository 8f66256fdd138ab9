#include "automation/clock_keeper.h"

#include <algorithm>

#include "schedule/schedule_time.h"

namespace vantr {

namespace {

int32_t toMemory(int64_t seconds) { return static_cast<int32_t>(std::clamp<int64_t>(seconds, INT32_MIN, INT32_MAX)); }

}  // namespace

bool ClockKeeper::timeSet(std::string_view payload, int32_t offsetMinutes) {
  // The payload is read as the schedules' stored date-time and taken as it
  // comes out: the parser's own rules decide what odd text means (no digits
  // at all is 01/01/2000, a leading I or N is IMMEDIATE or NEVER). Text that
  // names no stored moment (before 1970, past 2038) leaves the parser's value
  // alone, and that value starts as the clock's own time: such a reading
  // counts as "now plus the offset minutes", which with no offset agrees with
  // a clock that is right and moves nothing.
  ScheduleTime parsed = toScheduleTime(m_clock.now());
  ParseStoredDateTime(parsed, payload);
  const int64_t target = static_cast<int64_t>(parsed) + static_cast<int64_t>(offsetMinutes) * 60;

  int64_t now = m_clock.now();
  // Offsets are kept in the memory's 32 bits so that both sides of the
  // comparison have the same range.
  const int64_t offset = toMemory(target - now);
  const int64_t previous = m_memory;
  const int64_t disagreement = offset - previous;
  bool set = false;
  if (disagreement > -kAgreementSeconds && disagreement < kAgreementSeconds) {
    if (offset >= 1 && previous >= 1)
      now += std::min(offset, previous);  // slow both times: forward by the smaller
    else if (offset < 0 && previous < 0)
      now += std::max(offset, previous);  // fast both times: back by the one nearer to zero
    m_clock.set(now);
    set = true;
  }
  m_memory = toMemory(target - now);
  return set;
}

}  // namespace vantr
