#include <sys/time.h>

#include <ctime>

#include "base/civil.h"
#include "base/clock.h"

namespace vantr {
namespace {

class PosixClock : public Clock {
 public:
  int64_t now() const override { return nowMilliseconds() / 1000; }

  int64_t nowMilliseconds() const override {
    struct timespec ts {};
    clock_gettime(CLOCK_REALTIME, &ts);
    const time_t utc = ts.tv_sec;
    struct tm local {};
    localtime_r(&utc, &local);
    CivilTime t;
    t.year = local.tm_year + 1900;
    t.month = local.tm_mon + 1;
    t.day = local.tm_mday;
    t.hour = local.tm_hour;
    t.minute = local.tm_min;
    t.second = local.tm_sec;
    return secondsFromCivil(t) * 1000 + ts.tv_nsec / 1000000;
  }

  bool set(int64_t localSeconds) override {
    // Move the system clock by the difference between the wanted and the
    // current local wall clock, which keeps the host's own zone rules out.
    struct timeval tv {};
    if (gettimeofday(&tv, nullptr) != 0) return false;
    tv.tv_sec += static_cast<time_t>(localSeconds - now());
    return settimeofday(&tv, nullptr) == 0;
  }
};

}  // namespace

Clock& systemClock() {
  static PosixClock clock;
  return clock;
}

}  // namespace vantr
