// The main window's eight channels: four play channels and four record
// channels, each with the name of the file it is busy with. The bank starts a
// named file playing or recording on a channel (with the default channels,
// the recording format from the file's or the program's settings and the
// TEMP_ file while the file plays), hears its engines' notifications, moves a
// finished TEMP_ recording into place, stops a file's channels before the file
// is deleted, and writes every start, end and failure to the as-run log.
//
// Portable: the engines are given to it (waveIn/waveOut in the program, fake
// devices in tests), and what the window shows goes through ChannelObserver.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "asrun/as_run_log.h"
#include "audio/play/sound_player.h"
#include "audio/record/sound_recorder.h"
#include "base/level.h"
#include "schedule/scheduler.h"

namespace vantr {

constexpr int kChannels = 4;
// The silence limit a named-file recording is started with: six hours, so a
// recording is in practice never cut in two by silence.
constexpr int32_t kRecordSilenceLimit = 216000000;

struct ChannelFolders {
  std::string settingsFile;
  std::string recordingsFolder;
  std::string schedulesFolder;
};

// What the bank tells the window.
class ChannelObserver {
 public:
  virtual ~ChannelObserver() = default;
  // A channel became busy or free: the status lines are to be rebuilt.
  virtual void channelsChanged() = 0;
  // Levels of the default play device or the default record device.
  virtual void playLevels(const LevelList& levels) = 0;
  virtual void recordLevels(const LevelList& levels) = 0;
};

class ChannelBank : public NamedFileUsers, private LSoundPlayerNotify, private RecorderListener {
 public:
  ChannelBank(const ChannelFolders& folders, std::array<LSoundPlayer*, kChannels> players,
              std::array<LSoundRecorder*, kChannels> recorders);
  ~ChannelBank() override;
  ChannelBank(const ChannelBank&) = delete;
  ChannelBank& operator=(const ChannelBank&) = delete;

  void setObserver(ChannelObserver* observer) { m_observer = observer; }
  void setLog(AsRunLog* log) { m_log = log; }
  // One more hearer of the play channels' notifications (the play control
  // window while it is open): it hears each one after the bank has handled
  // it, with the channel as user. Null to stop.
  void setPlayListener(LSoundPlayerNotify* listener) { m_playListener = listener; }
  // Reads "playdevice" and "recorddevice" again (at start, after the
  // hardware settings change and before each scheduled start). Given the
  // system's devices by name, each number is checked against the name stored
  // beside it ("playdevicename", "recorddevicename"); a device found at
  // another number is taken there, with a line in the as-run log.
  void readDefaultChannels(const std::vector<std::string>& outputs = {}, const std::vector<std::string>& inputs = {});
  int defaultPlayChannel() const { return m_defaultPlay; }
  int defaultRecordChannel() const { return m_defaultRecord; }

  // Plays a named file on channel 0..3, or on the default play channel for
  // any other value; a busy channel's file is replaced. cause is what the
  // as-run log names as the reason ("operator", "schedule News sch3", ...).
  void PlayFile(std::string_view name, int channel, std::string_view cause);
  // Records a named file for duration (ten-thousandths of a second) on
  // channel 0..3 or the default record channel; a name that records anywhere
  // already is left alone.
  void StartRecord(std::string_view name, int channel, int32_t duration, std::string_view cause);

  void stopPlay(int channel);
  void stopRecord(int channel);
  void stopAll();
  // Stops every channel busy with the file (before the file is deleted).
  void stopEveryUserOf(const std::string& fileName) override;

  const std::string& playName(int channel) const { return m_play[channel].name; }
  // The player of play channel 0..3, for the play control window's commands.
  LSoundPlayer& player(int channel) { return *m_players[channel]; }
  const LSoundPlayer& player(int channel) const { return *m_players[channel]; }
  // The sample rate of the file the channel plays; 0 when it plays nothing.
  int32_t playRate(int channel) const { return m_play[channel].rate; }
  // A play channel whose player has closed lets go of its file name, with
  // the end in the as-run log, as the player's own end would have done.
  void releaseClosedPlay(int channel);
  const std::string& recordName(int channel) const { return m_record[channel].name; }
  bool isPlaying(std::string_view name) const;
  bool isRecording(std::string_view name) const;
  int busyCount() const;

  // "[rec] " and the names of the busy record channels in channel order, ""
  // when none records; likewise "[play] ".
  std::string recordStatus() const;
  std::string playStatus() const;
  // Moves each finished TEMP_ recording into place unless its file is
  // playing or the TEMP_ file is still in use; done at every status refresh.
  void movePendingRecording();
  // The files whose finished TEMP_ recordings wait for their move, oldest first.
  const std::vector<std::string>& pendingNames() const { return m_pending; }

 private:
  struct Channel {
    std::string name;
    std::string cause;
    bool temporary = false;
    int32_t rate = 0;  // play channels: the sample rate of the file
  };

  // LSoundPlayerNotify (cookie: the channel); each is passed on to the
  // play listener once handled.
  void playing(uint32_t channel) override;
  void stopped(uint32_t channel) override;
  void cueStarted(uint32_t channel) override;
  void paused(uint32_t channel) override;
  void position(int32_t time, uint32_t channel) override;
  void levels(const LevelList& levels, uint32_t channel) override;
  // RecorderListener
  void recordingStarted(uint32_t) override {}
  void waitingForSound(uint32_t) override {}
  void recordingStopped(uint32_t channel) override;
  void recordPosition(int32_t, uint32_t) override {}
  void recordLevels(const LevelList& levels, uint32_t channel) override;

  void log(AsRunAction action, int channel, std::string_view name, std::string_view cause, std::string_view result);
  void changed();
  // The end of a play channel's file: logged, the name let go.
  void endPlay(int channel);
  // TEMP_<name>.wav in the recordings folder, where a recording goes while its file is busy.
  std::string temporaryPath(std::string_view name) const;

  const ChannelFolders m_folders;
  std::array<LSoundPlayer*, kChannels> m_players;
  std::array<LSoundRecorder*, kChannels> m_recorders;
  std::array<Channel, kChannels> m_play, m_record;
  std::vector<std::string> m_pending;
  int m_defaultPlay = 0, m_defaultRecord = 0;
  ChannelObserver* m_observer = nullptr;
  LSoundPlayerNotify* m_playListener = nullptr;
  AsRunLog* m_log = nullptr;
};

}  // namespace vantr
