// Starts vantr.exe in a fresh program folder and finds its windows the way
// other processes do: by class and title.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "test_support/child_process.h"
#include "test_support/temp_dir.h"

namespace vantr::e2e {

// Polls pred every 20 ms for up to ms milliseconds.
bool waitFor(const std::function<bool()>& pred, int ms = 10000);
HWND findFrame();
// A visible top-level dialog box with that title, and the longest static text in it.
HWND findBox(const char* title);
std::string boxText(HWND box);

class ProgramFolder {
 public:
  ProgramFolder() { CopyFileA(nativePath(VANTR_EXE).c_str(), m_dir.file("vantr.exe").c_str(), FALSE); }
  std::string path() const { return m_dir.path(); }
  // Starts vantr.exe from this folder; null if it cannot.
  std::unique_ptr<ChildProcess> start(const std::vector<std::string>& args) const;

 private:
  TempDir m_dir;
};

// Ends every running copy (quit message, then kill), so each test starts clean.
void endRunningCopies();

}  // namespace vantr::e2e
