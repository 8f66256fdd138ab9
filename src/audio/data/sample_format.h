// The common sample scale and the stored sample types.
//
// Between any source and any sink, samples are interleaved signed 32-bit
// values on one fixed-point scale on which a 16-bit sample is worth 16 times
// its stored value. Each stored type below maps to and from that scale with
// one small loop per direction. The maps are exact and never clip: writing a
// value outside a type's range keeps the low bits, as the stored width allows.
//
// Shifts and the rounding additions are done on unsigned values and the
// result taken back as signed, so that values near the ends of the 32-bit
// range wrap (as two's complement hardware does) instead of being undefined.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vantr {

namespace sample_bits {
inline int32_t shiftLeft(int32_t v, int bits) { return static_cast<int32_t>(static_cast<uint32_t>(v) << bits); }
// v + add with wrap-around, then an arithmetic shift right.
inline int32_t addShiftRight(int32_t v, uint32_t add, int bits) {
  return static_cast<int32_t>(static_cast<uint32_t>(v) + add) >> bits;
}
}  // namespace sample_bits

// 8-bit unsigned samples. They sit at half the level of 16-bit material on the
// common scale: the shift is 11, not 12, so full scale is 127 << 11.
struct LSFU8 {
  static constexpr int kBytesPerSample = 1;
  static constexpr uint32_t kFullScale = 0x3F800;

  static void toValues(const uint8_t* bytes, int32_t* values, size_t samples) {
    for (size_t i = 0; i < samples; ++i) {
      values[i] = sample_bits::shiftLeft(static_cast<int8_t>(bytes[i] ^ 0x80), 11);
    }
  }
  static void fromValues(const int32_t* values, uint8_t* bytes, size_t samples) {
    for (size_t i = 0; i < samples; ++i) {
      bytes[i] = static_cast<uint8_t>(sample_bits::addShiftRight(values[i], 1024, 11) + 128);
    }
  }
};

// 16-bit signed little-endian samples: the value is the sample times 16.
struct LSF16 {
  static constexpr int kBytesPerSample = 2;
  static constexpr uint32_t kFullScale = 0x7FFF0;

  static void toValues(const uint8_t* bytes, int32_t* values, size_t samples) {
    for (size_t i = 0; i < samples; ++i) {
      const int16_t sample = static_cast<int16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
      values[i] = sample_bits::shiftLeft(sample, 4);
    }
  }
  static void fromValues(const int32_t* values, uint8_t* bytes, size_t samples) {
    for (size_t i = 0; i < samples; ++i) {
      const uint32_t sample = static_cast<uint32_t>(sample_bits::addShiftRight(values[i], 8, 4));
      bytes[2 * i] = static_cast<uint8_t>(sample);
      bytes[2 * i + 1] = static_cast<uint8_t>(sample >> 8);
    }
  }
};

// 32-bit signed little-endian samples, also used for every PCM file of more
// than 16 bits per sample (a 24-bit file is thereby read as 4-byte groups,
// which misreads it; that is accepted).
struct LSF32 {
  static constexpr int kBytesPerSample = 4;
  static constexpr uint32_t kFullScale = 0x7FFF0;

  static void toValues(const uint8_t* bytes, int32_t* values, size_t samples) {
    for (size_t i = 0; i < samples; ++i) {
      const uint32_t sample = static_cast<uint32_t>(bytes[4 * i]) | (static_cast<uint32_t>(bytes[4 * i + 1]) << 8) |
                              (static_cast<uint32_t>(bytes[4 * i + 2]) << 16) |
                              (static_cast<uint32_t>(bytes[4 * i + 3]) << 24);
      values[i] = sample_bits::addShiftRight(static_cast<int32_t>(sample), 2048, 12);
    }
  }
  static void fromValues(const int32_t* values, uint8_t* bytes, size_t samples) {
    for (size_t i = 0; i < samples; ++i) {
      const uint32_t sample = static_cast<uint32_t>(values[i]) << 12;
      bytes[4 * i] = static_cast<uint8_t>(sample);
      bytes[4 * i + 1] = static_cast<uint8_t>(sample >> 8);
      bytes[4 * i + 2] = static_cast<uint8_t>(sample >> 16);
      bytes[4 * i + 3] = static_cast<uint8_t>(sample >> 24);
    }
  }
};

// Reads and writes of files go in chunks of at most this many frames, which
// sizes every conversion buffer.
constexpr int32_t kFramesPerChunk = 8192;

}  // namespace vantr
