// The serial automation line end to end: vantr.exe reads the test bed's COM1
// (a socat pseudo-terminal) while this process writes bytes to the other end,
// and the status lines, the files on disk and the as-run log show what the
// program did with them.
//
// Every time-set command sent here is one the two-reading rule refuses to act
// on: each differs by hours from the one before it (and the first from none),
// so the program never tries to set the clock.
#include <windows.h>

#include <gtest/gtest.h>
#include <mmsystem.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "asrun/as_run_log.h"
#include "audio/data/wav_header.h"
#include "base/clock.h"
#include "program_test.h"
#include "resource.h"
#include "schedule/schedule_time.h"
#include "win/handles_win.h"

namespace vantr::e2e {
namespace {

using Steady = std::chrono::steady_clock;

const std::string kPlayStart = "[VantorelPlayStart-";
const std::string kRecordStart = "[VantorelRecordStart-";
const std::string kPlayStop = "[VantorelPlayStop-";
const std::string kRecordStop = "[VantorelRecordStop-";

std::string command(const std::string& prefix, const std::string& name) { return prefix + name + "]"; }

// "[VantorelTimeSet-DD/MM/YY-HH:MM:SS]" naming the local time `offset` seconds from now.
std::string timeSet(int64_t offset) {
  return "[VantorelTimeSet-" + FormatStoredDateTime(toScheduleTime(systemClock().now() + offset)) + "]";
}

// "DD/MM/YY-HH:MM:SS" of the local clock `seconds` from now, as schedule files store dates.
std::string storedDateIn(int seconds) { return FormatStoredDateTime(toScheduleTime(systemClock().now() + seconds)); }

// The test's end of COM1.
class ComLine {
 public:
  ComLine() { open(); }
  void open() {
    const char* tty = std::getenv("VANTR_TTY_COM1");
    m_line.reset();
    if (tty)
      m_line = fileHandle(CreateFileA(nativePath(tty).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, OPEN_EXISTING, 0, nullptr));
  }
  explicit operator bool() const { return static_cast<bool>(m_line); }
  bool send(const std::string& bytes) const {
    for (size_t at = 0; at < bytes.size();) {
      DWORD wrote = 0;
      const DWORD piece = static_cast<DWORD>(std::min<size_t>(bytes.size() - at, 4096));
      if (!WriteFile(m_line.get(), bytes.data() + at, piece, &wrote, nullptr) || wrote == 0) return false;
      at += wrote;
    }
    return true;
  }

