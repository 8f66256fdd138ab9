#include "base/level.h"

namespace vantr {

std::string formatLevel(int level) {
  if (level <= kNoLevel) return "--dB";
  return std::to_string(level) + "dB";
}

int8_t parseLevel(std::string_view text) {
  bool negative = false;
  int64_t number = 0;
  for (const char c : text) {
    if (c == '-') {
      if (negative) number = kMaxLevel;
      negative = true;
    } else if (c >= '0' && c <= '9') {
      number = number * 10 + (c - '0');
      if (number > 1000) number = 1000;  // clamped below anyway; keeps the walk from overflowing
    }
  }
  return clampLevel(static_cast<int>(negative ? -number : number));
}

}  // namespace vantr
