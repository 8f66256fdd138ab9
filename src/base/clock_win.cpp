#include <windows.h>

#include "base/civil.h"
#include "base/clock.h"

namespace vantr {
namespace {

class WindowsClock : public Clock {
 public:
  int64_t now() const override { return nowMilliseconds() / 1000; }

  int64_t nowMilliseconds() const override {
    SYSTEMTIME st;
    GetLocalTime(&st);
    CivilTime t;
    t.year = st.wYear;
    t.month = st.wMonth;
    t.day = st.wDay;
    t.hour = st.wHour;
    t.minute = st.wMinute;
    t.second = st.wSecond;
    return secondsFromCivil(t) * 1000 + st.wMilliseconds;
  }

  bool set(int64_t localSeconds) override {
    const CivilTime t = civilFromSeconds(localSeconds);
    if (t.year < 1601 || t.year > 30827) return false;
    SYSTEMTIME st{};
    st.wYear = static_cast<WORD>(t.year);
    st.wMonth = static_cast<WORD>(t.month);
    st.wDay = static_cast<WORD>(t.day);
    st.wHour = static_cast<WORD>(t.hour);
    st.wMinute = static_cast<WORD>(t.minute);
    st.wSecond = static_cast<WORD>(t.second);
    st.wDayOfWeek = static_cast<WORD>(weekdayFromDays(floorDiv(localSeconds, kSecondsPerDay)));
    return SetLocalTime(&st) != FALSE;
  }
};

}  // namespace

Clock& systemClock() {
  static WindowsClock clock;
  return clock;
}

}  // namespace vantr