 private:
  KernelHandle m_line;
};

size_t count(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

// The as-run line's middle: action, file and cause, then the start of the result.
std::string logged(const std::string& action, const std::string& name, const std::string& result = "") {
  return "\t" + action + "\t" + name + "\tautomation\t" + result;
}

// How long a WM_NULL round trip to the window takes, in milliseconds (a
// second or more when it does not answer).
double roundTrip(HWND window) {
  const Steady::time_point sent = Steady::now();
  DWORD_PTR result = 0;
  if (!SendMessageTimeoutA(window, WM_NULL, 0, 0, SMTO_NORMAL, 1000, &result)) return 1000;
  return std::chrono::duration<double, std::milli>(Steady::now() - sent).count();
}

// Global atoms in use, found by asking for the name of every string atom.
int globalAtoms() {
  int n = 0;
  char name[256];
  for (UINT atom = 0xC000; atom <= 0xFFFF; ++atom)
    if (GlobalGetAtomNameA(static_cast<ATOM>(atom), name, sizeof name) > 0) ++n;
  return n;
}

// Every file and folder under folder, as paths relative to it.
std::set<std::string> tree(const std::string& folder, const std::string& prefix = "") {
  std::set<std::string> found;
  WIN32_FIND_DATAA data;
  HANDLE find = FindFirstFileA((folder + "\\*").c_str(), &data);
  if (find == INVALID_HANDLE_VALUE) return found;
  do {
    const std::string name = data.cFileName;
    if (name == "." || name == "..") continue;
    found.insert(prefix + name);
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
      const std::set<std::string> inside = tree(folder + "\\" + name, prefix + name + "\\");
      found.insert(inside.begin(), inside.end());
    }
  } while (FindNextFileA(find, &data));
  FindClose(find);
  return found;
}

std::set<std::string> withoutLogs(std::set<std::string> paths) {
  for (auto it = paths.begin(); it != paths.end();) it = it->rfind("Logs", 0) == 0 ? paths.erase(it) : std::next(it);
  return paths;
}

// The names directly in folder.
std::set<std::string> entries(const std::string& folder) {
  std::set<std::string> found;
  WIN32_FIND_DATAA data;
  HANDLE find = FindFirstFileA((folder + "\\*").c_str(), &data);
  if (find == INVALID_HANDLE_VALUE) return found;
  do found.insert(data.cFileName);
  while (FindNextFileA(find, &data));
  FindClose(find);
  return found;
}

// The wave device numbers of a test bed sink ("Vantorel_Out_A") and of its
// monitor, which hears what the sink plays; -1 for one not found. The program
// numbers its channels the same way.
struct Loop {
  int play = -1, record = -1;
};
Loop loopOf(const std::string& sink) {
  Loop loop;
  for (UINT i = 0; i < waveOutGetNumDevs(); ++i) {
    WAVEOUTCAPSA caps{};
    if (waveOutGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR && sink == caps.szPname) loop.play = int(i);
  }
  for (UINT i = 0; i < waveInGetNumDevs(); ++i) {
    WAVEINCAPSA caps{};
    if (waveInGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR && "Monitor of " + sink == caps.szPname)
      loop.record = int(i);
  }
  return loop;
}

class Automation : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    ASSERT_TRUE(m_line) << "the test bed's COM1 (VANTR_TTY_COM1) is missing";
  }

  void settings(const std::string& autoSection) {
    std::ofstream(m_folder.file("settings.ini")) << "[auto]\n" << autoSection;
  }
  // A named file with a tone of `seconds` (none for 0) and these lines in
  // its schedule file's section "file".
  void file(const std::string& name, int seconds, const std::string& keys) {
    m_library.schedule(name, keys);
    if (seconds > 0) m_library.tone(name, seconds);
  }

  // Starts the program and waits until its reader acts on the line: a stop
  // for a file that does not play is logged as "not playing".
  MainWindow startReading() {
    MainWindow window = start();
    const std::string ready = logged("play end", "Ready", "not playing");
    const bool reading = waitFor(
        [&] {
          m_line.send(command(kPlayStop, "Ready"));
          return waitFor([&] { return m_library.asRun().find(ready) != std::string::npos; }, 300);
        },
        15000);
    EXPECT_TRUE(reading) << "the program never acted on the line";
    // Any further probe still on its way is through before the test goes on.
    Sleep(500);
    return window;
  }

  bool waitForLog(const std::string& what, int ms = 10000) {
    return waitFor([&] { return m_library.asRun().find(what) != std::string::npos; }, ms);
  }

  ComLine m_line;
};

// Commands are cut out of the stream wherever they fall: noise around one, a
// second "[" that starts afresh, and one whose bytes come in two writes.
TEST_F(Automation, CommandsAreCutOutOfTheStream) {
  settings("mode=1\ncomport=COM1\n");
  for (const char* name : {"News", "Alpha", "Bravo", "Charlie"}) file(name, 3, "automatedplay=1\n");
  struct Row {
    const char* what;
    std::vector<std::string> writes;  // with a pause of several read cycles between them
    std::string plays;
    std::string never;  // a name the stream holds that must not be acted on
  } rows[] = {
      {"noise around a command", {"xx[VantorelPlayStart-News]yy"}, "News", ""},
      {"a second bracket starts afresh", {"[VantorelPlayStart-Alpha[VantorelPlayStart-Bravo]"}, "Bravo", "Alpha"},
      {"split across two writes", {"[VantorelPlaySt", "art-Charlie]"}, "Charlie", ""},
  };
  MainWindow window = startReading();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    for (size_t i = 0; i < row.writes.size(); ++i) {
      if (i > 0) {
        Sleep(400);
        EXPECT_EQ(m_library.asRun().find("\t" + row.plays + "\t"), std::string::npos) << "acted on half a command";
      }
      ASSERT_TRUE(m_line.send(row.writes[i]));
    }
    EXPECT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] " + row.plays; }))
        << window.text(IDC_PLAY_STATUS);
  }
  Sleep(500);
  const std::string log = m_library.asRun();
  for (const Row& row : rows) {
    EXPECT_EQ(count(log, logged("play start", row.plays, "done")), 1u) << row.what << "\n" << log;
    EXPECT_EQ(row.never.empty() ? 0 : count(log, "\t" + row.never + "\t"), 0u) << row.what << "\n" << log;
  }
}

