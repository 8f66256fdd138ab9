// The two-reading clock rule on a manual clock: each scenario is a series of
// time-set commands, and after each the clock's movement, whether it was set,
// and the remembered offset.
#include "automation/clock_keeper.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "schedule/schedule_time.h"

namespace vantr {
namespace {

// 05/03/24-14:07:00, counted independently of the program's calendar.
constexpr int64_t kStart = 1709647620;

// A clock that remembers whether it was set.
class WatchedClock : public ManualClock {
 public:
  using ManualClock::ManualClock;
  bool set(int64_t localSeconds) override {
    ++sets;
    return ManualClock::set(localSeconds);
  }
  int sets = 0;
};

struct Step {
  int64_t advance;               // the clock runs on by this much first
  std::optional<int64_t> ahead;  // the payload names the clock's time plus this
  const char* text;              // or this text, when ahead is empty
  int32_t offsetMinutes;
  bool set;       // the clock was set
  int64_t moved;  // by this much
  int32_t memory;
};

struct Scenario {
  const char* name;
  std::vector<Step> steps;
};

TEST(AutomationClock, MovesTheClockOnlyWhenTwoReadingsAgree) {
  const Scenario scenarios[] = {
      {"slow by 10 s twice, a second apart: forward 10 s at the second",
       {{0, 10, nullptr, 0, true, 0, 10}, {1, 10, nullptr, 0, true, 10, 0}}},
      {"a third agreeing reading after the move leaves it where it is",
       {{0, 10, nullptr, 0, true, 0, 10}, {1, 10, nullptr, 0, true, 10, 0}, {5, 0, nullptr, 0, true, 0, 0}}},
      {"forward by the smaller of two offsets",
       {{0, 20, nullptr, 0, true, 0, 20}, {1, 35, nullptr, 0, true, 20, 15}, {1, 15, nullptr, 0, true, 15, 0}}},
      {"40 s disagreement moves nothing, then the new value is remembered",
       {{0, 10, nullptr, 0, true, 0, 10}, {1, 50, nullptr, 0, false, 0, 50}, {1, 50, nullptr, 0, true, 50, 0}}},
      {"first command 40 s off: not set", {{0, 40, nullptr, 0, false, 0, 40}}},
      {"first command 29 s off: set to itself", {{0, 29, nullptr, 0, true, 0, 29}}},
      {"first command exactly 30 s off: not set", {{0, 30, nullptr, 0, false, 0, 30}}},
      {"first command -29 s off: set to itself", {{0, -29, nullptr, 0, true, 0, -29}}},
      {"first command exactly -30 s off: not set", {{0, -30, nullptr, 0, false, 0, -30}}},
      {"fast both times: back by the offset nearer to zero",
       {{0, -100, nullptr, 0, false, 0, -100}, {1, -90, nullptr, 0, true, -90, 0}}},
      {"fast, nearer first", {{0, -80, nullptr, 0, false, 0, -80}, {1, -95, nullptr, 0, true, -80, -15}}},
      {"opposite signs that agree: set, not moved",
       {{0, 10, nullptr, 0, true, 0, 10}, {0, -5, nullptr, 0, true, 0, -5}, {0, 3, nullptr, 0, true, 0, 3}}},
      {"an offset of 0 after a positive one moves nothing",
       {{0, 10, nullptr, 0, true, 0, 10}, {0, 0, nullptr, 0, true, 0, 0}}},
      {"one second slow twice moves one second", {{0, 1, nullptr, 0, true, 0, 1}, {0, 1, nullptr, 0, true, 1, 0}}},
      {"readings of a stored date-time, day first",
       {{0, std::nullopt, "05/03/24-14:07:09", 0, true, 0, 9}, {1, std::nullopt, "05/03/24-14:07:10", 0, true, 9, 0}}},
      {"a reading of another day is remembered only",
       {{0, std::nullopt, "03/05/24-14:07:00", 0, false, 0, 59 * 86400}}},
      {"timeoffsetmin is added to the reading", {{0, 0, nullptr, 2, false, 0, 120}, {1, 0, nullptr, 2, true, 120, 0}}},
      {"a negative timeoffsetmin",
       {{0, 60, nullptr, -1, true, 0, 0}, {0, 0, nullptr, -1, false, 0, -60}, {0, 0, nullptr, -1, true, -60, 0}}},
      // 1960 has no stored form: the parser leaves the clock's own time.
      {"a reading with no stored form is the clock's own time",
       {{0, std::nullopt, "01/01/1960-00:00:00", 0, true, 0, 0}}},
      {"such a reading with an offset moves the clock by the offset at the second",
       {{0, std::nullopt, "01/01/2050-00:00:00", 1, false, 0, 60},
        {0, std::nullopt, "01/01/1960-00:00:00", 1, true, 60, 0}}},
      {"a reading the parser takes as NEVER is remembered, not set",
       {{0, std::nullopt, "nonsense", 0, false, 0, 2147483647 - kStart}}},
  };
  for (const Scenario& scenario : scenarios) {
    SCOPED_TRACE(scenario.name);
    WatchedClock clock(kStart);
    ClockKeeper keeper(clock);
    EXPECT_EQ(keeper.memory(), 0);
    for (size_t i = 0; i < scenario.steps.size(); ++i) {
      const Step& step = scenario.steps[i];
      SCOPED_TRACE("step " + std::to_string(i));
      clock.advance(step.advance);
      const int64_t before = clock.now();
      const std::string payload =
          step.ahead ? FormatStoredDateTime(toScheduleTime(before + *step.ahead)) : std::string(step.text);
      const int setsBefore = clock.sets;
      EXPECT_EQ(keeper.timeSet(payload, step.offsetMinutes), step.set);
      EXPECT_EQ(clock.sets - setsBefore, step.set ? 1 : 0);
      EXPECT_EQ(clock.now() - before, step.moved);
      EXPECT_EQ(keeper.memory(), step.memory);
    }
  }
}

// Offsets far beyond 32 bits of seconds stay in the memory's range instead
// of wrapping round to a small value that could agree with the next reading.
TEST(AutomationClock, HugeOffsetsSaturateTheMemory) {
  ManualClock clock(kStart);
  ClockKeeper keeper(clock);
  EXPECT_FALSE(keeper.timeSet("01/01/1960", INT32_MAX));
  EXPECT_EQ(keeper.memory(), INT32_MAX);
  EXPECT_FALSE(keeper.timeSet("01/01/1960", INT32_MIN));
  EXPECT_EQ(keeper.memory(), INT32_MIN);
  EXPECT_EQ(clock.now(), kStart);
}

}  // namespace
}  // namespace vantr
