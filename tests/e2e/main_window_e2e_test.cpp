// The work window as an operator sees it, driven from another process: a
// library of schedule files fires plays, recordings and a delete on the test
// bed's devices; the status lines, the Stop command, the delete commands, the
// menus' enabling and the password lock.
#include <windows.h>

#include <gtest/gtest.h>
#include <mmsystem.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "asrun/as_run_log.h"
#include "audio/audio_test_support.h"
#include "audio/data/pcm_file_source.h"
#include "audio/data/wav_header.h"
#include "base/civil.h"
#include "base/clock.h"
#include "program_test.h"
#include "resource.h"
#include "schedule/schedule_time.h"
#include "test_support/run_command.h"

namespace vantr::e2e {
namespace {

constexpr UINT kQuit = 1044;

// "DD/MM/YY-HH:MM:SS" of the local clock `seconds` from now, as schedule files store dates.
std::string storedDateIn(int seconds) { return FormatStoredDateTime(toScheduleTime(systemClock().now() + seconds)); }

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

class Main : public ProgramTest {};

TEST_F(Main, ScheduledItemsPlayRecordAndDeleteOnTheDevices) {
  const std::vector<Loop> joined = loops();
  ASSERT_GE(joined.size(), 2u) << "the test bed must give two channels whose output and monitor join";
  const Loop a = joined[0];
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

  // What the record channel heard: Morning's tone (-6 dBFS, +6 dB on the
  // program's scale), at 1000 Hz, for the item's 3 s (the recording opens 50
  // ms before the gate and ends after at most a buffer more).
  LSoundSource capture = openWavSource(m_folder.file("Recordings\\Capture.wav"));
  ASSERT_FALSE(capture->failed()) << capture->failure();
  const int32_t frames = capture->length();
  EXPECT_GE(frames, 3 * 44100);
  EXPECT_LE(frames, 3 * 44100 + 44100 / 5);
  const std::vector<int32_t> left = [&] {
    std::vector<int32_t> all = readAll(*capture, frames), one;
    for (size_t i = 0; i < all.size(); i += capture->channels()) one.push_back(all[i]);
    return one;
  }();
  const ToneAnalysis heard = analyseTone(left, 44100, 7000);
  EXPECT_NEAR(heard.hz, 1000, 2);
  EXPECT_NEAR(heard.decibels, 6, 1);

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

// The operator's Play and Record: Play starts the first selected file on the
// default channel; Record asks "Enter Record Duration", starts the recording
// with the typed duration and remembers the text. Recording a file that plays
// goes to its TEMP_ file, moved into place once the play has ended.
TEST_F(Main, PlayAndRecordCommandsAndTheTempFile) {
  m_library.schedule("Show", "");
  m_library.tone("Show", 4);
  MainWindow window = start();
  ASSERT_EQ(window.lines(IDC_FILES_LIST), std::vector<std::string>{"Show"});
  window.command(IDC_PLAY);
  // Play opens the play control window; closed, it leaves the file playing.
  HWND control = nullptr;
  ASSERT_TRUE(waitFor([&] { return (control = findBox("Vantorel Play Control")) != nullptr; }));
  PostMessageA(control, WM_COMMAND, IDCANCEL, 0);
  ASSERT_TRUE(waitFor([&] { return !findBox("Vantorel Play Control"); }));
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] Show"; })) << window.text(IDC_PLAY_STATUS);
  window.command(IDC_RECORD);
  HWND prompt = nullptr;
  ASSERT_TRUE(waitFor([&] { return (prompt = findBox("Enter Record Duration")) != nullptr; }));
  char shown[32] = {};
  GetDlgItemTextA(prompt, IDC_TEXT_EDIT, shown, sizeof shown);
  EXPECT_STREQ(shown, "0:30:00") << "the default duration";
  SetDlgItemTextA(prompt, IDC_TEXT_EDIT, "0:00:02");
  PostMessageA(GetDlgItem(prompt, IDOK), BM_CLICK, 0, 0);
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_RECORD_STATUS) == "[rec] Show"; }));
  EXPECT_TRUE(m_library.has("Recordings\\TEMP_Show.wav")) << "the file plays: the recording goes to TEMP_";
  window.command(IDC_STOP);  // two busy channels: the Stop dialog, stop both
  HWND box = nullptr;
  ASSERT_TRUE(waitFor([&] { return (box = findBox("Stop")) != nullptr; }));
  SendDlgItemMessageA(box, IDC_STOP_LIST, LB_SETSEL, TRUE, -1);
  PostMessageA(GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS).empty() && window.text(IDC_RECORD_STATUS).empty(); }));
  // The next status refresh moves the TEMP_ file into place.
  EXPECT_TRUE(waitFor([&] { return !m_library.has("Recordings\\TEMP_Show.wav"); }, 20000));
  EXPECT_TRUE(m_library.has("Recordings\\Show.wav"));
  char remembered[32] = {};
  GetPrivateProfileStringA("settings", "recordtime", "", remembered, sizeof remembered,
                           m_folder.file("settings.ini").c_str());
  EXPECT_STREQ(remembered, "0:00:02");
}

