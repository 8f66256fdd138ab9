// The play control window's rules without the window: the position and step
// arithmetic, the buttons and closing steps for each player state, and the
// commands over a bank of players on scripted devices.
#include "ui/play_control.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/file.h"
#include "base/path.h"
#include "channels/bank_on_fakes.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr uint16_t kOpen = LSoundPlayer::kOpen, kPaused = LSoundPlayer::kPaused, kCued = LSoundPlayer::kCued;

TEST(PlayControlSteps, TimeAndStepTargets) {
  struct Row {
    const char* what;
    PlayerPlace place;
    int32_t time;  // ten-thousandths of a second
    std::optional<int32_t> back, forward;
  };
  const Row rows[] = {
      {"closed: no time, not moved", {0, 12345, 44100}, 0, std::nullopt, std::nullopt},
      {"closed with a state of its own is still closed",
       {kPaused | kCued, 44100, 44100},
       0,
       std::nullopt,
       std::nullopt},
      {"playing: 3 s steps", {kOpen, 242550, 44100}, 55000, 110250, 374850},
      {"paused: 3 s steps", {kOpen | kPaused, 0, 44100}, 0, -132300, 132300},
      {"scrubbing: 0.1 s steps", {kOpen | kCued, 132300, 44100}, 30000, 127890, 136710},
      {"scrubbing while paused: still 0.1 s", {kOpen | kPaused | kCued, 44100, 44100}, 10000, 39690, 48510},
      {"rate that does not divide 10000: times truncate", {kOpen, 12345, 22050}, 5598, -53806, 78493},
      {"48000 Hz: the negative remainder truncates towards zero", {kOpen, 10000, 48000}, 2083, -134001, 153998},
      {"8000 Hz", {kOpen, 100, 8000}, 125, -23900, 24100},
      {"11025 Hz scrubbing past the start", {kOpen | kCued, 7, 11025}, 6, -1095, 1109},
      {"0.1 s in: rewind gives the negative frame", {kOpen, 4410, 44100}, 1000, -127890, 136710},
      {"scrub at the start: one step before it", {kOpen | kCued, 0, 44100}, 0, -4410, 4410},
      {"unknown rate counts as 44100", {kOpen, 44100, 0}, 10000, -88200, 176400},
      {"a 4 GB file near its end", {kOpen, 1073741823, 44100}, 243478871, 1073609521, 1073874121},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_EQ(placeTime(r.place), r.time);
    EXPECT_EQ(stepFrame(r.place, false), r.back);
    EXPECT_EQ(stepFrame(r.place, true), r.forward);
  }
  EXPECT_EQ(stepLength(kOpen), kPlayStep);
  EXPECT_EQ(stepLength(kOpen | kCued), kScrubStep);
}

TEST(PlayControlSteps, ButtonsCloseStepsAndListData) {
  struct Row {
    uint16_t state;
    PlayButtons shown;
    CloseStep close;
  };
  const Row rows[] = {
      {0, {false, false, true}, CloseStep::Release},
      {kOpen, {true, false, false}, CloseStep::Keep},
      {kOpen | LSoundPlayer::kRestartPending | LSoundPlayer::kRaisePending, {true, false, false}, CloseStep::Keep},
      {kOpen | kPaused, {true, false, true}, CloseStep::Stop},
      {kOpen | kCued, {true, true, false}, CloseStep::Play},
      {kOpen | kCued | kPaused, {true, true, true}, CloseStep::Stop},
  };
  for (const Row& r : rows) {
    SCOPED_TRACE("state " + std::to_string(r.state));
    EXPECT_EQ(playButtons(r.state), r.shown);
    EXPECT_EQ(closeStep(r.state), r.close);
  }
  const std::pair<intptr_t, int> items[] = {{0, 0}, {3, 3}, {2, 2}, {4, 0}, {-1, 0}, {INTPTR_MAX, 0}};
  for (const auto& [data, channel] : items) EXPECT_EQ(channelOfItem(data), channel) << data;
}

// What a listener hears, and what the bank said of the channel at that moment.
class Listener : public LSoundPlayerNotify {
 public:
  explicit Listener(const ChannelBank& bank) : m_bank(bank) {}
  void playing(uint32_t user) override { heard("playing", user); }
  void stopped(uint32_t user) override { heard("stopped", user); }
  void cueStarted(uint32_t user) override { heard("cued", user); }
  void paused(uint32_t user) override { heard("paused", user); }
  void position(int32_t time, uint32_t user) override { heard("at " + std::to_string(time), user); }
  void levels(const LevelList&, uint32_t) override {}
  std::vector<std::string> events;

 private:
  void heard(const std::string& what, uint32_t channel) {
    events.push_back(std::to_string(channel) + " " + what + " [" + m_bank.playName(static_cast<int>(channel)) + "]");
  }
  const ChannelBank& m_bank;
};

class Control : public ::testing::Test, public BankOnFakes {
 protected:
  // Ten seconds of a 16-bit stereo recording at rate.
  void makeFile(const std::string& name, uint32_t rate = 44100) { writeAudio(name, 100, rate); }
  std::vector<std::string> asRun() { return asRunLines(true, false); }
};

