// Building and changing the library from the main window, driven from
// another process as an operator would: new, rename, load and file
// properties through their dialogs, and the schedule item dialogs, with what
// lands on disk, in the lists and in the as-run log.
#include <windows.h>

#include <gtest/gtest.h>
#include <mmsystem.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "base/clock.h"
#include "dialog_box.h"
#include "program_test.h"
#include "resource.h"
#include "schedule/schedule_time.h"
#include "store/settings.h"

namespace vantr::e2e {
namespace {

constexpr int kFileNameBox = 1148;  // the file name of the system's open dialog

// The name a folder really holds for a file, whatever case it was asked in.
std::string spellingOnDisk(const std::string& path) {
  WIN32_FIND_DATAA data;
  HANDLE find = FindFirstFileA(path.c_str(), &data);
  if (find == INVALID_HANDLE_VALUE) return "";
  FindClose(find);
  return data.cFileName;
}

class LibraryEdit : public ProgramTest {
 protected:
  std::string qsf(const std::string& name) const { return m_folder.file("Schedules\\" + name + ".qsf"); }
  std::string wav(const std::string& name) const { return m_folder.file("Recordings\\" + name + ".wav"); }
  std::string key(const std::string& name, const std::string& section, const char* k) const {
    return readText(qsf(name), section, k, "<missing>");
  }
  // Waits until the program's own thread has handled everything before this
  // (a sent message is answered only between its dialogs' steps).
  void settle(const MainWindow& window) const { SendMessageA(window.dialog(), WM_NULL, 0, 0); }
  // Types a name into the "New File Name" box and confirms it.
  bool typeName(const std::string& name) const {
    Box box("New File Name");
    if (!box) return false;
    box.set(IDC_TEXT_EDIT, name);
    return box.press(IDOK);
  }
};

TEST_F(LibraryEdit, NewFileRefusesUsedAndUnusableNames) {
  m_library.schedule("News", "");
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());

