// What the player needs of a wave-output device: open it for 16-bit PCM, a
// fixed set of blocks it plays in the order they are written, and the device
// controls. Each block carries a done flag: set while the player owns the
// block, clear while the device does. On Windows this is waveOut
// (wave_out_win.cpp); tests use a scripted fake that finishes blocks on demand.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantr {

class PlaybackDevice {
 public:
  virtual ~PlaybackDevice() = default;

  // Opens output device `device` (-1: the system's default) without a
  // callback: the player polls the blocks' done flags.
  virtual bool open(int device, uint8_t channels, uint32_t rate, bool mapper) = 0;
  // Makes `count` blocks of `bytes` bytes each, ready for output and marked
  // done; false (and none kept) if any could not be made.
  virtual bool makeBlocks(int count, size_t bytes) = 0;
  virtual int16_t* blockData(int block) = 0;
  virtual bool blockDone(int block) const = 0;
  // Hands a block to the device, clearing its done flag. A looping block
  // repeats until the device is reset.
  virtual void write(int block, bool loop) = 0;
  virtual void pause() = 0;
  virtual void restart() = 0;
  // Stops output and hands every block back (done).
  virtual void reset() = 0;
  // Resets the device, releases the blocks and closes it.
  virtual void close() = 0;
};

}  // namespace vantr
