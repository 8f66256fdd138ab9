// The work window as an operator sees it, driven from another process: a
// library of schedule files fires plays, recordings and a delete on the test
// bed's devices; the status lines, the Stop command, the delete commands, the
// menus' enabling and the password lock.
#include <windows.h>

#include <gtest/gtest.h>
#include <mmsystem.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "resource.h"
#include "vantr_process.h"

namespace vantr::e2e {
namespace {

constexpr UINT kQuit = 1044;

// "DD/MM/YY-HH:MM:SS" of the local clock `seconds` from now, as schedule files store dates.
std::string storedDateIn(int seconds) {
  SYSTEMTIME st;
  GetLocalTime(&st);
  FILETIME ft;
  SystemTimeToFileTime(&st, &ft);
  ULARGE_INTEGER t{{ft.dwLowDateTime, ft.dwHighDateTime}};
  t.QuadPart += static_cast<ULONGLONG>(seconds) * 10000000ULL;
  ft = FILETIME{t.LowPart, t.HighPart};
  FileTimeToSystemTime(&ft, &st);
  char text[32];
  wsprintfA(text, "%02d/%02d/%02d-%02d:%02d:%02d", st.wDay, st.wMonth, st.wYear % 100, st.wHour, st.wMinute,
            st.wSecond);
  return text;
}

// Index of the test bed's device (output "Vantorel_Out_X", or its monitor as
// input) among the program's wave devices, which it numbers the same way.
int outputNamed(const std::string& name) {
  for (UINT i = 0; i < waveOutGetNumDevs(); ++i) {
    WAVEOUTCAPSA caps{};
    if (waveOutGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR && name == caps.szPname) return int(i);
  }
  return -1;
}
int inputNamed(const std::string& name) {
  for (UINT i = 0; i < waveInGetNumDevs(); ++i) {
    WAVEINCAPSA caps{};
    if (waveInGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR && name == caps.szPname) return int(i);
  }
  return -1;
}

// A play channel and a record channel joined by the test bed: what the first
// plays, the second hears. Both numbers are channels (0..3).
struct Loop {
  int play = -1, record = -1;
};
std::vector<Loop> loops() {
  std::vector<Loop> found;
  for (const char* sink : {"Vantorel_Out_A", "Vantorel_Out_B", "Vantorel_Out_C", "Vantorel_Out_D"}) {
    const Loop loop{outputNamed(sink), inputNamed(std::string("Monitor of ") + sink)};
    if (loop.play >= 0 && loop.play < 4 && loop.record >= 0 && loop.record < 4) found.push_back(loop);
  }
  return found;
}

class Library {
 public:
  explicit Library(const ProgramFolder& folder) : m_folder(folder) {
    CreateDirectoryA(folder.file("Schedules").c_str(), nullptr);
    CreateDirectoryA(folder.file("Recordings").c_str(), nullptr);
  }
  // A schedule file with the given sections (text after "[file]").
  void schedule(const std::string& name, const std::string& items) const {
    std::ofstream(m_folder.file("Schedules\\" + name + ".qsf")) << "[file]\nautotrim=false\n" << items;
  }
  // seconds of a 1000 Hz tone at -6 dB, 16-bit stereo at 44100 Hz.
  void tone(const std::string& name, int seconds) const {
    const int frames = 44100 * seconds;
    std::vector<short> samples(static_cast<size_t>(frames) * 2);
    for (int i = 0; i < frames; ++i) samples[2 * i] = samples[2 * i + 1] = short(16384 * std::sin(i * 0.142476));
    std::ofstream out(m_folder.file("Recordings\\" + name + ".wav"), std::ios::binary);
    const auto u32 = [&](uint32_t v) { out.write(reinterpret_cast<const char*>(&v), 4); };
    const auto u16 = [&](uint16_t v) { out.write(reinterpret_cast<const char*>(&v), 2); };
    const uint32_t bytes = static_cast<uint32_t>(samples.size() * 2);
    out << "RIFF";
    u32(36 + bytes);
    out << "WAVEfmt ";
    u32(16), u16(1), u16(2), u32(44100), u32(44100 * 4), u16(4), u16(16);
    out << "data";
    u32(bytes);
    out.write(reinterpret_cast<const char*>(samples.data()), bytes);
  }
  bool has(const std::string& relative) const {
    return GetFileAttributesA(m_folder.file(relative).c_str()) != INVALID_FILE_ATTRIBUTES;
  }
  std::string asRun() const {
    std::string all;
    WIN32_FIND_DATAA data;
    HANDLE find = FindFirstFileA(m_folder.file("Logs\\asrun-*.log").c_str(), &data);
    if (find == INVALID_HANDLE_VALUE) return all;
    do {
      std::ifstream in(m_folder.file(std::string("Logs\\") + data.cFileName));
      all.append(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    } while (FindNextFileA(find, &data));
    FindClose(find);
    return all;
  }

 private:
  const ProgramFolder& m_folder;
};

class Main : public ::testing::Test {
 protected:
  void SetUp() override { endRunningCopies(); }
  void TearDown() override { endRunningCopies(); }

