#include "automation/serial_port_win.h"

#include <algorithm>
#include <cstring>

namespace vantr {

namespace {

// "COM1" as a device path. The "\\.\" form is the only one that reaches
// COM10 and above, and it names COM1 to COM9 just as well.
std::string devicePath(const std::string& portName) {
  if (portName.rfind("\\\\", 0) == 0) return portName;
  return "\\\\.\\" + portName;
}

}  // namespace

bool WindowsSerialPort::open(const std::string& portName) {
  close();
  if (portName.empty()) return false;
  // Read only, shared with no one, and never created: a name that is not an
  // existing device opens nothing.
  KernelHandle port = fileHandle(CreateFileA(devicePath(portName).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                             FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!port) return false;
  // Only a communications device has a comm state; a disk file or another
  // device given as the port name is refused here.
  DCB state{};
  state.DCBlength = sizeof state;
  if (!GetCommState(port.get(), &state)) return false;
  // A read returns at once with whatever has arrived, nothing included. The
  // write time-outs are left as they are: the line is only read.
  COMMTIMEOUTS timeouts{};
  if (!GetCommTimeouts(port.get(), &timeouts)) return false;
  timeouts.ReadIntervalTimeout = MAXDWORD;
  timeouts.ReadTotalTimeoutMultiplier = 0;
  timeouts.ReadTotalTimeoutConstant = 0;
  if (!SetCommTimeouts(port.get(), &timeouts)) return false;
  // The line starts empty, as a serial driver leaves it at each opening:
  // bytes a device such as a pseudo-terminal kept from before are stale.
  PurgeComm(port.get(), PURGE_RXABORT | PURGE_RXCLEAR);
  m_state = state;
  m_port = std::move(port);
  return true;
}

void WindowsSerialPort::applySettings(const uint8_t* record, size_t size) {
  if (!m_port || !record) return;
  DCB state = m_state;
  std::memcpy(&state, record, std::min(size, sizeof state));
  if (SetCommState(m_port.get(), &state)) m_state = state;
}

int WindowsSerialPort::read(uint8_t* buffer, size_t size) {
  if (!m_port || !buffer) return -1;
  // Most reads find nothing; asking what is waiting first is far cheaper than
  // a read that returns empty (measured under Wine: under 1 us against about
  // 90 us). It also clears a line error that would stop the read with "abort
  // on error" in the port record.
  DWORD errors = 0;
  COMSTAT waiting{};
  if (ClearCommError(m_port.get(), &errors, &waiting) && waiting.cbInQue == 0) return 0;
  DWORD got = 0;
  const DWORD wanted = static_cast<DWORD>(std::min(size, kSerialReadSize));
  if (!ReadFile(m_port.get(), buffer, wanted, &got, nullptr)) {
    // A line error (framing, overrun) with "abort on error" in the port
    // record stops every read until the error is cleared.
    ClearCommError(m_port.get(), &errors, nullptr);
    return -1;
  }
  return static_cast<int>(got);
}

void WindowsSerialPort::close() { m_port.reset(); }

}  // namespace vantr
