// The serial line's port on Windows: a COM device opened for this program
// alone and read without waiting, so the reader thread can poll it and still
// notice within one read cycle that it is to stop.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "automation/automation_reader.h"
#include "win/handles_win.h"

namespace vantr {

// The port record of settings.dcb is a DCB as Windows lays it out.
static_assert(sizeof(DCB) == kPortSettingsSize, "settings.dcb holds exactly one DCB");

class WindowsSerialPort : public SerialPort {
 public:
  WindowsSerialPort() = default;
  ~WindowsSerialPort() override { close(); }
  WindowsSerialPort(const WindowsSerialPort&) = delete;
  WindowsSerialPort& operator=(const WindowsSerialPort&) = delete;

  // portName is a device name ("COM1", "COM12") or a full device path
  // ("\\.\COM12"). Fails for anything that is not a communications device.
  bool open(const std::string& portName) override;
  // Lays the record over the state the port had when it was opened and
  // applies it; a record the driver refuses leaves the port as it was.
  void applySettings(const uint8_t* record, size_t size) override;
  // Whatever has arrived, up to size bytes (at most kSerialReadSize).
  int read(uint8_t* buffer, size_t size) override;
  void close() override;

  bool isOpen() const { return static_cast<bool>(m_port); }

 private:
  KernelHandle m_port;
  DCB m_state{};  // the port's state as found at open
};

}  // namespace vantr
