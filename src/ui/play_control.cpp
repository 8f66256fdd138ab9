#include "ui/play_control.h"

#include "base/time_position.h"

namespace vantr {

namespace {

bool isOpen(uint16_t state) { return (state & LSoundPlayer::kOpen) != 0; }
int32_t rateOf(const PlayerPlace& place) { return place.rate > 0 ? place.rate : kAssumedRate; }

}  // namespace

int32_t stepLength(uint16_t state) { return (state & LSoundPlayer::kCued) ? kScrubStep : kPlayStep; }

int32_t placeTime(const PlayerPlace& place) {
  return isOpen(place.state) ? framesToTime(place.frames, rateOf(place)) : 0;
}

std::optional<int32_t> stepFrame(const PlayerPlace& place, bool forward) {
  if (!isOpen(place.state)) return std::nullopt;
  const int32_t step = stepLength(place.state);
  const int32_t time = placeTime(place) + (forward ? step : -step);
  return timeToFrames(time, rateOf(place));
}

PlayButtons playButtons(uint16_t state) {
  PlayButtons buttons;
  buttons.play = isOpen(state);
  buttons.scrub = (state & LSoundPlayer::kCued) != 0;
  buttons.pause = !isOpen(state) || (state & LSoundPlayer::kPaused) != 0;
  return buttons;
}

CloseStep closeStep(uint16_t state) {
  if (!isOpen(state)) return CloseStep::Release;
  if (state & LSoundPlayer::kPaused) return CloseStep::Stop;
  if (state & LSoundPlayer::kCued) return CloseStep::Play;
  return CloseStep::Keep;
}

int channelOfItem(intptr_t data) { return data >= 0 && data < kChannels ? static_cast<int>(data) : 0; }

std::vector<PlayControl::Line> PlayControl::lines() {
  std::vector<Line> lines;
  for (int c = 0; c < kChannels; ++c)
    if (m_bank.player(c).state() != 0) lines.push_back({c, fileOf(c)});
  return lines;
}

std::string PlayControl::fileOf(int channel) {
  const std::string& name = m_bank.playName(channel);
  if (!name.empty()) m_names[channel] = name;
  return m_names[channel];
}

PlayerPlace PlayControl::place() const {
  const LSoundPlayer& player = m_bank.player(m_channel);
  return {player.state(), player.positionFrames(), m_bank.playRate(m_channel)};
}

void PlayControl::play() {
  LSoundPlayer& player = m_bank.player(m_channel);
  if (!player.isOpen()) {
    // Through the bank, so the status lines and the as-run log know of it.
    const std::string name = fileOf(m_channel);
    if (name.empty()) return;
    m_bank.PlayFile(name, m_channel, "play control");
  }
  player.Play();
}

void PlayControl::run(PlayCommand command) {
  LSoundPlayer& player = m_bank.player(m_channel);
  switch (command) {
    case PlayCommand::Play: play(); break;
    case PlayCommand::Scrub:
      if (!player.isOpen()) play();
      player.Cue();
      break;
    case PlayCommand::Pause:
      if (!player.isOpen()) play();
      player.Pause();
      break;
    case PlayCommand::Start: player.Seek(0); break;
    case PlayCommand::Rewind:
    case PlayCommand::Forward:
      if (const std::optional<int32_t> frame = stepFrame(place(), command == PlayCommand::Forward)) player.Seek(*frame);
      break;
  }
}

void PlayControl::close() {
  for (int c = 0; c < kChannels; ++c) {
    switch (closeStep(m_bank.player(c).state())) {
      case CloseStep::Keep: break;
      case CloseStep::Stop: m_bank.stopPlay(c); break;
      case CloseStep::Play: m_bank.player(c).Play(); break;
      case CloseStep::Release: m_bank.releaseClosedPlay(c); break;
    }
  }
}

}  // namespace vantr
