// The one place the program learns and sets the time of day. Everything else
// asks a Clock, so tests can drive the program through days in a moment.
#pragma once

#include <cstdint>

namespace vantr {

class Clock {
 public:
  virtual ~Clock() = default;
  // The local wall clock as seconds since 1970 counted as if it were UTC.
  // Note: C time() is UTC and therefore not this value.
  virtual int64_t now() const = 0;
  // The same in milliseconds, for stamps finer than the second.
  virtual int64_t nowMilliseconds() const { return now() * 1000; }
  // Sets the local wall clock; false when the system refuses.
  virtual bool set(int64_t localSeconds) = 0;
};

// The machine's clock (GetLocalTime/SetLocalTime on Windows, localtime_r and
// settimeofday natively).
Clock& systemClock();

// A clock that stands still until told otherwise.
class ManualClock : public Clock {
 public:
  explicit ManualClock(int64_t start = 0) : m_now(start) {}
  int64_t now() const override { return m_now; }
  bool set(int64_t localSeconds) override {
    m_now = localSeconds;
    return true;
  }
  void advance(int64_t seconds) { m_now += seconds; }

 private:
  int64_t m_now;
};

}  // namespace vantr
