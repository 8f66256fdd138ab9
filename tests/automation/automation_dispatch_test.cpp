// The main window's handling of a command from the serial line, over the
// channel bank and scripted devices: the files' permissions, files already
// busy, stops, the record limit, names that are no file names, and what the
// as-run log says of each.
#include "automation/automation_dispatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/file.h"
#include "base/path.h"
#include "channels/bank_on_fakes.h"
#include "store/settings.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr int kPlayStart = 0, kRecordStart = 1, kPlayStop = 2, kRecordStop = 3;

class AutomationDispatch : public ::testing::Test, public BankOnFakes {
 protected:
  std::string schedule(const std::string& name) const { return joinPath(folders.schedulesFolder, name + ".qsf"); }
  // A named file with a short recording and the given permissions (nullptr: no key).
  void makeFile(const std::string& name, const char* play = "1", const char* record = "1") {
    writeText(schedule(name), "file", "defaultformat", "true");
    if (play) writeText(schedule(name), "file", "automatedplay", play);
    if (record) writeText(schedule(name), "file", "automatedrecord", record);
    writeAudio(name, 1);
  }
  void run(int command, const std::string& name) { RunAutomationCommand(*bank, folders, command, name, &log); }

  // "channel|action|file|cause|result" of every as-run line so far.
  std::vector<std::string> asRun() { return asRunLines(true, true); }
  std::vector<std::string> newLines() {
    std::vector<std::string> all = asRun();
    std::vector<std::string> fresh(all.begin() + static_cast<std::ptrdiff_t>(m_seen), all.end());
    m_seen = all.size();
    return fresh;
  }

 private:
  size_t m_seen = 0;
};

TEST_F(AutomationDispatch, StartsObeyTheFilesPermission) {
  struct Row {
    const char* name;
    const char* value;  // "automatedplay" and "automatedrecord"; nullptr: no key
    bool starts;
  } rows[] = {
      {"Missing", nullptr, false}, {"Zero", "0", false}, {"Two", "2", false},     {"Minus", "-1", false},
      {"Word", "true", false},     {"One", "1", true},   {"Padded", " 1 ", true},
  };
  writeInt(folders.settingsFile, "settings", "playdevice", 2);
  writeInt(folders.settingsFile, "settings", "recorddevice", 1);
  bank->readDefaultChannels();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    makeFile(row.name, row.value, row.value);
    run(kPlayStart, row.name);
    run(kRecordStart, row.name);
    const std::string name = row.name;
    EXPECT_EQ(bank->playName(2), row.starts ? name : "") << "on the default play channel";
    EXPECT_EQ(bank->recordName(1), row.starts ? name : "") << "on the default record channel";
    const std::vector<std::string> expected =
        row.starts
            ? std::vector<std::string>{"play 2|play start|" + name + "|automation|done",
                                       "record 1|record start|" + name + "|automation|done (TEMP_)"}
            : std::vector<std::string>{"-|play start|" + name + "|automation|refused: automated play is off",
                                       "-|record start|" + name + "|automation|refused: automated record is off"};
    EXPECT_EQ(newLines(), expected);
    bank->stopAll();
    newLines();
  }
  run(kPlayStart, "NoScheduleFile");
  EXPECT_EQ(bank->busyCount(), 0) << "a file without a schedule file is not permitted";
}

TEST_F(AutomationDispatch, AFileAlreadyBusyInAnyCaseIsLeftAlone) {
  makeFile("News");
  bank->PlayFile("News", 3, "operator");
  bank->StartRecord("News", 2, 10000, "operator");
  newLines();
  run(kPlayStart, "NEWS");
  run(kRecordStart, "news");
  EXPECT_EQ(bank->playStatus(), "[play] News");
  EXPECT_EQ(bank->playName(3), "News");
  EXPECT_EQ(bank->recordStatus(), "[rec] News");
  EXPECT_EQ(bank->recordName(2), "News");
  EXPECT_EQ(newLines(), (std::vector<std::string>{"play 3|play start|NEWS|automation|already playing",
                                                  "record 2|record start|news|automation|already recording"}));
}

TEST_F(AutomationDispatch, StopsEveryChannelOfTheFileWhateverItsPermission) {
  makeFile("News", "0", "0");
  makeFile("Talk", "0", "0");
  bank->PlayFile("News", 0, "operator");
  bank->PlayFile("Talk", 1, "operator");
  bank->PlayFile("News", 3, "schedule News sch0");
  bank->StartRecord("News", 2, 10000, "operator");
  newLines();
  run(kPlayStop, "nEWS");
  EXPECT_EQ(bank->playStatus(), "[play] Talk");
  EXPECT_EQ(bank->recordStatus(), "[rec] News") << "a play stop leaves the recording";
  run(kRecordStop, "NEWS");
  EXPECT_EQ(bank->recordStatus(), "");
  // The bank logs each end under the cause of its start; nothing is added.
  EXPECT_EQ(newLines(), (std::vector<std::string>{"play 0|play end|News|operator|done",
                                                  "play 3|play end|News|schedule News sch0|done",
                                                  "record 2|record end|News|operator|done"}));
  run(kPlayStop, "News");
  run(kRecordStop, "Talk");
  EXPECT_EQ(bank->playStatus(), "[play] Talk");
  EXPECT_EQ(newLines(), (std::vector<std::string>{"-|play end|News|automation|not playing",
                                                  "-|record end|Talk|automation|not recording"}));
}

