// The eight channels over scripted devices: which channel a start takes, the
// recording format and trim, the TEMP_ file while the file plays and its move
// into place, the status lines, and what the as-run log says of each.
#include "channels/channel_bank.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/file.h"
#include "base/path.h"
#include "channels/bank_on_fakes.h"
#include "store/settings.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

class Bank : public ::testing::Test, public BankOnFakes, public ChannelObserver {
 protected:
  Bank() { bank->setObserver(this); }

  void channelsChanged() override { ++changes; }
  void playLevels(const LevelList&) override {}
  void recordLevels(const LevelList&) override {}

  // A named file: its schedule file and a short 16-bit stereo recording.
  void makeFile(const std::string& name, bool withAudio = true) {
    writeText(scheduleFile(name), "file", "defaultformat", "true");
    if (withAudio) writeAudio(name, 1);
  }
  std::string settings() const { return folders.settingsFile; }

  // "channel action file result" of every as-run line so far.
  std::vector<std::string> asRun() { return asRunLines(false, true); }

  int changes = 0;
};

TEST_F(Bank, PlayTakesTheChannelOrTheDefaultAndReplacesWhatPlayedThere) {
  makeFile("News");
  makeFile("Jingle");
  writeInt(settings(), "settings", "playdevice", 2);
  bank->readDefaultChannels();
  bank->PlayFile("News", -1, "operator");
  EXPECT_EQ(bank->playName(2), "News");
  bank->PlayFile("Jingle", 2, "operator");
  EXPECT_EQ(bank->playStatus(), "[play] Jingle") << "a new play on a busy channel replaces its file";
  bank->PlayFile("Missing", 0, "operator");
  EXPECT_EQ(bank->playName(0), "") << "a missing file leaves the channel idle";
  writeInt(settings(), "settings", "playdevice", 7);
  bank->readDefaultChannels();
  bank->PlayFile("News", -1, "operator");
  EXPECT_EQ(bank->playStatus(), "[play] Jingle") << "a default channel of 7 plays nowhere";
  bank->stopPlay(2);
  EXPECT_EQ(bank->playStatus(), "");
  EXPECT_EQ(asRun(), (std::vector<std::string>{
                         "play 2|play start|News|done",
                         "play 2|play end|News|done",
                         "play 2|play start|Jingle|done",
                         "play 0|play start|Missing|failed: cannot open the file",
                         "-|play start|News|failed: no play channel 7",
                         "play 2|play end|Jingle|done",
                     }));
}

TEST_F(Bank, RecordingFormatAndTrimComeFromTheFileOrTheProgram) {
  struct Row {
    const char* name;
    const char* defaultFormat;  // the file's "defaultformat"
    int32_t programRate, fileRate;
    bool programStereo, fileStereo;
    const char* fileTrim;  // the file's "autotrim"
    std::string opened;    // what the device was asked for
    int startThreshold;
  } rows[] = {
      {"Defaults", "true", 22050, 8000, false, true, "true", "open 0 1 22050", -20},
      {"OwnFormat", "false", 22050, 8000, false, true, "true", "open 0 2 8000", -20},
      {"LowRate", "true", 5999, 8000, true, true, "true", "open 0 2 44100", -20},
      {"HighRate", "false", 22050, 96001, true, true, "true", "open 0 2 44100", -20},
      {"Untrimmed", "true", 48000, 8000, true, true, "false", "open 0 2 48000", kNoLevel + 2},
  };
  writeLevel(settings(), "settings", "autotrim", -22);
  for (const Row& r : rows) {
    SCOPED_TRACE(r.name);
    const std::string qsf = joinPath(folders.schedulesFolder, std::string(r.name) + ".qsf");
    writeText(qsf, "file", "defaultformat", r.defaultFormat);
    writeInt(qsf, "file", "samplerate", r.fileRate);
    writeBool(qsf, "file", "stereo", r.fileStereo);
    writeText(qsf, "file", "autotrim", r.fileTrim);
    writeInt(settings(), "settings", "samplerate", r.programRate);
    writeBool(settings(), "settings", "stereo", r.programStereo);
    captureDevices[0].calls.clear();
    bank->StartRecord(r.name, 0, 10000, "operator");
    ASSERT_FALSE(captureDevices[0].calls.empty());
    EXPECT_EQ(captureDevices[0].calls[0], r.opened);
    // The gate opens 2 dB above the trim level; AutoTrim off (-127) gives -125.
    EXPECT_EQ(recorders[0]->startThreshold(), r.startThreshold);
    EXPECT_EQ(bank->recordName(0), r.name);
    bank->stopRecord(0);
  }
  bank->StartRecord("Defaults", 1, 0, "operator");
  EXPECT_EQ(bank->recordName(1), "") << "a duration below 1 records nothing";
}

