#include "audio/play/sound_player.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <thread>

#include "audio/data/scaled_source.h"
#include "base/time_position.h"

namespace vantr {

namespace {

// The mean square of a 0 dB sine after the shift by 5.
constexpr double kZeroDbPower = 8388626.0;
constexpr int kOverviewPoints = 512;
constexpr int32_t kOverviewSlice = 8192;

// The mean of (v >> 5) squared over one channel. The squares are summed in
// 128 bits, so even values far outside the common scale are exact.
uint64_t meanSquare(const int32_t* values, int32_t frames, int channels, int channel) {
  if (frames <= 0) return 0;
  unsigned __int128 sum = 0;
  for (int32_t f = 0; f < frames; ++f) {
    const int64_t v = values[static_cast<size_t>(f) * channels + channel] >> 5;
    sum += static_cast<uint64_t>(v * v);
  }
  return static_cast<uint64_t>(sum / static_cast<unsigned>(frames));
}

int8_t powerLevel(uint64_t meanSquare) {
  if (meanSquare == 0) return kNoLevel;
  return levelFromDecibels(10.0 * std::log10(static_cast<double>(meanSquare) / kZeroDbPower));
}

}  // namespace

LevelList blockLevels(const int32_t* values, int32_t frames, int channels) {
  LevelList levels(channels);
  for (int c = 0; c < channels; ++c) levels[c] = powerLevel(meanSquare(values, frames, channels, c));
  return levels;
}

LSoundPlayer::LSoundPlayer(PlaybackDevice& device, std::function<void()> wake, Threading threading)
    : m_device(device), m_wake(std::move(wake)), m_threading(threading) {
  clearStamps();
}

bool LSoundPlayer::isOpen() const {
  std::lock_guard<std::mutex> hold(m_lock);
  return (m_state & kOpen) != 0;
}

uint16_t LSoundPlayer::state() const {
  std::lock_guard<std::mutex> hold(m_lock);
  return m_state;
}

int32_t LSoundPlayer::positionFrames() const {
  std::lock_guard<std::mutex> hold(m_lock);
  return m_position;
}

void LSoundPlayer::clearStamps() { std::fill(std::begin(m_stamps), std::end(m_stamps), kNoStamp); }

bool LSoundPlayer::Open(const LSoundSource& given, bool startPaused) {
  Close();
  // The worker of an earlier opening that is still stuck in the device keeps
  // the device: this player refuses until that worker has ended.
  if (m_worker.alive()) return false;
  if (!given || given->failed()) return false;
  LSoundSource source = given;
  // The device takes 16-bit samples: a source of a larger scale is brought down
  // to the common 16-bit scale first.
  if (source->fullScale() > kMaxFullScale) {
    source = LSoundSource(new ScaledSource(source, kMaxFullScale));
    if (source->failed()) return false;
  }
  const uint8_t channels = source->channels();
  const uint32_t rate = static_cast<uint32_t>(source->sampleRate());
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!m_device.open(m_deviceIndex, channels, rate, false) && !m_device.open(m_deviceIndex, channels, rate, true))
      return false;
    const int32_t blockFrames = framesPerTenthSecond(rate);
    if (!m_device.makeBlocks(kBlocks, static_cast<size_t>(blockFrames) * channels * sizeof(int16_t))) {
      m_device.close();
      return false;
    }
    m_blockFrames = blockFrames;
    m_channels = channels;
    m_scratch.assign(static_cast<size_t>(blockFrames) * channels, 0);
    clearStamps();
    for (LevelList& levels : m_blockLevels) levels.assign(channels, kNoLevel);
    m_levels.assign(channels, kNoLevel);
    m_device.pause();
    m_state = startPaused ? (kOpen | kPaused | kRaisePending) : (kOpen | kRestartPending | kRaisePending);
    m_events = 0;
    m_next = 0;
    m_idlePolls = 0;
    m_source = source;
    m_position = source->position();
  }
  m_worker.requestPriority(kPriorityLowest);
  if (m_threading == Threading::Worker) m_worker.start([this] { runWorker(); });
  if (m_notify) {
    if (startPaused)
      m_notify->paused(m_user);
    else
      m_notify->playing(m_user);
    m_notify->position(framesToTime(positionFrames(), static_cast<int32_t>(rate)), m_user);
  }
  return true;
}

void LSoundPlayer::runWorker() {
  while (m_worker.running()) {
    m_worker.applyPriority();
    const Service done = serviceBlock();
    if (done == Service::Ended) break;
    if (done == Service::Idle) std::this_thread::sleep_for(std::chrono::milliseconds(kIdleSleepMs));
  }
}

