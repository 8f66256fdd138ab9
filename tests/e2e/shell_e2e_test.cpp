// The recording system's shell as another process sees it: single running
// copy, hidden starts, the notification icon and its menu, "Confirm Stop",
// the quit message, and the fixed frame with the work window's layout.
#include <windows.h>

#include <gtest/gtest.h>
#include <shellapi.h>

#include <cstdio>
#include <cstring>

#include "vantr_process.h"

namespace vantr::e2e {
namespace {

constexpr UINT kQuit = 1044;
constexpr UINT kTrayIcon = 1046;

class Shell : public ::testing::Test {
 protected:
  void SetUp() override { endRunningCopies(); }
  void TearDown() override { endRunningCopies(); }

  // Starts vantr.exe and waits for its frame.
  HWND startAndFindFrame(const std::vector<std::string>& args) {
    m_process = m_folder.start(args);
    if (!m_process) return nullptr;
    HWND frame = nullptr;
    waitFor([&] { return (frame = findFrame()) != nullptr; }, 20000);
    return frame;
  }

  bool ended(int ms = 10000) { return m_process->wait(ms); }

  // Whether the program ends within ten seconds without "Confirm Stop".
  bool endsWithoutAsking() {
    bool asked = false;
    const bool gone = waitFor([&] {
      asked = asked || findBox("Confirm Stop");
      return m_process->wait(0);
    });
    return gone && !asked;
  }

  // Whether the notification area holds the frame's icon (id 24): changing
  // an icon only succeeds for one that is there.
  static bool trayIconPresent(HWND frame, UINT id = 24) {
    NOTIFYICONDATAA data{};
    data.cbSize = sizeof data;
    data.hWnd = frame;
    data.uID = id;
    data.uFlags = NIF_TIP;
    std::strcpy(data.szTip, "Vantorel");
    return Shell_NotifyIconA(NIM_MODIFY, &data) != FALSE;
  }

  ProgramFolder m_folder;
  std::unique_ptr<ChildProcess> m_process;
};

TEST_F(Shell, SecondStartHandsOverToTheRunningCopy) {
  HWND frame = startAndFindFrame({"/logon"});
  ASSERT_TRUE(frame) << "no frame window";
  EXPECT_FALSE(IsWindowVisible(frame)) << "/logon starts hidden";

  // A second start with "/logon" leaves the first hidden and ends.
  auto second = m_folder.start({"/logon"});
  ASSERT_TRUE(second);
  int code = -1;
  ASSERT_TRUE(second->wait(15000, &code)) << "the second copy kept running";
  EXPECT_EQ(code, 0);
  Sleep(300);
  EXPECT_FALSE(IsWindowVisible(frame));

  // A second start with no argument brings the first to the front and ends.
  auto third = m_folder.start({});
  ASSERT_TRUE(third);
  ASSERT_TRUE(third->wait(15000, &code));
  EXPECT_EQ(code, 0);
  EXPECT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; }, 5000)) << "the first copy did not show itself";
  EXPECT_EQ(findFrame(), frame) << "only one copy may run";
  EXPECT_FALSE(ended(0));
}

TEST_F(Shell, LogonStartsHiddenWithTheTrayIconAndItsMenu) {
  HWND frame = startAndFindFrame({"/logon", "/service"});  // only the first argument counts
  ASSERT_TRUE(frame);
  EXPECT_FALSE(IsWindowVisible(frame));
  EXPECT_TRUE(waitFor([&] { return trayIconPresent(frame); }, 5000)) << "no notification icon 24";
  EXPECT_FALSE(trayIconPresent(frame, 25)) << "the icon check must tell icons apart";

  // Right button: the popup. Menus are private to their process under Wine,
  // so its two entries are checked by what their mnemonics do: "&Open
  // Vantorel" opens the window, "E&xit" asks to stop.
  auto popupShown = [] {
    HWND popup = FindWindowA("#32768", nullptr);
    return popup && IsWindowVisible(popup) ? popup : nullptr;
  };
  PostMessageA(frame, kTrayIcon, 0, WM_RBUTTONDOWN);
  HWND popup = nullptr;
  ASSERT_TRUE(waitFor([&] { return (popup = popupShown()) != nullptr; }, 5000)) << "no popup menu";
  PostMessageA(popup, WM_CHAR, 'o', 0);
  ASSERT_TRUE(waitFor([&] { return !popupShown(); }, 5000));
  EXPECT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; }, 5000)) << "\"&Open Vantorel\" did not open";

  PostMessageA(frame, kTrayIcon, 0, WM_RBUTTONDOWN);
  ASSERT_TRUE(waitFor([&] { return (popup = popupShown()) != nullptr; }, 5000));
  PostMessageA(popup, WM_CHAR, 'x', 0);
  HWND box = nullptr;
  ASSERT_TRUE(waitFor([&] { return (box = findBox("Confirm Stop")) != nullptr; })) << "\"E&xit\" did not ask";
  PostMessageA(GetDlgItem(box, IDYES), BM_CLICK, 0, 0);
  ASSERT_TRUE(waitFor([&] { return !IsWindowVisible(frame); }));

  // Left button opens the window.
  PostMessageA(frame, kTrayIcon, 0, WM_LBUTTONDOWN);
  EXPECT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; }, 5000));
  EXPECT_FALSE(ended(0));
}