  // Ctrl+N, typed as the operator types it (the key counts only with Ctrl held).
  SetForegroundWindow(window.frame());
  SetFocus(window.item(IDC_FILES_LIST));
  INPUT keys[4] = {};
  const WORD sequence[4][2] = {{VK_CONTROL, 0}, {'N', 0}, {'N', KEYEVENTF_KEYUP}, {VK_CONTROL, KEYEVENTF_KEYUP}};
  for (int i = 0; i < 4; ++i) {
    keys[i].type = INPUT_KEYBOARD;
    keys[i].ki.wVk = sequence[i][0];
    keys[i].ki.dwFlags = sequence[i][1];
  }
  SendInput(4, keys, sizeof(INPUT));
  {
    Box name("New File Name");
    ASSERT_TRUE(name);
    EXPECT_EQ(name.text(IDC_TEXT_EDIT), "Untitled File");
    name.set(IDC_TEXT_EDIT, "NEWS");
    ASSERT_TRUE(name.press(IDOK));
  }
  ASSERT_TRUE(answerBox("Name used", IDOK));
  {
    Box again("New File Name");
    ASSERT_TRUE(again);
    EXPECT_EQ(again.text(IDC_TEXT_EDIT), "NEWS") << "the dialog comes back with the typed name";
    again.set(IDC_TEXT_EDIT, "Jingle");
    ASSERT_TRUE(again.press(IDOK));
  }
  {
    Box props("File Properties");
    ASSERT_TRUE(props);
    // A file without keys: the program's format, 44100, stereo, trimmed, no automation.
    EXPECT_TRUE(props.checked(IDC_DEFAULT_FORMAT));
    EXPECT_FALSE(props.checked(IDC_SPECIFY_FORMAT));
    EXPECT_EQ(props.text(IDC_SAMPLE_RATE), "44100");
    EXPECT_TRUE(props.checked(IDC_STEREO));
    EXPECT_TRUE(props.checked(IDC_AUTOTRIM));
    const std::vector<std::string> modes = {"Scheduled Record Times Only", "Automated or Scheduled"};
    EXPECT_EQ(props.entries(IDC_AUTOMATED_RECORD), modes);
    EXPECT_EQ(props.entries(IDC_AUTOMATED_PLAY), modes);
    EXPECT_EQ(props.selection(IDC_AUTOMATED_RECORD), 0);
    EXPECT_EQ(props.selection(IDC_AUTOMATED_PLAY), 0);
    props.click(IDC_SPECIFY_FORMAT);
    props.set(IDC_SAMPLE_RATE, "5000");
    props.click(IDC_MONO);
    props.click(IDC_AUTOTRIM);
    props.choose(IDC_AUTOMATED_RECORD, 1);
    props.choose(IDC_AUTOMATED_PLAY, 1);
    ASSERT_TRUE(props.press(IDOK));
  }
  settle(window);
  EXPECT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"Jingle", "News"}));
  EXPECT_EQ(window.selected(IDC_FILES_LIST), std::vector<int>{0});
  const char* written[][2] = {{"defaultformat", "false"}, {"samplerate", "5000"},   {"stereo", "false"},
                              {"autotrim", "false"},      {"automatedrecord", "1"}, {"automatedplay", "1"}};
  for (const auto& kv : written) EXPECT_EQ(key("Jingle", "file", kv[0]), kv[1]) << kv[0];

  // File Properties cancelled writes nothing.
  const std::string before = fileText(qsf("News"));
  window.select(IDC_FILES_LIST, 1);
  window.command(CM_FILE_PROPERTIES);
  {
    Box props("File Properties");
    ASSERT_TRUE(props);
    props.click(IDC_MONO);
    ASSERT_TRUE(props.press(IDCANCEL));
  }
  settle(window);
  EXPECT_EQ(fileText(qsf("News")), before);

  // Names that cannot name a file in the folders, or that the scheduler
  // would cut, make nothing: no properties, no file anywhere.
  const std::string longest(47, 'n');
  const std::string unusable[] = {"..\\Evil",           "a/b", "x:y", "CON", "nul", "COM1", std::string(48, 'n'),
                                  std::string(300, 'q')};
  for (const std::string& bad : unusable) {
    window.command(CM_NEW_FILE);
    ASSERT_TRUE(typeName(bad)) << bad;
    settle(window);
    EXPECT_EQ(findBox("File Properties"), nullptr) << bad;
    EXPECT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"Jingle", "News"})) << bad;
  }
  EXPECT_FALSE(m_library.has("Evil.qsf"));
  EXPECT_FALSE(m_library.has("Schedules\\a"));
  // 47 characters are a name like any other.
  window.command(CM_NEW_FILE);
  ASSERT_TRUE(typeName(longest));
  ASSERT_TRUE(answerBox("File Properties", IDOK));
  settle(window);
  EXPECT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"Jingle", "News", longest}));
}