// A start obeys the file's own permission in its schedule file, each key for
// its own command: missing or 0 refuses, 1 obeys.
TEST_F(Automation, StartsObeyEachFilesPermission) {
  settings("mode=1\ncomport=COM1\nmaxrec=0:00:02\n");
  struct Row {
    const char* name;
    const char* keys;
    bool record;
    const char* result;
  } rows[] = {
      {"PlayMissing", "automatedrecord=1\n", false, "refused: automated play is off"},
      {"PlayZero", "automatedplay=0\nautomatedrecord=1\n", false, "refused: automated play is off"},
      {"PlayOne", "automatedplay=1\n", false, "done"},
      {"RecMissing", "automatedplay=1\n", true, "refused: automated record is off"},
      {"RecZero", "automatedrecord=0\nautomatedplay=1\n", true, "refused: automated record is off"},
      {"RecOne", "automatedrecord=1\n", true, "done"},
  };
  std::string stream;
  for (const Row& row : rows) {
    file(row.name, row.record ? 0 : 2, row.keys);
    stream += command(row.record ? kRecordStart : kPlayStart, row.name);
  }
  startReading();
  ASSERT_TRUE(m_line.send(stream));
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_TRUE(waitForLog(logged(row.record ? "record start" : "play start", row.name, row.result)))
        << m_library.asRun();
    // Only a recording that went ahead made its file (the plays' files were there before).
    EXPECT_EQ(m_library.has(std::string("Recordings\\") + row.name + ".wav"),
              !row.record || std::string(row.result) == "done");
  }
}

// A record start records for "maxrec" and ends by itself: the file holds that
// much audio, give or take the recorder's buffers of a tenth of a second. The
// default channels are a test bed sink and its monitor, and a play started
// first gives the recording something to hear (silence would leave it
// waiting for sound).
TEST_F(Automation, RecordStartEndsAfterMaxrec) {
  // The program's channels are the first four devices of each kind.
  Loop loop;
  for (const char* sink : {"Vantorel_Out_A", "Vantorel_Out_B", "Vantorel_Out_C", "Vantorel_Out_D"}) {
    const Loop found = loopOf(sink);
    if (found.play >= 0 && found.play < 4 && found.record >= 0 && found.record < 4) loop = found;
  }
  ASSERT_GE(loop.play, 0) << "no test bed sink with its monitor among the program's channels";
  std::ofstream(m_folder.file("settings.ini"))
      << "[settings]\nplaydevice=" << loop.play << "\nrecorddevice=" << loop.record
      << "\n[auto]\nmode=1\ncomport=COM1\nmaxrec=0:00:05\n";
  file("Bed", 20, "automatedplay=1\n");
  file("Take", 0, "automatedrecord=1\n");
  MainWindow window = startReading();
  ASSERT_TRUE(m_line.send(command(kPlayStart, "Bed") + command(kRecordStart, "Take")));
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_RECORD_STATUS) == "[rec] Take"; }))
      << window.text(IDC_RECORD_STATUS);
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_RECORD_STATUS).empty(); }, 20000)) << "it never ended";
  EXPECT_EQ(window.text(IDC_PLAY_STATUS), "[play] Bed");
  ASSERT_TRUE(waitForLog("\trecord end\tTake\tautomation\t")) << m_library.asRun();

  WavHeader header;
  const WavParseResult parsed = readWavFileHeader(m_folder.file("Recordings\\Take.wav"), header);
  ASSERT_TRUE(parsed.ok()) << parsed.reason;
  ASSERT_GT(header.sampleRate, 0u);
  ASSERT_GT(header.blockAlign, 0u);
  const int64_t frames = header.dataSize / header.blockAlign;
  const int64_t buffer = header.sampleRate / 10;
  EXPECT_GE(frames, 5 * int64_t(header.sampleRate));
  EXPECT_LE(frames, 5 * int64_t(header.sampleRate) + 2 * buffer);

  // And by the log: it ran no shorter than maxrec (what the log adds beyond
  // it is the time the sound took to arrive).
  std::vector<AsRunEntry> ran;
  ASSERT_TRUE(readAsRun(m_folder.file("Logs"), 0, INT64_MAX, ran));
  int64_t started = -1, ended = -1;
  for (const AsRunEntry& e : ran) {
    if (e.file != "Take") continue;
    if (e.action == "record start") started = e.milliseconds;
    if (e.action == "record end") ended = e.milliseconds;
  }
  ASSERT_GE(started, 0);
  ASSERT_GE(ended, 0);
  EXPECT_GE(ended - started, 5000);
}