TEST_F(Shell, CloseBoxAsksConfirmStop) {
  struct Row {
    int button;
    bool keepsRunning;
    bool staysVisible;
  } rows[] = {{IDCANCEL, true, true}, {IDYES, true, false}, {IDNO, false, false}};
  for (const Row& row : rows) {
    endRunningCopies();
    HWND frame = startAndFindFrame({});
    ASSERT_TRUE(frame);
    ASSERT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; }));
    PostMessageA(frame, WM_SYSCOMMAND, SC_CLOSE, 0);  // the caption's close box
    HWND box = nullptr;
    ASSERT_TRUE(waitFor([&] { return (box = findBox("Confirm Stop")) != nullptr; })) << "no \"Confirm Stop\"";
    EXPECT_EQ(boxText(box), "Do you want Vantorel to continue running in the background?");
    ASSERT_TRUE(GetDlgItem(box, IDYES) && GetDlgItem(box, IDNO) && GetDlgItem(box, IDCANCEL));
    PostMessageA(GetDlgItem(box, row.button), BM_CLICK, 0, 0);
    ASSERT_TRUE(waitFor([&] { return !findBox("Confirm Stop"); }));
    EXPECT_EQ(!ended(row.keepsRunning ? 1500 : 10000), row.keepsRunning) << "button " << row.button;
    if (row.keepsRunning) {
      EXPECT_EQ(IsWindowVisible(frame) != FALSE, row.staysVisible) << "button " << row.button;
    }
  }
}

TEST_F(Shell, ExitAsksAgainOnlyAfterTheWindowWasOpened) {
  HWND frame = startAndFindFrame({});
  ASSERT_TRUE(frame);
  PostMessageA(frame, WM_CLOSE, 0, 0);
  HWND box = nullptr;
  ASSERT_TRUE(waitFor([&] { return (box = findBox("Confirm Stop")) != nullptr; }));
  PostMessageA(GetDlgItem(box, IDYES), BM_CLICK, 0, 0);
  ASSERT_TRUE(waitFor([&] { return !IsWindowVisible(frame); }));

  // Opened from the tray, then Exit from the tray menu: asked again.
  PostMessageA(frame, WM_COMMAND, 197, 0);
  ASSERT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; }));
  PostMessageA(frame, WM_COMMAND, 199, 0);
  ASSERT_TRUE(waitFor([&] { return (box = findBox("Confirm Stop")) != nullptr; }));
  PostMessageA(GetDlgItem(box, IDYES), BM_CLICK, 0, 0);
  ASSERT_TRUE(waitFor([&] { return !IsWindowVisible(frame); }));

  // Hidden since the last question: Exit closes without asking.
  PostMessageA(frame, WM_COMMAND, 199, 0);
  EXPECT_TRUE(endsWithoutAsking());
}

TEST_F(Shell, EndOfSessionAnswersYesAndLeavesExitUnasked) {
  HWND frame = startAndFindFrame({});
  ASSERT_TRUE(frame);
  ASSERT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; }));
  // A log-off and, on Windows NT, a shutdown: the program agrees and keeps
  // running until the system ends it.
  for (LPARAM flags : {static_cast<LPARAM>(ENDSESSION_LOGOFF), static_cast<LPARAM>(0)}) {
    DWORD_PTR answer = 0;
    ASSERT_TRUE(SendMessageTimeoutA(frame, WM_QUERYENDSESSION, 0, flags, SMTO_NORMAL, 5000, &answer));
    EXPECT_EQ(answer, static_cast<DWORD_PTR>(TRUE));
  }
  EXPECT_FALSE(ended(500));
  // The question is not asked while the session ends.
  PostMessageA(frame, WM_COMMAND, 199, 0);
  EXPECT_TRUE(endsWithoutAsking());
}

