#include "audio/data/tone_source.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/time_position.h"

namespace vantr {

namespace {

const std::array<int32_t, LSRCSineTone::kTablePoints>& sineTable() {
  static const auto table = [] {
    std::array<int32_t, LSRCSineTone::kTablePoints> t{};
    for (int i = 0; i < LSRCSineTone::kTablePoints; ++i)
      t[i] = static_cast<int32_t>(
          std::lround(LSRCSineTone::kAmplitude * std::sin(2.0 * M_PI * i / LSRCSineTone::kTablePoints)));
    return t;
  }();
  return table;
}

}  // namespace

LSRCSineTone::LSRCSineTone() : LSoundSourceBase(kRate, 0x7FFF0, 1), m_length(timeToFrames(kMaxDuration, kRate)) {}

int32_t LSRCSineTone::read(int32_t* values, int32_t frames) {
  const auto& table = sineTable();
  const int32_t count = std::max(0, std::min(frames, m_length - m_position));
  for (int32_t i = 0; i < count; ++i) {
    const int64_t frame = static_cast<int64_t>(m_position) + i;
    // The table point of this frame, from the frame number itself, so a seek
    // lands on the same phase as playing up to it.
    values[i] = frame < 0 ? 0 : table[(frame * kFrequency * kTablePoints / kRate) % kTablePoints];
  }
  m_position += count;
  return count;
}

}  // namespace vantr
