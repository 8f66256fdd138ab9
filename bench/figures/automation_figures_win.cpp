// Prints the serial automation line's figures under Wine (or Windows), with
// vantr.exe reading the test bed's COM1 and this program writing to the
// other end of the pseudo-terminal (VANTR_TTY_COM1):
//  - command latency over 100 play starts: from the moment the whole command
//    (its closing "]" included) has been written to the line, to
//    a) the stamp of its "play start ... done" line in the as-run log, which
//       the program takes once the player has opened waveOut and started the
//       worker that hands the device its first block, and
//    b) the moment this program sees the play status line name the file
//       (polled every millisecond through WM_GETTEXT);
//  - the CPU time vantr.exe uses while idle for a span (60 s unless the first
//    argument gives other seconds), with the automation line on and off, and
//    that of its reader thread alone (the one thread at the lowest priority
//    while nothing plays), from GetThreadTimes (10 ms steps under Wine).
#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "asrun/as_run_log.h"
#include "base/clock.h"
#include "e2e/vantr_process.h"
#include "resource.h"
#include "win/handles_win.h"

using vantr::KernelHandle;
using vantr::e2e::MainWindow;
using vantr::e2e::ProgramFolder;
using Steady = std::chrono::steady_clock;

namespace {

int64_t localMilliseconds() { return vantr::systemClock().nowMilliseconds(); }

void summary(const char* what, std::vector<double> ms) {
  if (ms.empty()) {
    std::printf("%-52s no samples\n", what);
    return;
  }
  std::sort(ms.begin(), ms.end());
  const auto at = [&](double q) { return ms[std::min(ms.size() - 1, static_cast<size_t>(q * ms.size()))]; };
  std::printf("%-52s n=%zu p50 %.1f ms  p99 %.1f ms  max %.1f ms\n", what, ms.size(), at(0.5), at(0.99), ms.back());
}

class ComLine {
 public:
  ComLine() {
    const char* tty = std::getenv("VANTR_TTY_COM1");
    if (tty)
      m_line = vantr::fileHandle(CreateFileA(vantr::nativePath(tty).c_str(), GENERIC_WRITE,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
  }
  explicit operator bool() const { return static_cast<bool>(m_line); }
  bool send(const std::string& bytes) const {
    DWORD wrote = 0;
    return WriteFile(m_line.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &wrote, nullptr) &&
           wrote == bytes.size();
  }

 private:
  KernelHandle m_line;
};

// A program folder with the automation line on or off and two files that may
// be started from it.
struct Program {
  explicit Program(bool automation) {
    vantr::e2e::endRunningCopies();
    CreateDirectoryA(folder.file("Schedules").c_str(), nullptr);
    CreateDirectoryA(folder.file("Recordings").c_str(), nullptr);
    std::ofstream(folder.file("settings.ini")) << "[auto]\nmode=" << (automation ? 1 : 0) << "\ncomport=COM1\n";
    for (const char* name : {"Fig0", "Fig1"}) {
      std::ofstream(folder.file(std::string("Schedules\\") + name + ".qsf")) << "[file]\nautomatedplay=1\n";
      vantr::e2e::writeTone(folder.file(std::string("Recordings\\") + name + ".wav"), 2, 8000);
    }
    process = folder.start({});
    HWND frame = nullptr;
    vantr::e2e::waitFor(
        [&] {
          frame = vantr::e2e::findFrame();
          return frame && MainWindow(frame).dialog() && !MainWindow(frame).text(1095).empty();
        },
        30000);
    window = MainWindow(frame);
  }
  ~Program() {
    if (window.frame()) PostMessageA(window.frame(), 1044, 0, 0);
    if (process) process->wait(10000);
  }

  ProgramFolder folder;
  std::unique_ptr<vantr::ChildProcess> process;
  MainWindow window{nullptr};
};

// One timed command after another, each spread over the reader's 85 ms pause
// between empty reads: `before` (untimed, may be empty) goes first, then the
// timed command. Returns the latencies to the as-run stamp of the timed
// command's line (action, result) and to the play status line showing
// `status` (when not empty).
struct Timed {
  std::vector<double> logged, seen;
};
Timed timedCommands(const Program& program, const ComLine& line, int commands, std::string (*before)(int),
                    std::string (*timed)(int), const char* action, const char* result, bool watchStatus) {
  std::mt19937 random(7);
  std::vector<int64_t> sent;
  Timed out;
  const size_t known = [&] {
    std::vector<vantr::AsRunEntry> ran;
    vantr::readAsRun(program.folder.file("Logs"), 0, INT64_MAX, ran);
    return ran.size();
  }();
  for (int i = 0; i < commands; ++i) {
    const std::string first = before(i);
    if (!first.empty()) line.send(first);
    Sleep(250 + random() % 200);
    const std::string command = timed(i);
    const Steady::time_point t0 = Steady::now();
    const int64_t at = localMilliseconds();
    if (!line.send(command)) break;
    sent.push_back(at);
    if (!watchStatus) continue;
    const std::string name = command.substr(command.find('-') + 1, command.size() - command.find('-') - 2);
    const std::string status = "[play] " + name;
    while (program.window.text(IDC_PLAY_STATUS) != status && Steady::now() - t0 < std::chrono::seconds(2)) Sleep(1);
    out.seen.push_back(std::chrono::duration<double, std::milli>(Steady::now() - t0).count());
  }
  Sleep(1000);
  std::vector<vantr::AsRunEntry> ran;
  vantr::readAsRun(program.folder.file("Logs"), 0, INT64_MAX, ran);
  for (size_t k = known; k < ran.size(); ++k) {
    const vantr::AsRunEntry& e = ran[k];
    if (e.action != action || e.cause != "automation" || e.result != result) continue;
    const size_t i = out.logged.size();
    if (i < sent.size()) out.logged.push_back(static_cast<double>(e.milliseconds - sent[i]));
  }
  if (out.logged.size() != sent.size())
    std::printf("vantr.exe logged %zu of %zu commands\n", out.logged.size(), sent.size());
  return out;
}

std::string nothing(int) { return std::string(); }
std::string stopMissing(int) { return "[VantorelPlayStop-Missing]"; }
std::string startAlternate(int i) { return "[VantorelPlayStart-Fig" + std::to_string(i % 2) + "]"; }
std::string stopPrevious(int i) {
  return i == 0 ? std::string() : "[VantorelPlayStop-Fig" + std::to_string((i + 1) % 2) + "]";
}

void latencies(int commands) {
  ComLine line;
  if (!line) {
    std::printf("no COM1 line (VANTR_TTY_COM1)\n");
    return;
  }
  Program program(true);
  if (!program.window.dialog()) {
    std::printf("vantr.exe did not start\n");
    return;
  }
  Sleep(1000);  // the reader has opened the line (and emptied it) by now
  const Timed idle = timedCommands(program, line, commands, stopPrevious, startAlternate, "play start", "done", true);
  summary("play start on an idle channel: to as-run stamp", idle.logged);
  summary("play start on an idle channel: to status line", idle.seen);
  const Timed busy = timedCommands(program, line, commands, nothing, startAlternate, "play start", "done", true);
  summary("play start replacing a play: to as-run stamp", busy.logged);
  summary("play start replacing a play: to status line", busy.seen);
  const Timed stops = timedCommands(program, line, commands, nothing, stopMissing, "play end", "not playing", false);
  summary("stop of a file not playing: to as-run stamp", stops.logged);
}

// CPU time of a process's threads, in ms: all of them, and those at the
// lowest priority (the serial reader, while nothing plays). Summed over the
// threads, since Wine does not keep GetProcessTimes of another process up to
// date; a thread that ends between two readings is missed, which an idle
// program does not do.
struct ThreadTimes {
  double all = 0, lowest = 0;
  int lowestThreads = 0;
};
ThreadTimes threadTimes(DWORD pid) {
  ThreadTimes times;
  HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return times;
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID != pid) continue;
    KernelHandle thread(OpenThread(THREAD_QUERY_INFORMATION, FALSE, entry.th32ThreadID));
    FILETIME created, exited, kernel, user;
    if (!thread || !GetThreadTimes(thread.get(), &created, &exited, &kernel, &user)) continue;
    const auto ms = [](FILETIME t) { return double((uint64_t(t.dwHighDateTime) << 32) | t.dwLowDateTime) / 1e4; };
    const double used = ms(kernel) + ms(user);
    times.all += used;
    if (GetThreadPriority(thread.get()) == THREAD_PRIORITY_LOWEST) {
      times.lowest += used;
      ++times.lowestThreads;
    }
  }
  CloseHandle(snapshot);
  return times;
}

void idleCpu(int seconds) {
  for (const bool automation : {true, false}) {
    Program program(automation);
    DWORD pid = 0;
    GetWindowThreadProcessId(program.window.frame(), &pid);
    Sleep(3000);  // past the start's own work
    const ThreadTimes before = threadTimes(pid);
    Sleep(static_cast<DWORD>(seconds) * 1000);
    const ThreadTimes after = threadTimes(pid);
    const auto share = [&](double ms) { return 100 * ms / (seconds * 1000.0); };
    std::printf("idle %d s, automation %-3s: vantr.exe %.0f ms CPU (%.3f%% of a core)", seconds,
                automation ? "on" : "off", after.all - before.all, share(after.all - before.all));
    if (automation && after.lowestThreads == 1)
      std::printf("; reader thread %.0f ms (%.3f%% of a core)", after.lowest - before.lowest,
                  share(after.lowest - before.lowest));
    else if (automation)
      std::printf("; %d threads at the lowest priority, not one reader", after.lowestThreads);
    std::printf("\n");
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 60;
  latencies(100);
  idleCpu(seconds);
  vantr::e2e::endRunningCopies();
  return 0;
}
