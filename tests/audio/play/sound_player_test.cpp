// The player over a scripted device that finishes blocks when the test says
// so; the worker's passes are driven one at a time.
#include "audio/play/sound_player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "audio/audio_test_support.h"
#include "audio/data/tone_source.h"
#include "audio/fake_devices.h"
#include "base/time_position.h"

namespace vantr {
namespace {

class Player : public ::testing::Test {
 protected:
  void SetUp() override { player.setNotify(&heard, 2); }
  // Worker passes until one finds the device still owning its block.
  int serviceUntilIdle() {
    int serviced = 0;
    while (player.serviceBlock() == LSoundPlayer::Service::Serviced) ++serviced;
    return serviced;
  }

  FakePlaybackDevice device;
  EngineEvents heard;
  int wakes = 0;
  LSoundPlayer player{device, [this] { ++wakes; }, LSoundPlayer::Threading::Manual};
};

TEST(PlayerLevels, BlockLevelsAgainstA0dBSine) {
  struct Row {
    const char* name;
    double amplitude;  // 16-bit units
    bool square;
    int level;
  } rows[] = {
      {"0 dB sine", 8192, false, 0},          {"-6 dB sine", 4096, false, -6}, {"-20 dB sine", 819.2, false, -20},
      {"full-scale square", 32767, true, 15}, {"silence", 0, false, -127},
  };
  for (const Row& r : rows) {
    std::vector<int32_t> v(4410);
    for (size_t i = 0; i < v.size(); ++i) {
      const double s = r.square ? (i % 2 ? 1 : -1) : std::sin(2 * M_PI * 1000 * i / 44100.0);
      v[i] = static_cast<int32_t>(std::lround(r.amplitude * s * 16));
    }
    EXPECT_EQ(blockLevels(v.data(), 4410, 1)[0], r.level) << r.name;
  }
  // Values far beyond the scale neither overflow nor wrap.
  const std::vector<int32_t> huge(8192, INT32_MIN);
  EXPECT_EQ(blockLevels(huge.data(), 8192, 1)[0], 87);  // 10 log10(2^52 / 8388626)
}

TEST_F(Player, BlockLengthFollowsTheRateAndOpenFallsBack) {
  struct Row {
    int32_t rate;
    int32_t frames;
  } rows[] = {{22050, 2205}, {96000, 8192}, {100, 20}, {44100, 4410}};
  for (const Row& r : rows) {
    ASSERT_TRUE(player.Open(LSoundSource(new RampSource(r.rate, 2, 100000)), false));
    EXPECT_EQ(player.blockFrames(), r.frames);
    EXPECT_EQ(device.blocks.size(), 70u);
    EXPECT_EQ(device.blocks[0].size(), static_cast<size_t>(r.frames) * 2);
  }
  player.Close();

  device.calls.clear();
  device.refuseDirect = true;
  EXPECT_TRUE(player.Open(LSoundSource(new RampSource(8000, 1, 1000)), false));
  EXPECT_EQ(device.calls[0], "open -1 1 8000");
  EXPECT_EQ(device.calls[1], "open mapper -1 1 8000");
  device.refuseMapper = true;
  EXPECT_FALSE(player.Open(LSoundSource(new RampSource(8000, 1, 1000)), false));
  EXPECT_FALSE(player.isOpen());
  device.refuseDirect = device.refuseMapper = false;
  device.refuseBlocks = true;
  EXPECT_FALSE(player.Open(LSoundSource(new RampSource(8000, 1, 1000)), false));
  EXPECT_EQ(device.calls.back(), "close") << "a device without blocks is closed again";
  EXPECT_FALSE(player.Open(LSoundSource(), false));
  EXPECT_FALSE(player.Open(LSoundSource(new RampSource(0, 1, 1000)), false)) << "a failed source";
}

TEST_F(Player, OutputStartsAtTheThirdBlockAndStampsMoveThePosition) {
  heard.seen.clear();
  ASSERT_TRUE(player.Open(LSoundSource(new RampSource(8000, 1, 8000)), false));  // 800-frame blocks
  EXPECT_EQ(heard.seen, (std::vector<std::string>{"playing 2", "position 0 2"}));
  EXPECT_EQ(device.calls.back(), "pause");
  EXPECT_EQ(player.state(), LSoundPlayer::kOpen | LSoundPlayer::kRestartPending | LSoundPlayer::kRaisePending);

  player.serviceBlock();
  player.serviceBlock();
  EXPECT_FALSE(device.running) << "two blocks queued: still waiting";
  player.serviceBlock();
  EXPECT_TRUE(device.running) << "the third block starts the output";
  EXPECT_EQ(device.calls.back(), "restart");
  // Narrowed to 16 bits as (v + 8) >> 4: frame f holds f + 1.
  EXPECT_EQ(device.blocks[0][0], 1);
  EXPECT_EQ(device.blocks[2][799], 2400);

  // The source of 10 blocks is all queued; nothing finished, nothing to say.
  serviceUntilIdle();
  EXPECT_EQ(device.queue.size(), 10u);
  EXPECT_EQ(wakes, 0);
  EXPECT_EQ(player.state() & LSoundPlayer::kRaisePending, 0) << "a full queue raises the worker";

  device.play(2);
  heard.seen.clear();
  serviceUntilIdle();
  EXPECT_EQ(player.positionFrames(), 1600);
  EXPECT_GT(wakes, 0);
  player.OnWakeup();
  // Block 1 holds frames 801..1600: a mean square of 373333, -13.5 dB.
  EXPECT_EQ(heard.seen, (std::vector<std::string>{"position 2000 2", "levels -14 2"}));
}

TEST_F(Player, EndsOnlyAfterEveryQueuedBlockIsDone) {
  ASSERT_TRUE(player.Open(LSoundSource(new RampSource(8000, 1, 2000)), false));  // 2.5 blocks
  serviceUntilIdle();
  EXPECT_EQ(device.queue.size(), 3u);
  EXPECT_EQ(device.blocks[2][399], 2000);
  EXPECT_EQ(device.blocks[2][400], 0) << "past the end of the source: zeros";
  device.play(2);
  EXPECT_EQ(player.serviceBlock(), LSoundPlayer::Service::Serviced);
  serviceUntilIdle();
  player.OnWakeup();
  EXPECT_TRUE(player.isOpen()) << "one block still playing";
  device.play(1);
  LSoundPlayer::Service last = LSoundPlayer::Service::Serviced;
  while (last == LSoundPlayer::Service::Serviced) last = player.serviceBlock();
  EXPECT_EQ(last, LSoundPlayer::Service::Ended);
  heard.seen.clear();
  player.OnWakeup();
  EXPECT_FALSE(player.isOpen());
  EXPECT_EQ(heard.seen, (std::vector<std::string>{"stopped 2"}));
  EXPECT_EQ(device.calls.back(), "close");
}

TEST_F(Player, APausedPlayerEndsAfter280IdlePollsButACuedOneWaits) {
  ASSERT_TRUE(player.Open(LSoundSource(new RampSource(8000, 1, 800000)), true));
  EXPECT_EQ(player.state(), LSoundPlayer::kOpen | LSoundPlayer::kPaused | LSoundPlayer::kRaisePending);
  EXPECT_EQ(serviceUntilIdle(), 70) << "the queue fills while paused";
  for (int poll = 1; poll < LSoundPlayer::kIdlePollLimit; ++poll) player.serviceBlock();
  player.OnWakeup();
  EXPECT_TRUE(player.isOpen()) << "280 idle polls are not yet the end";
  player.serviceBlock();
  player.serviceBlock();
  player.OnWakeup();
  EXPECT_FALSE(player.isOpen()) << "after more than 280 the paused player is closed";

  ASSERT_TRUE(player.Open(LSoundSource(new RampSource(8000, 1, 800000)), true));
  player.Cue();
  for (int poll = 0; poll < 1000; ++poll) player.serviceBlock();
  player.OnWakeup();
  EXPECT_TRUE(player.isOpen());
}

TEST_F(Player, CuePrimesAQuarterBlockLoopAndPlayGoesOnFromTheCue) {
  ASSERT_TRUE(player.Open(LSoundSource(new RampSource(8000, 1, 80000)), true));
  player.Seek(4000);
  heard.seen.clear();
  player.Cue();
  // Frames 4001..4200 over and over: a mean square of 4203333, -3.0 dB.
  EXPECT_EQ(heard.seen, (std::vector<std::string>{"levels -3 2", "cue 2", "position 5000 2"}));
  EXPECT_EQ(player.state(), LSoundPlayer::kOpen | LSoundPlayer::kCued | LSoundPlayer::kRaisePending);
  // A quarter block (200 frames) from frame 4000, four times over.
  const std::vector<int16_t>& block = device.blocks[0];
  for (int q = 0; q < 4; ++q) {
    EXPECT_EQ(block[q * 200], 4001) << q;
    EXPECT_EQ(block[q * 200 + 199], 4200) << q;
  }
  EXPECT_TRUE(device.loops[0]);
  // The queue fills behind the loop, which holds it.
  serviceUntilIdle();
  EXPECT_EQ(device.blocks[1][0], 4201);
  EXPECT_EQ(device.play(5), 0);

  player.Play();
  EXPECT_EQ(heard.seen.back(), "playing 2");
  EXPECT_EQ(player.state() & (LSoundPlayer::kCued | LSoundPlayer::kRaisePending), 0);
  EXPECT_EQ(device.calls.back(), "reset") << "the queue starts afresh; the loop is not broken";
  // Playing goes on from the cue position, whole blocks from frame 4000.
  serviceUntilIdle();
  EXPECT_EQ(device.blocks[0][0], 4001);
  EXPECT_FALSE(device.loops[0]);
  EXPECT_EQ(device.play(2), 2);
  serviceUntilIdle();
  EXPECT_EQ(player.positionFrames(), 4000 + 2 * 800);
}

TEST_F(Player, SeekInEveryState) {
  auto* source = new RampSource(8000, 1, 80000);
  ASSERT_TRUE(player.Open(LSoundSource(source), false));
  serviceUntilIdle();

  // Playing: the queue starts again at the new frame.
  device.calls.clear();
  player.Seek(16000);
  EXPECT_EQ(device.calls, (std::vector<std::string>{"reset"}));
  EXPECT_EQ(player.positionFrames(), 16000);
  EXPECT_EQ(heard.seen.back(), "position 20000 2");
  serviceUntilIdle();
  EXPECT_EQ(device.blocks[0][0], 16001);

  // Paused: the device is paused again after the reset.
  player.Pause();
  device.calls.clear();
  player.Seek(800);
  EXPECT_EQ(device.calls, (std::vector<std::string>{"reset", "pause"}));
  EXPECT_TRUE(player.state() & LSoundPlayer::kPaused);

  // Cued and paused: primed again at the new frame; Cue then only restarts.
  player.Cue();
  player.Pause();
  player.Seek(2400);
  EXPECT_EQ(device.blocks[0][0], 2401);
  EXPECT_TRUE(device.loops[0]);
  device.calls.clear();
  player.Cue();
  EXPECT_EQ(device.calls, (std::vector<std::string>{"restart"}));
  EXPECT_EQ(player.state() & LSoundPlayer::kPaused, 0);
}

// What reaches the device for a value of the source: above the device's
// scale the value is first brought down to it (times 0x7FFF0 / full scale,
// towards zero), then narrowed to 16 bits, halves rounded up. From a 32-bit
// source 0x7FFFFFF0 comes down to 0x7FFF0, 2^30 to 262136 (half a 16-bit step
// above 16383) and 0x12345678 to 74563.
TEST_F(Player, ValuesAreScaledAndNarrowedToSixteenBits) {
  const struct {
    uint32_t fullScale;
    std::vector<int32_t> values;
    std::vector<int16_t> samples;
  } rows[] = {
      {0x7FFF0, {7, 8, -8, -9, -25, 0x7FFF7, -0x80000}, {0, 1, 0, -1, -2, 32767, -32768}},
      {0x7FFFFFF0, {0x7FFFFFF0, -0x7FFFFFF0, 0x40000000, 0x12345678, -0x12345678}, {32767, -32767, 16384, 4660, -4660}},
  };
  for (const auto& r : rows) {
    const auto valueOf = [values = r.values](int32_t frame, int) { return values[frame % values.size()]; };
    ASSERT_TRUE(player.Open(LSoundSource(new RampSource(8000, 1, 800, r.fullScale, valueOf)), false));
    player.serviceBlock();
    EXPECT_EQ(std::vector<int16_t>(device.blocks[0].begin(), device.blocks[0].begin() + r.samples.size()), r.samples)
        << "full scale " << r.fullScale;
  }
}

TEST_F(Player, OverviewOnlyWhileCued) {
  ASSERT_TRUE(player.Open(LSoundSource(new LSRCSineTone), true));
  uint8_t out[512];
  std::fill(std::begin(out), std::end(out), 7);
  player.Overview(0, 10000, out);
  EXPECT_EQ(std::count(std::begin(out), std::end(out), 0), 512) << "not cued: zeros";
  player.Cue();
  const int32_t before = player.positionFrames();
  player.Overview(0, 10000, out);
  // A 0 dB sine: a mean square of about 8388626, shifted right by 11.
  for (uint8_t v : out) EXPECT_EQ(v, 255);
  player.Overview(0, 1000, out);
  EXPECT_EQ(out[0], 255);
  EXPECT_EQ(player.positionFrames(), before);
}

TEST(ToneSource, OneThousandHertzAt0dBForSixHours) {
  LSRCSineTone tone;
  EXPECT_EQ(tone.sampleRate(), 44100);
  EXPECT_EQ(tone.channels(), 1);
  EXPECT_EQ(tone.length(), 952560000) << "six hours of frames";
  std::vector<int32_t> v(44100);
  ASSERT_EQ(tone.read(v.data(), 44100), 44100);
  const ToneAnalysis analysis = analyseTone(v, 44100, 8000);
  EXPECT_NEAR(analysis.hz, 1000, 0.5);
  EXPECT_NEAR(analysis.decibels, 0, 0.1);
  EXPECT_NEAR(*std::max_element(analysis.peaks.begin(), analysis.peaks.end()), 8192,
              25);  // the point nearest the crest
  EXPECT_EQ(blockLevels(v.data(), 44100, 1)[0], 0);
  // A seek lands on the phase reached by playing up to it.
  std::vector<int32_t> again(10);
  tone.seek(1234);
  tone.read(again.data(), 10);
  EXPECT_EQ(again[0], v[1234]);
  tone.seek(tone.length() - 5);
  EXPECT_EQ(tone.read(again.data(), 10), 5);
  EXPECT_EQ(tone.read(again.data(), 10), 0);
}

}  // namespace
}  // namespace vantr
