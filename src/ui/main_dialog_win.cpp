#include "ui/main_dialog_win.h"

#include "resource.h"
#include "win/messages.h"

namespace vantr {

MainDialog::MainDialog(HINSTANCE instance) : m_instance(instance) {}

MainDialog::~MainDialog() { destroy(); }

bool MainDialog::create(HWND parent) {
  return CreateDialogParamA(m_instance, MAKEINTRESOURCEA(IDD_MAIN), parent, &MainDialog::StaticProc,
                            reinterpret_cast<LPARAM>(this)) != nullptr;
}

void MainDialog::destroy() {
  if (m_hwnd) DestroyWindow(m_hwnd);
}

INT_PTR MainDialog::HandleMessage(UINT msg, WPARAM wParam, LPARAM /*lParam*/) {
  switch (msg) {
    case WM_INITDIALOG: OnInitDialog(); return TRUE;
    case WM_COMMAND:
      // Enter and Esc alone never close the work window.
      if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL) return TRUE;
      return FALSE;
    default: return FALSE;
  }
}

void MainDialog::OnInitDialog() { loadButtonBitmaps(); }

void MainDialog::loadButtonBitmaps() {
  static constexpr struct {
    int control;
    const char* resource;
  } kButtons[] = {{IDC_PLAY, "PlayBitmap"}, {IDC_RECORD, "RecordBitmap"}, {IDC_STOP, "StopBitmap"}};
  for (size_t i = 0; i < 3; ++i) {
    // A missing bitmap leaves its button blank.
    m_buttonBitmaps[i].reset(
        static_cast<HBITMAP>(LoadImageA(m_instance, kButtons[i].resource, IMAGE_BITMAP, 0, 0, LR_LOADMAP3DCOLORS)));
    if (m_buttonBitmaps[i].get()) {
      SendDlgItemMessageA(m_hwnd, kButtons[i].control, BM_SETIMAGE, IMAGE_BITMAP,
                          reinterpret_cast<LPARAM>(m_buttonBitmaps[i].get()));
    }
  }
}

}  // namespace vantr
