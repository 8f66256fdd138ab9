// The work window inside the frame: dialog resource 1 with the files list,
// the schedule list, the Play/Record/Stop buttons, the status lines with
// their level meters, the information line and the clock.
#pragma once

#include <windows.h>

#include "win/handles_win.h"
#include "win/window_win.h"

namespace vantr {

class MainDialog : public Dialog<MainDialog> {
 public:
  explicit MainDialog(HINSTANCE instance);
  ~MainDialog();
  MainDialog(const MainDialog&) = delete;
  MainDialog& operator=(const MainDialog&) = delete;

  // Creates the window as the client of parent; false if the template could
  // not be built (for instance a control class that is not registered).
  bool create(HWND parent);
  void destroy();

  // Whether the program may exit now. The password lock's Exit protection
  // will answer here; until the lock exists, exit is always allowed.
  bool exitAllowed() const { return true; }

  INT_PTR HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam);

 private:
  void OnInitDialog();
  void loadButtonBitmaps();

  HINSTANCE m_instance;
  // The buttons show these but do not own them: deleted after the window
  // (members outlive the destructor's body, which destroys the window).
  GdiObject<HBITMAP> m_buttonBitmaps[3];
};

}  // namespace vantr
