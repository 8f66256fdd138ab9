// Sound levels in whole decibels, as the engines report them and the meters,
// the level edits and the settings files show them. kNoLevel (-127) stands for
// "no level" and is written "--dB".
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantr {

constexpr int8_t kNoLevel = -127;
constexpr int8_t kMaxLevel = 127;

// One level per channel, as an engine reports them.
using LevelList = std::vector<int8_t>;

inline int8_t clampLevel(int level) { return static_cast<int8_t>(std::clamp<int>(level, kNoLevel, kMaxLevel)); }

// A level in whole dB from an exact one: rounded half away from zero, kept
// within kNoLevel..kMaxLevel.
inline int8_t levelFromDecibels(double db) { return clampLevel(static_cast<int>(db + (db >= 0 ? 0.5 : -0.5))); }

// "%ddB", or "--dB" for kNoLevel and below.
std::string formatLevel(int level);

// Walks every character: '-' marks the number negative and a second '-' makes
// it 127 (so "--dB" reads -127); digits accumulate; all else is ignored. The
// result is clamped to kNoLevel..kMaxLevel.
int8_t parseLevel(std::string_view text);

}  // namespace vantr