// Stops need no permission: they end a scheduled recording and a scheduled
// play of files whose schedule files allow no automation at all.
TEST_F(Automation, StopsEndScheduledWorkWhateverThePermission) {
  settings("mode=1\ncomport=COM1\n");
  file("Show", 60, "[sch0]\ntype=1\nchan=0\ndate=" + storedDateIn(4) + "\n");
  file("Tape", 0, "[sch0]\ntype=3\nchan=0\nduration= 0:01:00.000\ndate=" + storedDateIn(4) + "\n");
  MainWindow window = startReading();
  ASSERT_TRUE(waitFor(
      [&] { return window.text(IDC_PLAY_STATUS) == "[play] Show" && window.text(IDC_RECORD_STATUS) == "[rec] Tape"; },
      15000))
      << window.text(IDC_PLAY_STATUS) << " / " << window.text(IDC_RECORD_STATUS);
  struct Row {
    std::string prefix, name, action;
    int status, other;  // the status line it empties, and the one it leaves alone
  } rows[] = {
      {kRecordStop, "Tape", "record end", IDC_RECORD_STATUS, IDC_PLAY_STATUS},
      {kPlayStop, "Show", "play end", IDC_PLAY_STATUS, IDC_RECORD_STATUS},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string otherBefore = window.text(row.other);
    ASSERT_TRUE(m_line.send(command(row.prefix, row.name)));
    EXPECT_TRUE(waitFor([&] { return window.text(row.status).empty(); })) << window.text(row.status);
    EXPECT_EQ(window.text(row.other), otherBefore);
    EXPECT_TRUE(waitForLog("\t" + row.action + "\t" + row.name + "\tschedule " + row.name + " sch0\t"))
        << m_library.asRun();
  }
}

