// The levels an engine reports for the meters: one signed dB value per
// channel, -127 meaning no level.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace vantr {

using LevelList = std::vector<int8_t>;

inline int8_t clampLevel(int level) { return static_cast<int8_t>(std::clamp(level, -127, 127)); }

// A level in whole dB from an exact one: rounded half away from zero, kept
// within -127..127.
inline int8_t levelFromDecibels(double db) { return clampLevel(static_cast<int>(db + (db >= 0 ? 0.5 : -0.5))); }

}  // namespace vantr
