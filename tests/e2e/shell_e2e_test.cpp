// The recording system's shell as another process sees it: single running
// copy, hidden starts and the notification icon, "Confirm Stop", the quit
// message, the fixed frame, the end of a session and the service run.
#include <windows.h>

#include <gtest/gtest.h>
#include <shellapi.h>

#include <cstring>

#include "vantr_process.h"
#include "win/handles_win.h"

namespace vantr::e2e {
namespace {

constexpr UINT kQuit = 1044;

class Shell : public ::testing::Test {
 protected:
  void SetUp() override { endRunningCopies(); }
  void TearDown() override { endRunningCopies(); }

  // Starts vantr.exe and waits for its frame (and, when asked, for it to show).
  HWND start(const std::vector<std::string>& args, bool visible = true) {
    m_process = m_folder.start(args);
    HWND frame = nullptr;
    if (m_process && waitFor([&] { return (frame = findFrame()) != nullptr; }, 20000) && visible) {
      waitFor([&] { return IsWindowVisible(frame) != FALSE; });
    }
    return frame;
  }

  // Whether the program ends within ten seconds without "Confirm Stop".
  bool endsWithoutAsking() {
    bool asked = false;
    const bool gone = waitFor([&] {
      asked = asked || findBox("Confirm Stop");
      return m_process->wait(0);
    });
    return gone && !asked;
  }

