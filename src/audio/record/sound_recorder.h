// The recorder's logic: a sound-activated gate in front of a sink. Once
// started it waits until the input rises above a start threshold and only then
// writes; while recording it remembers when the input was last loud, cuts
// silences longer than the limit back to 0.7 s, and at Stop cuts the tail back
// to 50 ms after the last loud moment. It also measures every channel's level
// for the meters. All of it runs on the thread that receives the device's
// filled buffers; the Windows side (wave_in_win.cpp) only delivers them.
#pragma once

#include <cstdint>
#include <vector>

#include "audio/data/sound_stream.h"
#include "audio/record/capture_device.h"
#include "base/level.h"

namespace vantr {

// Who hears what the recorder does; the cookie (the channel number) comes back
// with every call.
class RecorderListener {
 public:
  virtual ~RecorderListener() = default;
  virtual void recordingStarted(uint32_t cookie) = 0;
  virtual void waitingForSound(uint32_t cookie) = 0;
  virtual void recordingStopped(uint32_t cookie) = 0;
  // Time along the output, in ten-thousandths of a second.
  virtual void recordPosition(int32_t time, uint32_t cookie) = 0;
  virtual void recordLevels(const LevelList& levels, uint32_t cookie) = 0;
};

// The peak level of one channel of interleaved samples on the common scale:
// 0 dB is a 16-bit amplitude of 8192, full scale reads +12 dB, and a channel
// of pure digital silence -127.
int8_t peakLevel(const int32_t* values, int32_t frames, int channels, int channel);

class LSoundRecorder {
 public:
  enum class State { Idle = 0, Waiting = 1, Recording = 2 };

  explicit LSoundRecorder(CaptureDevice& device) : m_device(device) {}
  ~LSoundRecorder() { Stop(); }
  LSoundRecorder(const LSoundRecorder&) = delete;
  LSoundRecorder& operator=(const LSoundRecorder&) = delete;

  void setDevice(int8_t device) { m_deviceIndex = device; }
  int8_t device() const { return m_deviceIndex; }
  void setListener(RecorderListener* listener, uint32_t cookie) {
    m_listener = listener;
    m_cookie = cookie;
  }

  // Opens the device and arms the gate; false, with nothing said, when there
  // is no usable output or neither way of opening the device works.
  // maxDuration and silenceLimit are in ten-thousandths of a second
  // (maxDuration 0 or less: no limit); trimLevel in dB (-127: AutoTrim off).
  bool Start(const LSoundSink& output, int32_t maxDuration, int8_t trimLevel, int32_t silenceLimit);
  // Closes the device and cuts the tail to 50 ms after the last loud moment.
  void Stop();
  // Throws away what was recorded and waits for sound again.
  void Restart();
  // The device filled buffer slot `slot`.
  void OnBufferDone(int slot);

  State state() const { return m_state; }
  const LevelList& levels() const { return m_levels; }
  int32_t framesPerBuffer() const { return m_framesPerBuffer; }
  int8_t startThreshold() const { return m_startThreshold; }
  int8_t stopThreshold() const { return m_stopThreshold; }

 private:
  int32_t outputTime() const;
  void measure(int32_t frames);
  int8_t overallLevel() const;
  void OnWaiting();
  void OnRecording();
  void notifyPositionAndLevels(int32_t time);

  CaptureDevice& m_device;
  int8_t m_deviceIndex = 0;
  RecorderListener* m_listener = nullptr;
  uint32_t m_cookie = 0;
  State m_state = State::Idle;
  LSoundSink m_output;
  LevelList m_levels;
  std::vector<int32_t> m_work;
  int32_t m_framesPerBuffer = 0;
  int32_t m_samplesPerBuffer = 0;
  int32_t m_maxDuration = 0;
  int8_t m_startThreshold = 0;
  int8_t m_stopThreshold = 0;
  int32_t m_lastLoud = 0;
  int32_t m_silenceLimit = 0;
  std::vector<int32_t> m_preRoll;
};

}  // namespace vantr