TEST_F(LibraryEdit, RenameMovesBothFilesAndRefusesAnotherFilesName) {
  m_library.schedule("News", "[sch0]\ntype=2\ntime=06:00:00\n");
  m_library.tone("News", 1);
  m_library.schedule("Sport", "");
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  const std::string audio = fileText(wav("News"));

  const auto rename = [&](const std::string& to) {
    PostMessageA(window.item(IDC_FILES_LIST), WM_KEYDOWN, VK_F2, 0);
    return typeName(to);
  };
  // Only the case changes: both files take the new spelling.
  window.select(IDC_FILES_LIST, 0);
  ASSERT_TRUE(rename("NEWS"));
  settle(window);
  EXPECT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"NEWS", "Sport"}));
  EXPECT_EQ(spellingOnDisk(qsf("NEWS")), "NEWS.qsf");
  EXPECT_EQ(spellingOnDisk(wav("NEWS")), "NEWS.wav");

  // Another file's name in other case is refused, and the box comes back.
  const std::string sport = fileText(qsf("Sport"));
  ASSERT_TRUE(rename("sport"));
  ASSERT_TRUE(answerBox("Name used", IDOK));
  {
    Box again("New File Name");
    ASSERT_TRUE(again);
    EXPECT_EQ(again.text(IDC_TEXT_EDIT), "sport");
    ASSERT_TRUE(again.press(IDCANCEL));
  }
  settle(window);
  EXPECT_EQ(fileText(qsf("Sport")), sport);

  ASSERT_TRUE(rename("Weather"));
  settle(window);
  EXPECT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"Sport", "Weather"}));
  EXPECT_EQ(window.selected(IDC_FILES_LIST), std::vector<int>{1});
  EXPECT_EQ(key("Weather", "sch0", "time"), "06:00:00");
  EXPECT_EQ(fileText(wav("Weather")), audio);
  EXPECT_FALSE(m_library.has("Schedules\\NEWS.qsf"));
  EXPECT_FALSE(m_library.has("Recordings\\NEWS.wav"));

  // A device name changes nothing.
  ASSERT_TRUE(rename("COM1"));
  settle(window);
  EXPECT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"Sport", "Weather"}));
  EXPECT_TRUE(m_library.has("Schedules\\Weather.qsf"));
}

TEST_F(LibraryEdit, LoadNewWavFileCopiesKeepsItemsAndCancelLeavesNoAudio) {
  CreateDirectoryA(m_folder.file("Import").c_str(), nullptr);
  writeTone(m_folder.file("Import\\Jingle.wav"), 2);
  writeTone(m_folder.file("Import\\News.wav"), 3, 8000);
  std::ofstream(m_folder.file("Import\\Junk.wav")) << "this is not a wave file at all";
  m_library.schedule("News", "[sch0]\ntype=2\ntime=06:00:00\n");
  m_library.tone("News", 1);
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());

  const auto load = [&](const std::string& name) {
    window.command(CM_LOAD_WAV_FILE);
    Box open("Load New Wav File");
    if (!open) return false;
    open.set(kFileNameBox, m_folder.file("Import\\" + name + ".wav"));
    return open.press(IDOK);
  };
  // Cancelled properties: no audio and no schedule file are left.
  ASSERT_TRUE(load("Jingle"));
  ASSERT_TRUE(answerBox("File Properties", IDCANCEL));
  settle(window);
  EXPECT_FALSE(m_library.has("Recordings\\Jingle.wav"));
  EXPECT_FALSE(m_library.has("Schedules\\Jingle.qsf"));
  EXPECT_EQ(window.lines(IDC_FILES_LIST), std::vector<std::string>{"News"});

  ASSERT_TRUE(load("Jingle"));
  ASSERT_TRUE(answerBox("File Properties", IDOK));
  settle(window);
  EXPECT_EQ(fileText(wav("Jingle")), fileText(m_folder.file("Import\\Jingle.wav")));
  EXPECT_EQ(window.lines(IDC_FILES_LIST), (std::vector<std::string>{"Jingle", "News"}));
  EXPECT_EQ(window.selected(IDC_FILES_LIST), std::vector<int>{0});

  // A name in the library: asked once, the audio replaced, the items kept.
  ASSERT_TRUE(load("News"));
  ASSERT_TRUE(answerBox("Confirm Overwrite", IDYES));
  ASSERT_TRUE(answerBox("File Properties", IDOK));
  settle(window);
  EXPECT_EQ(fileText(wav("News")), fileText(m_folder.file("Import\\News.wav")));
  EXPECT_EQ(key("News", "sch0", "time"), "06:00:00");

  // Not a WAV at all: copied as it is; playing it fails quietly, and the
  // as-run log says so.
  ASSERT_TRUE(load("Junk"));
  ASSERT_TRUE(answerBox("File Properties", IDOK));
  settle(window);
  EXPECT_EQ(fileText(wav("Junk")), "this is not a wave file at all");
  window.select(IDC_FILES_LIST, 1);
  window.command(IDC_PLAY);
  EXPECT_TRUE(waitFor([&] { return m_library.asRun().find("Junk") != std::string::npos; }));
  const std::string log = m_library.asRun();
  EXPECT_NE(log.find("failed"), std::string::npos) << log;
  // Play opens the play control window; it goes without a word.
  if (HWND control = waitFor([] { return findBox("Vantorel Play Control") != nullptr; }, 5000)
                         ? findBox("Vantorel Play Control")
                         : nullptr)
    PostMessageA(control, WM_COMMAND, IDCANCEL, 0);
  settle(window);
  EXPECT_EQ(window.text(IDC_PLAY_STATUS), "");
}

