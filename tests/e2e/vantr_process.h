// Starts vantr.exe in a fresh program folder and finds its windows the way
// other processes do: by the frame's class and title, control ids and the
// private messages.
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
// A top-level dialog box (class "#32770") with that title, visible.
HWND findBox(const char* title);
// The message text of a message box.
std::string boxText(HWND box);
std::string windowText(HWND hwnd);

class ProgramFolder {
 public:
  ProgramFolder();
  const std::string& path() const { return m_path; }
  std::vector<std::string> entries() const { return m_dir.entries(); }
  // Starts vantr.exe from this folder; the caller keeps the process.
  std::unique_ptr<ChildProcess> start(const std::vector<std::string>& args) const;

 private:
  TempDir m_dir;
  std::string m_path;
};

// Ends every running copy (quit message, then kill), so each test starts clean.
void endRunningCopies();

}  // namespace vantr::e2e
