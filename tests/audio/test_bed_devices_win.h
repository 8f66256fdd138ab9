// The test bed's sound devices by name, and a message pump for tests that
// wait on engines whose news arrives as window messages.
#pragma once

#include <windows.h>

#include <mmsystem.h>

#include <string>

#include "audio/audio_test_support.h"
#include "audio/play/wave_out_win.h"

namespace vantr {

inline int outputDeviceNamed(const std::string& name) {
  for (UINT i = 0; i < waveOutGetNumDevs(); ++i)
    if (outputDeviceName(static_cast<int>(i)) == name) return static_cast<int>(i);
  return -1;
}

inline int inputDeviceNamed(const std::string& name) {
  for (UINT i = 0; i < waveInGetNumDevs(); ++i)
    if (inputDeviceName(static_cast<int>(i)) == name) return static_cast<int>(i);
  return -1;
}

// Handles window messages for ms milliseconds, sleeping while there are none,
// as the program's message loop does.
inline void pumpMessagesFor(DWORD ms) {
  const DWORD end = GetTickCount() + ms;
  for (int left = static_cast<int>(ms); left > 0; left = static_cast<int>(end - GetTickCount())) {
    MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(left), QS_ALLINPUT);
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&msg);
  }
}

// Wine's capture delivers nothing for its first second or so and then runs
// about a second behind: a test plays its signal only once the recorder has
// seen a few buffers, and waits for the tail before it stops.
inline bool waitForCapture(const EngineEvents& recorderEvents, int buffers) {
  for (int i = 0; i < 200 && recorderEvents.meterReadings < buffers; ++i) pumpMessagesFor(50);
  return recorderEvents.meterReadings >= buffers;
}

}  // namespace vantr
