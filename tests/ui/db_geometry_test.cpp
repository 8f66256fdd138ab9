// What the Windows tests of the level controls cannot reach cheaply: the
// meter's clamping and bar count, the slider's value from the mouse over
// awkward ranges, and the typed level text.
#include "ui/db_geometry.h"

#include <gtest/gtest.h>

#include <vector>

#include "base/level.h"

namespace vantr {
namespace {

TEST(DbMeter, LevelsAreHeldInTheScaleAndBarsAtEight) {
  DbMeter meter;
  const int8_t levels[] = {20, -60, 127, -127, 5};
  meter.setLevels(levels, 5, 96, 40);
  const int8_t held[] = {12, -36, 12, -36, 5};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(meter.level(i), held[i]) << i;
  const std::vector<int8_t> ten(10, -6);
  meter.setLevels(ten.data(), ten.size(), 96, 40);
  EXPECT_EQ(meter.bars(), 8);
  EXPECT_EQ(meter.barRect(7, 96, 40), (PixelRect{0, 35, 96, 40}));
  EXPECT_EQ(meterLevelX(0, 55), 41);  // 36 * 55 / 48, rounded down
}

TEST(DbSlider, ValueFromMouseAndRanges) {
  DbSlider slider;
  slider.setRange(-36, 12);  // 48 dB over a 96-pixel slider
  const struct {
    int controlX, value;
  } mouse[] = {{0, -36}, {32 + 48, -12}, {32 + 71, -1}, {32 + 96, 12}, {32 + 500, 12}};
  for (const auto& r : mouse) EXPECT_EQ(slider.valueFromControlX(r.controlX, 96), r.value) << r.controlX;
  slider.setValue(12, 96, 20);
  EXPECT_EQ(slider.fills(96).thumbLeft, 93) << "the thumb stays inside the slider";

  slider.setRange(-60, 0);  // whatever the value, never a red part
  for (int v = -70; v <= 10; ++v) {
    slider.setValue(v, 96, 20);
    EXPECT_EQ(slider.fills(96).redEnd, slider.fills(96).greenEnd) << v;
  }
  slider.setRange(5, 5);  // a range of zero width still divides safely
  slider.setValue(-20, 96, 20);
  EXPECT_EQ(slider.value(), 5);
  EXPECT_EQ(slider.valueFromControlX(60, 0), 5);
}

TEST(DbLevelText, TypedTextAsTheTextBoxReadsIt) {
  const struct {
    const char* text;
    int level;
  } rows[] = {{"-", 0},   {"--dB", -127}, {"abc", 0},   {"-21dB", -21}, {"+6dB", 6},
              {"6-", -6}, {"-5-3", -127}, {"999", 127}, {"-12.5", -125}};
  for (const auto& r : rows) EXPECT_EQ(parseLevel(r.text), r.level) << '"' << r.text << '"';
  EXPECT_EQ(formatLevel(-126), "-126dB");
  EXPECT_EQ(formatLevel(-127), "--dB");
}

}  // namespace
}  // namespace vantr