// The day/month order of the test bed's regional settings, for one test.
class DayFirst {
 public:
  DayFirst() {
    GetProfileStringA("Intl", "iDate", "", m_old, sizeof m_old);
    WriteProfileStringA("Intl", "iDate", "1");
  }
  ~DayFirst() { WriteProfileStringA("Intl", "iDate", m_old[0] ? m_old : nullptr); }

 private:
  char m_old[16] = {};
};

TEST_F(LibraryEdit, ScheduleItemDialogsWriteTheirItemsAndOneFires) {
  DayFirst dayFirst;
  m_library.schedule("News", "");
  m_library.tone("News", 2);
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());
  const int64_t now = systemClock().now();
  const std::string today = FormatStoredDateTime(toScheduleTime(now)).substr(0, 8);  // dd/mm/yy

  // A new Play Regular confirmed unchanged.
  window.command(CM_PLAY_REGULAR);
  {
    Box box("Schedule Item (Play Regular)");
    ASSERT_TRUE(box);
    EXPECT_EQ(box.text(IDC_SCH_FIRST), "12:00:00");
    for (int day = IDC_SCH_MONDAY; day <= IDC_SCH_SUNDAY; ++day) EXPECT_TRUE(box.checked(day)) << day;
    EXPECT_EQ(box.text(IDC_SCH_COMMENCE), "IMMEDIATE");
    EXPECT_EQ(box.text(IDC_SCH_EXPIRE), "NEVER");
    const std::vector<std::string> devices = box.entries(IDC_SCH_DEVICE);
    ASSERT_EQ(devices.size(), 1 + waveOutGetNumDevs());
    EXPECT_EQ(devices[0], "[Use Default Play Device]");
    WAVEOUTCAPSA caps{};
    waveOutGetDevCapsA(0, &caps, sizeof caps);
    EXPECT_EQ(devices[1], caps.szPname);
    EXPECT_EQ(box.selection(IDC_SCH_DEVICE), 0);
    ASSERT_TRUE(box.press(IDOK));
  }
  settle(window);
  const char* playRegular[][2] = {{"type", "2"},       {"time", "12:00:00"}, {"days", "127"}, {"commence", "IMMEDIATE"},
                                  {"expire", "NEVER"}, {"chan", "-1"}};
  for (const auto& kv : playRegular) EXPECT_EQ(key("News", "sch0", kv[0]), kv[1]) << kv[0];
  EXPECT_EQ(window.lines(IDC_SCHEDULE_LIST), std::vector<std::string>{"12:00:00 Play file on SMTWTFS"});
  EXPECT_EQ(window.selected(IDC_SCHEDULE_LIST), std::vector<int>{0});

  // A Record Regular typed in: texts cut, day first, an annual expiry, an hour.
  window.command(CM_RECORD_REGULAR);
  {
    Box box("Schedule Item (Record Regular)");
    ASSERT_TRUE(box);
    EXPECT_EQ(box.text(IDC_SCH_DURATION), "0:30:00.0");
    EXPECT_EQ(box.entries(IDC_SCH_DEVICE).at(0), "[Use Default Record Device]");
    box.set(IDC_SCH_FIRST, "23:59:59123");
    box.click(IDC_SCH_SATURDAY);
    box.click(IDC_SCH_SUNDAY);
    box.set(IDC_SCH_COMMENCE, "25/12");
    box.set(IDC_SCH_EXPIRE, "Y");
    box.set(IDC_SCH_DURATION, "1:00:00");
    box.choose(IDC_SCH_DEVICE, 1);
    ASSERT_TRUE(box.press(IDOK));
  }
  settle(window);
  EXPECT_EQ(key("News", "sch1", "time"), "23:59:59");
  EXPECT_EQ(key("News", "sch1", "days"), "62");
  EXPECT_EQ(key("News", "sch1", "commence"), "25/12/" + today.substr(6, 2) + "-00:00:00");
  EXPECT_EQ(key("News", "sch1", "expire"), today.substr(0, 6) + "YY-23:59:59");
  EXPECT_EQ(key("News", "sch1", "duration"), "1:00:00.000");
  EXPECT_EQ(key("News", "sch1", "chan"), "0");
  EXPECT_EQ(window.selected(IDC_SCHEDULE_LIST).size(), 1u);
  EXPECT_NE(window.lines(IDC_SCHEDULE_LIST).at(window.selected(IDC_SCHEDULE_LIST).at(0)).find("Record #0 1:00:00.0"),
            std::string::npos);

  // Cancelled: the slot is marked deleted, not left empty.
  window.command(CM_PLAY_ONCE);
  ASSERT_TRUE(answerBox("Schedule Item (Play Once)", IDCANCEL));
  settle(window);
  EXPECT_EQ(key("News", "sch2", "type"), "-1");
  EXPECT_EQ(window.lines(IDC_SCHEDULE_LIST).size(), 2u);

  // A double click edits the line it is on.
  const std::vector<std::string> lines = window.lines(IDC_SCHEDULE_LIST);
  const int playLine = lines[0].find("Play") != std::string::npos ? 0 : 1;
  window.select(IDC_SCHEDULE_LIST, playLine);
  // Posted: the dialog it opens runs inside the program's handler.
  PostMessageA(window.dialog(), WM_COMMAND, MAKEWPARAM(IDC_SCHEDULE_LIST, LBN_DBLCLK),
               reinterpret_cast<LPARAM>(window.item(IDC_SCHEDULE_LIST)));
  {
    Box box("Schedule Item (Play Regular)");
    ASSERT_TRUE(box);
    box.set(IDC_SCH_FIRST, "07:30");
    ASSERT_TRUE(box.press(IDOK));
  }
  settle(window);
  EXPECT_EQ(key("News", "sch0", "time"), "07:30:00");

  // Unreadable texts everywhere: the parsers' base values are written.
  window.command(CM_RECORD_ONCE);
  {
    Box box("Schedule Item (Record Once)");
    ASSERT_TRUE(box);
    for (int id : {IDC_SCH_FIRST, IDC_SCH_SECOND, IDC_SCH_DURATION}) box.set(id, std::string(300, '?'));
    ASSERT_TRUE(box.press(IDOK));
  }
  settle(window);
  EXPECT_EQ(key("News", "sch2", "type"), "3") << "the deleted slot is reused first";
  EXPECT_EQ(key("News", "sch2", "date"), today + "-00:00:00");
  EXPECT_EQ(key("News", "sch2", "duration"), "0:00:00.000");

  // A Play Once made in its dialog plays at its second.
  const ScheduleTime due = toScheduleTime(systemClock().now() + 6);
  window.command(CM_PLAY_ONCE);
  {
    Box box("Schedule Item (Play Once)");
    ASSERT_TRUE(box);
    box.set(IDC_SCH_FIRST, FormatDate(due, kDayMonthYear));
    box.set(IDC_SCH_SECOND, FormatTime(due));
    ASSERT_TRUE(box.press(IDOK));
  }
  EXPECT_TRUE(waitFor([&] { return m_library.asRun().find("schedule News sch3") != std::string::npos; }, 20000))
      << m_library.asRun();
  // Logged at its second (the stamp is taken when the line is made, which
  // may be the next second on a busy machine).
  const std::string log = m_library.asRun();
  const std::string line = log.substr(log.rfind('\n', log.find("schedule News sch3")) + 1);
  EXPECT_TRUE(line.find(FormatTime(due)) != std::string::npos || line.find(FormatTime(due + 1)) != std::string::npos)
      << line;
}

}  // namespace
}  // namespace vantr::e2e

