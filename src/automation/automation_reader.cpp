#include "automation/automation_reader.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "automation/automation_command.h"
#include "base/file.h"
#include "base/path.h"
#include "store/settings.h"

namespace vantr {

namespace {

constexpr const char* kSection = "auto";

void sleepFor(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

}  // namespace

AutomationReader::AutomationReader(std::string settingsFile, SerialPort& port, Clock& clock, Sleep sleep)
    : m_settingsFile(std::move(settingsFile)),
      m_port(port),
      m_sleep(sleep ? std::move(sleep) : Sleep(sleepFor)),
      m_clockKeeper(clock) {}

AutomationReader::~AutomationReader() { stop(); }

void AutomationReader::start() {
  if (m_worker.alive()) return;
  m_worker.requestPriority(kPriorityLowest);
  m_worker.start([this] { run(); });
}

bool AutomationReader::stop() { return m_worker.stop(); }

void AutomationReader::restart() {
  stop();
  start();
}

void AutomationReader::setTarget(AutomationTarget* target) {
  std::lock_guard<std::mutex> hold(m_targetLock);
  m_target = target;
}

bool AutomationReader::hasTarget() const {
  std::lock_guard<std::mutex> hold(m_targetLock);
  return m_target != nullptr;
}

void AutomationReader::run() {
  m_worker.applyPriority();
  if (readInt(m_settingsFile, kSection, "mode", 0) != 1) return;
  if (!m_port.open(readText(m_settingsFile, kSection, "comport", "COM1"))) return;
  applyPortSettings();
  // A command half received on an earlier opening of the line belongs to
  // nothing that follows.
  m_framer.reset();
  uint8_t chunk[kSerialReadSize];
  while (m_worker.running()) {
    m_worker.applyPriority();
    const int got = m_port.read(chunk, sizeof chunk);
    if (got > 0) {
      m_framer.feed(chunk, std::min(static_cast<size_t>(got), sizeof chunk),
                    [this](std::string_view body) { handleCommand(body); });
    } else {
      m_sleep(kEmptyReadSleepMs);
    }
  }
  m_port.close();
}

std::string portSettingsPath(const std::string& settingsFile) {
  return pathBeside(settingsFile, splitPath(settingsFile).name + ".dcb");
}

void AutomationReader::applyPortSettings() {
  // Only a whole record is applied; otherwise the port keeps what it has.
  File file(portSettingsPath(m_settingsFile), FileMode::Read);
  uint8_t record[kPortSettingsSize];
  if (file.isOpen() && file.read(record, sizeof record) == sizeof record) m_port.applySettings(record, sizeof record);
}

void AutomationReader::handleCommand(std::string_view body) {
  const std::optional<AutomationCommand> command = recognizeAutomationCommand(body);
  if (!command) return;
  if (command->command == kAutomationTimeSet) {
    m_clockKeeper.timeSet(command->payload, readInt(m_settingsFile, kSection, "timeoffsetmin", 0));
    return;
  }
  // Held while posting, so that a target being cleared waits for a post in
  // progress and is never used after setTarget(nullptr).
  std::lock_guard<std::mutex> hold(m_targetLock);
  if (m_target) m_target->post(command->command, std::string(command->payload));
}

}  // namespace vantr
