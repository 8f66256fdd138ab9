// What the audio tests share: a source of known values, a sink that keeps what
// it is given, one listener that writes down every notification of a recorder
// or a player, a test signal and its analysis, and WAV files built by hand.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "audio/data/sound_stream.h"
#include "audio/play/sound_player.h"
#include "audio/record/sound_recorder.h"
#include "base/file.h"

namespace vantr {

// A source whose frame f holds value(f, c) on channel c; by default the ramp
// (f + 1) * 16 + c, which makes every frame recognisable.
class RampSource : public LSoundSourceBase {
 public:
  using Values = std::function<int32_t(int32_t frame, int channel)>;
  RampSource(int32_t rate, uint8_t channels, int32_t length, uint32_t fullScale = 0x7FFF0, Values value = nullptr)
      : LSoundSourceBase(rate, fullScale, channels), m_length(length), m_value(std::move(value)) {
    if (!m_value) m_value = [](int32_t f, int c) { return (f + 1) * 16 + c; };
  }
  int32_t read(int32_t* values, int32_t frames) override {
    const int32_t n = std::max(0, std::min(frames, m_length - m_position));
    for (int32_t f = 0; f < n; ++f)
      for (int c = 0; c < channels(); ++c) values[f * channels() + c] = m_value(m_position + f, c);
    m_position += n;
    return n;
  }
  void seek(int32_t frame) override { m_position = frame; }
  int32_t position() override { return m_position; }
  int32_t length() override { return m_length; }

 private:
  int32_t m_position = 0;
  int32_t m_length;
  Values m_value;
};

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

// Every notification of a recorder or a player as a line of text, in order
// ("waiting 3", "levels -127 3", "position 1500 3"; "levels 3" when there are
// none), and the latest position and levels as values for checks with a
// tolerance. Listens to one engine at a time: "stopped" is either's.
class EngineEvents : public RecorderListener, public LSoundPlayerNotify {
 public:
  std::vector<std::string> seen;
  int32_t lastPosition = -1;
  LevelList lastLevels;
  int meterReadings = 0;   // level reports that carry levels: one per buffer or block
  bool offThread = false;  // a notification came on a thread other than the one that made this
  int count(const std::string& word) const {
    int n = 0;
    for (const std::string& line : seen) n += line.rfind(word + ' ', 0) == 0;
    return n;
  }

  void recordingStarted(uint32_t c) override { note("started", c); }
  void waitingForSound(uint32_t c) override { note("waiting", c); }
  void recordingStopped(uint32_t c) override { note("stopped", c); }
  void recordPosition(int32_t time, uint32_t c) override { position(time, c); }
  void recordLevels(const LevelList& levels, uint32_t c) override { this->levels(levels, c); }

  void playing(uint32_t u) override { note("playing", u); }
  void stopped(uint32_t u) override { note("stopped", u); }
  void cueStarted(uint32_t u) override { note("cue", u); }
  void paused(uint32_t u) override { note("paused", u); }
  void position(int32_t time, uint32_t u) override { note("position " + std::to_string(lastPosition = time), u); }
  void levels(const LevelList& levels, uint32_t u) override {
    std::string line = "levels";
    for (int8_t level : levels) line += ' ' + std::to_string(level);
    meterReadings += !(lastLevels = levels).empty();
    note(line, u);
  }

