// The top-level window: class "OWL_Window", title "Vantorel", fixed size, with
// the work window (MainDialog) as its client and the notification-area icon.
#pragma once

#include <windows.h>

#include "app/startup_plan.h"
#include "win/window_win.h"

namespace vantr {

class MainDialog;

class MainFrame : public Window<MainFrame> {
 public:
  MainFrame(HINSTANCE instance, RunMode mode, MainDialog& dialog);
  ~MainFrame();
  MainFrame(const MainFrame&) = delete;
  MainFrame& operator=(const MainFrame&) = delete;

  static bool registerClass(HINSTANCE instance);
  // Creates the frame and its client; shows it unless the run mode starts hidden.
  bool create();

  LRESULT HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam);

 private:
  void OnCreate();
  void OnCommand(UINT id, WPARAM wParam, LPARAM lParam);
  void OnQuit();
  void OnSecondStart(WPARAM wParam, LPARAM lParam);
  void OnTrayIcon(LPARAM mouseMessage);
  void OnQueryEndSession(LPARAM flags);
  void OnGetMinMaxInfo(MINMAXINFO* info) const;
  void OnClose();
  void OnDestroy();

  void open();
  void hide();
  void fitToClient();
  void addTrayIcon();
  void removeTrayIcon();

  HINSTANCE m_instance;
  RunMode m_mode;
  MainDialog& m_dialog;
  // True while the user has the window open in front of them; decides
  // whether closing asks "Confirm Stop".
  bool m_shown = true;
  bool m_trayIconAdded = false;
  SIZE m_fixedSize = {0, 0};  // the frame's one size, once fitted to its client
  UINT m_taskbarCreatedMsg = 0;
};

}  // namespace vantr
