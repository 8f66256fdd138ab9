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
// How much longer than a player's last position a recording of its output
// may be: after waveOutReset Wine plays on what it had already taken from the
// blocks (0.35 to 0.55 s measured with four players), plus the recorder's
// 50 ms pre-roll and 50 ms tail. Ten-thousandths of a second.
constexpr int32_t kResetRunOn = 10000;

// Handles window messages until done() holds; false if it still does not
// after limitMs, which only guards against a test that would hang: the
// conditions themselves are counts of what the engines delivered.
template <class Done>
bool pumpUntil(Done done, DWORD limitMs = 30000) {
  const DWORD start = GetTickCount();
  while (!done()) {
    if (GetTickCount() - start > limitMs) return false;
    pumpMessagesFor(20);
  }
  return true;
}

inline bool waitForCapture(const EngineEvents& recorderEvents, int buffers) {
  for (int i = 0; i < 200 && recorderEvents.meterReadings < buffers; ++i) pumpMessagesFor(50);
  return recorderEvents.meterReadings >= buffers;
}

}  // namespace vantr