  MainWindow start() {
    m_process = m_folder.start({});
    HWND frame = nullptr;
    waitFor([&] { return (frame = findFrame()) != nullptr; }, 20000);
    MainWindow window(frame);
    waitFor([&] { return window.lines(IDC_FILES_LIST).size() > 0 || window.text(IDC_CLOCK).size() > 0; });
    return window;
  }

  ProgramFolder m_folder;
  Library m_library{m_folder};
  std::unique_ptr<ChildProcess> m_process;
};

TEST_F(Main, ScheduledItemsPlayRecordAndDeleteOnTheDevices) {
  const std::vector<Loop> joined = loops();
  ASSERT_GE(joined.size(), 2u) << "the test bed must give two channels whose output and monitor join";
  const Loop a = joined[0], b = joined[1];
  m_library.tone("Morning", 6);
  m_library.tone("Spare", 2);
  // Morning plays on a's output at +4 s, which a's record channel records
  // into Capture for 3 s; Spare is deleted at +5 s.
  m_library.schedule("Morning", "[sch0]\ntype=1\nchan=" + std::to_string(a.play) + "\ndate=" + storedDateIn(4) + "\n");
  m_library.schedule("Capture", "[sch0]\ntype=3\nchan=" + std::to_string(a.record) +
                                    "\nduration= 0:00:03.000\ndate=" + storedDateIn(4) + "\n");
  m_library.schedule("Spare", "[sch0]\ntype=5\ndate=" + storedDateIn(5) + "\n");
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  EXPECT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"Capture", "Morning", "Spare"}));
  EXPECT_EQ(window.selected(IDC_FILES_LIST), std::vector<int>{0}) << "the first file is selected";
  EXPECT_EQ(window.lines(IDC_SCHEDULE_LIST).size(), 1u);

  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] Morning"; }, 15000))
      << window.text(IDC_PLAY_STATUS);
  EXPECT_EQ(window.text(IDC_RECORD_STATUS), "[rec] Capture");
  ASSERT_TRUE(waitFor([&] { return window.lines(IDC_FILES_LIST).size() == 2; }, 5000)) << "Spare was not deleted";
  EXPECT_FALSE(m_library.has("Recordings\\Spare.wav"));
  EXPECT_FALSE(m_library.has("Schedules\\Spare.qsf"));
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_RECORD_STATUS).empty(); }, 15000)) << "the recording never ended";
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS).empty(); }, 15000)) << "the play never ended";
  (void)b;

  const std::string log = m_library.asRun();
  for (const std::string expected :
       {"\tplay start\tMorning\tschedule Morning sch0\tdone", "\trecord start\tCapture\tschedule Capture sch0\tdone",
        "\tdelete\tSpare\tschedule Spare sch0\tdone", "\trecord end\tCapture\t", "\tplay end\tMorning\t"})
    EXPECT_NE(log.find(expected), std::string::npos) << expected << " not in the as-run log:\n" << log;
}

// Two plays and a recording: Stop with more than one busy channel asks which;
// with one it stops it at once.
TEST_F(Main, StopAsksWhichChannelsWhenMoreThanOneIsBusy) {
  m_library.tone("Long", 60);
  m_library.tone("Other", 60);
  m_library.schedule("Long", "[sch0]\ntype=1\nchan=0\ndate=" + storedDateIn(3) + "\n");
  m_library.schedule("Other", "[sch0]\ntype=1\nchan=1\ndate=" + storedDateIn(3) + "\n");
  MainWindow window = start();
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] LongOther"; }, 15000))
      << window.text(IDC_PLAY_STATUS);
  window.command(IDC_STOP);
  HWND box = nullptr;
  ASSERT_TRUE(waitFor([&] { return (box = findBox("Stop")) != nullptr; }));
  const HWND list = GetDlgItem(box, IDC_STOP_LIST);
  ASSERT_EQ(SendMessageA(list, LB_GETCOUNT, 0, 0), 2);
  char line[64] = {};
  SendMessageA(list, LB_GETTEXT, 1, reinterpret_cast<LPARAM>(line));  // the dialog's own process reads it for us
  SendMessageA(list, LB_SETSEL, TRUE, 1);
  PostMessageA(GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] Long"; })) << window.text(IDC_PLAY_STATUS);
  window.command(IDC_STOP);
  EXPECT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS).empty(); })) << "one busy channel stops at once";
  EXPECT_FALSE(findBox("Stop"));
}

