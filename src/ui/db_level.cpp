#include "ui/db_level.h"

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
      if (negative) number = 127;
      negative = true;
    } else if (c >= '0' && c <= '9') {
      number = number * 10 + (c - '0');
      if (number > 1000) number = 1000;  // clamped below anyway; keeps the walk from overflowing
    }
  }
  if (negative) number = -number;
  if (number > 127) number = 127;
  if (number < -127) number = -127;
  return static_cast<int8_t>(number);
}

}  // namespace vantr
