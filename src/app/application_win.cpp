#include "app/application_win.h"

#include <cstdlib>
#include <ctime>

#include "app/main_frame_win.h"
#include "automation/automation_reader.h"
#include "automation/serial_port_win.h"
#include "base/app_paths.h"
#include "base/clock.h"
#include "ui/db_controls_win.h"
#include "ui/main_dialog_win.h"

namespace vantr {

int runMainApplication(HINSTANCE instance, RunMode mode) {
  // Every time value in the program is the local wall clock counted as if it
  // were GMT: with this zone the C library's local and UTC conversions agree.
  _putenv("TZ=GMT0");
  _tzset();

  // Dialog templates name the level controls, so their classes come first.
  registerDbControls(instance);
  if (!MainFrame::registerClass(instance)) return 1;

  // One serial reader for the whole run, started now: it reads the
  // automation mode itself and ends at once unless the line is in use. It
  // outlives the window, which is its target while it exists, and stops
  // (within one read cycle) when the run ends.
  // Its pause between empty reads is the system's Sleep: the C++ library's
  // sleep waits on an event of its thread, which under Wine costs a round
  // trip to the server at every pause.
  WindowsSerialPort serialPort;
  AutomationReader automation(appPaths().settingsFile, serialPort, systemClock(),
                              [](int milliseconds) { Sleep(static_cast<DWORD>(milliseconds)); });
  automation.start();

  // The dialog outlives the frame: the frame's destruction closes it.
  MainDialog dialog(instance, appPaths(), &automation);
  MainFrame frame(instance, mode, dialog);
  if (!frame.create()) return 1;

  MSG msg;
  while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
    if (dialog.preTranslateMessage(msg)) continue;
    if (dialog.hwnd() && IsDialogMessageA(dialog.hwnd(), &msg)) continue;
    TranslateMessage(&msg);
    DispatchMessageA(&msg);
  }
  return static_cast<int>(msg.wParam);
}

}  // namespace vantr
