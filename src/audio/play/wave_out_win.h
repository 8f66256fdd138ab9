// The player on a real wave-output device: waveOut with 70 blocks of movable
// global memory, polled by the player's worker (no callback), and the hidden
// window of the class "LSoundPlayer_Window" that brings the worker's events
// to the owner's thread as message 1024.
#pragma once

#include <windows.h>

#include <mmsystem.h>

#include <string>
#include <vector>

#include "audio/play/playback_device.h"
#include "audio/play/sound_player.h"
#include "win/handles_win.h"
#include "win/window_win.h"

namespace vantr {

class WaveOutDevice : public PlaybackDevice {
 public:
  WaveOutDevice() = default;
  ~WaveOutDevice() override { close(); }
  WaveOutDevice(const WaveOutDevice&) = delete;
  WaveOutDevice& operator=(const WaveOutDevice&) = delete;

  bool open(int device, uint8_t channels, uint32_t rate, bool mapper) override;
  bool makeBlocks(int count, size_t bytes) override;
  int16_t* blockData(int block) override;
  bool blockDone(int block) const override;
  void write(int block, bool loop) override;
  void pause() override;
  void restart() override;
  void reset() override;
  void close() override;

 private:
  struct Block {
    GlobalBuffer memory;
    WAVEHDR header{};
  };
  void releaseBlocks();

  HWAVEOUT m_wave = nullptr;
  std::vector<Block> m_blocks;
};

class LSoundPlayer_Window : public Window<LSoundPlayer_Window> {
 public:
  explicit LSoundPlayer_Window(HINSTANCE instance);
  ~LSoundPlayer_Window();
  LSoundPlayer_Window(const LSoundPlayer_Window&) = delete;
  LSoundPlayer_Window& operator=(const LSoundPlayer_Window&) = delete;

  // Without its window the player cannot open.
  bool Open(const LSoundSource& source, bool startPaused);
  LSoundPlayer& player() { return m_player; }

  LRESULT HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam);

 private:
  // The player goes before the device it uses.
  WaveOutDevice m_device;
  LSoundPlayer m_player;
};

// The product names of wave devices as their capabilities give them; empty
// when the query fails.
std::string outputDeviceName(int device);
std::string inputDeviceName(int device);
// Every output or input device's name in device order, at most the 127 a
// stored device number can name.
constexpr int kMaxListedDevices = 127;
std::vector<std::string> outputDeviceNames();
std::vector<std::string> inputDeviceNames();

}  // namespace vantr
