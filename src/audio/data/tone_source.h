// The test tone: a 1000 Hz sine at 0 dB on the program's level scale (a 16-bit
// amplitude of 8192), 44100 Hz, one channel, computed from a table of 4096
// points of one period, and at most six hours long.
#pragma once

#include "audio/data/sound_stream.h"

namespace vantr {

class LSRCSineTone : public LSoundSourceBase {
 public:
  static constexpr int32_t kRate = 44100;
  static constexpr int32_t kFrequency = 1000;
  static constexpr int kTablePoints = 4096;
  static constexpr int32_t kAmplitude = 8192 * 16;
  // Six hours in ten-thousandths of a second.
  static constexpr int32_t kMaxDuration = 216000000;

  LSRCSineTone();

  int32_t read(int32_t* values, int32_t frames) override;
  void seek(int32_t frame) override { m_position = frame; }
  int32_t position() override { return m_position; }
  int32_t length() override { return m_length; }

 private:
  int32_t m_position = 0;
  int32_t m_length;
};

}  // namespace vantr
