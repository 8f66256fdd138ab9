#include "ui/db_geometry.h"

#include <algorithm>

namespace vantr {

int meterLevelX(int level, int width) { return (level - kMeterFloor) * width / (kMeterCeiling - kMeterFloor); }

MeterBarFills meterBarFills(int level, int width) {
  const int greenEnd = meterLevelX(std::min(level, 0), width);
  return {greenEnd, level > 0 ? meterLevelX(level, width) : greenEnd};
}

PixelRect DbMeter::barRect(int bar, int width, int height) const {
  const int n = std::max(m_bars, 1);
  return {0, bar * height / n, width, (bar + 1) * height / n};
}

DbMeter::Update DbMeter::setLevels(const int8_t* levels, size_t count, int width, int height) {
  Update update;
  const int bars = static_cast<int>(std::min<size_t>(count, kMeterMaxBars));
  if (bars != m_bars) {
    m_bars = bars;
    update.whole = true;
  }
  for (int i = 0; i < bars; ++i) {
    const int8_t level = static_cast<int8_t>(std::clamp<int>(levels[i], kMeterFloor, kMeterCeiling));
    if (!update.whole && level != m_levels[i]) {
      const int oldX = meterLevelX(m_levels[i], width);
      const int newX = meterLevelX(level, width);
      PixelRect span = barRect(i, width, height);
      span.left = std::min(oldX, newX);
      span.right = std::max(oldX, newX);
      if (!span.empty()) update.spans.push_back(span);
    }
    m_levels[i] = level;
  }
  return update;
}

void DbSlider::setRange(int minimum, int maximum) {
  m_minimum = static_cast<int8_t>(std::clamp(minimum, -128, 127));
  m_maximum = static_cast<int8_t>(std::clamp(maximum, -128, 127));
}

int DbSlider::range() const { return std::max(m_maximum - m_minimum, 1); }

int DbSlider::xOf(int value, int width) const { return (value - m_minimum) * width / range(); }

DbSlider::Fills DbSlider::fills(int width) const {
  const int valueX = std::clamp(xOf(m_value, width), 0, width);
  const int zeroX = std::clamp(xOf(0, width), 0, width);
  Fills f{};
  if (m_value >= 0) {
    f.greenEnd = zeroX;
    f.redEnd = std::max(valueX, zeroX);
  } else {
    f.greenEnd = valueX;
    f.redEnd = valueX;
  }
  // The thumb never leaves the slider at the right end.
  f.thumbLeft = std::max(0, std::min(valueX, width - kThumbWidth));
  return f;
}

int DbSlider::valueFromControlX(int controlX, int width) const {
  const int w = std::max(width, 1);
  return m_minimum + std::clamp(controlX - kTextBoxWidth, 0, w) * (m_maximum - m_minimum) / w;
}

PixelRect DbSlider::setValue(int value, int width, int height) {
  // The range may be upside down while a dialog sets it up; the minimum wins.
  const int held = std::max<int>(std::min<int>(value, m_maximum), m_minimum);
  if (held == m_value) return {};
  const int oldX = xOf(m_value, width);
  const int newX = xOf(held, width);
  m_value = static_cast<int8_t>(held);
  return {std::min(oldX, newX) - 2, 0, std::max(oldX, newX) + 2 + kThumbWidth, height};
}

}  // namespace vantr