// Password Settings: the new password and protections are written only after
// the password is typed a second time; a cancelled second entry writes nothing.
TEST_F(Main, PasswordSettingsAskTheNewPasswordTwice) {
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  const auto settingsDialog = [] {
    HWND box = findBox("Enter Password");
    return box && GetDlgItem(box, IDC_LOCK_EXIT) ? box : nullptr;
  };
  const auto prompt = [] {
    HWND box = findBox("Enter Password");
    return box && !GetDlgItem(box, IDC_LOCK_EXIT) ? box : nullptr;
  };
  const auto stored = [&](const char* key) {
    char value[64] = {};
    GetPrivateProfileStringA("security", key, "", value, sizeof value, m_folder.file("settings.ini").c_str());
    return std::string(value);
  };
  for (const bool confirm : {false, true}) {
    window.command(CM_PASSWORD_SETTINGS);
    HWND dialog = nullptr, again = nullptr;
    ASSERT_TRUE(waitFor([&] { return (dialog = settingsDialog()) != nullptr; }));
    SetDlgItemTextA(dialog, IDC_PASSWORD_EDIT, "Pw");
    SendDlgItemMessageA(dialog, IDC_LOCK_EXIT, BM_SETCHECK, BST_CHECKED, 0);
    PostMessageA(GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
    ASSERT_TRUE(waitFor([&] { return (again = prompt()) != nullptr; }));
    SetDlgItemTextA(again, IDC_PASSWORD_EDIT, "Pw");
    PostMessageA(GetDlgItem(again, confirm ? IDOK : IDCANCEL), BM_CLICK, 0, 0);
    ASSERT_TRUE(waitFor([&] { return !findBox("Enter Password"); }));
    EXPECT_EQ(stored("password"), confirm ? "Pw" : "");
    EXPECT_EQ(stored("flags"), confirm ? "64" : "");
  }
  // Now Exit asks for it.
  PostMessageA(window.frame(), WM_CLOSE, 0, 0);
  EXPECT_TRUE(waitFor([&] { return prompt() != nullptr; }));
}

// Killed while it records on every channel the test bed joins to an output:
// each recording opens with a declared length no more than 441000 frames short
// of what reached the disk, and every as-run line but a cut-off last one is whole.
TEST_F(Main, KilledWhileRecordingLeavesWholeFilesAndLog) {
  const std::vector<Loop> joined = loops();
  ASSERT_GE(joined.size(), 2u);
  for (size_t i = 0; i < joined.size(); ++i) {
    const std::string n = std::to_string(i);
    m_library.tone("Tone" + n, 40);
    m_library.schedule("Tone" + n,
                       "[sch0]\ntype=1\nchan=" + std::to_string(joined[i].play) + "\ndate=" + storedDateIn(3) + "\n");
    m_library.schedule("Take" + n, "[sch0]\ntype=3\nchan=" + std::to_string(joined[i].record) +
                                       "\nduration= 0:05:00.000\ndate=" + storedDateIn(3) + "\n");
  }
  // Every recording's name after the one "[rec] ", in channel order.
  std::string status = "[rec] ";
  for (int channel = 0; channel < 4; ++channel)
    for (size_t i = 0; i < joined.size(); ++i)
      if (joined[i].record == channel) status += "Take" + std::to_string(i);
  MainWindow window = start();
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_RECORD_STATUS) == status; }, 15000))
      << window.text(IDC_RECORD_STATUS);
  // Past the first header rewrite (441000 frames, 10 s at 44100 Hz), by the files' own growth.
  const std::string first = m_folder.file("Recordings\\Take0.wav");
  ASSERT_TRUE(waitFor(
      [&] {
        WIN32_FILE_ATTRIBUTE_DATA data;
        return GetFileAttributesExA(first.c_str(), GetFileExInfoStandard, &data) &&
               data.nFileSizeLow > 441000u * 4 + 200000u;
      },
      40000));
  m_process->kill();
  ASSERT_TRUE(m_process->wait(5000));
  for (size_t i = 0; i < joined.size(); ++i) {
    const std::string path = m_folder.file("Recordings\\Take" + std::to_string(i) + ".wav");
    WavHeader header;
    const WavParseResult parsed = readWavFileHeader(path, header);
    ASSERT_TRUE(parsed.ok()) << path << ": " << parsed.reason;
    WIN32_FILE_ATTRIBUTE_DATA data;
    ASSERT_TRUE(GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data));
    const int64_t onDisk = (static_cast<int64_t>(data.nFileSizeLow) - header.dataOffset) / header.blockAlign;
    const int64_t declared = header.dataSize / header.blockAlign;
    EXPECT_GE(declared, onDisk - 441000) << path;
    EXPECT_LE(declared, onDisk) << path;
    EXPECT_GT(declared, 0) << path;
  }
  const std::string log = m_library.asRun();
  const size_t lastEnd = log.rfind('\n');
  ASSERT_NE(lastEnd, std::string::npos);
  size_t lines = 0;
  for (size_t start = 0, end; (end = log.find('\n', start)) != std::string::npos; start = end + 1, ++lines) {
    AsRunEntry entry;
    EXPECT_TRUE(parseAsRunLine(std::string_view(log).substr(start, end - start), entry))
        << log.substr(start, end - start);
  }
  EXPECT_GE(lines, 2 * joined.size()) << "every start is in the log";
}

