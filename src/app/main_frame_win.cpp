#include "app/main_frame_win.h"

#include <shellapi.h>

#include <cstring>

#include "app/service_win.h"
#include "install/system_integration_win.h"
#include "resource.h"
#include "ui/main_dialog_win.h"
#include "win/handles_win.h"
#include "win/messages.h"

namespace vantr {

namespace {
// Fixed size: no sizing border and no maximise box; it can be minimised.
constexpr DWORD kFrameStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_CLIPCHILDREN;
}  // namespace

MainFrame::MainFrame(HINSTANCE instance, RunMode mode, MainDialog& dialog)
    : m_instance(instance), m_mode(mode), m_dialog(dialog) {}

MainFrame::~MainFrame() {
  if (m_hwnd) DestroyWindow(m_hwnd);
}

bool MainFrame::registerClass(HINSTANCE instance) {
  WNDCLASSEXA wc{};
  wc.style = CS_DBLCLKS;
  wc.lpfnWndProc = &MainFrame::StaticProc;
  wc.hInstance = instance;
  wc.hIcon = LoadIconA(instance, MAKEINTRESOURCEA(IDI_APP_LARGE));
  wc.hIconSm = static_cast<HICON>(LoadImageA(instance, MAKEINTRESOURCEA(IDI_APP_SMALL), IMAGE_ICON, 16, 16, LR_SHARED));
  wc.hCursor = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));  // IDC_ARROW
  wc.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  wc.lpszClassName = kFrameClassName;
  return registerWindowClass(wc);
}

bool MainFrame::create() {
  // The menu belongs to the frame once the frame exists.
  OwnedMenu menu(LoadMenuA(m_instance, MAKEINTRESOURCEA(IDM_FRAME)));
  if (!CreateWindowExA(0, kFrameClassName, kFrameTitle, kFrameStyle, CW_USEDEFAULT, CW_USEDEFAULT, 400, 300, nullptr,
                       menu.get(), m_instance, this))
    return false;
  menu.release();
  if (!m_dialog.hwnd()) return false;
  if (startsHidden(m_mode)) {
    hide();
  } else {
    ShowWindow(m_hwnd, SW_SHOW);
    UpdateWindow(m_hwnd);
  }
  return true;
}

LRESULT MainFrame::HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
  switch (msg) {
    case WM_CREATE: OnCreate(); return 0;
    case WM_COMMAND: OnCommand(LOWORD(wParam), wParam, lParam); return 0;
    case WM_INITMENUPOPUP:
      // The menu's entries are enabled by the work window's rules.
      if (m_dialog.hwnd()) SendMessageA(m_dialog.hwnd(), msg, wParam, lParam);
      return 0;
    case WM_SETFOCUS:
      if (m_dialog.hwnd()) SetFocus(m_dialog.hwnd());
      return 0;
    case WM_QUERYENDSESSION: OnQueryEndSession(lParam); return TRUE;
    case WM_GETMINMAXINFO: OnGetMinMaxInfo(reinterpret_cast<MINMAXINFO*>(lParam)); return 0;
    case WM_SIZE:
      // Maximised anyway (another program's ShowWindow): back to normal.
      if (wParam == SIZE_MAXIMIZED) PostMessageA(m_hwnd, WM_SYSCOMMAND, SC_RESTORE, 0);
      return 0;
    case WM_SYSCOMMAND:
      // No maximise box is not enough: a maximise or size request can still
      // come from the system menu's keyboard or from another program.
      if ((wParam & 0xFFF0) == SC_MAXIMIZE || (wParam & 0xFFF0) == SC_SIZE) return 0;
      return DefaultProc(msg, wParam, lParam);
    case WM_CLOSE: OnClose(); return 0;
    case WM_DESTROY: OnDestroy(); return 0;
    case kMsgQuit: OnQuit(); return 0;
    case kMsgSecondStart: OnSecondStart(wParam, lParam); return 0;
    case kMsgTrayIcon: OnTrayIcon(lParam); return 0;
    default:
      // Explorer restarted: its notification area forgot our icon.
      if (m_taskbarCreatedMsg && msg == m_taskbarCreatedMsg) {
        m_trayIconAdded = false;
        addTrayIcon();
        return 0;
      }
      return DefaultProc(msg, wParam, lParam);
  }
}

void MainFrame::OnCreate() {
  SendMessageA(m_hwnd, WM_SETICON, ICON_BIG,
               reinterpret_cast<LPARAM>(LoadIconA(m_instance, MAKEINTRESOURCEA(IDI_APP_LARGE))));
  SendMessageA(
      m_hwnd, WM_SETICON, ICON_SMALL,
      reinterpret_cast<LPARAM>(LoadImageA(m_instance, MAKEINTRESOURCEA(IDI_APP_SMALL), IMAGE_ICON, 16, 16, LR_SHARED)));
  m_taskbarCreatedMsg = RegisterWindowMessageA("TaskbarCreated");
  if (m_dialog.create(m_hwnd)) fitToClient();
  addTrayIcon();
}

