// The main window's eight channels over scripted devices in a fresh folder,
// for the tests of what drives the channel bank: the bank itself, the serial
// automation's commands, the play control window.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "asrun/as_run_log.h"
#include "audio/data/pcm_file_sink.h"
#include "audio/fake_devices.h"
#include "base/clock.h"
#include "base/file.h"
#include "base/path.h"
#include "channels/channel_bank.h"
#include "test_support/temp_dir.h"

namespace vantr {

struct BankOnFakes {
  BankOnFakes() {
    makeDirectory(folders.recordingsFolder);
    makeDirectory(folders.schedulesFolder);
    std::array<LSoundPlayer*, kChannels> p{};
    std::array<LSoundRecorder*, kChannels> r{};
    for (int c = 0; c < kChannels; ++c) {
      players[c] = std::make_unique<LSoundPlayer>(
          playDevices[c], [] {}, LSoundPlayer::Threading::Manual);
      recorders[c] = std::make_unique<LSoundRecorder>(captureDevices[c]);
      p[c] = players[c].get();
      r[c] = recorders[c].get();
    }
    bank = std::make_unique<ChannelBank>(folders, p, r);
    bank->setLog(&log);
  }

  std::string scheduleFile(const std::string& name) const { return joinPath(folders.schedulesFolder, name + ".qsf"); }
  // tenths of a second of a 16-bit stereo recording at rate in the file's audio.
  void writeAudio(const std::string& name, int32_t tenths, uint32_t rate = 44100) const {
    LSoundSink sink = createPcmSink(joinPath(folders.recordingsFolder, name + ".wav"), rate, 2, 16, 0);
    const int32_t frames = static_cast<int32_t>(rate / 10);
    std::vector<int32_t> values(2 * static_cast<size_t>(frames), 1600);
    for (int32_t t = 0; t < tenths; ++t) sink->write(values.data(), frames);
  }
  // Every as-run line so far, its fields joined by "|": channel, action, file,
  // then cause and result where asked for.
  std::vector<std::string> asRunLines(bool withCause, bool withResult) {
    log.flush();
    std::vector<AsRunEntry> entries;
    readAsRun(dir.file("Logs"), 0, INT64_MAX, entries);
    std::vector<std::string> lines;
    for (const AsRunEntry& e : entries)
      lines.push_back(e.channel + "|" + e.action + "|" + e.file + (withCause ? "|" + e.cause : "") +
                      (withResult ? "|" + e.result : ""));
    return lines;
  }

  TempDir dir;
  ChannelFolders folders{dir.file("settings.ini"), dir.file("Recordings") + "/", dir.file("Schedules") + "/"};
  ManualClock clock{0};
  AsRunLog log{dir.file("Logs"), clock};
  FakePlaybackDevice playDevices[kChannels];
  FakeCaptureDevice captureDevices[kChannels];
  std::unique_ptr<LSoundPlayer> players[kChannels];
  std::unique_ptr<LSoundRecorder> recorders[kChannels];
  std::unique_ptr<ChannelBank> bank;
};

}  // namespace vantr
