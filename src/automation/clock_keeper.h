// The rule by which the serial line sets the machine's clock. The equipment
// sends its time now and then; one reading alone never moves the clock, since
// a single garbled or stale reading must not throw the station's schedules
// off. The clock moves only when two readings in a row agree (their offsets
// from the machine's clock differ by less than 30 s), and then only by the
// smaller of the two offsets, in their common direction.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/clock.h"

namespace vantr {

class ClockKeeper {
 public:
  // Two readings agree when their offsets differ by less than this.
  static constexpr int64_t kAgreementSeconds = 30;

  explicit ClockKeeper(Clock& clock) : m_clock(clock) {}

  // Takes one time-set payload (the stored date-time form,
  // "05/03/24-14:07:09"), with offsetMinutes added to the time it names.
  // True when it set the clock (possibly to the time it already showed).
  bool timeSet(std::string_view payload, int32_t offsetMinutes);

  // The offset of the last reading from the clock as it was left, in seconds.
  int32_t memory() const { return m_memory; }

 private:
  Clock& m_clock;
  int32_t m_memory = 0;
};

}  // namespace vantr
