#include "app/application_win.h"

#include <cstdlib>
#include <ctime>

#include "app/main_frame_win.h"
#include "base/app_paths.h"
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

  // The dialog outlives the frame: the frame's destruction closes it.
  MainDialog dialog(instance, appPaths());
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