// With automation off, or a port that does not exist, the program runs as
// ever and the bytes on the line do nothing.
TEST_F(Automation, OffOrMissingPortLeavesTheLineUnread) {
  file("News", 3, "automatedplay=1\n");
  struct Row {
    const char* what;
    const char* settings;
  } rows[] = {
      {"mode 0", "mode=0\ncomport=COM1\n"},
      {"no mode", "comport=COM1\n"},
      {"a port that does not exist", "mode=1\ncomport=COM9\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    endRunningCopies();
    settings(row.settings);
    MainWindow window = start();
    ASSERT_TRUE(window.dialog());
    for (int i = 0; i < 3; ++i) {
      ASSERT_TRUE(m_line.send(command(kPlayStart, "News")));
      EXPECT_LT(roundTrip(window.dialog()), 100);
      Sleep(300);
    }
    Sleep(500);
    EXPECT_TRUE(window.text(IDC_PLAY_STATUS).empty()) << window.text(IDC_PLAY_STATUS);
    EXPECT_EQ(m_library.asRun().find("\tNews\t"), std::string::npos) << m_library.asRun();
    EXPECT_FALSE(m_process->wait(0)) << "the program ended";
  }
}

// Names that would reach outside the program's folders are refused before
// any file is touched, even where a schedule file there would allow it.
TEST_F(Automation, NamesOutsideTheFoldersWriteNothing) {
  settings("mode=1\ncomport=COM1\nmaxrec=0:00:02\n");
  // Where "..\x" from the Schedules folder would lead.
  std::ofstream(m_folder.file("x.qsf")) << "[file]\nautotrim=false\nautomatedplay=1\nautomatedrecord=1\n";
  file("x", 2, "automatedplay=1\nautomatedrecord=1\n");
  const std::string names[] = {"..\\..\\x", "..\\x", "../x", "Recordings\\x", "x:y", "a:b", "C:x", ":"};
  const std::string parent = m_folder.path().substr(0, m_folder.path().find_last_of('\\'));
  MainWindow window = startReading();
  const std::set<std::string> before = withoutLogs(tree(m_folder.path()));
  const std::set<std::string> besideBefore = entries(parent);
  std::string stream;
  for (const std::string& name : names)
    for (const std::string& prefix : {kRecordStart, kPlayStart, kRecordStop, kPlayStop})
      stream += command(prefix, name);
  ASSERT_TRUE(m_line.send(stream));
  ASSERT_TRUE(waitFor([&] {
    return count(m_library.asRun(), "\tautomation\tfailed: not a file name") == 4 * std::size(names);
  })) << m_library.asRun();
  Sleep(2500);  // longer than maxrec: a recording that had started would have ended
  const std::string log = m_library.asRun();
  for (const std::string& name : names)
    for (const char* action : {"record start", "play start", "record end", "play end"})
      EXPECT_EQ(count(log, logged(action, name, "failed: not a file name")), 1u) << action << " " << name;
  EXPECT_TRUE(window.text(IDC_PLAY_STATUS).empty());
  EXPECT_TRUE(window.text(IDC_RECORD_STATUS).empty());
  EXPECT_EQ(withoutLogs(tree(m_folder.path())), before) << "the program folder changed";
  EXPECT_EQ(entries(parent), besideBefore) << "the folder around the program folder changed";
}

// Time-set commands between play commands are taken by the reader and leave
// the commands around them alone; none of them moves the clock.
TEST_F(Automation, TimeSetsAmongPlaysDisturbNothing) {
  settings("mode=1\ncomport=COM1\n");
  const std::string names[] = {"One", "Two", "Three", "Four", "Five"};
  for (const std::string& name : names) file(name, 2, "automatedplay=1\n");
  MainWindow window = startReading();
  const auto clockAgainstSteady = [] {
    return systemClock().nowMilliseconds() -
           std::chrono::duration_cast<std::chrono::milliseconds>(Steady::now().time_since_epoch()).count();
  };
  const int64_t before = clockAgainstSteady();
  // Offsets one hour, three, minus two, five: each far from the one before.
  ASSERT_TRUE(m_line.send(command(kPlayStart, "One") + timeSet(3600) + command(kPlayStart, "Two")));
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] Two"; })) << window.text(IDC_PLAY_STATUS);
  ASSERT_TRUE(m_line.send(timeSet(3 * 3600) + "noise" + command(kPlayStart, "Three") + timeSet(-2 * 3600)));
  // The last one in two writes.
  const std::string split = timeSet(5 * 3600);
  ASSERT_TRUE(m_line.send(split.substr(0, 14)));
  Sleep(300);
  ASSERT_TRUE(m_line.send(split.substr(14) + command(kPlayStart, "Four")));
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] Four"; })) << window.text(IDC_PLAY_STATUS);
  ASSERT_TRUE(m_line.send(command(kPlayStart, "Five")));
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] Five"; })) << window.text(IDC_PLAY_STATUS);
  EXPECT_LT(std::abs(clockAgainstSteady() - before), 1000) << "the clock moved";
  Sleep(300);
  const std::string log = m_library.asRun();
  size_t last = 0;
  for (const std::string& name : names) {
    const std::string line = logged("play start", name, "done");
    EXPECT_EQ(count(log, line), 1u) << name << "\n" << log;
    EXPECT_GT(log.find(line), last) << name << " out of order";
    last = log.find(line);
  }
}

