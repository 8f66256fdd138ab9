// A sink for tests that keeps every value written in memory.
#pragma once

#include <vector>

#include "audio/data/sound_stream.h"

namespace vantr {

// Keeps every value written; setting the length truncates or pads with zeros.
class MemorySink : public LSoundSinkBase {
 public:
  MemorySink(uint32_t rate, uint8_t channels) : LSoundSinkBase(rate, 0x7FFF0, channels) {}
  void write(const int32_t* values, int32_t frames) override {
    m_values.insert(m_values.end(), values, values + static_cast<size_t>(frames) * channels());
    m_length += frames;
  }
  void setLength(int32_t frames) override {
    m_values.resize(static_cast<size_t>(frames) * channels(), 0);
    m_length = frames;
  }
  const std::vector<int32_t>& values() const { return m_values; }

 private:
  std::vector<int32_t> m_values;
};

}  // namespace vantr
