#include "audio/data/sound_stream.h"

namespace vantr {

LSoundSourceBase::LSoundSourceBase(int32_t sampleRate, uint32_t fullScale, uint8_t channels)
    : m_sampleRate(sampleRate), m_fullScale(fullScale), m_channels(channels) {
  if (m_sampleRate < 1) {
    markFailed("sample rate " + std::to_string(m_sampleRate));
    m_sampleRate = 44100;
  }
  if (m_channels == 0) {
    m_channels = 1;
    markFailed("no channels");
  }
}

LSoundSinkBase::LSoundSinkBase(uint32_t sampleRate, uint32_t fullScale, uint8_t channels)
    : m_sampleRate(sampleRate), m_fullScale(fullScale), m_channels(channels) {
  if (m_channels == 0) {
    m_channels = 1;
    markFailed();
  }
}

void LSoundSinkBase::write(const int32_t*, int32_t frames) {
  if (frames > 0) m_length += frames;
}

void LSoundSinkBase::setLength(int32_t) {}

}  // namespace vantr
