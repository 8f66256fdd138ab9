// Prints the main window's figures under Wine (or Windows):
//  - scheduled start latency: from the due second to the start of a play in
//    vantr.exe (the as-run log's stamp, taken when the player has opened its
//    device and queued its worker), over 120 Play Once items spread over the
//    four channels; beside it the limit of the platform, measured in the same
//    run: a bare loop that waits for each second with a waitable timer and then
//    writes one block to an open waveOut device;
//  - a library of 256 files with 4 items each: start to filled lists, and
//    selecting a file to a refilled schedule list.
#include <windows.h>

#include <mmsystem.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "asrun/as_run_log.h"
#include "base/clock.h"
#include "e2e/vantr_process.h"
#include "resource.h"
#include "schedule/schedule_time.h"

using vantr::e2e::MainWindow;
using vantr::e2e::ProgramFolder;
using Steady = std::chrono::steady_clock;

namespace {

int64_t localMilliseconds() { return vantr::systemClock().nowMilliseconds(); }

// "DD/MM/YY-HH:MM:SS" of a local time in milliseconds.
std::string storedDate(int64_t ms) { return vantr::FormatStoredDateTime(vantr::toScheduleTime(ms / 1000)); }

void summary(const char* what, std::vector<double> ms) {
  if (ms.empty()) {
    std::printf("%-44s no samples\n", what);
    return;
  }
  std::sort(ms.begin(), ms.end());
  const auto at = [&](double q) { return ms[std::min(ms.size() - 1, static_cast<size_t>(q * ms.size()))]; };
  std::printf("%-44s n=%zu p50 %.1f ms  p99 %.1f ms  max %.1f ms\n", what, ms.size(), at(0.5), at(0.99), ms.back());
}

// The platform's limit: wait for each second with a waitable timer, then hand
// one 100 ms block to an open waveOut device.
std::vector<double> bareLatencies(int starts) {
  std::vector<double> latencies;
  WAVEFORMATEX format{WAVE_FORMAT_PCM, 2, 44100, 44100 * 4, 4, 16, 0};
  HWAVEOUT wave = nullptr;
  if (waveOutOpen(&wave, WAVE_MAPPER, &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) return latencies;
  std::vector<short> block(4410 * 2, 0);
  std::vector<WAVEHDR> headers(static_cast<size_t>(starts));
  HANDLE timer = CreateWaitableTimerA(nullptr, TRUE, nullptr);
  for (int i = 0; i < starts; ++i) {
    const int64_t due = (localMilliseconds() / 1000 + 1) * 1000;
    // The timer takes UTC: the local due moment moved by the zone's offset now.
    LARGE_INTEGER when;
    when.QuadPart = -static_cast<LONGLONG>(due - localMilliseconds()) * 10000;
    SetWaitableTimer(timer, &when, 0, nullptr, nullptr, FALSE);
    WaitForSingleObject(timer, INFINITE);
    WAVEHDR& h = headers[static_cast<size_t>(i)];
    h = WAVEHDR{};
    h.lpData = reinterpret_cast<LPSTR>(block.data());
    h.dwBufferLength = static_cast<DWORD>(block.size() * 2);
    waveOutPrepareHeader(wave, &h, sizeof h);
    waveOutWrite(wave, &h, sizeof h);
    latencies.push_back(static_cast<double>(localMilliseconds() - due));
  }
  waveOutReset(wave);
  for (WAVEHDR& h : headers) waveOutUnprepareHeader(wave, &h, sizeof h);
  waveOutClose(wave);
  CloseHandle(timer);
  return latencies;
}

std::vector<double> scheduledLatencies(int starts) {
  vantr::e2e::endRunningCopies();
  ProgramFolder folder;
  CreateDirectoryA(folder.file("Schedules").c_str(), nullptr);
  CreateDirectoryA(folder.file("Recordings").c_str(), nullptr);
  const int64_t first = (localMilliseconds() / 1000 + 15) * 1000;
  std::string items[4];
  for (int i = 0; i < starts; ++i) {
    const int f = i % 4;
    items[f] += "[sch" + std::to_string(i / 4) + "]\ntype=1\nchan=" + std::to_string(f) +
                "\ndate=" + storedDate(first + i * 1000LL) + "\n";
  }
  for (int f = 0; f < 4; ++f) {
    const std::string name = "Channel" + std::to_string(f);
    vantr::e2e::writeTone(folder.file("Recordings\\" + name + ".wav"), 1, 8000);
    std::ofstream(folder.file("Schedules\\" + name + ".qsf")) << items[f];
  }
  auto process = folder.start({});
  Sleep(static_cast<DWORD>(15 + starts + 3) * 1000);
  if (HWND frame = vantr::e2e::findFrame()) PostMessageA(frame, 1044, 0, 0);
  process->wait(20000);
  std::vector<vantr::AsRunEntry> ran;
  vantr::readAsRun(folder.file("Logs"), 0, INT64_MAX, ran);
  // The starts come one a second in item order.
  std::vector<double> latencies;
  for (const vantr::AsRunEntry& e : ran) {
    if (e.action != "play start") continue;
    const int64_t due = first + static_cast<int64_t>(latencies.size()) * 1000;
    latencies.push_back(static_cast<double>(e.milliseconds - due));
  }
  if (latencies.size() != static_cast<size_t>(starts))
    std::printf("vantr.exe started %zu of %d items\n", latencies.size(), starts);
  return latencies;
}

void libraryFigures() {
  vantr::e2e::endRunningCopies();
  ProgramFolder folder;
  CreateDirectoryA(folder.file("Schedules").c_str(), nullptr);
  for (int f = 0; f < 256; ++f) {
    char name[32];
    std::snprintf(name, sizeof name, "File%03d", f);
    std::ofstream(folder.file(std::string("Schedules\\") + name + ".qsf"))
        << "[sch0]\ntype=2\ntime=09:00:00\n[sch1]\ntype=4\ntime=10:00:00\nduration= 0:30:00.000\n"
        << "[sch2]\ntype=1\ndate=01/01/30-12:00:00\n[sch3]\ntype=5\ndate=02/01/30-12:00:00\n";
  }
  const Steady::time_point start = Steady::now();
  auto process = folder.start({});
  HWND frame = nullptr;
  MainWindow window(nullptr);
  while (Steady::now() - start < std::chrono::seconds(30)) {
    if (!frame && (frame = vantr::e2e::findFrame()) != nullptr) window = MainWindow(frame);
    if (frame && window.dialog() && SendMessageA(window.item(IDC_FILES_LIST), LB_GETCOUNT, 0, 0) == 256 &&
        SendMessageA(window.item(IDC_SCHEDULE_LIST), LB_GETCOUNT, 0, 0) == 4)
      break;
    if (frame && !window.dialog()) window = MainWindow(frame);
    Sleep(1);
  }
  const double filled = std::chrono::duration<double, std::milli>(Steady::now() - start).count();
  std::printf("%-44s %.0f ms\n", "start to filled lists (256 files x 4 items)", filled);
  std::vector<double> selects;
  for (int i = 0; i < 50 && window.dialog(); ++i) {
    const Steady::time_point t = Steady::now();
    window.select(IDC_FILES_LIST, (i * 37) % 256);  // sent: returns once the list is refilled
    selects.push_back(std::chrono::duration<double, std::milli>(Steady::now() - t).count());
  }
  summary("select a file to a refilled schedule list", selects);
  if (frame) PostMessageA(frame, 1044, 0, 0);
  process->wait(10000);
}

}  // namespace

int main() {
  libraryFigures();
  const int starts = 120;
  const std::vector<double> bare = bareLatencies(starts);
  const std::vector<double> program = scheduledLatencies(starts);
  summary("bare: waitable timer + waveOutWrite", bare);
  summary("vantr.exe: due second to play start", program);
  if (!bare.empty() && !program.empty()) {
    std::vector<double> b = bare, p = program;
    std::sort(b.begin(), b.end());
    std::sort(p.begin(), p.end());
    std::printf("ratio vantr/bare: p50 %.2f  p99 %.2f\n", p[p.size() / 2] / std::max(0.1, b[b.size() / 2]),
                p[p.size() * 99 / 100] / std::max(0.1, b[b.size() * 99 / 100]));
  }
  return 0;
}
