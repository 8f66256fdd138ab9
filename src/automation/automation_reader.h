// The serial line's reader: one worker thread that reads the port, cuts the
// stream into commands, sets the clock by the time-set commands and hands the
// play and record commands to the main window. The thread never touches a
// window: the target posts the command on, and the main window carries it out
// on its own thread (RunAutomationCommand).
//
// Portable: the port and the target are interfaces implemented on Windows by
// the serial port and the main window, and by fakes in tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "automation/clock_keeper.h"
#include "automation/command_framer.h"
#include "base/clock.h"
#include "base/worker_thread.h"

namespace vantr {

// The size of the port record kept in settings.dcb beside settings.ini.
constexpr size_t kPortSettingsSize = 28;
// That file: the settings file's name with the extension ".dcb", beside it.
std::string portSettingsPath(const std::string& settingsFile);
// Bytes asked for at each read, and the pause after a read that brought none.
constexpr size_t kSerialReadSize = 64;
constexpr int kEmptyReadSleepMs = 85;

class SerialPort {
 public:
  virtual ~SerialPort() = default;
  // Opens an existing device ("COM1") for this program alone; false when it
  // does not exist or someone else has it.
  virtual bool open(const std::string& portName) = 0;
  // Applies the stored port record (kPortSettingsSize bytes) to the open port.
  virtual void applySettings(const uint8_t* record, size_t size) = 0;
  // Reads up to size bytes without waiting long; the number read, or -1 when
  // the read failed (which the reader takes as "nothing came").
  virtual int read(uint8_t* buffer, size_t size) = 0;
  virtual void close() = 0;
};

// Who receives the play and record commands: the main window while it exists.
class AutomationTarget {
 public:
  virtual ~AutomationTarget() = default;
  // Hands command 0..3 and the file's name on; false when it could not be
  // handed on (the command is then lost).
  virtual bool post(int command, const std::string& name) = 0;
};

class AutomationReader {
 public:
  using Sleep = std::function<void(int milliseconds)>;

  // settingsFile is settings.ini; the port record is read from the file of
  // the same name with the extension ".dcb". sleep defaults to a real sleep.
  AutomationReader(std::string settingsFile, SerialPort& port, Clock& clock, Sleep sleep = {});
  // Stops the thread; see the members for why it is always the first to go.
  ~AutomationReader();
  AutomationReader(const AutomationReader&) = delete;
  AutomationReader& operator=(const AutomationReader&) = delete;

  // Starts the reader thread at the lowest priority unless one still runs.
  // The thread itself reads the settings: with "mode" other than 1 in
  // section "auto", or a port that will not open, it ends at once.
  void start();
  // Ends the thread (WorkerThread's rule); false when it did not end in time.
  bool stop();
  // The settings changed: the thread starts again under the new ones.
  void restart();

  // Set by the main window when it is made, cleared (nullptr) before it goes.
  // Once setTarget(nullptr) returns, the thread no longer uses the old one.
  void setTarget(AutomationTarget* target);
  bool hasTarget() const;

  // True while the thread is to keep running / has not yet ended.
  bool running() const { return m_worker.running(); }
  bool alive() const { return m_worker.alive(); }
  // The clock rule's memory of the last time-set reading; the thread writes
  // it, so read it only while the thread is not running.
  int32_t clockMemory() const { return m_clockKeeper.memory(); }

 private:
  void run();
  void applyPortSettings();
  void handleCommand(std::string_view body);

  const std::string m_settingsFile;
  SerialPort& m_port;
  const Sleep m_sleep;
  CommandFramer m_framer;     // used by the thread only
  ClockKeeper m_clockKeeper;  // kept across restarts of the thread
  mutable std::mutex m_targetLock;
  AutomationTarget* m_target = nullptr;  // guarded by m_targetLock
  // Last, so that it is destroyed first: a thread that outlived the polls of
  // stop() is waited for before anything it uses goes away.
  WorkerThread m_worker;
};

}  // namespace vantr
