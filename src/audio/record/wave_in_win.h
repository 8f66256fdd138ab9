// The recorder on a real wave-input device: waveIn with 40 buffers of movable
// global memory, reporting filled buffers to a hidden window of the class
// "LSoundRecorder_Window", so that all the recorder's work runs on the thread
// that owns that window and no callback thread is involved.
#pragma once

#include <windows.h>

#include <mmsystem.h>

#include "audio/record/capture_device.h"
#include "audio/record/sound_recorder.h"
#include "win/handles_win.h"
#include "win/window_win.h"

namespace vantr {

class WaveInDevice : public CaptureDevice {
 public:
  WaveInDevice() = default;
  ~WaveInDevice() override { close(); }
  WaveInDevice(const WaveInDevice&) = delete;
  WaveInDevice& operator=(const WaveInDevice&) = delete;

  // Filled buffers are announced to this window (MM_WIM_DATA).
  void setWindow(HWND window) { m_window = window; }
  // The slot of a header the device handed back, or -1 if it is none of ours.
  int slotOf(const WAVEHDR* header) const;

  bool open(int device, uint8_t channels, uint32_t rate, bool mapper) override;
  void start() override;
  bool addBuffer(int slot, size_t bytes) override;
  bool takeFilled(int slot) override;
  const int16_t* samples(int slot) const override;
  void requeue(int slot) override;
  void close() override;

 private:
  struct Slot {
    GlobalBuffer memory;
    WAVEHDR header{};
  };
  void freeSlot(Slot& slot);

  HWND m_window = nullptr;
  HWAVEIN m_wave = nullptr;
  Slot m_slots[kSlots];
};

class LSoundRecorder_Window : public Window<LSoundRecorder_Window> {
 public:
  explicit LSoundRecorder_Window(HINSTANCE instance);
  ~LSoundRecorder_Window();
  LSoundRecorder_Window(const LSoundRecorder_Window&) = delete;
  LSoundRecorder_Window& operator=(const LSoundRecorder_Window&) = delete;

  // Without its window the recorder cannot start.
  bool Start(const LSoundSink& output, int32_t maxDuration, int8_t trimLevel, int32_t silenceLimit);
  LSoundRecorder& recorder() { return m_recorder; }

  LRESULT HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam);

 private:
  // The recorder goes before the device it uses.
  WaveInDevice m_device;
  LSoundRecorder m_recorder{m_device};
};

}  // namespace vantr