TEST_F(Main, DeleteCommandsAskFirstAndActOnTheFocusedList) {
  m_library.schedule("Alpha", "[sch0]\ntype=2\ntime=10:00:00\n[sch1]\ntype=2\ntime=11:00:00\n");
  m_library.schedule("Beta", "");
  MainWindow window = start();
  ASSERT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"Alpha", "Beta"}));
  ASSERT_EQ(window.lines(IDC_SCHEDULE_LIST).size(), 2u);
  window.select(IDC_SCHEDULE_LIST, 1);

  // Delete Schedule Item: No keeps it, Yes deletes the selected line's item.
  for (const int answer : {IDNO, IDYES}) {
    window.command(CM_DELETE_SCHEDULE_ITEM);
    ASSERT_TRUE(answerBox("Confirm Delete", answer));
  }
  EXPECT_TRUE(waitFor([&] { return window.lines(IDC_SCHEDULE_LIST).size() == 1; }));
  EXPECT_EQ(window.lines(IDC_FILES_LIST).front(), "Alpha") << "the file stays selected";

  // The Delete key acts on the list that has the focus: here the files list.
  window.select(IDC_FILES_LIST, 1);
  SendMessageA(window.dialog(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(window.item(IDC_FILES_LIST)), TRUE);
  PostMessageA(window.item(IDC_FILES_LIST), WM_KEYDOWN, VK_DELETE, 0);
  ASSERT_TRUE(answerBox("Confirm Delete", IDYES));
  EXPECT_TRUE(waitFor([&] { return window.lines(IDC_FILES_LIST) == std::vector<std::string>{"Alpha"}; }));
  EXPECT_FALSE(m_library.has("Schedules\\Beta.qsf"));
}

// The password lock: Exit protected, a wrong password refused, Cancel keeps
// the program running also for the quit message, the right one lets it end.
TEST_F(Main, ExitAsksForThePasswordEvenOnTheQuitMessage) {
  std::ofstream(m_folder.file("settings.ini")) << "[security]\npassword=Secret\nflags=64\n";
  MainWindow window = start();
  ASSERT_TRUE(window.frame());
  PostMessageA(window.frame(), kQuit, 0, 0);
  HWND prompt = nullptr;
  ASSERT_TRUE(waitFor([&] { return (prompt = findBox("Enter Password")) != nullptr; }));
  PostMessageA(GetDlgItem(prompt, IDCANCEL), BM_CLICK, 0, 0);
  EXPECT_FALSE(m_process->wait(1500)) << "cancelled: the program keeps running";

  PostMessageA(window.frame(), kQuit, 0, 0);
  ASSERT_TRUE(waitFor([&] { return (prompt = findBox("Enter Password")) != nullptr; }));
  SetDlgItemTextA(prompt, IDC_PASSWORD_EDIT, "secret");  // case counts
  PostMessageA(GetDlgItem(prompt, IDOK), BM_CLICK, 0, 0);
  HWND wrong = nullptr;
  ASSERT_TRUE(waitFor([&] { return (wrong = findBox("Invalid Password")) != nullptr; }));
  EXPECT_EQ(boxText(wrong), "The password you entered is not correct.");
  PostMessageA(GetDlgItem(wrong, IDOK), BM_CLICK, 0, 0);
  ASSERT_TRUE(waitFor([&] { return !findBox("Invalid Password"); }));
  char left[32] = "x";
  GetDlgItemTextA(prompt, IDC_PASSWORD_EDIT, left, sizeof left);
  EXPECT_STREQ(left, "") << "the edit is emptied";
  SetDlgItemTextA(prompt, IDC_PASSWORD_EDIT, "Secret");
  PostMessageA(GetDlgItem(prompt, IDOK), BM_CLICK, 0, 0);
  int code = -1;
  EXPECT_TRUE(m_process->wait(10000, &code)) << "the right password lets the quit message end it";
  EXPECT_FALSE(findBox("Confirm Stop")) << "the quit message never asks Confirm Stop";
}

}  // namespace
}  // namespace vantr::e2e