namespace vantr::e2e {
namespace {

// Web pages open, for this test, in a command that writes down what it was
// given: an association in the test bed's own prefix, put back afterwards.
class PageRecorder {
 public:
  explicit PageRecorder(const std::string& record) {
    RegCreateKeyExA(HKEY_CLASSES_ROOT, ".html", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_type, nullptr);
    char old[256] = {};
    DWORD size = sizeof old;
    if (RegQueryValueExA(m_type, nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(old), &size) == ERROR_SUCCESS)
      m_old = old;
    RegSetValueExA(m_type, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(kClass), sizeof kClass);
    const std::string command = "cmd.exe /c echo %1>>\"" + record + "\"";
    HKEY open = nullptr;
    RegCreateKeyExA(HKEY_CLASSES_ROOT, (std::string(kClass) + "\\shell\\open\\command").c_str(), 0, nullptr, 0,
                    KEY_ALL_ACCESS, nullptr, &open, nullptr);
    RegSetValueExA(open, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(command.c_str()),
                   static_cast<DWORD>(command.size() + 1));
    RegCloseKey(open);
  }
  ~PageRecorder() {
    if (m_old.empty())
      RegDeleteValueA(m_type, nullptr);
    else
      RegSetValueExA(m_type, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(m_old.c_str()),
                     static_cast<DWORD>(m_old.size() + 1));
    RegCloseKey(m_type);
    RegDeleteTreeA(HKEY_CLASSES_ROOT, kClass);
  }