  ProgramFolder m_folder;
  std::unique_ptr<ChildProcess> m_process;
};

// Whether the notification area holds the frame's icon: changing an icon only
// succeeds for one that is there.
bool trayIconPresent(HWND frame, UINT id) {
  NOTIFYICONDATAA data{};
  data.cbSize = sizeof data;
  data.hWnd = frame;
  data.uID = id;
  data.uFlags = NIF_TIP;
  std::strcpy(data.szTip, "Vantorel");
  return Shell_NotifyIconA(NIM_MODIFY, &data) != FALSE;
}

TEST_F(Shell, LogonStartsHiddenAndSecondStartsHandOver) {
  HWND frame = start({"/logon", "/service"}, false);  // only the first argument counts
  ASSERT_TRUE(frame) << "no frame window";
  EXPECT_FALSE(IsWindowVisible(frame)) << "/logon starts hidden";
  EXPECT_TRUE(waitFor([&] { return trayIconPresent(frame, 24); }, 5000)) << "no notification icon 24";
  EXPECT_FALSE(trayIconPresent(frame, 25)) << "the icon check must tell icons apart";

  // A second start with "/logon" leaves the first hidden and ends; one with
  // no argument brings the first to the front and ends.
  for (const bool logon : {true, false}) {
    auto second = m_folder.start(logon ? std::vector<std::string>{"/logon"} : std::vector<std::string>{});
    int code = -1;
    ASSERT_TRUE(second && second->wait(15000, &code)) << "the second copy kept running";
    EXPECT_EQ(code, 0);
    EXPECT_EQ(waitFor([&] { return IsWindowVisible(frame) != FALSE; }, logon ? 500 : 5000), !logon);
  }
  EXPECT_EQ(findFrame(), frame);
  EXPECT_FALSE(m_process->wait(0)) << "the first copy ended";
}

TEST_F(Shell, CloseBoxAsksConfirmStop) {
  struct {
    int button;
    bool keepsRunning, staysVisible;
  } rows[] = {{IDCANCEL, true, true}, {IDYES, true, false}, {IDNO, false, false}};
  for (const auto& row : rows) {
    endRunningCopies();
    HWND frame = start({});
    ASSERT_TRUE(frame && IsWindowVisible(frame));
    PostMessageA(frame, WM_SYSCOMMAND, SC_CLOSE, 0);  // the caption's close box
    HWND box = nullptr;
    ASSERT_TRUE(waitFor([&] { return (box = findBox("Confirm Stop")) != nullptr; })) << "no \"Confirm Stop\"";
    EXPECT_EQ(boxText(box), "Do you want Vantorel to continue running in the background?");
    PostMessageA(GetDlgItem(box, row.button), BM_CLICK, 0, 0);
    ASSERT_TRUE(waitFor([&] { return !findBox("Confirm Stop"); }));
    EXPECT_EQ(!m_process->wait(row.keepsRunning ? 1500 : 10000), row.keepsRunning) << "button " << row.button;
    if (row.keepsRunning) {
      EXPECT_EQ(IsWindowVisible(frame) != FALSE, row.staysVisible) << "button " << row.button;
    }
  }
}

TEST_F(Shell, FrameIsFixedAndTheQuitMessageEndsWithoutAsking) {
  HWND frame = start({});
  ASSERT_TRUE(frame);
  const LONG style = GetWindowLongA(frame, GWL_STYLE);
  EXPECT_EQ(style & (WS_THICKFRAME | WS_MAXIMIZEBOX | WS_MINIMIZEBOX | WS_SYSMENU), WS_MINIMIZEBOX | WS_SYSMENU);
  RECT before, after;
  GetWindowRect(frame, &before);
  SendMessageA(frame, WM_SYSCOMMAND, SC_MAXIMIZE, 0);
  ShowWindow(frame, SW_MAXIMIZE);
  MoveWindow(frame, before.left, before.top, 900, 700, TRUE);
  EXPECT_TRUE(waitFor([&] { return !IsZoomed(frame); }, 3000)) << "the frame stayed maximised";
  GetWindowRect(frame, &after);
  EXPECT_TRUE(EqualRect(&before, &after)) << "the frame changed size";

  PostMessageA(frame, kQuit, 0, 0);
  EXPECT_TRUE(endsWithoutAsking());
}

TEST_F(Shell, EndOfSessionAnswersYesAndLeavesExitUnasked) {
  HWND frame = start({});
  ASSERT_TRUE(frame);
  // A log-off and, on Windows NT, a shutdown: the program agrees and keeps
  // running until the system ends it.
  for (LPARAM flags : {static_cast<LPARAM>(ENDSESSION_LOGOFF), static_cast<LPARAM>(0)}) {
    DWORD_PTR answer = 0;
    ASSERT_TRUE(SendMessageTimeoutA(frame, WM_QUERYENDSESSION, 0, flags, SMTO_NORMAL, 5000, &answer));
    EXPECT_EQ(answer, static_cast<DWORD_PTR>(TRUE));
  }
  EXPECT_FALSE(m_process->wait(500));
  PostMessageA(frame, WM_COMMAND, 199, 0);  // Exit: not asked while the session ends
  EXPECT_TRUE(endsWithoutAsking());
}

DWORD serviceState(SC_HANDLE service) {
  SERVICE_STATUS status{};
  return QueryServiceStatus(service, &status) ? status.dwCurrentState : 0;
}

TEST(Service, RunsHiddenUnderTheServiceManagerAndQuitsOnShutdown) {
  endRunningCopies();
  ProgramFolder folder;
  // Declared first, so that the service is deleted after the program ends.
  struct Handles {
    ServiceHandle manager{OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)}, service;
    ~Handles() {
      endRunningCopies();
      if (service) DeleteService(service.get());
    }
  } sc;
  ASSERT_TRUE(sc.manager) << "no service control manager, error " << GetLastError();
  // The dispatcher registers as "VANTR"; the service is created under that name here.
  if (ServiceHandle old{OpenServiceA(sc.manager.get(), "VANTR", SERVICE_ALL_ACCESS)}) DeleteService(old.get());
  const std::string command = "\"" + folder.path() + "\\vantr.exe\" /service";
  sc.service.reset(CreateServiceA(sc.manager.get(), "VANTR", "VANTR", SERVICE_ALL_ACCESS,
                                  SERVICE_WIN32_OWN_PROCESS | SERVICE_INTERACTIVE_PROCESS, SERVICE_DEMAND_START,
                                  SERVICE_ERROR_IGNORE, command.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
  ASSERT_TRUE(sc.service) << "CreateService failed, error " << GetLastError();
  ASSERT_TRUE(StartServiceA(sc.service.get(), 0, nullptr)) << "StartService failed, error " << GetLastError();
  HWND frame = nullptr;
  ASSERT_TRUE(waitFor([&] { return (frame = findFrame()) != nullptr; }, 20000)) << "the service showed no frame";
  EXPECT_TRUE(waitFor([&] { return serviceState(sc.service.get()) == SERVICE_RUNNING; }));
  EXPECT_FALSE(IsWindowVisible(frame)) << "a service runs hidden";

  // The shutdown control: the handler posts the quit message to the frame,
  // the program ends, and the service reports it stopped. Windows lets only
  // the system send that control, and Wine refuses it the same way: then the
  // test posts what the handler would.
  SERVICE_STATUS status{};
  if (!ControlService(sc.service.get(), SERVICE_CONTROL_SHUTDOWN, &status)) {
    const DWORD error = GetLastError();
    EXPECT_TRUE(error == ERROR_INVALID_PARAMETER || error == ERROR_INVALID_SERVICE_CONTROL) << "error " << error;
    PostMessageA(frame, kQuit, 0, 0);
  }
  EXPECT_TRUE(waitFor([&] { return findFrame() == nullptr; }, 15000)) << "the frame did not close";
  EXPECT_TRUE(waitFor([&] { return serviceState(sc.service.get()) == SERVICE_STOPPED; }, 15000))
      << "state " << serviceState(sc.service.get());
}

}  // namespace
}  // namespace vantr::e2e