// A megabyte of line noise with well-formed commands among it: each command
// is acted on exactly once.
TEST_F(Automation, EveryCommandInAMegabyteOfNoiseIsActedOnOnce) {
  settings("mode=1\ncomport=COM1\n");
  const int kStarts = 4, kStops = 36;
  for (int i = 0; i < kStarts; ++i) file("P" + std::to_string(i), 1, "automatedplay=1\n");
  file("End", 30, "automatedplay=1\n");
  std::mt19937 random(20240305);
  std::string noise(1 << 20, '\0');
  for (char& c : noise) {
    c = static_cast<char>(random() & 0xFF);
    if (c == '[' || c == ']') c = 'x';
  }
  std::vector<std::string> commands;
  for (int i = 0; i < kStarts; ++i) commands.push_back(command(kPlayStart, "P" + std::to_string(i)));
  for (int i = 0; i < kStops; ++i) commands.push_back(command(kPlayStop, "Miss" + std::to_string(i)));
  std::shuffle(commands.begin(), commands.end(), random);
  // Each command at its own place in the noise, in order.
  std::vector<size_t> places;
  for (size_t i = 0; i < commands.size(); ++i) places.push_back(random() % noise.size());
  std::sort(places.begin(), places.end());
  std::string stream;
  size_t from = 0;
  for (size_t i = 0; i < commands.size(); ++i) {
    stream.append(noise, from, places[i] - from);
    stream += commands[i];
    from = places[i];
  }
  stream.append(noise, from, std::string::npos);
  stream += command(kPlayStart, "End");

  MainWindow window = startReading();
  const Steady::time_point sent = Steady::now();
  ASSERT_TRUE(m_line.send(stream));
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] End"; }, 120000))
      << window.text(IDC_PLAY_STATUS);
  std::printf("1 MB of noise and %zu commands taken in %.1f s\n", commands.size(),
              std::chrono::duration<double>(Steady::now() - sent).count());
  ASSERT_TRUE(waitForLog(logged("play start", "End", "done")));
  const std::string log = m_library.asRun();
  for (int i = 0; i < kStarts; ++i)
    EXPECT_EQ(count(log, logged("play start", "P" + std::to_string(i), "done")), 1u) << i;
  for (int i = 0; i < kStops; ++i)
    EXPECT_EQ(count(log, logged("play end", "Miss" + std::to_string(i), "not playing")), 1u) << i;
}

