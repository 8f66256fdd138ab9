#include "vantr_process.h"

#include <chrono>
#include <thread>

namespace vantr::e2e {

bool waitFor(const std::function<bool()>& pred, int ms) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
  for (;;) {
    if (pred()) return true;
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

HWND findFrame() { return FindWindowA("OWL_Window", "Vantorel"); }

HWND findBox(const char* title) {
  HWND box = FindWindowA("#32770", title);
  return box && IsWindowVisible(box) ? box : nullptr;
}

std::string windowText(HWND hwnd) {
  char text[512] = {};
  SendMessageA(hwnd, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text));
  return text;
}

std::string boxText(HWND box) {
  std::string found;
  for (HWND child = FindWindowExA(box, nullptr, "Static", nullptr); child;
       child = FindWindowExA(box, child, "Static", nullptr)) {
    const std::string text = windowText(child);
    if (text.size() > found.size()) found = text;
  }
  return found;
}

ProgramFolder::ProgramFolder() : m_path(m_dir.path()) {
  CopyFileA(nativePath(VANTR_EXE).c_str(), m_dir.file("vantr.exe").c_str(), FALSE);
}

std::unique_ptr<ChildProcess> ProgramFolder::start(const std::vector<std::string>& args) const {
  auto process = std::make_unique<ChildProcess>();
  if (!process->start(m_dir.file("vantr.exe"), args)) return nullptr;
  return process;
}

void endRunningCopies() {
  for (int attempt = 0; attempt < 50; ++attempt) {
    HWND frame = findFrame();
    if (!frame) return;
    DWORD pid = 0;
    GetWindowThreadProcessId(frame, &pid);
    PostMessageA(frame, 1044, 0, 0);
    if (waitFor([&] { return findFrame() != frame; }, 3000)) continue;
    if (HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, pid)) {
      TerminateProcess(process, 1);
      WaitForSingleObject(process, 5000);
      CloseHandle(process);
    }
  }
}

}  // namespace vantr::e2e
