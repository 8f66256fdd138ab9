// All four play channels and all four record channels at once for a minute:
// each player sends the test tone to its own output of the test bed, and each
// recorder records that output's monitor into a WAV file. Every file must hold
// the whole tone, at 0 dB and 1000 Hz, without a gap.
#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "audio/data/pcm_file_sink.h"
#include "audio/data/pcm_file_source.h"
#include "audio/data/tone_source.h"
#include "audio/play/wave_out_win.h"
#include "audio/record/wave_in_win.h"
#include "audio/test_bed_devices_win.h"
#include "base/time_position.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr int kRate = 44100;
constexpr int32_t kPlayTime = 600000;  // a minute in ten-thousandths of a second

struct Channel {
  // First: the engines' destruction stops them, which still notifies.
  EngineEvents captured, played;
  std::unique_ptr<LSoundRecorder_Window> recorder;
  std::unique_ptr<LSoundPlayer_Window> player;
  std::string file;
};

TEST(FourChannels, FourPlayersAndFourRecordersForAMinute) {
  TempDir dir;
  const HINSTANCE instance = GetModuleHandleA(nullptr);
  Channel channels[4];
  for (int c = 0; c < 4; ++c) {
    const std::string output = std::string("Vantorel_Out_") + static_cast<char>('A' + c);
    const int out = outputDeviceNamed(output);
    const int in = inputDeviceNamed("Monitor of " + output);
    ASSERT_GE(out, 0) << output;
    ASSERT_GE(in, 0) << output;
    Channel& ch = channels[c];
    ch.file = dir.file("channel" + std::to_string(c) + ".wav");
    ch.recorder = std::make_unique<LSoundRecorder_Window>(instance);
    ch.recorder->recorder().setListener(&ch.captured, static_cast<uint32_t>(c));
    ch.recorder->recorder().setDevice(static_cast<int8_t>(in));
    ASSERT_TRUE(ch.recorder->Start(createPcmSink(ch.file, kRate, 1, 16, 0), 0, -30, 216000000)) << c;
    ch.player = std::make_unique<LSoundPlayer_Window>(instance);
    ch.player->player().setDevice(static_cast<int8_t>(out));
    ch.player->player().setNotify(&ch.played, static_cast<uint32_t>(c));
  }
  for (const Channel& ch : channels) ASSERT_TRUE(waitForCapture(ch.captured, 3));

  for (Channel& ch : channels) ASSERT_TRUE(ch.player->Open(LSoundSource(new LSRCSineTone), false));
  // A minute by the players' own positions; then each recorder until it has
  // captured a second more than its player played (Wine's capture runs
  // behind). Both are counts of frames the devices delivered, not time waited.
  const auto everyone = [&](auto done) {
    for (const Channel& ch : channels)
      if (!done(ch)) return false;
    return true;
  };
  ASSERT_TRUE(pumpUntil([&] { return everyone([](const Channel& ch) { return ch.played.lastPosition >= kPlayTime; }); },
                        120000))
      << "a player's position stood still";
  int32_t playedTime[4];
  for (int c = 0; c < 4; ++c) {
    EXPECT_TRUE(channels[c].player->player().isOpen()) << "a player stopped early";
    channels[c].player->player().Close();
    playedTime[c] = channels[c].played.lastPosition;
  }
  ASSERT_TRUE(pumpUntil([&] {
    for (int c = 0; c < 4; ++c)
      if (channels[c].captured.lastPosition < playedTime[c] + 10000) return false;
    return true;
  })) << "a recorder stopped receiving";
  for (Channel& ch : channels) {
    EXPECT_EQ(ch.recorder->recorder().state(), LSoundRecorder::State::Recording);
    ch.recorder->recorder().Stop();
    EXPECT_EQ(ch.captured.count("started"), 1) << "the gate opened once: the tone never broke off for long";
  }

  for (int c = 0; c < 4; ++c) {
    SCOPED_TRACE("channel " + std::to_string(c));
    LSoundSource source = openWavSource(channels[c].file);
    ASSERT_FALSE(source->failed()) << source->failure();
    const int32_t frames = source->length();
    // The tone for as long as the player played it: the recording opens 50 ms
    // before the gate and ends 50 ms after the last loud buffer, and Wine's
    // output runs on a little after the device is reset.
    EXPECT_GE(framesToTime(frames, kRate), playedTime[c] - 1000);
    EXPECT_LE(framesToTime(frames, kRate), playedTime[c] + kResetRunOn);
    std::vector<int32_t> v(static_cast<size_t>(frames));
    ASSERT_EQ(source->read(v.data(), frames), frames);
    // Every 10 ms between the opening pre-roll and the closing tail (up to a
    // buffer and 50 ms) holds the tone near its full level. The engines move
    // audio in blocks and buffers of 100 ms, so anything they lose is a gap
    // of ten stretches or more. The test bed's audio server, on a loaded
    // two-core machine, now and then drops a single period of its own (one
    // stretch): a few of those are allowed.
    const ToneAnalysis recorded = analyseTone(v, kRate, 7000);
    std::vector<int> quiet;
    std::string where;
    for (int k = 10; k < static_cast<int>(recorded.peaks.size()) - 20; ++k) {
      if (recorded.peaks[k] >= 7000) continue;
      quiet.push_back(k);
      where += " " + std::to_string(k) + ":" + std::to_string(recorded.peaks[k]);
    }
    EXPECT_LE(quiet.size(), 3u) << "10 ms stretches without the tone (step:peak):" << where;
    for (size_t i = 1; i < quiet.size(); ++i)
      EXPECT_GT(quiet[i] - quiet[i - 1], 1) << "a gap longer than 10 ms:" << where;
    EXPECT_NEAR(peakLevel(v.data(), frames, 1, 0), 0, 1);
    EXPECT_NEAR(recorded.hz, 1000, 2);
  }
}

}  // namespace
}  // namespace vantr