TEST_F(Shell, QuitMessageEndsWithoutAskingAndWritesNoSettings) {
  HWND frame = startAndFindFrame({});
  ASSERT_TRUE(frame);
  ASSERT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; }));
  PostMessageA(frame, kQuit, 0, 0);
  EXPECT_TRUE(endsWithoutAsking());
  EXPECT_FALSE(findFrame());
  // Nothing is written until a setting is changed.
  EXPECT_EQ(m_folder.entries(), std::vector<std::string>{"vantr.exe"});
}

TEST_F(Shell, FixedFrameHoldsTheWorkWindowLayout) {
  HWND frame = startAndFindFrame({});
  ASSERT_TRUE(frame);
  ASSERT_TRUE(waitFor([&] { return IsWindowVisible(frame) != FALSE; }));
  const LONG style = GetWindowLongA(frame, GWL_STYLE);
  EXPECT_FALSE(style & WS_THICKFRAME) << "the frame must not be resizable";
  EXPECT_FALSE(style & WS_MAXIMIZEBOX);
  EXPECT_TRUE(style & WS_MINIMIZEBOX);
  EXPECT_TRUE(style & WS_SYSMENU);
  EXPECT_TRUE(GetMenu(frame));

  RECT before, after;
  GetWindowRect(frame, &before);
  SendMessageA(frame, WM_SYSCOMMAND, SC_MAXIMIZE, 0);
  ShowWindow(frame, SW_MAXIMIZE);
  MoveWindow(frame, before.left, before.top, 900, 700, TRUE);
  EXPECT_TRUE(waitFor([&] { return !IsZoomed(frame); }, 3000)) << "the frame stayed maximised";
  GetWindowRect(frame, &after);
  EXPECT_TRUE(EqualRect(&before, &after)) << "the frame changed size";

  // The work window fills the client area.
  HWND dialog = FindWindowExA(frame, nullptr, "#32770", nullptr);
  ASSERT_TRUE(dialog) << "no work window in the frame";
  RECT client, work;
  GetClientRect(frame, &client);
  GetWindowRect(dialog, &work);
  EXPECT_NEAR(work.right - work.left, client.right, 1);
  EXPECT_NEAR(work.bottom - work.top, client.bottom, 1);

  // Every control where the 300 x 132 layout puts it, whatever the font.
  const double ux = (work.right - work.left) / 300.0;
  const double uy = (work.bottom - work.top) / 132.0;
  struct Control {
    int id;
    const char* className;
    int x, y, w, h;
  } controls[] = {
      {1001, "ListBox", 2, 9, 76, 80},      {111, "Button", 2, 90, 26, 16},      {112, "Button", 28, 90, 25, 16},
      {119, "Button", 53, 90, 25, 16},      {1002, "ListBox", 84, 9, 214, 96},   {1091, "Static", 0, 108, 149, 11},
      {1093, "LDBDisplay", 92, 109, 55, 9}, {1092, "Static", 151, 108, 149, 11}, {1094, "LDBDisplay", 243, 109, 55, 9},
      {1090, "Static", 0, 120, 264, 11},    {1095, "Static", 266, 120, 34, 11},
  };
  for (const Control& c : controls) {
    HWND control = GetDlgItem(dialog, c.id);
    ASSERT_TRUE(control) << "control " << c.id;
    char className[64] = {};
    GetClassNameA(control, className, sizeof className);
    EXPECT_STRCASEEQ(className, c.className) << "control " << c.id;
    RECT r;
    GetWindowRect(control, &r);
    MapWindowPoints(HWND_DESKTOP, dialog, reinterpret_cast<POINT*>(&r), 2);
    const double tolerance = 2.5;
    EXPECT_NEAR(r.left / ux, c.x, tolerance) << "control " << c.id;
    EXPECT_NEAR(r.top / uy, c.y, tolerance) << "control " << c.id;
    EXPECT_NEAR((r.right - r.left) / ux, c.w, tolerance) << "control " << c.id;
    if (c.id != 1001 && c.id != 1002) {  // list boxes round their height to whole lines
      EXPECT_NEAR((r.bottom - r.top) / uy, c.h, tolerance) << "control " << c.id;
    }
  }
  const LONG listStyle = GetWindowLongA(GetDlgItem(dialog, 1001), GWL_STYLE);
  // (WS_VSCROLL is in the template too; a list box clears it while there is nothing to scroll.)
  EXPECT_EQ(listStyle & (LBS_SORT | LBS_EXTENDEDSEL | LBS_NOTIFY), LBS_SORT | LBS_EXTENDEDSEL | LBS_NOTIFY);
  EXPECT_TRUE(GetWindowLongA(GetDlgItem(dialog, 1095), GWL_STYLE) & SS_RIGHT);

  // Enter and Esc alone never close the work window.
  SendMessageA(dialog, WM_COMMAND, IDOK, 0);
  SendMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
  EXPECT_TRUE(IsWindow(dialog));
  EXPECT_FALSE(ended(200));
}

}  // namespace
}  // namespace vantr::e2e

