#include "base/time_position.h"

#include <algorithm>
#include <cstdio>

namespace vantr {

int32_t framesToTime(int32_t frames, int32_t rate) {
  if (rate < 1) return 0;
  const int64_t whole = frames / rate;
  const int64_t part = static_cast<int64_t>(frames % rate) * kPositionUnitsPerSecond / rate;
  return static_cast<int32_t>(whole * kPositionUnitsPerSecond + part);
}

int32_t timeToFrames(int32_t time, int32_t rate) {
  const int64_t whole = static_cast<int64_t>(time / kPositionUnitsPerSecond) * rate;
  const int64_t part = static_cast<int64_t>(time % kPositionUnitsPerSecond) * rate / kPositionUnitsPerSecond;
  return static_cast<int32_t>(whole + part);
}

std::string formatPosition(int32_t position, PositionFormat format) {
  // Worked in 64 bits: the absolute value of INT32_MIN and the rounding
  // addition both overflow 32 bits.
  int64_t t = position < 0 ? -static_cast<int64_t>(position) : position;
  static constexpr int64_t kRounding[] = {5, 50, 500, 500};
  t += kRounding[static_cast<int>(format)];
  const long long hours = t / 36000000;
  const long long minutes = t / 600000 % 60;
  const long long seconds = t / 10000 % 60;
  const long long fraction = t % 10000;
  const char sign = position < 0 ? '-' : ' ';
  char text[48];
  switch (format) {
    case PositionFormat::Milliseconds:
      std::snprintf(text, sizeof text, "%c%lld:%.2lld:%.2lld.%.3lld", sign, hours, minutes, seconds, fraction / 10);
      break;
    case PositionFormat::Hundredths:
      std::snprintf(text, sizeof text, "%c%lld:%.2lld:%.2lld.%.2lld", sign, hours, minutes, seconds, fraction / 100);
      break;
    case PositionFormat::Tenths:
      std::snprintf(text, sizeof text, "%c%lld:%.2lld:%.2lld.%.1lld", sign, hours, minutes, seconds, fraction / 1000);
      break;
    case PositionFormat::Seconds:
      std::snprintf(text, sizeof text, "%c%lld:%.2lld:%.2lld", sign, hours, minutes, seconds);
      break;
  }
  return text;
}

int32_t parsePosition(std::string_view text) {
  // Accumulated with 32-bit wrap-around, as the stored durations always were;
  // unsigned arithmetic keeps absurd typed text from being undefined behaviour.
  uint32_t result = 0;
  uint32_t field = 0;
  int32_t weight = 10000;
  bool negative = false;
  for (const char c : text) {
    if (c == '-') {
      negative = true;
    } else if (c == '.') {
      if (weight == 10000) weight = 1000;
    } else if (c == ':') {
      result *= 60;
      field = 0;
    } else if (c >= '0' && c <= '9') {
      const uint32_t digit = static_cast<uint32_t>(c - '0');
      if (weight < 10000) {
        result += digit * static_cast<uint32_t>(weight);
        weight /= 10;
      } else {
        result += 9 * field + digit * 10000;
        field = digit * 10000 + 10 * field;
      }
    }
  }
  if (negative) result = 0u - result;
  return static_cast<int32_t>(result);
}

int32_t framesPerTenthSecond(uint32_t rate) { return static_cast<int32_t>(std::clamp<uint32_t>(rate / 10, 20, 8192)); }

}  // namespace vantr
