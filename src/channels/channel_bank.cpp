#include "channels/channel_bank.h"

#include <algorithm>

#include "audio/data/pcm_file_sink.h"
#include "audio/data/pcm_file_source.h"
#include "base/file.h"
#include "base/process.h"
#include "base/text.h"
#include "channels/device_choice.h"
#include "schedule/named_file.h"
#include "store/settings.h"

namespace vantr {

namespace {

constexpr const char* kTemporaryPrefix = "TEMP_";

bool validChannel(int channel) { return channel >= 0 && channel < kChannels; }

std::string clippedName(std::string_view name) { return std::string(name.substr(0, kMaxNameLength)); }

// A file that exists but that someone else holds open. One that cannot be
// opened at all for another reason counts as free.
bool inUse(const std::string& path) {
  if (path.empty() || !fileExists(path)) return false;
  File probe(path, FileMode::Exclusive);
  return !probe.isOpen() && File(path, FileMode::Read).isOpen();
}

}  // namespace

ChannelBank::ChannelBank(const ChannelFolders& folders, std::array<LSoundPlayer*, kChannels> players,
                         std::array<LSoundRecorder*, kChannels> recorders)
    : m_folders(folders), m_players(players), m_recorders(recorders) {
  for (int c = 0; c < kChannels; ++c) {
    m_players[c]->setNotify(this, static_cast<uint32_t>(c));
    m_players[c]->setDevice(static_cast<int8_t>(c));
    m_recorders[c]->setListener(this, static_cast<uint32_t>(c));
    m_recorders[c]->setDevice(static_cast<int8_t>(c));
  }
  readDefaultChannels();
}

ChannelBank::~ChannelBank() {
  m_observer = nullptr;
  m_playListener = nullptr;
  stopAll();
  for (int c = 0; c < kChannels; ++c) {
    m_players[c]->setNotify(nullptr, 0);
    m_recorders[c]->setListener(nullptr, 0);
  }
}

void ChannelBank::readDefaultChannels(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs) {
  const IniDocument settings = loadSettingsDocument(m_folders.settingsFile);
  const auto choose = [&](const char* key, const std::vector<std::string>& names) {
    const DeviceChoice choice = chooseDevice(readInt(settings, "settings", key, 0),
                                             readText(settings, "settings", std::string(key) + "name", ""), names);
    if (!choice.note.empty()) log(AsRunAction::Device, -1, key, "settings", choice.note);
    return choice.device;
  };
  m_defaultPlay = choose("playdevice", outputs);
  m_defaultRecord = choose("recorddevice", inputs);
}

void ChannelBank::log(AsRunAction action, int channel, std::string_view name, std::string_view cause,
                      std::string_view result) {
  if (!m_log) return;
  const bool play = action == AsRunAction::PlayStart || action == AsRunAction::PlayEnd;
  m_log->append(action, asRunChannelText(play, channel), name, cause, result);
}

void ChannelBank::changed() {
  if (m_observer) m_observer->channelsChanged();
}

void ChannelBank::PlayFile(std::string_view name, int channel, std::string_view cause) {
  if (!validChannel(channel)) channel = m_defaultPlay;
  if (!validChannel(channel)) {
    log(AsRunAction::PlayStart, -1, name, cause, "failed: no play channel " + std::to_string(channel));
    return;
  }
  const std::string path = audioFilePath(m_folders.recordingsFolder, name);
  LSoundSource source = path.empty() ? LSoundSource() : openWavSource(path);
  // Opening closes what the channel played, which reports its end first.
  if (m_players[channel]->Open(source, false)) {
    m_play[channel].name = clippedName(name);
    m_play[channel].cause = std::string(cause);
    m_play[channel].rate = source->sampleRate();
    log(AsRunAction::PlayStart, channel, name, cause, "done");
  } else if (path.empty()) {
    log(AsRunAction::PlayStart, channel, name, cause, "failed: not a file name");
  } else if (!source || source->failed()) {
    const std::string why = source ? source->failure() : std::string();
    log(AsRunAction::PlayStart, channel, name, cause, "failed: " + (why.empty() ? std::string("file missing") : why));
  } else {
    log(AsRunAction::PlayStart, channel, name, cause, "failed: device refused");
  }
  changed();
}

void ChannelBank::StartRecord(std::string_view name, int channel, int32_t duration, std::string_view cause) {
  if (duration < 1) return;
  if (!validChannel(channel)) channel = m_defaultRecord;
  if (!validChannel(channel)) {
    log(AsRunAction::RecordStart, -1, name, cause, "failed: no record channel " + std::to_string(channel));
    return;
  }
  if (isRecording(name)) {
    log(AsRunAction::RecordStart, channel, name, cause, "already recording");
    return;
  }
  if (!isSafeName(name)) {
    log(AsRunAction::RecordStart, channel, name, cause, "failed: not a file name");
    changed();
    return;
  }
  const std::string schedule = scheduleFilePath(m_folders.schedulesFolder, name);
  const std::string path = audioFilePath(m_folders.recordingsFolder, name);
  // The format: the program's defaults, or the file's own.
  const bool useDefaults = readBool(schedule, "file", "defaultformat", true);
  const std::string& formatFile = useDefaults ? m_folders.settingsFile : schedule;
  const std::string formatSection = useDefaults ? "settings" : "file";
  int32_t rate = readInt(formatFile, formatSection, "samplerate", 44100);
  if (rate < 6000 || rate > 96000) rate = 44100;
  const uint8_t channels = readBool(formatFile, formatSection, "stereo", true) ? 2 : 1;
  const int8_t trim = readBool(schedule, "file", "autotrim", true)
                          ? readLevel(m_folders.settingsFile, "settings", "autotrim", -21)
                          : kNoLevel;

  // A recording already on this channel ends first, as itself: its end is
  // logged and its TEMP_ file, if it has one, becomes the pending move.
  // Only then does the channel take on the new file's TEMP_ choice.
  if (m_recorders[channel]->state() != LSoundRecorder::State::Idle) m_recorders[channel]->Stop();
  Channel& ch = m_record[channel];
  // While the file plays, or someone else holds it, the recording goes to
  // TEMP_<name>.wav and is moved into place once it is free.
  ch.temporary = isPlaying(name) || inUse(path);
  LSoundSink sink =
      createPcmSink(ch.temporary ? temporaryPath(name) : path, static_cast<uint32_t>(rate), channels, 16, 0);
  const bool started = m_recorders[channel]->Start(sink, duration, trim, kRecordSilenceLimit);
  // A channel whose device refused still shows the name until it is stopped.
  ch.name = clippedName(name);
  ch.cause = std::string(cause);
  if (started)
    log(AsRunAction::RecordStart, channel, name, cause, ch.temporary ? "done (TEMP_)" : "done");
  else if (sink && sink->failed())
    log(AsRunAction::RecordStart, channel, name, cause, "failed: the file cannot be written");
  else
    log(AsRunAction::RecordStart, channel, name, cause, "failed: device refused");
  changed();
}

void ChannelBank::endPlay(int channel) {
  Channel& ch = m_play[channel];
  if (ch.name.empty()) return;
  log(AsRunAction::PlayEnd, channel, ch.name, ch.cause, "done");
  ch.name.clear();
  ch.cause.clear();
  ch.rate = 0;
  changed();
}

void ChannelBank::releaseClosedPlay(int channel) {
  if (validChannel(channel) && !m_players[channel]->isOpen()) endPlay(channel);
}

void ChannelBank::playing(uint32_t channel) {
  if (m_playListener) m_playListener->playing(channel);
}

void ChannelBank::stopped(uint32_t channel) {
  if (channel >= kChannels) return;
  endPlay(static_cast<int>(channel));
  if (m_playListener) m_playListener->stopped(channel);
}

void ChannelBank::cueStarted(uint32_t channel) {
  if (m_playListener) m_playListener->cueStarted(channel);
}

void ChannelBank::paused(uint32_t channel) {
  if (m_playListener) m_playListener->paused(channel);
}

void ChannelBank::position(int32_t time, uint32_t channel) {
  if (m_playListener) m_playListener->position(time, channel);
}

void ChannelBank::recordingStopped(uint32_t channel) {
  if (channel >= kChannels) return;
  Channel& ch = m_record[channel];
  if (ch.name.empty()) return;
  // Each finished TEMP_ recording waits for its own move: a second one
  // finishing first must not make the program forget the first.
  if (ch.temporary &&
      std::none_of(m_pending.begin(), m_pending.end(), [&](const std::string& p) { return equalsNoCase(p, ch.name); }))
    m_pending.push_back(ch.name);
  ch.temporary = false;
  log(AsRunAction::RecordEnd, static_cast<int>(channel), ch.name, ch.cause, "done");
  ch.name.clear();
  ch.cause.clear();
  changed();
}

void ChannelBank::levels(const LevelList& levels, uint32_t channel) {
  if (m_observer && static_cast<int>(channel) == m_defaultPlay) m_observer->playLevels(levels);
  if (m_playListener) m_playListener->levels(levels, channel);
}

void ChannelBank::recordLevels(const LevelList& levels, uint32_t channel) {
  if (m_observer && static_cast<int>(channel) == m_defaultRecord) m_observer->recordLevels(levels);
}

void ChannelBank::stopPlay(int channel) {
  if (validChannel(channel)) m_players[channel]->Close();
}

void ChannelBank::stopRecord(int channel) {
  if (!validChannel(channel)) return;
  if (m_recorders[channel]->state() != LSoundRecorder::State::Idle) {
    m_recorders[channel]->Stop();
  } else {
    // A recording whose device refused never started: stopping frees the
    // channel all the same.
    recordingStopped(static_cast<uint32_t>(channel));
  }
}

void ChannelBank::stopAll() {
  for (int c = 0; c < kChannels; ++c) {
    stopPlay(c);
    stopRecord(c);
  }
}

void ChannelBank::stopEveryUserOf(const std::string& fileName) {
  for (int c = 0; c < kChannels; ++c) {
    if (equalsNoCase(m_play[c].name, fileName)) stopPlay(c);
    if (equalsNoCase(m_record[c].name, fileName)) stopRecord(c);
  }
}

std::string ChannelBank::temporaryPath(std::string_view name) const {
  return namedFilePath(m_folders.recordingsFolder, kTemporaryPrefix + std::string(name), kAudioExtension);
}

bool ChannelBank::isPlaying(std::string_view name) const {
  for (const Channel& ch : m_play)
    if (!ch.name.empty() && equalsNoCase(ch.name, name)) return true;
  return false;
}

bool ChannelBank::isRecording(std::string_view name) const {
  for (const Channel& ch : m_record)
    if (!ch.name.empty() && equalsNoCase(ch.name, name)) return true;
  return false;
}

int ChannelBank::busyCount() const {
  int busy = 0;
  for (int c = 0; c < kChannels; ++c) busy += !m_play[c].name.empty() + !m_record[c].name.empty();
  return busy;
}

namespace {
std::string statusLine(const char* tag, const std::array<std::string, kChannels>& names) {
  std::string line;
  for (const std::string& name : names) line += name;
  return line.empty() ? line : tag + line;
}
}  // namespace

std::string ChannelBank::recordStatus() const {
  return statusLine("[rec] ", {m_record[0].name, m_record[1].name, m_record[2].name, m_record[3].name});
}

std::string ChannelBank::playStatus() const {
  return statusLine("[play] ", {m_play[0].name, m_play[1].name, m_play[2].name, m_play[3].name});
}

void ChannelBank::movePendingRecording() {
  for (auto it = m_pending.begin(); it != m_pending.end();) {
    const std::string& name = *it;
    const std::string temporary = temporaryPath(name);
    if (isPlaying(name) || inUse(temporary)) {
      ++it;
      continue;
    }
    // The final file goes even when there is no TEMP_ file, as it always has.
    const std::string final = audioFilePath(m_folders.recordingsFolder, name);
    if (!final.empty()) {
      removeFile(final);
      renameReplacing(temporary, final);
    }
    it = m_pending.erase(it);
  }
}

}  // namespace vantr
