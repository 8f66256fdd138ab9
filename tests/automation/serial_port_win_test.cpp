// The Windows serial port against the test bed's COM1, a pseudo-terminal
// whose other end (VANTR_TTY_COM1) the test writes to through Wine's Z: drive.
#include "automation/serial_port_win.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>

#include "test_support/child_process.h"
#include "win/handles_win.h"

namespace vantr {
namespace {

// The test's end of COM1.
KernelHandle openTestSide() {
  const char* tty = std::getenv("VANTR_TTY_COM1");
  if (!tty) return KernelHandle();
  return fileHandle(CreateFileA(nativePath(tty).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, 0, nullptr));
}

bool send(const KernelHandle& line, const std::string& bytes) {
  DWORD wrote = 0;
  return WriteFile(line.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &wrote, nullptr) &&
         wrote == bytes.size();
}

// Everything the port gives within ms, read as the reader thread reads.
std::string readFor(WindowsSerialPort& port, int ms) {
  std::string got;
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
  while (std::chrono::steady_clock::now() < until) {
    uint8_t chunk[kSerialReadSize];
    const int n = port.read(chunk, sizeof chunk);
    if (n > 0) got.append(reinterpret_cast<const char*>(chunk), static_cast<size_t>(n));
    Sleep(5);
  }
  return got;
}

DWORD baudRateOfCom1() {
  KernelHandle port =
      fileHandle(CreateFileA("\\\\.\\COM1", GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  DCB state{};
  state.DCBlength = sizeof state;
  return port && GetCommState(port.get(), &state) ? state.BaudRate : 0;
}

TEST(SerialPortWin, OpensOnlyExistingCommunicationDevices) {
  struct Row {
    const char* name;
    bool opens;
  } rows[] = {
      {"COM1", true},
      {"\\\\.\\COM1", true},
      {"COM9", false},
      {"", false},
      {"NUL", false},  // a device, but no serial line
      {"C:\\windows\\win.ini", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    WindowsSerialPort port;
    EXPECT_EQ(port.open(row.name), row.opens);
    EXPECT_EQ(port.isOpen(), row.opens);
    uint8_t byte;
    if (!row.opens) {
      EXPECT_EQ(port.read(&byte, 1), -1) << "a port that did not open reads nothing";
    }
  }
}

TEST(SerialPortWin, StartsEmptyReadsAtOnceAndGivesWhatArrives) {
  KernelHandle line = openTestSide();
  ASSERT_TRUE(line) << "the test bed's COM1 (VANTR_TTY_COM1) is missing";
  // Sent while no one has the port open: gone when it opens.
  ASSERT_TRUE(send(line, "[stale]"));
  Sleep(200);
  WindowsSerialPort port;
  ASSERT_TRUE(port.open("COM1"));
  uint8_t chunk[kSerialReadSize];
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(port.read(chunk, sizeof chunk), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(50)) << "an empty read does not wait";

  // More than one read's worth comes in pieces of at most 64 bytes, in order.
  std::string sent;
  for (int i = 0; i < 10; ++i) sent += "[VantorelPlayStop-" + std::to_string(i) + "]";
  ASSERT_GT(sent.size(), kSerialReadSize);
  ASSERT_TRUE(send(line, sent));
  EXPECT_EQ(readFor(port, 1000), sent);
  port.close();
  EXPECT_EQ(port.read(chunk, sizeof chunk), -1);
}

TEST(SerialPortWin, AppliesThePortRecordOverTheOpenState) {
  WindowsSerialPort port;
  ASSERT_TRUE(port.open("COM1"));
  const DWORD before = baudRateOfCom1();
  ASSERT_NE(before, 0u);
  port.close();
  // A pseudo-terminal keeps the rate it is given (its character size and
  // parity it fixes itself), so the rate shows that the record reached it.
  for (const DWORD rate : {DWORD(9600), DWORD(19200), before}) {
    SCOPED_TRACE(rate);
    ASSERT_TRUE(port.open("COM1"));
    DCB record{};
    record.DCBlength = sizeof record;
    record.BaudRate = rate;
    record.fBinary = TRUE;
    record.ByteSize = 8;
    record.Parity = NOPARITY;
    record.StopBits = ONESTOPBIT;
    uint8_t bytes[kPortSettingsSize];
    std::memcpy(bytes, &record, sizeof bytes);
    port.applySettings(bytes, sizeof bytes);
    port.close();
    EXPECT_EQ(baudRateOfCom1(), rate);
  }
}

}  // namespace
}  // namespace vantr
