// Prints the library dialogs' figures under Wine (or Windows): how long a
// schedule item dialog takes from its command to a visible box, with the
// device lists it fills, against the File Properties dialog (the same kind of
// modal dialog with no device list) measured in the same run. Run it with
// many sound devices through bench/figures/library_figures.sh.
#include <windows.h>

#include <mmsystem.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "e2e/vantr_process.h"
#include "resource.h"

using vantr::e2e::MainWindow;
using vantr::e2e::ProgramFolder;
using Steady = std::chrono::steady_clock;

namespace {

void summary(const char* what, std::vector<double> ms) {
  if (ms.empty()) {
    std::printf("%-52s no samples\n", what);
    return;
  }
  std::sort(ms.begin(), ms.end());
  std::printf("%-52s n=%zu p50 %.1f ms  max %.1f ms\n", what, ms.size(), ms[ms.size() / 2], ms.back());
}

// From the command's post to its box on screen, polled every millisecond;
// the box is then cancelled and the program given time to settle.
std::vector<double> openTimes(const MainWindow& window, int command, const char* title, int runs) {
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) {
    const Steady::time_point posted = Steady::now();
    window.command(command);
    HWND box = nullptr;
    while (!(box = vantr::e2e::findBox(title)) && Steady::now() - posted < std::chrono::seconds(10)) Sleep(1);
    if (!box) break;
    times.push_back(std::chrono::duration<double, std::milli>(Steady::now() - posted).count());
    PostMessageA(box, WM_COMMAND, IDCANCEL, 0);
    vantr::e2e::waitFor([&] { return !IsWindow(box); });
    SendMessageA(window.dialog(), WM_NULL, 0, 0);
    Sleep(50);
  }
  return times;
}

}  // namespace

int main() {
  vantr::e2e::endRunningCopies();
  ProgramFolder folder;
  CreateDirectoryA(folder.file("Schedules").c_str(), nullptr);
  std::ofstream(folder.file("Schedules\\News.qsf")) << "[file]\nautotrim=false\n";
  auto process = folder.start({});
  HWND frame = nullptr;
  vantr::e2e::waitFor(
      [&] {
        frame = vantr::e2e::findFrame();
        return frame && MainWindow(frame).dialog() && !MainWindow(frame).text(IDC_CLOCK).empty();
      },
      30000);
  if (!frame) {
    std::printf("vantr.exe did not start\n");
    return 1;
  }
  const MainWindow window(frame);
  std::printf("sound devices: %u outputs, %u inputs\n", waveOutGetNumDevs(), waveInGetNumDevs());
  constexpr int kRuns = 20;
  summary("File Properties (no device list)", openTimes(window, CM_FILE_PROPERTIES, "File Properties", kRuns));
  summary("Schedule Item (Play Regular), output list",
          openTimes(window, CM_PLAY_REGULAR, "Schedule Item (Play Regular)", kRuns));
  summary("Schedule Item (Record Regular), input list",
          openTimes(window, CM_RECORD_REGULAR, "Schedule Item (Record Regular)", kRuns));
  vantr::e2e::endRunningCopies();
  return 0;
}
