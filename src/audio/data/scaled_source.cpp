#include "audio/data/scaled_source.h"

namespace vantr {

ScaledSource::ScaledSource(const LSoundSource& inner, uint32_t targetFullScale)
    : LSoundSourceBase(inner ? inner->sampleRate() : 0, targetFullScale, inner ? inner->channels() : 0),
      m_inner(inner),
      m_innerFullScale(inner ? inner->fullScale() : 0) {
  if (!m_inner)
    markFailed("no source to scale");
  else if (m_inner->failed())
    markFailed(m_inner->failure());
  else if (m_innerFullScale == 0)
    markFailed("source of full scale 0");
}

int32_t ScaledSource::read(int32_t* values, int32_t frames) {
  if (failed()) return 0;
  const int32_t got = m_inner->read(values, frames);
  const int64_t samples = static_cast<int64_t>(got > 0 ? got : 0) * channels();
  for (int64_t i = 0; i < samples; ++i)
    values[i] = static_cast<int32_t>(static_cast<int64_t>(values[i]) * fullScale() / m_innerFullScale);
  return got;
}

}  // namespace vantr
