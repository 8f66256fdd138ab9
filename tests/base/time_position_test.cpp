#include "base/time_position.h"

#include <gtest/gtest.h>

#include <climits>

namespace vantr {
namespace {

TEST(TimePosition, Formats) {
  using F = PositionFormat;
  struct Row {
    int32_t position;
    F format;
    const char* text;
  } rows[] = {
      {-15000, F::Tenths, "-0:00:01.5"},
      {9999, F::Milliseconds, " 0:00:01.000"},  // rounding carries into the seconds
      {19400, F::Seconds, " 0:00:01"},          // rounds at the tenth, then drops it
      {19500, F::Seconds, " 0:00:02"},
      {12355, F::Hundredths, " 0:00:01.24"},
      {18000000, F::Tenths, " 0:30:00.0"},
      {36000000 * 30, F::Seconds, " 30:00:00"},  // hours are not wrapped at 24
      {INT_MAX, F::Milliseconds, " 59:39:08.365"},
      {INT_MIN, F::Milliseconds, "-59:39:08.365"},
  };
  for (const Row& row : rows) EXPECT_EQ(formatPosition(row.position, row.format), row.text) << row.position;
}

TEST(TimePosition, Parses) {
  struct Row {
    const char* text;
    int32_t position;
  } rows[] = {
      {"1:02:03.5", 37235000}, {"-0.25", -2500}, {"90", 900000},
      {"12.34567", 123456},    {"", 0},          {" 4:00:00.000", 144000000},
      {"1.5.5", 15500},    // a second point does nothing
      {"1.5:1", 900100},   // ":" after the point still multiplies by 60
      {"0:-30", -300000},  // '-' anywhere negates the whole
      {"abc7", 70000},
  };
  for (const Row& row : rows) EXPECT_EQ(parsePosition(row.text), row.position) << '"' << row.text << '"';
}

TEST(TimePosition, MillisecondTextRoundTrips) {
  for (int32_t t : {0, 10, 9990, -37235000, 2147483640}) {
    EXPECT_EQ(parsePosition(formatPosition(t, PositionFormat::Milliseconds)), t) << t;
  }
}

}  // namespace
}  // namespace vantr