void LSoundPlayer::readScratch(int32_t frames) {
  int32_t got = m_source->read(m_scratch.data(), frames);
  got = std::clamp(got, 0, frames);
  std::fill(m_scratch.begin() + static_cast<size_t>(got) * m_channels,
            m_scratch.begin() + static_cast<size_t>(frames) * m_channels, 0);
}

void LSoundPlayer::narrowInto(int16_t* out, int32_t frames) const {
  const size_t samples = static_cast<size_t>(frames) * m_channels;
  for (size_t i = 0; i < samples; ++i)
    out[i] = static_cast<int16_t>(static_cast<int32_t>(static_cast<uint32_t>(m_scratch[i]) + 8u) >> 4);
}

LSoundPlayer::Service LSoundPlayer::serviceBlock() {
  bool wake = false;
  Service result = Service::Serviced;
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!(m_state & kOpen)) return Service::Idle;
    const int block = m_next;
    if (!m_device.blockDone(block)) {
      if (m_state & kRaisePending) {
        m_worker.requestPriority(kPriorityHighest);
        m_state &= ~kRaisePending;
      }
      // A player that sees no block finish for about 25 s has ended, even
      // when it is only paused; a cued player may wait for ever.
      if (!(m_state & kCued) && ++m_idlePolls > kIdlePollLimit) {
        m_events |= kEnded;
        wake = true;
      }
      result = Service::Idle;
    } else {
      m_idlePolls = 0;
      if (m_stamps[block] != kNoStamp) {
        m_position = m_stamps[block];
        m_events |= kPositionChanged;
        if (m_meters) {
          m_levels = m_blockLevels[block];
          m_events |= kLevelsChanged;
        }
        wake = true;
      }
      if (m_source->position() < m_source->length()) {
        readScratch(m_blockFrames);
        narrowInto(m_device.blockData(block), m_blockFrames);
        m_device.write(block, false);
        m_stamps[block] = m_source->position();
        if (m_meters) m_blockLevels[block] = blockLevels(m_scratch.data(), m_blockFrames, m_channels);
      } else {
        m_stamps[block] = kNoStamp;
        bool allDone = true;
        for (int b = 0; b < kBlocks && allDone; ++b) allDone = m_device.blockDone(b);
        if (allDone) {
          m_events |= kEnded;
          wake = true;
          result = Service::Ended;
        }
      }
      if (result != Service::Ended) {
        m_next = (m_next + 1) % kBlocks;
        // Output starts only once three blocks are queued.
        if (m_next == 3 && (m_state & kRestartPending)) {
          m_device.restart();
          m_state &= ~kRestartPending;
        }
      }
    }
  }
  if (wake && m_wake) m_wake();
  return result;
}

void LSoundPlayer::prime() {
  const int32_t quarter = (m_blockFrames + 3) / 4;
  readScratch(quarter);
  int16_t* data = m_device.blockData(0);
  narrowInto(data, quarter);
  const size_t quarterSamples = static_cast<size_t>(quarter) * m_channels;
  const size_t blockSamples = static_cast<size_t>(m_blockFrames) * m_channels;
  for (size_t at = quarterSamples; at < blockSamples; at += quarterSamples)
    std::memcpy(data + at, data, std::min(quarterSamples, blockSamples - at) * sizeof(int16_t));
  m_stamps[0] = m_source->position();
  if (m_meters) {
    for (size_t at = quarterSamples; at < blockSamples; at += quarterSamples)
      std::memcpy(m_scratch.data() + at, m_scratch.data(), std::min(quarterSamples, blockSamples - at) * 4);
    m_blockLevels[0] = blockLevels(m_scratch.data(), m_blockFrames, m_channels);
    m_levels = m_blockLevels[0];
  }
  m_device.write(0, true);
  m_next = 1;
}

void LSoundPlayer::Cue() {
  int32_t time = 0;
  LevelList levels;
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!(m_state & kOpen)) return;
    if ((m_state & kCued) && !(m_state & kPaused)) return;
    if ((m_state & kCued) && (m_state & kPaused)) {
      m_device.restart();
      m_state &= ~kPaused;
      return;
    }
    m_device.reset();
    clearStamps();
    m_source->seek(m_position);
    m_position = m_source->position();
    prime();
    m_state = kOpen | kCued | kRaisePending;
    m_events = 0;
    m_idlePolls = 0;
    time = framesToTime(m_position, m_source->sampleRate());
    levels = m_levels;
  }
  m_worker.requestPriority(kPriorityIdle);
  if (!m_notify) return;
  if (m_meters) m_notify->levels(levels, m_user);
  m_notify->cueStarted(m_user);
  m_notify->position(time, m_user);
}

