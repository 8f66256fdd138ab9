// How a command of the serial line reaches the main window: the reader
// thread posts kMsgAutomationInput with the command in wParam and the file's
// name as a global atom in lParam; the window takes the name out of the atom
// on its own thread and deletes the atom. Other programs may post the same
// message, so the window's side accepts any atom.
#pragma once

#include <windows.h>

#include <string>

#include "automation/automation_reader.h"

namespace vantr {

class WindowAutomationTarget : public AutomationTarget {
 public:
  explicit WindowAutomationTarget(HWND window) : m_window(window) {}

  // False, with no atom left behind, when the name cannot travel as an atom
  // or the window's queue refuses the message.
  bool post(int command, const std::string& name) override;

 private:
  const HWND m_window;
};

// The name a kMsgAutomationInput carries, read out of its atom, which is
// deleted; false for no atom (0) or one whose name cannot be read.
bool takeAutomationName(LPARAM atom, std::string& name);

}  // namespace vantr
