#include "vantr_process.h"
#include "win/handles_win.h"

#include <chrono>
#include <cstring>
#include <thread>

namespace vantr::e2e {

bool waitFor(const std::function<bool()>& pred, int ms) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
  while (!pred()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

HWND findFrame() { return FindWindowA("OWL_Window", "Vantorel"); }

HWND findBox(const char* title) {
  HWND box = FindWindowA("#32770", title);
  return box && IsWindowVisible(box) ? box : nullptr;
}

std::string boxText(HWND box) {
  std::string found;
  for (HWND child = nullptr; (child = FindWindowExA(box, child, "Static", nullptr)) != nullptr;) {
    char text[512] = {};
    GetWindowTextA(child, text, sizeof text);
    if (std::strlen(text) > found.size()) found = text;
  }
  return found;
}

std::unique_ptr<ChildProcess> ProgramFolder::start(const std::vector<std::string>& args) const {
  auto process = std::make_unique<ChildProcess>();
  return process->start(m_dir.file("vantr.exe"), args) ? std::move(process) : nullptr;
}

void endRunningCopies() {
  HWND frame;
  for (int attempt = 0; attempt < 50 && (frame = findFrame()) != nullptr; ++attempt) {
    DWORD pid = 0;
    GetWindowThreadProcessId(frame, &pid);
    PostMessageA(frame, 1044, 0, 0);
    if (waitFor([&] { return findFrame() != frame; }, 3000)) continue;
    if (KernelHandle process{OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, pid)}) {
      TerminateProcess(process.get(), 1);
      WaitForSingleObject(process.get(), 5000);
    }
  }
}

}  // namespace vantr::e2e
