// What the level meter and the level slider show, and what must be repainted
// when their values change, in plain pixel arithmetic so it is tested without
// windows. The window classes (db_display_win.cpp, db_edit_win.cpp) only turn
// these numbers into GDI calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vantr {

// A rectangle of pixels, right and bottom excluded.
struct PixelRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  bool empty() const { return right <= left || bottom <= top; }
  bool operator==(const PixelRect& o) const {
    return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
  }
};

// The meter's scale: -36 dB at the left edge, +12 dB at the right, so 0 dB
// stands at three quarters of the width.
constexpr int kMeterFloor = -36;
constexpr int kMeterCeiling = 12;
constexpr int kMeterMaxBars = 8;

int meterLevelX(int level, int width);

// Where the three fills of one bar end: green from the left edge to greenEnd,
// red from greenEnd to redEnd (only for a level above 0 dB), black from redEnd
// to the right edge.
struct MeterBarFills {
  int greenEnd;
  int redEnd;
};
MeterBarFills meterBarFills(int level, int width);

// The meter's state: up to eight bars, each with a level held in -36..+12.
class DbMeter {
 public:
  // What has to be repainted after a change of levels.
  struct Update {
    bool whole = false;
    std::vector<PixelRect> spans;
    bool nothing() const { return !whole && spans.empty(); }
  };

  // Shows one bar per level, at most eight; width and height are the bar
  // area's. When the number of bars is unchanged only the span between each
  // bar's old and new level is repainted, otherwise the whole meter.
  Update setLevels(const int8_t* levels, size_t count, int width, int height);
  Update setLevel(int8_t level, int width, int height) { return setLevels(&level, 1, width, height); }

  int bars() const { return m_bars; }
  int8_t level(int bar) const { return m_levels[bar]; }
  // The rows of bar i: from i*height/n to (i+1)*height/n.
  PixelRect barRect(int bar, int width, int height) const;

 private:
  int m_bars = 0;
  int8_t m_levels[kMeterMaxBars] = {};
};

// The level slider: a value between a minimum and a maximum set by the dialog
// that owns it, drawn across a slider of width w (the control less its text
// box). Positions here are relative to the slider's left edge.
class DbSlider {
 public:
  // The text box at the control's left is this wide; the slider starts here.
  static constexpr int kTextBoxWidth = 32;
  static constexpr int kThumbWidth = 3;

  struct Fills {
    int greenEnd;   // dark green from 0 to here
    int redEnd;     // red from greenEnd to here (value at or above 0 dB)
    int thumbLeft;  // the thumb's three columns start here
  };

  int8_t value() const { return m_value; }
  int8_t minimum() const { return m_minimum; }
  int8_t maximum() const { return m_maximum; }
  void setRange(int minimum, int maximum);

  int valueX(int width) const { return xOf(m_value, width); }
  Fills fills(int width) const;

  // The value a mouse at control x (text box included) points at.
  int valueFromControlX(int controlX, int width) const;

  // Sets the value, held in minimum..maximum, and answers the columns of the
  // slider to repaint: between the old and the new x, two pixels wider on each
  // side; empty when the value did not change.
  PixelRect setValue(int value, int width, int height);

 private:
  int range() const;
  int xOf(int value, int width) const;

  int8_t m_value = 0;
  int8_t m_minimum = -36;
  int8_t m_maximum = 12;
};

}  // namespace vantr