// 20,000 stops in one burst: the window answers within 100 ms all along, and
// every atom that carried a name is gone afterwards.
TEST_F(Automation, ABurstOfCommandsKeepsTheWindowResponsiveAndLeavesNoAtoms) {
  settings("mode=1\ncomport=COM1\n");
  file("End", 30, "automatedplay=1\n");
  MainWindow window = startReading();
  const int atomsBefore = globalAtoms();
  constexpr int kBurst = 20000;
  std::string burst;
  for (int i = 0; i < kBurst; ++i) burst += command(kPlayStop, "Missing");
  burst += command(kPlayStart, "End");

  std::atomic<bool> written{false};
  std::thread writer([&] {
    m_line.send(burst);
    written = true;
  });
  std::vector<double> trips;
  const Steady::time_point started = Steady::now();
  while (window.text(IDC_PLAY_STATUS) != "[play] End" && Steady::now() - started < std::chrono::seconds(120)) {
    trips.push_back(roundTrip(window.dialog()));
    Sleep(10);
  }
  writer.join();
  const double seconds = std::chrono::duration<double>(Steady::now() - started).count();
  ASSERT_EQ(window.text(IDC_PLAY_STATUS), "[play] End") << "the burst was not taken in 120 s";
  ASSERT_FALSE(trips.empty());
  std::sort(trips.begin(), trips.end());
  std::printf("burst of %d commands taken in %.1f s; WM_NULL round trips: %zu, median %.1f ms, max %.1f ms\n", kBurst,
              seconds, trips.size(), trips[trips.size() / 2], trips.back());
  EXPECT_GE(trips.size(), 10u) << "too few round trips measured during the burst";
  EXPECT_LT(trips.back(), 100) << "the window did not answer within 100 ms";
  EXPECT_EQ(globalAtoms(), atomsBefore) << "atoms left behind";

  // Every stop was carried out: logged, or counted by the log as lost.
  ASSERT_TRUE(waitForLog(logged("play start", "End", "done")));
  const std::string log = m_library.asRun();
  size_t lost = 0;
  for (size_t at = log.find(" earlier lines could not be written"); at != std::string::npos;
       at = log.find(" earlier lines could not be written", at + 1)) {
    const size_t tab = log.rfind('\t', at);
    lost += std::strtoul(log.c_str() + tab + 1, nullptr, 10);
  }
  EXPECT_EQ(count(log, logged("play end", "Missing", "not playing")) + lost, size_t(kBurst));
}

// The port goes away under the reader (the pseudo-terminal's socat ends): the
// program keeps running and answering; with the port back, automation works
// again once the reader starts afresh, here with the program's next start.
TEST_F(Automation, ThePortVanishingWhileReadLeavesTheProgramRunning) {
  const std::string bed = testBedFolder();
  ASSERT_FALSE(bed.empty());
  settings("mode=1\ncomport=COM1\n");
  file("News", 3, "automatedplay=1\n");
  MainWindow window = startReading();
  DWORD pid = 0;
  GetWindowThreadProcessId(window.frame(), &pid);
  KernelHandle program(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
  ASSERT_TRUE(program);

  ASSERT_TRUE(
      hostOutput("p=$(cat '" + bed + "/socat1.pid'); kill $p; while kill -0 $p 2>/dev/null; do sleep 0.05; done"));
  const auto cpu = [&] {
    FILETIME created, exited, kernel, user;
    GetProcessTimes(program.get(), &created, &exited, &kernel, &user);
    const auto value = [](FILETIME t) { return (uint64_t(t.dwHighDateTime) << 32) | t.dwLowDateTime; };
    return double(value(kernel) + value(user)) / 1e4;  // milliseconds
  };
  const double cpuBefore = cpu();
  for (int i = 0; i < 20; ++i) {
    EXPECT_LT(roundTrip(window.dialog()), 100);
    Sleep(100);
  }
  const double cpuUsed = cpu() - cpuBefore;
  EXPECT_LT(cpuUsed, 500) << "the reader spins on the lost port (ms of CPU in 2 s)";
  EXPECT_FALSE(m_process->wait(0)) << "the program ended with its port";

  // The port comes back as the test bed makes it.
  ASSERT_TRUE(hostOutput("cd '" + bed + "' && (setsid socat pty,raw,echo=0,link='" + bed +
                         "/ttyWINE1' pty,raw,echo=0,link='" + bed +
                         "/ttyTEST1' </dev/null >>socat1.log 2>&1 & echo $! > socat1.pid)" + " && while [ ! -e '" +
                         bed + "/ttyTEST1' ]; do sleep 0.05; done"));
  m_line.open();
  ASSERT_TRUE(m_line);
  endRunningCopies();
  window = startReading();
  ASSERT_TRUE(m_line.send(command(kPlayStart, "News")));
  EXPECT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] News"; })) << window.text(IDC_PLAY_STATUS);
}

}  // namespace
}  // namespace vantr::e2e