TEST_F(Bank, OneNameRecordsOnceAndAPlayingFileRecordsIntoTemp) {
  makeFile("News");
  makeFile("Talk", false);
  writeInt(settings(), "settings", "recorddevice", 3);
  bank->readDefaultChannels();
  bank->StartRecord("Talk", -1, 10000, "schedule Talk sch0");
  bank->StartRecord("talk", 1, 10000, "operator");
  EXPECT_EQ(bank->recordName(3), "Talk");
  EXPECT_EQ(bank->recordName(1), "") << "the same name, in another case, records once";

  bank->PlayFile("News", 0, "operator");
  bank->StartRecord("News", 1, 10000, "operator");
  EXPECT_EQ(bank->recordStatus(), "[rec] NewsTalk") << "both names after one tag, in channel order";
  EXPECT_TRUE(fileExists(joinPath(folders.recordingsFolder, "TEMP_News.wav")));
  bank->stopRecord(1);
  EXPECT_EQ(bank->pendingNames(), std::vector<std::string>{"News"});
  bank->movePendingRecording();
  EXPECT_EQ(bank->pendingNames(), std::vector<std::string>{"News"}) << "the move waits while the file plays";
  bank->stopPlay(0);
  bank->movePendingRecording();
  EXPECT_TRUE(bank->pendingNames().empty());
  EXPECT_FALSE(fileExists(joinPath(folders.recordingsFolder, "TEMP_News.wav")));
  EXPECT_TRUE(fileExists(joinPath(folders.recordingsFolder, "News.wav")));
  const std::vector<std::string> lines = asRun();
  EXPECT_EQ(lines[0], "record 3|record start|Talk|done");
  EXPECT_EQ(lines[1], "record 1|record start|talk|already recording");
  EXPECT_EQ(lines[3], "record 1|record start|News|done (TEMP_)");
}

// A new recording on a busy record channel ends the one there as itself:
// the finished file keeps its audio and its own TEMP_ choice, whatever the
// new one's is.
TEST_F(Bank, ARecordingReplacedOnItsChannelKeepsItsOwnFile) {
  const std::string recordings = folders.recordingsFolder;
  const struct { bool oldPlays, newPlays; } rows[] = {{false, true}, {true, false}, {true, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.oldPlays) + std::to_string(row.newPlays));
    bank->stopAll();
    makeFile("Old", false);
    makeFile("New", false);
    removeFile(joinPath(recordings, "Old.wav"));
    // A file plays while it records only when it has audio to play.
    if (row.oldPlays) writeAudio("Old", 10);
    if (row.newPlays) writeAudio("New", 10);
    if (row.oldPlays) bank->PlayFile("Old", 0, "operator");
    if (row.newPlays) bank->PlayFile("New", 1, "operator");
    bank->StartRecord("Old", 2, 100000, "operator");
    bank->StartRecord("New", 2, 100000, "operator");
    EXPECT_EQ(bank->recordName(2), "New");
    EXPECT_EQ(bank->pendingNames(), row.oldPlays ? std::vector<std::string>{"Old"} : std::vector<std::string>{});
    bank->stopAll();
    bank->movePendingRecording();
    EXPECT_TRUE(fileExists(joinPath(recordings, "Old.wav")));
    EXPECT_FALSE(fileExists(joinPath(recordings, "TEMP_Old.wav")));
    EXPECT_FALSE(fileExists(joinPath(recordings, "TEMP_New.wav")));
  }
}

TEST_F(Bank, ARefusedDeviceShowsTheNameUntilStoppedAndDeleteStopsEveryUser) {
  makeFile("News");
  captureDevices[2].refuseDirect = captureDevices[2].refuseMapper = true;
  bank->StartRecord("News", 2, 10000, "operator");
  EXPECT_EQ(bank->recordStatus(), "[rec] News");
  bank->PlayFile("News", 1, "operator");
  bank->PlayFile("News", 3, "operator");
  bank->stopEveryUserOf("NEWS");
  EXPECT_EQ(bank->busyCount(), 0);
  const std::vector<std::string> lines = asRun();
  ASSERT_EQ(lines.size(), 6u);
  EXPECT_EQ(lines[0], "record 2|record start|News|failed: device refused");
  EXPECT_EQ(lines[3], "play 1|play end|News|done");
  EXPECT_EQ(lines[4], "record 2|record end|News|done");
}

// Names that would leave the folders (the serial line will send such names)
// start nothing, write nothing, and say so in the log.
TEST_F(Bank, NamesOutsideTheFoldersStartNothing) {
  for (const char* name : {"..\\Escaped", "../Escaped", "C:Escaped", "sub/Escaped"}) {
    bank->PlayFile(name, 0, "automation");
    bank->StartRecord(name, 0, 10000, "automation");
  }
  EXPECT_EQ(bank->busyCount(), 0);
  const std::vector<std::string> lines = asRun();
  EXPECT_EQ(lines.size(), 8u);
  for (const std::string& line : lines) EXPECT_NE(line.find("|failed: not a file name"), std::string::npos) << line;
  EXPECT_EQ(dir.entries(), (std::vector<std::string>{"Logs", "Recordings", "Schedules"}));
  EXPECT_TRUE(TempDir::isEmpty(folders.recordingsFolder));
}

}  // namespace
}  // namespace vantr

namespace vantr {
namespace {

TEST_F(Bank, DefaultDevicesFollowTheirStoredNames) {
  writeInt(settings(), "settings", "playdevice", 0);
  writeText(settings(), "settings", "playdevicename", "USB Out");
  writeInt(settings(), "settings", "recorddevice", 2);
  writeText(settings(), "settings", "recorddevicename", "Line In");
  bank->readDefaultChannels({"Speakers", "USB Out"}, {"Mic", "Line In", "Line In"});
  EXPECT_EQ(bank->defaultPlayChannel(), 1);
  EXPECT_EQ(bank->defaultRecordChannel(), 2) << "the stored number still has the name";
  EXPECT_EQ(asRun(), std::vector<std::string>{"-|device|playdevice|device \"USB Out\" moved from 0 to 1"});
  // Without the device lists (or names) the numbers stand as stored.
  bank->readDefaultChannels();
  EXPECT_EQ(bank->defaultPlayChannel(), 0);
}

}  // namespace
}  // namespace vantr
