// Scripted sound devices for the engines' tests and benchmarks: the capture
// device fills a buffer when told to, the playback device finishes blocks when
// told to (or at once).
#pragma once

#include <algorithm>
#include <array>
#include <deque>
#include <string>
#include <vector>

#include "audio/play/playback_device.h"
#include "audio/record/capture_device.h"

namespace vantr {

class FakeCaptureDevice : public CaptureDevice {
 public:
  bool refuseDirect = false;
  bool refuseMapper = false;
  int slotsAvailable = kSlots;  // addBuffer fails from this slot on
  std::vector<std::string> calls;
  size_t bufferBytes = 0;

  bool open(int device, uint8_t channels, uint32_t rate, bool mapper) override {
    calls.push_back((mapper ? "open mapper " : "open ") + std::to_string(device) + " " + std::to_string(channels) +
                    " " + std::to_string(rate));
    return mapper ? !refuseMapper : !refuseDirect;
  }
  void start() override { calls.push_back("start"); }
  bool addBuffer(int slot, size_t bytes) override {
    if (slot >= slotsAvailable) return false;
    bufferBytes = bytes;
    m_slots[slot].assign(bytes / 2, 0);
    m_queued[slot] = true;
    return true;
  }
  bool takeFilled(int slot) override {
    if (!m_filled[slot]) return false;
    m_filled[slot] = m_queued[slot] = false;
    return true;
  }
  const int16_t* samples(int slot) const override { return m_slots[slot].data(); }
  void requeue(int slot) override { m_queued[slot] = true; }
  void close() override {
    calls.push_back("close");
    m_queued.fill(false);
    m_filled.fill(false);
  }

  int queued() const { return static_cast<int>(std::count(m_queued.begin(), m_queued.end(), true)); }
  // The device fills the next queued slot with these samples; -1 if none is queued.
  int fill(const std::vector<int16_t>& samples) {
    for (int i = 0; i < kSlots; ++i) {
      const int slot = (m_next + i) % kSlots;
      if (!m_queued[slot] || m_filled[slot]) continue;
      std::fill(m_slots[slot].begin(), m_slots[slot].end(), 0);
      std::copy_n(samples.begin(), std::min(samples.size(), m_slots[slot].size()), m_slots[slot].begin());
      m_filled[slot] = true;
      m_next = slot + 1;
      return slot;
    }
    return -1;
  }

 private:
  std::array<std::vector<int16_t>, kSlots> m_slots;
  std::array<bool, kSlots> m_queued{}, m_filled{};
  int m_next = 0;
};

class FakePlaybackDevice : public PlaybackDevice {
 public:
  std::vector<std::string> calls;
  bool refuseDirect = false, refuseMapper = false, refuseBlocks = false;
  bool running = true;
  // Blocks finish the moment they are written (for the threaded test).
  bool finishAtOnce = false;

  bool open(int device, uint8_t channels, uint32_t rate, bool mapper) override {
    calls.push_back((mapper ? "open mapper " : "open ") + std::to_string(device) + " " + std::to_string(channels) +
                    " " + std::to_string(rate));
    running = true;
    return mapper ? !refuseMapper : !refuseDirect;
  }
  bool makeBlocks(int count, size_t bytes) override {
    if (refuseBlocks) return false;
    blocks.assign(count, std::vector<int16_t>(bytes / 2, 0));
    done.assign(count, true);
    loops.assign(count, false);
    return true;
  }
  int16_t* blockData(int block) override { return blocks[block].data(); }
  bool blockDone(int block) const override { return done[block]; }
  void write(int block, bool loop) override {
    done[block] = finishAtOnce && !loop;
    loops[block] = loop;
    if (!done[block]) queue.push_back(block);
  }
  void pause() override {
    calls.push_back("pause");
    running = false;
  }
  void restart() override {
    calls.push_back("restart");
    running = true;
  }
  // As waveOutReset: every block comes back, and a paused device runs again.
  void reset() override {
    calls.push_back("reset");
    running = true;
    for (int b : queue) done[b] = true;
    queue.clear();
  }
  void close() override {
    calls.push_back("close");
    queue.clear();
    blocks.clear();
  }

  // The device plays n blocks from its queue, if it runs; a looping block
  // holds the queue until the device is reset.
  int play(int n) {
    int played = 0;
    while (running && played < n && !queue.empty() && !loops[queue.front()]) {
      done[queue.front()] = true;
      queue.pop_front();
      ++played;
    }
    return played;
  }

  std::vector<std::vector<int16_t>> blocks;
  std::vector<bool> done, loops;
  std::deque<int> queue;
};

}  // namespace vantr