TEST_F(Control, ListenerHearsEveryNotificationAfterTheBank) {
  makeFile("News");
  Listener listener(*bank);
  bank->setPlayListener(&listener);
  bank->PlayFile("News", 2, "operator");
  EXPECT_EQ(bank->playRate(2), 44100);
  players[2]->Cue();
  players[2]->Pause();
  bank->stopPlay(2);
  // The opening reports itself from inside Open, before the bank takes the
  // name; the end reaches the listener after the bank has let go of it.
  EXPECT_EQ(listener.events, (std::vector<std::string>{"2 playing []", "2 at 0 []", "2 cued [News]", "2 at 0 [News]",
                                                       "2 paused [News]", "2 stopped []"}));
  EXPECT_EQ(bank->playRate(2), 0);
  bank->setPlayListener(nullptr);
  bank->PlayFile("News", 2, "operator");
  EXPECT_EQ(listener.events.size(), 6u) << "a removed listener hears nothing";
}

TEST_F(Control, ListsOpenChannelsAndStepsTheOneInHand) {
  makeFile("Morning");
  makeFile("Slow", 22050);
  bank->PlayFile("Morning", 1, "operator");
  bank->PlayFile("Slow", 3, "operator");
  PlayControl control(*bank);
  const std::vector<PlayControl::Line> lines = control.lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].channel, 1);
  EXPECT_EQ(lines[0].name, "Morning");
  EXPECT_EQ(lines[1].channel, 3);
  EXPECT_EQ(lines[1].name, "Slow");

  control.select(3);
  ASSERT_EQ(control.channel(), 3);
  control.run(PlayCommand::Forward);
  EXPECT_EQ(players[3]->positionFrames(), 3 * 22050) << "3 s at the file's own rate";
  control.run(PlayCommand::Scrub);
  EXPECT_EQ(control.buttons(), (PlayButtons{true, true, false}));
  control.run(PlayCommand::Forward);
  EXPECT_EQ(players[3]->positionFrames(), 3 * 22050 + 2205) << "0.1 s while scrubbing";
  EXPECT_EQ(control.time(), 31000);
  control.run(PlayCommand::Start);
  EXPECT_EQ(players[3]->positionFrames(), 0);
  control.run(PlayCommand::Rewind);
  EXPECT_EQ(players[3]->positionFrames(), -2205) << "a seek before the start reaches the player as it is";
  EXPECT_EQ(control.time(), -1000);
  EXPECT_EQ(players[1]->positionFrames(), 0) << "the other channel is not touched";
  control.run(PlayCommand::Pause);
  EXPECT_EQ(control.buttons(), (PlayButtons{true, true, true}));
  control.run(PlayCommand::Play);
  EXPECT_EQ(control.buttons(), (PlayButtons{true, false, false}));
}

TEST_F(Control, PlayStartsAnEndedFileAgainThroughTheBank) {
  makeFile("Jingle");
  PlayControl control(*bank);
  // Nothing has played: the list is empty, channel 0 is in hand and no
  // command finds a file to play.
  EXPECT_TRUE(control.lines().empty());
  for (PlayCommand c : {PlayCommand::Play, PlayCommand::Scrub, PlayCommand::Pause, PlayCommand::Start,
                        PlayCommand::Rewind, PlayCommand::Forward})
    control.run(c);
  EXPECT_FALSE(players[0]->isOpen());
  EXPECT_EQ(control.buttons(), (PlayButtons{false, false, true}));
  EXPECT_TRUE(asRun().empty());

  bank->PlayFile("Jingle", 0, "operator");
  ASSERT_EQ(control.lines().size(), 1u);
  bank->stopPlay(0);  // as the file's end would
  EXPECT_TRUE(bank->playName(0).empty());
  control.run(PlayCommand::Pause);
  EXPECT_EQ(bank->playName(0), "Jingle");
  EXPECT_EQ(players[0]->state() & (kOpen | kPaused), kOpen | kPaused) << "played again, then paused";
  EXPECT_EQ(asRun(), (std::vector<std::string>{"play 0|play start|Jingle|operator", "play 0|play end|Jingle|operator",
                                               "play 0|play start|Jingle|play control"}));
}

TEST_F(Control, ClosingStopsPausedPlaysScrubbingAndKeepsPlaying) {
  for (const char* name : {"Paused", "Scrubbed", "Playing"}) makeFile(name);
  bank->PlayFile("Paused", 0, "operator");
  bank->PlayFile("Scrubbed", 1, "operator");
  bank->PlayFile("Playing", 2, "operator");
  PlayControl control(*bank);
  control.select(0);
  control.run(PlayCommand::Pause);
  control.select(1);
  control.run(PlayCommand::Scrub);
  control.close();
  EXPECT_FALSE(players[0]->isOpen());
  EXPECT_EQ(bank->playName(0), "");
  EXPECT_EQ(players[1]->state() & (kOpen | kCued | kPaused), kOpen) << "the scrubbed channel plays on";
  EXPECT_EQ(players[2]->state() & (kOpen | kCued | kPaused), kOpen);
  EXPECT_EQ(bank->playStatus(), "[play] ScrubbedPlaying");
  const std::vector<std::string> lines = asRun();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines.back(), "play 0|play end|Paused|operator");
}

}  // namespace
}  // namespace vantr