void LSoundPlayer::Play() {
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!(m_state & kOpen)) return;
    if (m_state & kCued) {
      // Play goes on from the cue position with the queue started afresh
      // rather than by breaking the device's loop: Wine counts the loop's
      // repeats as played time once the loop is broken, reports the blocks
      // queued behind it done before they have played, and its queue breaks
      // when they are written again (playback stops a few blocks later).
      m_device.reset();
      clearStamps();
      m_source->seek(m_position);
      m_position = m_source->position();
      m_next = 0;
      m_events = 0;
      m_idlePolls = 0;
      m_worker.requestPriority(kPriorityHighest);
      m_state &= ~(kCued | kRaisePending | kRestartPending);
    }
    if (m_state & kPaused) {
      m_device.restart();
      m_state &= ~kPaused;
    }
  }
  if (m_notify) m_notify->playing(m_user);
}

void LSoundPlayer::Pause() {
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!(m_state & kOpen) || (m_state & kPaused)) return;
    m_device.pause();
    m_state |= kPaused;
    m_state &= ~kRestartPending;
  }
  if (m_notify) m_notify->paused(m_user);
}

void LSoundPlayer::Seek(int32_t frame) {
  int32_t time = 0;
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!(m_state & kOpen)) return;
    m_device.reset();
    clearStamps();
    m_source->seek(frame);
    m_position = m_source->position();
    if (m_state & kPaused) m_device.pause();
    if (!(m_state & kCued)) {
      m_next = 0;
      m_state &= ~kRestartPending;
      m_worker.requestPriority(kPriorityLowest);
    } else {
      prime();
      m_worker.requestPriority(kPriorityIdle);
    }
    m_state |= kRaisePending;
    m_events = 0;
    m_idlePolls = 0;
    time = framesToTime(m_position, m_source->sampleRate());
  }
  if (m_notify) m_notify->position(time, m_user);
}

void LSoundPlayer::Close() {
  // The worker is stopped first and outside the lock, which it takes itself.
  // One that will not stop may still be inside the device: the device and the
  // source stay as they are, and a later Close tries again.
  if (!m_worker.stop()) return;
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!(m_state & kOpen)) return;
    m_device.close();
    m_source.reset();
    m_state = 0;
    m_events = 0;
  }
  if (m_notify) m_notify->stopped(m_user);
}

void LSoundPlayer::OnWakeup() {
  int32_t time = 0;
  bool ended = false, position = false, levels = false;
  LevelList meter;
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (!(m_state & kOpen)) return;
    ended = (m_events & kEnded) != 0;
    if (!ended && (m_events & kPositionChanged)) {
      m_events &= ~kPositionChanged;
      time = framesToTime(m_position, m_source->sampleRate());
      position = true;
    }
    if (!ended && (m_events & kLevelsChanged)) {
      m_events &= ~kLevelsChanged;
      levels = m_meters;
      meter = m_levels;
    }
  }
  // A finished player closes itself.
  if (ended) {
    Close();
    return;
  }
  if (!m_notify) return;
  if (position) m_notify->position(time, m_user);
  if (levels) m_notify->levels(meter, m_user);
}

void LSoundPlayer::Overview(int32_t start, int32_t length, uint8_t out[512]) {
  std::memset(out, 0, kOverviewPoints);
  std::lock_guard<std::mutex> hold(m_lock);
  if (!(m_state & kCued)) return;
  const int32_t rate = m_source->sampleRate();
  const int32_t from = timeToFrames(start, rate);
  const int64_t frames = timeToFrames(length, rate);
  const int32_t kept = m_source->position();
  std::vector<int32_t> slice(static_cast<size_t>(kOverviewSlice) * m_channels);
  for (int i = 0; i < kOverviewPoints; ++i) {
    const int64_t first = i * frames / kOverviewPoints;
    const int32_t count =
        static_cast<int32_t>(std::min<int64_t>((i + 1) * frames / kOverviewPoints - first, kOverviewSlice));
    if (count <= 0) continue;
    m_source->seek(static_cast<int32_t>(from + first));
    const int32_t got = std::clamp(m_source->read(slice.data(), count), 0, count);
    uint64_t loudest = 0;
    for (int c = 0; c < m_channels; ++c) loudest = std::max(loudest, meanSquare(slice.data(), got, m_channels, c));
    out[i] = static_cast<uint8_t>(std::min<uint64_t>(loudest >> 11, 255));
  }
  m_source->seek(kept);
}

}  // namespace vantr