// Bad input loses nothing: a binary schedule file, a text file and an empty
// file as recordings, a name longer than 47 characters, and no Recordings
// folder at first. The good item still fires; the failures are in the log.
TEST_F(Main, BadInputKeepsTheProgramRunningAndTheGoodItemsFiring) {
  RemoveDirectoryA(m_folder.file("Recordings").c_str());
  std::string junk(4096, '\0');
  for (size_t i = 0; i < junk.size(); ++i) junk[i] = static_cast<char>((i * 7919) % 251);
  std::ofstream(m_folder.file("Schedules\\Binary.qsf"), std::ios::binary) << junk;
  const std::string due = storedDateIn(4);
  const std::string longName(60, 'L');
  m_library.schedule(longName, "[sch0]\ntype=1\ndate=" + due + "\n");
  m_library.schedule("Text", "[sch0]\ntype=1\nchan=0\ndate=" + due + "\n");
  m_library.schedule("Empty", "[sch0]\ntype=1\nchan=1\ndate=" + due + "\n");
  m_library.schedule("Good", "[sch0]\ntype=1\nchan=2\ndate=" + due + "\n");
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  // The program made the Recordings folder again; the test puts the files in now.
  ASSERT_TRUE(waitFor([&] { return m_library.has("Recordings"); }));
  std::ofstream(m_folder.file("Recordings\\Text.wav")) << "this is not audio\n";
  std::ofstream(m_folder.file("Recordings\\Empty.wav"));
  m_library.tone("Good", 3);
  ASSERT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] Good"; }, 15000))
      << window.text(IDC_PLAY_STATUS);
  EXPECT_EQ(window.lines(IDC_FILES_LIST).size(), 5u) << "every schedule file is listed";
  const std::string log = m_library.asRun();
  const std::vector<std::string> expectedLines = {
      "\tplay start\tGood\tschedule Good sch0\tdone", "\tplay start\tText\tschedule Text sch0\tfailed: ",
      "\tplay start\tEmpty\tschedule Empty sch0\tfailed: ", "\tplay start\t" + longName.substr(0, 47) + "\t"};
  for (const std::string& expected : expectedLines)
    EXPECT_NE(log.find(expected), std::string::npos) << expected << " not in:\n" << log;
  EXPECT_FALSE(m_process->wait(0)) << "the program ended";
}

