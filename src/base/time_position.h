// Text forms of audio times: positions, lengths and durations are signed
// 32-bit counts of ten-thousandths of a second.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantr {

constexpr int32_t kPositionUnitsPerSecond = 10000;

enum class PositionFormat {
  Milliseconds,  // " 0:00:00.000", the recorder's displays and stored durations
  Hundredths,    // " 0:00:00.00"
  Tenths,        // " 0:00:00.0", the play control window and schedule lists
  Seconds,       // " 0:00:00" (rounded at the tenth, then the tenth dropped)
};

// A length in frames at a sample rate as ten-thousandths of a second, and back,
// in integer steps that never overflow for lengths a 32-bit count can hold:
// (L / R) * 10000 + ((L mod R) * 10000) / R. A rate below 1 gives 0.
int32_t framesToTime(int32_t frames, int32_t rate);
// The frames in a tenth of a second at `rate`, kept within 20..8192: the
// length of a recorder's buffer and of a player's block.
int32_t framesPerTenthSecond(uint32_t rate);
// (T / 10000) * R + ((T mod 10000) * R) / 10000.
int32_t timeToFrames(int32_t time, int32_t rate);

// The sign character (a space, or '-'), then hours (not wrapped at 24),
// minutes, seconds and the decimals of the format, rounded at the last digit.
std::string formatPosition(int32_t position, PositionFormat format);

// Reads typed times: "1:30" is 90 s, "90" is 90 s, "-0.25" is -0.25 s; the
// fourth decimal counts, further ones do not; other characters are ignored.
int32_t parsePosition(std::string_view text);

}  // namespace vantr
