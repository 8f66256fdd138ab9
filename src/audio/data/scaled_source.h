// A source brought down to a smaller full scale: every value is multiplied by
// target / the inner source's full scale. The player puts this in front of
// sources whose scale is larger than the 16-bit device can take.
#pragma once

#include "audio/data/sound_stream.h"

namespace vantr {

class ScaledSource : public LSoundSourceBase {
 public:
  ScaledSource(const LSoundSource& inner, uint32_t targetFullScale);

  int32_t read(int32_t* values, int32_t frames) override;
  void seek(int32_t frame) override { m_inner->seek(frame); }
  int32_t position() override { return m_inner->position(); }
  int32_t length() override { return m_inner->length(); }

 private:
  LSoundSource m_inner;
  uint32_t m_innerFullScale;
};

}  // namespace vantr