// "HH:MM:SS" of the local clock `seconds` from now.
std::string timeOfDayIn(int seconds) { return storedDateIn(seconds).substr(9); }

// Items every few seconds for ten minutes (VANTR_AGENDA_MINUTES shortens it):
// regular and once items, several due in one second, on two channels. The
// as-run log must list exactly the starts vantrctl agenda predicts for the
// span, in the same order within a second, each in its due second or the next.
TEST_F(Main, AsRunMatchesTheAgenda) {
  const char* minutesText = std::getenv("VANTR_AGENDA_MINUTES");
  const int span = 60 * (minutesText ? std::atoi(minutesText) : 10);
  ASSERT_GT(span, 0);
  const std::string files[] = {"Alpha", "Bravo", "Charlie", "Delta"};
  for (const std::string& name : files) m_library.tone(name, 1);
  std::string items[4];
  int slot[4] = {};
  const auto add = [&](int file, const std::string& body) {
    items[file] += "[sch" + std::to_string(slot[file]++) + "]\n" + body;
  };
  const int first = 20;
  // Once items: every 7 s on Alpha (channel 0), and Bravo in the same second
  // every 21 s (channel 1).
  for (int t = first; t < span; t += 7) add(0, "type=1\nchan=0\ndate=" + storedDateIn(t) + "\n");
  for (int t = first; t < span; t += 21) add(1, "type=1\nchan=1\ndate=" + storedDateIn(t) + "\n");
  // Regular items: Charlie and Delta at the same times of day, every day.
  for (int t = first + 3; t < span; t += 30) {
    add(2, "type=2\nchan=0\ntime=" + timeOfDayIn(t) + "\ndays=127\n");
    add(3, "type=2\nchan=1\ntime=" + timeOfDayIn(t) + "\ndays=127\n");
  }
  for (int f = 0; f < 4; ++f) m_library.schedule(files[f], items[f]);
  const std::string from = storedDateIn(first - 5), to = storedDateIn(span + 2);
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  Sleep(static_cast<DWORD>(span + 5) * 1000);
  PostMessageA(window.frame(), kQuit, 0, 0);
  ASSERT_TRUE(m_process->wait(20000));

  std::string out, err;
  ASSERT_EQ(runCommand(ctl::kScheduleCommands, "agenda",
                       {"--schedules", m_folder.file("Schedules"), "--from", from, "--to", to}, out, err),
            0)
      << err;
  // "YYYY-MM-DD HH:MM:SS play NAME chan=N"
  std::vector<std::pair<std::string, std::string>> predicted;
  for (size_t start = 0, end; (end = out.find('\n', start)) != std::string::npos; start = end + 1) {
    const std::string line = out.substr(start, end - start);
    const size_t name = line.find(" play ") + 6;
    predicted.emplace_back(line.substr(0, 19), line.substr(name, line.find(' ', name) - name));
  }
  std::vector<AsRunEntry> ran;
  ASSERT_TRUE(readAsRun(m_folder.file("Logs"), 0, INT64_MAX, ran));
  std::vector<std::pair<int64_t, std::string>> started;
  for (const AsRunEntry& e : ran)
    if (e.action == "play start") started.emplace_back(e.milliseconds / 1000, e.file);
  ASSERT_EQ(started.size(), predicted.size()) << "agenda:\n" << out;
  ASSERT_GT(predicted.size(), static_cast<size_t>(span / 7));
  for (size_t i = 0; i < predicted.size(); ++i) {
    EXPECT_EQ(started[i].second, predicted[i].second) << "start " << i << " at " << predicted[i].first;
    const std::string ranAt = formatCivilStamp(started[i].first);
    const std::string nextSecond = formatCivilStamp(started[i].first - 1);
    EXPECT_TRUE(ranAt == predicted[i].first || nextSecond == predicted[i].first)
        << "start " << i << " due " << predicted[i].first << " ran at " << ranAt;
  }
}

}  // namespace
}  // namespace vantr::e2e
