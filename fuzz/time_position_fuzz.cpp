// Reads arbitrary text as a typed time position; every value it gives must
// format in each variant, and the millisecond form of a whole number of
// milliseconds must read back exactly.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/time_position.h"
#include "fuzz_check.h"

using vantr::fuzz::check;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const int32_t position = vantr::parsePosition(text);
  for (const auto format : {vantr::PositionFormat::Milliseconds, vantr::PositionFormat::Hundredths,
                            vantr::PositionFormat::Tenths, vantr::PositionFormat::Seconds}) {
    const std::string shown = vantr::formatPosition(position, format);
    check(!shown.empty() && (shown[0] == ' ' || shown[0] == '-'));
  }
  // Only whole milliseconds with no rounding carry survive the round trip;
  // INT32_MIN has no positive counterpart.
  if (position % 10 == 0 && position != INT32_MIN && position > -2000000000 && position < 2000000000) {
    check(vantr::parsePosition(vantr::formatPosition(position, vantr::PositionFormat::Milliseconds)) == position);
  }
  return 0;
}
