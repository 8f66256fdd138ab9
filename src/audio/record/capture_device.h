// What the recorder needs of a wave-input device: open it for 16-bit PCM,
// start it, hand it buffers, take back the ones it filled. On Windows this is
// waveIn (wave_in_win.cpp); tests use a scripted fake that fills buffers on
// demand.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vantr {

class CaptureDevice {
 public:
  static constexpr int kSlots = 40;

  virtual ~CaptureDevice() = default;

  // Opens input device `device` for 16-bit PCM of the given channels and
  // rate; with `mapper` the system may convert from what the device delivers.
  virtual bool open(int device, uint8_t channels, uint32_t rate, bool mapper) = 0;
  virtual void start() = 0;
  // Gives the device buffer slot `slot` of `bytes` bytes to fill; false when
  // the memory could not be had (the slot stays empty).
  virtual bool addBuffer(int slot, size_t bytes) = 0;
  // A slot came back: true if the device really filled it (its done flag),
  // which also takes it back from the device; false for a stale notice.
  virtual bool takeFilled(int slot) = 0;
  // The 16-bit samples of a slot taken back by takeFilled.
  virtual const int16_t* samples(int slot) const = 0;
  // Hands a slot that was taken back to the device again.
  virtual void requeue(int slot) = 0;
  // Stops the device, frees every slot and closes it.
  virtual void close() = 0;
};

}  // namespace vantr
