// The play control window's rules, without the window: which channels it
// lists, what its buttons show for a player's state, where Rewind and Fast
// Forward move a player, what each command does to the channel in hand, and
// what becomes of each channel when the window closes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "channels/channel_bank.h"

namespace vantr {

// Rewind and Fast Forward step 0.1 s while the channel scrubs (its cue loop
// plays), 3 s otherwise; ten-thousandths of a second.
constexpr int32_t kScrubStep = 1000;
constexpr int32_t kPlayStep = 30000;
// The rate a player's position is read at when its file's rate is unknown.
constexpr int32_t kAssumedRate = 44100;

// Where a player stands: its state bits (LSoundPlayer::kOpen, ...), its
// position in frames and the sample rate of its file (0 when unknown).
struct PlayerPlace {
  uint16_t state = 0;
  int32_t frames = 0;
  int32_t rate = 0;
};

int32_t stepLength(uint16_t state);
// The position in ten-thousandths of a second; 0 for a closed player.
int32_t placeTime(const PlayerPlace& place);
// The frame Rewind (forward false) or Fast Forward seeks an open player to;
// none for a closed player. Near the start the frame is negative: the player
// decides what a seek before the start does.
std::optional<int32_t> stepFrame(const PlayerPlace& place, bool forward);

// Which of the check-style buttons show pressed.
struct PlayButtons {
  bool play = false;   // the player is open
  bool scrub = false;  // its cue loop plays
  bool pause = false;  // paused, or not open
  bool operator==(const PlayButtons& o) const { return play == o.play && scrub == o.scrub && pause == o.pause; }
};
PlayButtons playButtons(uint16_t state);

// What the window's closing does to a channel in this state.
enum class CloseStep {
  Keep,     // playing: plays on
  Stop,     // paused: stopped and closed
  Play,     // scrubbing: set playing
  Release,  // not open: the channel lets go of its file name
};
CloseStep closeStep(uint16_t state);

// The channel a list line's item data names; anything outside 0..3 is channel 0.
int channelOfItem(intptr_t data);

enum class PlayCommand { Play, Scrub, Pause, Start, Rewind, Forward };

// The commands over the bank's play channels, on one channel at a time.
class PlayControl {
 public:
  // What a list line shows: a channel whose player is open and its file.
  struct Line {
    int channel;
    std::string name;
  };

  explicit PlayControl(ChannelBank& bank) : m_bank(bank) {}

  // The channels whose players are open, in channel order. Their names are
  // kept, so that Play can start a file again after it has ended (its end
  // takes the name from the bank).
  std::vector<Line> lines();
  void select(intptr_t itemData) { m_channel = channelOfItem(itemData); }
  int channel() const { return m_channel; }

  void run(PlayCommand command);
  PlayerPlace place() const;
  PlayButtons buttons() const { return playButtons(place().state); }
  int32_t time() const { return placeTime(place()); }
  // What the window's closing does to every channel (closeStep).
  void close();

 private:
  // Plays the channel's file from its start when its player is not open;
  // sets an open player going.
  void play();
  // The file of the channel: the bank's name, or the last one seen here.
  std::string fileOf(int channel);

  ChannelBank& m_bank;
  int m_channel = 0;
  std::array<std::string, kChannels> m_names;
};

}  // namespace vantr