 private:
  static constexpr char kClass[] = "VantorelTestPage";
  HKEY m_type = nullptr;
  std::string m_old;
};

TEST_F(LibraryEdit, HelpOpensPagesOfTheManualBesideTheProgram) {
  // The manual as the build puts it beside the program.
  CreateDirectoryA(m_folder.file("manual").c_str(), nullptr);
  for (const char* page : {"index.html", "files.html", "settings.html", "home.html"})
    ASSERT_TRUE(CopyFileA(nativePath(std::string(VANTR_MANUAL) + "/" + page).c_str(),
                          m_folder.file(std::string("manual\\") + page).c_str(), FALSE))
        << page;
  const std::string record = m_folder.file("opened.txt");
  PageRecorder recorder(record);
  m_library.schedule("News", "");
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());

  const auto opened = [&](const char* page) {
    return waitFor([&] { return fileText(record).find(std::string("manual\\") + page) != std::string::npos; });
  };
  PostMessageA(window.item(IDC_FILES_LIST), WM_KEYDOWN, VK_F1, 0);
  EXPECT_TRUE(opened("index.html")) << fileText(record);
  window.command(CM_WEB_FIRST);
  EXPECT_TRUE(opened("home.html")) << fileText(record);
  window.select(IDC_FILES_LIST, 0);
  window.command(CM_FILE_PROPERTIES);
  {
    Box props("File Properties");
    ASSERT_TRUE(props);
    PostMessageA(props.item(IDHELP), BM_CLICK, 0, 0);
    EXPECT_TRUE(opened("files.html")) << fileText(record);
    ASSERT_TRUE(props.press(IDCANCEL));
  }
}

}  // namespace
}  // namespace vantr::e2e
