// Sound levels in whole decibels, as the meters, the level edits and the
// settings files show them. -127 stands for "no level" and is written "--dB".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantr {

constexpr int8_t kNoLevel = -127;

// "%ddB", or "--dB" for -127 and below.
std::string formatLevel(int level);

// Walks every character: '-' marks the number negative and a second '-' makes
// it 127 (so "--dB" reads -127); digits accumulate; all else is ignored. The
// result is clamped to -127..127.
int8_t parseLevel(std::string_view text);

}  // namespace vantr
