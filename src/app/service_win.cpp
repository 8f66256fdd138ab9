#include "app/service_win.h"

#include <windows.h>

#include "win/messages.h"

namespace vantr {

namespace {

char kServiceName[] = "VANTR";

// The service control manager calls the service main and the control handler
// on its own threads; they share this state and talk to the program only by
// posting the quit message to the frame.
int (*g_runApp)() = nullptr;
SERVICE_STATUS_HANDLE g_statusHandle = nullptr;
SERVICE_STATUS g_status{};

void report() {
  if (g_statusHandle) SetServiceStatus(g_statusHandle, &g_status);
}

void WINAPI controlHandler(DWORD control) {
  if (control == SERVICE_CONTROL_SHUTDOWN && g_status.dwCurrentState != SERVICE_STOPPED) {
    g_status.dwCurrentState = SERVICE_STOP_PENDING;
    g_status.dwWin32ExitCode = 0;
    g_status.dwCheckPoint = 0;
    g_status.dwWaitHint = 5;
    if (HWND frame = FindWindowA(kFrameClassName, kFrameTitle)) PostMessageA(frame, kMsgQuit, 0, 0);
  }
  report();
}

void WINAPI serviceMain(DWORD /*argc*/, LPSTR* /*argv*/) {
  g_status.dwServiceType = SERVICE_WIN32_OWN_PROCESS | SERVICE_INTERACTIVE_PROCESS;
  g_status.dwCurrentState = SERVICE_RUNNING;
  g_status.dwControlsAccepted = SERVICE_ACCEPT_SHUTDOWN;
  g_status.dwWin32ExitCode = 0;
  g_status.dwServiceSpecificExitCode = 0;
  g_status.dwCheckPoint = 0;
  g_status.dwWaitHint = 0;
  g_statusHandle = RegisterServiceCtrlHandlerA(kServiceName, &controlHandler);
  if (!g_statusHandle) return;
  report();
  g_status.dwWin32ExitCode = static_cast<DWORD>(g_runApp());
  g_status.dwCurrentState = SERVICE_STOPPED;
  g_status.dwCheckPoint = 0;
  g_status.dwWaitHint = 0;
  report();
}

}  // namespace

void runServiceDispatcher(int (*runApp)()) {
  g_runApp = runApp;
  SERVICE_TABLE_ENTRYA table[] = {{kServiceName, &serviceMain}, {nullptr, nullptr}};
  StartServiceCtrlDispatcherA(table);
}

void registerServiceProcess() {
  HMODULE kernel = GetModuleHandleA("KERNEL32.DLL");
  if (!kernel) return;
  using RegisterFn = DWORD(WINAPI*)(DWORD, DWORD);
  const auto fn =
      reinterpret_cast<RegisterFn>(reinterpret_cast<void*>(GetProcAddress(kernel, "RegisterServiceProcess")));
  if (fn) fn(GetCurrentProcessId(), 1);
}

}  // namespace vantr
