// Program entry: decides from the executable's name and the first argument
// which application runs, hands a second start to the running copy, and runs
// the recording system normally, hidden, or as a service.
#include <windows.h>

#include <string>
#include <vector>

#include "app/application_win.h"
#include "app/installer_win.h"
#include "app/service_win.h"
#include "app/startup_plan.h"
#include "base/app_paths.h"
#include "base/path.h"
#include "install/system_integration_win.h"
#include "win/messages.h"

namespace {

HINSTANCE g_instance = nullptr;

int runHiddenForService() { return vantr::runMainApplication(g_instance, vantr::RunMode::Service); }

}  // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE /*previous*/, LPSTR /*commandLine*/, int /*show*/) {
  using namespace vantr;
  g_instance = instance;
  // No system message boxes for a missing disk or an unopenable file: an
  // unattended machine must never wait for someone to click them away.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);

  char exePath[MAX_PATH + 1] = {};
  GetModuleFileNameA(nullptr, exePath, MAX_PATH);
  const std::vector<std::string> args(__argv + (__argc > 0 ? 1 : 0), __argv + __argc);
  const RunMode mode = runModeFor(args);

  HWND running = FindWindowA(kFrameClassName, kFrameTitle);
  // SETUP and UNINST first make a running copy quit, so its files can be
  // replaced or its registrations removed.
  const AppKind kind = appKindFor(splitPath(exePath).name);
  if (kind == AppKind::Installer) {
    if (running) {
      PostMessageA(running, kMsgQuit, 0, 0);
      Sleep(2000);
    }
    return InstallApplication(instance);
  }
  if (kind == AppKind::Uninstaller) {
    if (running) {
      PostMessageA(running, kMsgQuit, 0, 0);
      Sleep(1500);
    }
    return UninstallApplication(instance);
  }
  if (running) {
    // Only one copy ever runs: a second start brings the first to the front
    // (or leaves it in the background) and ends.
    PostMessageA(running, kMsgSecondStart, static_cast<WPARAM>(secondStartShowFlag(mode)), 0);
    return 0;
  }

  setAppPaths(appPathsFor(exePath));

  if (mode == RunMode::Service) {
    if (isWindowsNTPlatform()) {
      runServiceDispatcher(&runHiddenForService);
      return 0;
    }
    registerServiceProcess();
  }
  return runMainApplication(instance, mode);
}
