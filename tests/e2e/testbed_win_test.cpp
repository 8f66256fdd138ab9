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
  std::set<std::string> outputs, inputs;
  for (UINT i = 0; i < waveOutGetNumDevs(); ++i) {
    WAVEOUTCAPSA caps{};
    if (waveOutGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR) outputs.insert(caps.szPname);
  }
  for (UINT i = 0; i < waveInGetNumDevs(); ++i) {
    WAVEINCAPSA caps{};
    if (waveInGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR) inputs.insert(caps.szPname);
  }
  for (const char* sink : {"Vantorel_Out_A", "Vantorel_Out_B", "Vantorel_Out_C", "Vantorel_Out_D"}) {
    EXPECT_TRUE(outputs.count(sink)) << "no output device " << sink;
    EXPECT_TRUE(inputs.count(std::string("Monitor of ") + sink)) << "no input device for " << sink;
  }
}

TEST(TestBed, SerialPortsReachTheirPseudoTerminals) {
  for (const char* name : {"COM1", "COM2"}) {
    const std::string port = std::string("\\\\.\\") + name;
    HANDLE h = CreateFileA(port.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(h, INVALID_HANDLE_VALUE) << name << " does not open";
    DCB dcb{};
    dcb.DCBlength = sizeof dcb;
    EXPECT_TRUE(GetCommState(h, &dcb)) << name;
    const char* peerVariable = std::string(name) == "COM1" ? "VANTR_TTY_COM1" : "VANTR_TTY_COM2";
    const char* peer = std::getenv(peerVariable);
    ASSERT_TRUE(peer) << peerVariable << " is not set: run through winrun";
    HANDLE other = CreateFileA(nativePath(peer).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE) << "the other end of " << name << " does not open";
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(h, "[ping]", 6, &written, nullptr));
    char got[7] = {};
    DWORD read = 0;
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
