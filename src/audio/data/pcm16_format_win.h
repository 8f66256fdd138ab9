// The format every wave device of the program is opened with: 16-bit PCM of
// the stream's channels and rate.
#pragma once

#include <windows.h>

#include <mmreg.h>

#include <cstdint>

namespace vantr {

inline WAVEFORMATEX pcm16Format(uint8_t channels, uint32_t rate) {
  WAVEFORMATEX format{};
  format.wFormatTag = WAVE_FORMAT_PCM;
  format.nChannels = channels;
  format.nSamplesPerSec = rate;
  format.wBitsPerSample = 16;
  format.nBlockAlign = static_cast<WORD>(channels * 2);
  format.nAvgBytesPerSec = rate * format.nBlockAlign;
  format.cbSize = 0;
  return format;
}

}  // namespace vantr