 private:
  void note(const std::string& what, uint32_t who) {
    offThread |= std::this_thread::get_id() != m_owner;
    seen.push_back(what + ' ' + std::to_string(who));
  }
  const std::thread::id m_owner = std::this_thread::get_id();
};

// Writes frames of a 16-bit sine of hz into s from start on.
inline void addSine(std::vector<int16_t>& s, size_t start, size_t frames, double amplitude, double hz, int rate) {
  for (size_t i = 0; i < frames; ++i)
    s[start + i] = static_cast<int16_t>(std::lround(amplitude * std::sin(2 * M_PI * hz * i / rate)));
}

// One analysis of a recorded tone, in 10 ms steps: the peak of each
// step says where the tone is; over the middle quarter second of its longest
// unbroken stretch, Goertzel's algorithm finds the strongest frequency from
// 250 Hz to 4 kHz, to half a hertz, and its level.
struct StepRun {
  int first, last;
  int steps() const { return last - first + 1; }
};
struct ToneAnalysis {
  std::vector<int32_t> peaks;  // of each whole step, in 16-bit units
  std::vector<StepRun> runs;   // of consecutive steps whose peak reaches the threshold
  double hz = 0;
  double decibels = -1000;  // against a 0 dB sine, a 16-bit amplitude of 8192
};

inline ToneAnalysis analyseTone(const std::vector<int32_t>& v, int rate, int32_t threshold) {
  ToneAnalysis a;
  const size_t step = static_cast<size_t>(rate / 100), n = 25 * step;
  for (size_t k = 0; k + step <= v.size(); k += step) {
    int32_t peak = 0;
    for (size_t i = k; i < k + step; ++i) peak = std::max(peak, std::abs(v[i]) / 16);
    const int at = static_cast<int>(a.peaks.size());
    a.peaks.push_back(peak);
    if (peak >= threshold && !a.runs.empty() && a.runs.back().last == at - 1)
      a.runs.back().last = at;
    else if (peak >= threshold)
      a.runs.push_back({at, at});
  }
  const auto longest = std::max_element(a.runs.begin(), a.runs.end(),
                                        [](const StepRun& x, const StepRun& y) { return x.steps() < y.steps(); });
  if (longest == a.runs.end() || longest->steps() < 25) return a;
  const int32_t* w = v.data() + static_cast<size_t>(longest->first + longest->last - 24) / 2 * step;
  double best = 0;
  for (double hz = 250; hz <= 4000; hz += 0.5) {
    const double c = 2 * std::cos(2 * M_PI * hz / rate);
    double s1 = 0, s2 = 0;
    for (size_t i = 0; i < n; ++i) s2 = std::exchange(s1, w[i] + c * s1 - s2);
    const double power = s1 * s1 + s2 * s2 - c * s1 * s2;
    if (power > best) best = power, a.hz = hz;
  }
  // A sine of amplitude A gives a power of (A n / 2)^2 at its own frequency.
  a.decibels = 20 * std::log10(2 * std::sqrt(best) / static_cast<double>(n) / (8192.0 * 16));
  return a;
}

// Every value a source delivers from its position on, read n frames at a time.
inline std::vector<int32_t> readAll(LSoundSourceBase& source, int32_t n) {
  std::vector<int32_t> all, buffer(static_cast<size_t>(n) * source.channels());
  for (int32_t got; (got = source.read(buffer.data(), n)) > 0;)
    all.insert(all.end(), buffer.begin(), buffer.begin() + static_cast<ptrdiff_t>(got) * source.channels());
  return all;
}

// WAV files byte by byte.
namespace wavtest {

inline std::string fileBytes(const std::string& path) {
  std::string bytes;
  return readWholeFile(path, bytes) ? bytes : "";
}
inline void writeBytes(const std::string& path, const std::string& bytes) {
  File(path, FileMode::Write).write(bytes.data(), bytes.size());
}

// The little-endian 32-bit field at offset.
inline uint32_t u32At(const std::string& bytes, size_t offset) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + offset);
  return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

inline std::string le16(uint32_t v) { return {static_cast<char>(v), static_cast<char>(v >> 8)}; }
inline std::string le32(uint32_t v) { return le16(v) + le16(v >> 16); }
inline std::string chunk(const char* id, uint32_t size, const std::string& body) {
  return std::string(id, 4) + le32(size) + body;
}
inline std::string riff(const std::string& chunks) {
  return "RIFF" + le32(uint32_t(chunks.size() + 4)) + "WAVE" + chunks;
}

// A PCM fmt chunk, header included, whose body is cut or padded to fmtSize.
inline std::string fmtChunk(uint16_t channels, uint32_t rate, uint16_t bits, uint32_t fmtSize = 16) {
  const uint32_t block = channels * ((bits + 7u) / 8u);
  std::string body = le16(1) + le16(channels) + le32(rate) + le32(rate * block) + le16(block) + le16(bits);
  body.resize(fmtSize, '\0');
  return chunk("fmt ", fmtSize, body);
}

}  // namespace wavtest
}  // namespace vantr
