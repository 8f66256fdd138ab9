#include "audio/data/sample_format.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace vantr {
namespace {

// Each row maps a stored sample to a value (Read), a value to a stored sample
// (Write), or both ways (Both).
TEST(SampleScale, StoredSamplesAndValuesMapOntoEachOther) {
  enum Way { Read = 1, Write = 2, Both = 3 };
  const struct {
    Way way;
    std::vector<uint8_t> stored;
    int32_t value;
  } rows[] = {
      {Both, {0xFF}, 127 * 2048},  // 8-bit full scale sits at half the 16-bit level
      {Write, {0x80}, 1023},       // rounds half way: +1024 then >> 11
      {Write, {0x81}, 1024},
      {Both, {0xFF, 0x7F}, 0x7FFF0},
      {Both, {0x00, 0x80}, -0x80000},
      {Write, {0x00, 0x80}, 0x80000},  // no clipping: 32768 wraps to -32768
      {Both, {0x00, 0x00, 0xFF, 0x7F}, 0x7FFF0},
      {Read, {0xFF, 0x07, 0x00, 0x00}, 0},         // 2047 rounds down
      {Read, {0x00, 0x08, 0x00, 0x00}, 1},         // 2048 rounds up
      {Read, {0x00, 0xF8, 0xFF, 0x7F}, -0x80000},  // the rounding addition wraps once it reaches 2^31
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.stored.size() << "-byte sample, value " << row.value);
    int32_t value = 12345;
    std::vector<uint8_t> stored(row.stored.size(), 0xAA);
    switch (row.stored.size()) {
      case 1: LSFU8::toValues(row.stored.data(), &value, 1), LSFU8::fromValues(&row.value, stored.data(), 1); break;
      case 2: LSF16::toValues(row.stored.data(), &value, 1), LSF16::fromValues(&row.value, stored.data(), 1); break;
      default: LSF32::toValues(row.stored.data(), &value, 1), LSF32::fromValues(&row.value, stored.data(), 1); break;
    }
    EXPECT_TRUE(!(row.way & Read) || value == row.value) << "read as " << value;
    EXPECT_TRUE(!(row.way & Write) || stored == row.stored) << "written as " << testing::PrintToString(stored);
  }
}

}  // namespace
}  // namespace vantr