namespace vantr::e2e {
namespace {

// Owns a service control manager or service handle.
class ServiceHandle {
 public:
  explicit ServiceHandle(SC_HANDLE h) : m_handle(h) {}
  ~ServiceHandle() {
    if (m_handle) CloseServiceHandle(m_handle);
  }
  ServiceHandle(const ServiceHandle&) = delete;
  ServiceHandle& operator=(const ServiceHandle&) = delete;
  SC_HANDLE get() const { return m_handle; }

 private:
  SC_HANDLE m_handle;
};

DWORD serviceState(SC_HANDLE service) {
  SERVICE_STATUS status{};
  return QueryServiceStatus(service, &status) ? status.dwCurrentState : 0;
}

TEST(Service, RunsHiddenUnderTheServiceManagerAndQuitsOnShutdown) {
  endRunningCopies();
  ProgramFolder folder;
  ServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  ASSERT_TRUE(manager.get()) << "no service control manager, error " << GetLastError();
  // The dispatcher registers as "VANTR"; the service is created under that name here.
  if (SC_HANDLE old = OpenServiceA(manager.get(), "VANTR", SERVICE_ALL_ACCESS)) {
    DeleteService(old);
    CloseServiceHandle(old);
  }
  const std::string command = "\"" + folder.path() + "\\vantr.exe\" /service";
  ServiceHandle service(CreateServiceA(
      manager.get(), "VANTR", "VANTR", SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS | SERVICE_INTERACTIVE_PROCESS,
      SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE, command.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
  ASSERT_TRUE(service.get()) << "CreateService failed, error " << GetLastError();
  struct Cleanup {
    SC_HANDLE s;
    ~Cleanup() {
      endRunningCopies();
      DeleteService(s);
    }
  } cleanup{service.get()};

  ASSERT_TRUE(StartServiceA(service.get(), 0, nullptr)) << "StartService failed, error " << GetLastError();
  HWND frame = nullptr;
  ASSERT_TRUE(waitFor([&] { return (frame = findFrame()) != nullptr; }, 20000)) << "the service showed no frame";
  EXPECT_TRUE(waitFor([&] { return serviceState(service.get()) == SERVICE_RUNNING; }));
  EXPECT_FALSE(IsWindowVisible(frame)) << "a service runs hidden";

  // The shutdown control: the handler posts the quit message to the frame,
  // the program ends, and the service reports it stopped.
  SERVICE_STATUS status{};
  const bool delivered = ControlService(service.get(), SERVICE_CONTROL_SHUTDOWN, &status) != FALSE;
  const DWORD error = GetLastError();
  if (!delivered) {
    // Windows lets only the system send the shutdown control, and Wine
    // refuses it the same way (invalid parameter).
    EXPECT_TRUE(error == ERROR_INVALID_PARAMETER || error == ERROR_INVALID_SERVICE_CONTROL)
        << "ControlService failed, error " << error;
    PostMessageA(frame, 1044, 0, 0);  // what the handler would do
  }
  EXPECT_TRUE(waitFor([&] { return findFrame() == nullptr; }, 15000)) << "the frame did not close";
  EXPECT_TRUE(waitFor([&] { return serviceState(service.get()) == SERVICE_STOPPED; }, 15000))
      << "state " << serviceState(service.get());
  std::printf("shutdown control %s by the service manager\n", delivered ? "delivered" : "refused");
}

}  // namespace
}  // namespace vantr::e2e
