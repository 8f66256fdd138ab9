#include "ui/db_controls_win.h"

#include "ui/db_controls_internal_win.h"
#include "win/window_win.h"

namespace vantr {

bool registerControlClass(HINSTANCE instance, const char* name, WNDPROC proc, int extraBytes) {
  static_assert(sizeof(void*) <= 12, "each control keeps its object in its window's extra data");
  WNDCLASSEXA wc{};
  wc.style = CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW;
  wc.lpfnWndProc = proc;
  wc.cbWndExtra = extraBytes;
  wc.hInstance = instance;
  wc.hCursor = LoadCursor(nullptr, IDC_ARROW);
  wc.lpszClassName = name;
  return registerWindowClass(wc);
}

bool registerDbControls(HINSTANCE instance) {
  const bool display = registerDbDisplayClass(instance);
  const bool edit = registerDbEditClass(instance);
  return display && edit;
}

}  // namespace vantr
