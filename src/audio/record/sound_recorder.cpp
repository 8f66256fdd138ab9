#include "audio/record/sound_recorder.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "base/time_position.h"

namespace vantr {

namespace {

// A silence longer than the limit is cut back to this long after the last loud moment.
constexpr int32_t kSilenceKept = 7000;
// At Stop the tail after the last loud moment is cut back to this.
constexpr int32_t kTailKept = 500;
// 0 dB on the common scale: a 16-bit amplitude of 8192, times 16.
constexpr double kZeroDbPeak = 131072.0;

}  // namespace

int8_t peakLevel(const int32_t* values, int32_t frames, int channels, int channel) {
  int64_t largest = 0, smallest = 0;
  for (int32_t f = 0; f < frames; ++f) {
    const int64_t v = values[static_cast<size_t>(f) * channels + channel];
    largest = std::max(largest, v);
    smallest = std::min(smallest, v);
  }
  const int64_t peak = std::max(largest, -smallest);
  if (peak == 0) return kNoLevel;
  return levelFromDecibels(20.0 * std::log10(static_cast<double>(peak) / kZeroDbPeak));
}

int32_t LSoundRecorder::outputTime() const {
  return framesToTime(m_output->length(), static_cast<int32_t>(m_output->sampleRate()));
}

bool LSoundRecorder::Start(const LSoundSink& output, int32_t maxDuration, int8_t trimLevel, int32_t silenceLimit) {
  if (m_state != State::Idle) Stop();
  if (!output || output->failed()) return false;

  const uint32_t rate = output->sampleRate();
  const uint8_t channels = output->channels();
  m_framesPerBuffer = framesPerTenthSecond(rate);
  m_samplesPerBuffer = m_framesPerBuffer * channels;
  m_work.assign(m_samplesPerBuffer, 0);
  m_preRoll.assign(m_samplesPerBuffer, 0);

  // A device that cannot deliver the format itself may still do it through
  // the system's converter.
  if (!m_device.open(m_deviceIndex, channels, rate, false) && !m_device.open(m_deviceIndex, channels, rate, true)) {
    m_work.clear();
    m_preRoll.clear();
    return false;
  }
  // The device runs before its buffers arrive; a slot that cannot be had is
  // skipped and the recording runs with fewer buffers.
  m_device.start();
  for (int slot = 0; slot < CaptureDevice::kSlots; ++slot)
    m_device.addBuffer(slot, static_cast<size_t>(m_samplesPerBuffer) * sizeof(int16_t));

  m_state = State::Waiting;
  m_output = output;
  m_maxDuration = maxDuration;
  m_startThreshold = clampLevel(trimLevel + 2);
  m_stopThreshold = clampLevel(trimLevel - 3);
  m_silenceLimit = silenceLimit;
  m_lastLoud = outputTime();

  m_levels.clear();
  if (m_listener) {
    m_listener->waitingForSound(m_cookie);
    m_listener->recordPosition(m_lastLoud, m_cookie);
    m_listener->recordLevels(m_levels, m_cookie);
  }
  return true;
}

void LSoundRecorder::OnBufferDone(int slot) {
  if (!m_device.takeFilled(slot) || m_state == State::Idle) return;

  // Every buffer counts as full, whatever the device says it recorded.
  const int16_t* samples = m_device.samples(slot);
  for (int32_t i = 0; i < m_samplesPerBuffer; ++i)
    m_work[i] = static_cast<int32_t>(static_cast<uint32_t>(static_cast<int32_t>(samples[i])) << 4);
  m_device.requeue(slot);

  measure(m_framesPerBuffer);
  if (m_state == State::Waiting)
    OnWaiting();
  else
    OnRecording();
}

void LSoundRecorder::measure(int32_t frames) {
  const int channels = m_output->channels();
  m_levels.resize(channels);
  for (int c = 0; c < channels; ++c) m_levels[c] = peakLevel(m_work.data(), frames, channels, c);
}

int8_t LSoundRecorder::overallLevel() const {
  if (m_levels.empty()) return kNoLevel;
  if (m_levels.size() == 1) return m_levels[0];
  return std::max(m_levels[0], m_levels[1]);
}

void LSoundRecorder::OnWaiting() {
  if (overallLevel() > m_startThreshold) {
    // Loud already in its first half: the recording opens with the second half
    // of the pre-roll before it.
    measure(m_framesPerBuffer / 2);
    if (overallLevel() > m_startThreshold) {
      const int32_t firstFrame = m_framesPerBuffer / 2;
      m_output->write(m_preRoll.data() + static_cast<size_t>(firstFrame) * m_output->channels(),
                      m_framesPerBuffer - firstFrame);
    }
    m_output->write(m_work.data(), m_framesPerBuffer);
    m_state = State::Recording;
    if (m_listener) m_listener->recordingStarted(m_cookie);
    notifyPositionAndLevels(outputTime());
    return;
  }
  // The copy moves as many bytes as the buffer has samples, so only the first
  // quarter of the pre-roll is refreshed and the half that opens a recording
  // stays the silence placed there at Start: a recording begins with about
  // 50 ms of silence. Kept that way on purpose.
  std::memcpy(m_preRoll.data(), m_work.data(), static_cast<size_t>(m_samplesPerBuffer));
  if (m_listener) m_listener->recordLevels(m_levels, m_cookie);
}

void LSoundRecorder::OnRecording() {
  m_output->write(m_work.data(), m_framesPerBuffer);
  const int32_t now = outputTime();
  if (overallLevel() > m_stopThreshold) {
    m_lastLoud = now;
  } else if (now - m_lastLoud > m_silenceLimit) {
    m_output->setLength(timeToFrames(m_lastLoud + kSilenceKept, static_cast<int32_t>(m_output->sampleRate())));
    m_state = State::Waiting;
    if (m_listener) {
      m_listener->waitingForSound(m_cookie);
      m_listener->recordPosition(outputTime(), m_cookie);
    }
    return;
  }
  notifyPositionAndLevels(now);
  if (m_maxDuration > 0 && now > m_maxDuration) Stop();
}

void LSoundRecorder::notifyPositionAndLevels(int32_t time) {
  if (!m_listener) return;
  m_listener->recordPosition(time, m_cookie);
  m_listener->recordLevels(m_levels, m_cookie);
}

void LSoundRecorder::Stop() {
  if (m_state == State::Idle) return;
  m_device.close();
  m_lastLoud += kTailKept;
  if (m_lastLoud < outputTime())
    m_output->setLength(timeToFrames(m_lastLoud, static_cast<int32_t>(m_output->sampleRate())));
  m_preRoll.clear();
  m_work.clear();
  m_output.reset();
  m_state = State::Idle;
  m_levels.clear();
  if (m_listener) {
    m_listener->recordingStopped(m_cookie);
    m_listener->recordPosition(0, m_cookie);
    m_listener->recordLevels(m_levels, m_cookie);
  }
}

void LSoundRecorder::Restart() {
  if (m_state == State::Idle) return;
  m_output->setLength(0);
  if (m_state == State::Waiting) return;
  m_state = State::Waiting;
  m_lastLoud = 0;
  m_levels.clear();
  if (m_listener) {
    m_listener->waitingForSound(m_cookie);
    m_listener->recordPosition(0, m_cookie);
    m_listener->recordLevels(m_levels, m_cookie);
  }
  std::fill(m_preRoll.begin(), m_preRoll.end(), 0);
}

}  // namespace vantr
