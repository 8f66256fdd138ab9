// The player: plays one sound source on one output device. A worker thread
// keeps 70 blocks of about 100 ms queued on the device (seven seconds of
// slack), stamps each with the source position after its data, and raises
// events when a finished block moves the position or the levels; the owner's
// thread turns the events into notifications (wake-up message 1024 on
// Windows), so the worker never calls the owner directly.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "audio/data/sound_stream.h"
#include "audio/play/playback_device.h"
#include "base/level.h"
#include "base/worker_thread.h"

namespace vantr {

// Who hears what the player does; `user` (the channel's identity) comes back
// with every call, always on the thread that owns the player.
class LSoundPlayerNotify {
 public:
  virtual ~LSoundPlayerNotify() = default;
  virtual void playing(uint32_t user) = 0;
  virtual void stopped(uint32_t user) = 0;
  virtual void cueStarted(uint32_t user) = 0;
  virtual void paused(uint32_t user) = 0;
  // Position in ten-thousandths of a second.
  virtual void position(int32_t time, uint32_t user) = 0;
  virtual void levels(const LevelList& levels, uint32_t user) = 0;
};

// A block's level per channel: the mean of (v >> 5) squared over its frames,
// as dB against a 0 dB sine (8388626), -127 for silence.
LevelList blockLevels(const int32_t* values, int32_t frames, int channels);

class LSoundPlayer {
 public:
  static constexpr int kBlocks = 70;
  static constexpr int kIdlePollLimit = 280;
  static constexpr int kIdleSleepMs = 90;
  static constexpr int32_t kNoStamp = INT32_MIN;  // 0x80000000
  static constexpr uint32_t kMaxFullScale = 0x7FFF0;

  enum class Threading {
    Worker,  // Open starts the worker thread (the program)
    Manual,  // the owner calls serviceBlock() itself (tests drive it step by step)
  };
  // What one pass of the worker did.
  enum class Service { Serviced, Idle, Ended };

  // wake posts the wake-up to the owner's thread, which then calls OnWakeup().
  LSoundPlayer(PlaybackDevice& device, std::function<void()> wake, Threading threading = Threading::Worker);
  ~LSoundPlayer() { Close(); }
  LSoundPlayer(const LSoundPlayer&) = delete;
  LSoundPlayer& operator=(const LSoundPlayer&) = delete;

  void setNotify(LSoundPlayerNotify* notify, uint32_t user) {
    m_notify = notify;
    m_user = user;
  }
  // The owner may switch the meters while the worker runs.
  void setMeters(bool on) { m_meters = on; }
  void setDevice(int8_t device) { m_deviceIndex = device; }
  int8_t device() const { return m_deviceIndex; }

  bool Open(const LSoundSource& source, bool startPaused);
  // Loops the first quarter block at the current position (the scrub sound)
  // while the queue fills behind it, so that Play starts at once.
  void Cue();
  void Play();
  void Pause();
  void Seek(int32_t frame);
  void Close();
  // 512 bytes of loudness from start over length (ten-thousandths of a
  // second); only while cued, zeros otherwise.
  void Overview(int32_t start, int32_t length, uint8_t out[512]);

  // On the owner's thread, after a wake-up.
  void OnWakeup();
  // One pass of the worker over the next block.
  Service serviceBlock();

  bool isOpen() const;
  uint16_t state() const;
  int32_t blockFrames() const { return m_blockFrames; }
  int32_t positionFrames() const;

  // State bits.
  static constexpr uint16_t kOpen = 0x01;
  static constexpr uint16_t kPaused = 0x02;
  static constexpr uint16_t kCued = 0x04;
  static constexpr uint16_t kRestartPending = 0x08;
  static constexpr uint16_t kRaisePending = 0x10;

 private:
  // Event bits, raised by the worker and cleared on the owner's thread.
  static constexpr uint16_t kPositionChanged = 0x01;
  static constexpr uint16_t kLevelsChanged = 0x02;
  static constexpr uint16_t kEnded = 0x04;

  void runWorker();
  // Reads frames from the source into the scratch buffer, zeros past its end.
  void readScratch(int32_t frames);
  void narrowInto(int16_t* out, int32_t frames) const;
  void prime();
  void clearStamps();

  PlaybackDevice& m_device;
  std::function<void()> m_wake;
  const Threading m_threading;
  WorkerThread m_worker;

  mutable std::mutex m_lock;  // guards everything below
  LSoundPlayerNotify* m_notify = nullptr;
  uint32_t m_user = 0;
  std::atomic<bool> m_meters{true};
  int32_t m_position = 0;
  uint16_t m_state = 0;
  uint16_t m_events = 0;
  int8_t m_deviceIndex = -1;
  LSoundSource m_source;
  LevelList m_levels;
  std::vector<int32_t> m_scratch;
  int32_t m_blockFrames = 0;
  uint8_t m_channels = 0;
  int32_t m_stamps[kBlocks] = {};
  LevelList m_blockLevels[kBlocks];
  int m_next = 0;
  int m_idlePolls = 0;
};

}  // namespace vantr
