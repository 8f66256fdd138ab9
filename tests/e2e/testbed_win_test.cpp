// The Wine test bed every Windows test relies on: four output devices, their
// four monitors as inputs, COM1 and COM2 wired to pseudo-terminals, and a
// display. A missing piece fails here, so no other test has to skip.
#include <windows.h>

#include <gtest/gtest.h>
#include <mmsystem.h>

#include <cstdlib>
#include <set>
#include <string>

#include "test_support/child_process.h"

namespace vantr {
namespace {

TEST(TestBed, FourOutputsAndTheirMonitors) {
  std::set<std::string> devices;
  for (UINT i = 0; i < waveOutGetNumDevs(); ++i) {
    WAVEOUTCAPSA caps{};
    if (waveOutGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR)
      devices.insert(std::string("out ") + caps.szPname);
  }
  for (UINT i = 0; i < waveInGetNumDevs(); ++i) {
    WAVEINCAPSA caps{};
    if (waveInGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR) devices.insert(std::string("in ") + caps.szPname);
  }
  for (const char* sink : {"Vantorel_Out_A", "Vantorel_Out_B", "Vantorel_Out_C", "Vantorel_Out_D"}) {
    EXPECT_TRUE(devices.count(std::string("out ") + sink)) << "no output device " << sink;
    EXPECT_TRUE(devices.count(std::string("in Monitor of ") + sink)) << "no input device for " << sink;
  }
}

TEST(TestBed, SerialPortsReachTheirPseudoTerminals) {
  for (const std::string name : {"COM1", "COM2"}) {
    HANDLE h =
        CreateFileA(("\\\\.\\" + name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(h, INVALID_HANDLE_VALUE) << name << " does not open";
    const char* peer = std::getenv(("VANTR_TTY_" + name).c_str());
    ASSERT_TRUE(peer) << "VANTR_TTY_" << name << " is not set: run through winrun";
    HANDLE other = CreateFileA(nativePath(peer).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE) << "the other end of " << name << " does not open";
    DWORD written = 0, read = 0;
    char got[7] = {};
    ASSERT_TRUE(WriteFile(h, "[ping]", 6, &written, nullptr));
    EXPECT_TRUE(ReadFile(other, got, 6, &read, nullptr));
    EXPECT_STREQ(got, "[ping]") << name;
    CloseHandle(other);
    CloseHandle(h);
  }
}

TEST(TestBed, DisplayIsThere) {
  EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), 1024);
  HWND window = CreateWindowExA(0, "STATIC", "probe", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50, nullptr, nullptr,
                                GetModuleHandleA(nullptr), nullptr);
  ASSERT_TRUE(window);
  EXPECT_TRUE(IsWindowVisible(window));
  DestroyWindow(window);
}

}  // namespace
}  // namespace vantr