void MainFrame::fitToClient() {
  RECT client;
  GetWindowRect(m_dialog.hwnd(), &client);
  OffsetRect(&client, -client.left, -client.top);
  RECT outer = client;
  AdjustWindowRectEx(&outer, kFrameStyle, TRUE, 0);
  SetWindowPos(m_hwnd, nullptr, 0, 0, outer.right - outer.left, outer.bottom - outer.top,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  // A narrow frame wraps its menu bar onto a second line; grow by what the
  // client lost so the work window is never cut off.
  RECT now;
  GetClientRect(m_hwnd, &now);
  const int missing = (client.bottom - client.top) - (now.bottom - now.top);
  if (missing > 0) {
    SetWindowPos(m_hwnd, nullptr, 0, 0, outer.right - outer.left, outer.bottom - outer.top + missing,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  }
  SetWindowPos(m_dialog.hwnd(), nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  RECT frame;
  GetWindowRect(m_hwnd, &frame);
  m_fixedSize = {frame.right - frame.left, frame.bottom - frame.top};
}

void MainFrame::OnGetMinMaxInfo(MINMAXINFO* info) const {
  if (m_fixedSize.cx == 0) return;  // not fitted yet
  info->ptMaxSize = {m_fixedSize.cx, m_fixedSize.cy};
  info->ptMinTrackSize = info->ptMaxSize;
  info->ptMaxTrackSize = info->ptMaxSize;
}

void MainFrame::OnCommand(UINT id, WPARAM wParam, LPARAM lParam) {
  switch (id) {
    case CM_OPEN_WINDOW: open(); break;
    case CM_CLOSE_WINDOW: hide(); break;
    case CM_EXIT: PostMessageA(m_hwnd, WM_CLOSE, 0, 0); break;
    default:
      // Every other menu command belongs to the work window.
      if (m_dialog.hwnd()) SendMessageA(m_dialog.hwnd(), WM_COMMAND, wParam, lParam);
      break;
  }
}

void MainFrame::open() {
  ShowWindow(m_hwnd, SW_RESTORE);
  SetActiveWindow(m_hwnd);
  SetForegroundWindow(m_hwnd);
  m_shown = true;
}

void MainFrame::hide() {
  // Hiding stops nothing: recording, playback and the scheduler go on.
  ShowWindow(m_hwnd, SW_HIDE);
  m_shown = false;
}

void MainFrame::OnQuit() {
  m_shown = false;
  PostMessageA(m_hwnd, WM_CLOSE, 0, 0);
}

void MainFrame::OnSecondStart(WPARAM wParam, LPARAM lParam) {
  // Adding the icon again restores it if Explorer lost it.
  removeTrayIcon();
  addTrayIcon();
  if (wParam == 0) {
    hide();
  } else {
    open();
  }
  if (m_dialog.hwnd()) PostMessageA(m_dialog.hwnd(), kMsgSecondStart, wParam, lParam);
}

void MainFrame::OnTrayIcon(LPARAM mouseMessage) {
  if (mouseMessage == WM_LBUTTONDOWN) {
    open();
  } else if (mouseMessage == WM_RBUTTONDOWN) {
    OwnedMenu menu(CreatePopupMenu());
    if (!menu.get()) return;
    AppendMenuA(menu.get(), MF_STRING, CM_OPEN_WINDOW, "&Open Vantorel");
    AppendMenuA(menu.get(), MF_STRING, CM_EXIT, "E&xit");
    POINT at;
    GetCursorPos(&at);
    // Without the foreground the menu would not close when the user clicks
    // elsewhere; the posted null message lets it close cleanly.
    SetForegroundWindow(m_hwnd);
    TrackPopupMenu(menu.get(), TPM_RIGHTBUTTON, at.x, at.y, 0, m_hwnd, nullptr);
    PostMessageA(m_hwnd, WM_NULL, 0, 0);
  }
}

void MainFrame::OnQueryEndSession(LPARAM flags) {
  m_shown = false;
  // On Windows 95/98 a shutdown does not close the program for it, so it
  // closes itself; a log-off leaves it running in the notification area.
  if (!(flags & ENDSESSION_LOGOFF) && !isWindowsNTPlatform()) PostMessageA(m_hwnd, WM_CLOSE, 0, 0);
}

void MainFrame::OnClose() {
  if (!m_dialog.exitAllowed()) return;
  if (!m_shown) {
    DestroyWindow(m_hwnd);
    return;
  }
  const int answer = MessageBoxA(m_hwnd, "Do you want Vantorel to continue running in the background?", "Confirm Stop",
                                 MB_YESNOCANCEL | MB_ICONQUESTION);
  if (answer == IDYES) {
    hide();
  } else if (answer == IDNO) {
    DestroyWindow(m_hwnd);
  }
}

void MainFrame::OnDestroy() {
  // The work window stops its players and recorders as it goes; then the
  // icon leaves the notification area and the message loop ends.
  m_dialog.destroy();
  removeTrayIcon();
  PostQuitMessage(0);
}

void MainFrame::addTrayIcon() {
  if (m_trayIconAdded) return;
  NOTIFYICONDATAA data{};
  data.cbSize = sizeof data;
  data.hWnd = m_hwnd;
  data.uID = kTrayIconId;
  data.uFlags = NIF_ICON | NIF_MESSAGE | NIF_TIP;
  data.uCallbackMessage = kMsgTrayIcon;
  data.hIcon =
      static_cast<HICON>(LoadImageA(m_instance, MAKEINTRESOURCEA(IDI_APP_SMALL), IMAGE_ICON, 16, 16, LR_SHARED));
  std::strncpy(data.szTip, kFrameTitle, sizeof data.szTip - 1);
  m_trayIconAdded = Shell_NotifyIconA(NIM_ADD, &data) != FALSE;
}

void MainFrame::removeTrayIcon() {
  NOTIFYICONDATAA data{};
  data.cbSize = sizeof data;
  data.hWnd = m_hwnd;
  data.uID = kTrayIconId;
  Shell_NotifyIconA(NIM_DELETE, &data);
  m_trayIconAdded = false;
}

}  // namespace vantr