TEST_F(AutomationDispatch, TheRecordLimitComesFromTheSettings) {
  struct Row {
    const char* maxrec;  // nullptr: no key
    int32_t limit;
  } rows[] = {
      {nullptr, 144000000}, {" 4:00:00.000", 144000000}, {"1:00:00", 36000000},
      {"90", 900000},       {"0:00:00.3", 3000},         {"2:30", 1500000},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.maxrec ? row.maxrec : "(missing)");
    writeText(folders.settingsFile, "auto", "maxrec",
              row.maxrec ? std::optional<std::string_view>(row.maxrec) : std::nullopt);
    EXPECT_EQ(automationRecordLimit(folders.settingsFile), row.limit);
  }
}

// The limit reaches the recorder: with 0.3 s it stops after a few loud
// buffers of 0.1 s, with the default it records on.
TEST_F(AutomationDispatch, ARecordingStopsAtTheLimit) {
  makeFile("Short");
  makeFile("Long");
  const auto feedLoud = [&](int channel, int buffers) {
    for (int i = 0; i < buffers && recorders[channel]->state() != LSoundRecorder::State::Idle; ++i) {
      const int slot = captureDevices[channel].fill(std::vector<int16_t>(2 * 4410, 8000));
      ASSERT_GE(slot, 0);
      recorders[channel]->OnBufferDone(slot);
    }
  };
  writeText(folders.settingsFile, "auto", "maxrec", "0:00:00.3");
  run(kRecordStart, "Short");
  ASSERT_EQ(bank->recordName(0), "Short");
  feedLoud(0, 10);
  EXPECT_EQ(bank->recordName(0), "") << "stopped by the limit";

  writeText(folders.settingsFile, "auto", "maxrec", std::nullopt);
  writeInt(folders.settingsFile, "settings", "recorddevice", 1);
  bank->readDefaultChannels();
  run(kRecordStart, "Long");
  ASSERT_EQ(bank->recordName(1), "Long");
  feedLoud(1, 10);
  EXPECT_EQ(bank->recordName(1), "Long");

  writeText(folders.settingsFile, "auto", "maxrec", "0");
  newLines();
  run(kRecordStart, "Short");
  EXPECT_EQ(bank->recordName(0), "");
  EXPECT_EQ(newLines(), std::vector<std::string>{"-|record start|Short|automation|failed: no record duration"});
}

// The line can send any text as a name: one that is no file name inside the
// folders writes nothing, starts nothing and is logged as failed.
TEST_F(AutomationDispatch, NamesThatAreNoFileNamesDoNothing) {
  // A file one level up that an unchecked name would reach.
  writeText(dir.file("Escaped.qsf"), "file", "automatedplay", "1");
  writeText(dir.file("Escaped.qsf"), "file", "automatedrecord", "1");
  // The as-run log's own folder aside, the test folder stays as it is.
  const auto entriesBesideLogs = [&] {
    std::vector<std::string> names = dir.entries();
    names.erase(std::remove(names.begin(), names.end(), "Logs"), names.end());
    return names;
  };
  const std::vector<std::string> before = entriesBesideLogs();
  const char* actions[] = {"play start", "record start", "play end", "record end"};
  for (const char* name : {"../Escaped", "..\\..\\x", "C:Escaped", "sub/x", "..", "", "COM1", "a:b"}) {
    SCOPED_TRACE(name);
    for (int command = 0; command < 4; ++command) {
      run(command, name);
      EXPECT_EQ(newLines(), std::vector<std::string>{"-|" + std::string(actions[command]) + "|" + name +
                                                     "|automation|failed: not a file name"});
    }
  }
  EXPECT_EQ(bank->busyCount(), 0);
  EXPECT_EQ(entriesBesideLogs(), before);
  EXPECT_TRUE(TempDir::isEmpty(folders.recordingsFolder));
  EXPECT_TRUE(TempDir::isEmpty(folders.schedulesFolder));
  for (const auto& d : playDevices) EXPECT_TRUE(d.calls.empty());
  for (const auto& d : captureDevices) EXPECT_TRUE(d.calls.empty());
}

TEST_F(AutomationDispatch, OtherNumbersDoNothing) {
  makeFile("News");
  for (int command : {-1, 4, 5, 1047}) run(command, "News");
  EXPECT_EQ(bank->busyCount(), 0);
  EXPECT_TRUE(asRun().empty());
}

}  // namespace
}  // namespace vantr
