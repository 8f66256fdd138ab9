// A file being recorded plays while it grows: the recorder writes a WAV file
// through its sink while a player reads the same file, each over a scripted
// device advanced a tenth of a second at a time, as the real devices would.
#include <gtest/gtest.h>

#include <vector>

#include "audio/audio_test_support.h"
#include "audio/data/pcm_file_sink.h"
#include "audio/data/pcm_file_source.h"
#include "audio/fake_devices.h"
#include "audio/play/sound_player.h"
#include "audio/record/sound_recorder.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr int kRate = 44100;
constexpr int kFrames = kRate / 10;

TEST(PlayWhileRecording, ThePlayerFollowsTheRecordersWrites) {
  TempDir dir;
  const std::string path = dir.file("growing.wav");

  // One tenth of a second of 1000 Hz at 0 dB (441 whole periods) as the
  // capture device delivers it, over and over.
  std::vector<int16_t> tenth(kFrames);
  addSine(tenth, 0, kFrames, 8192, 1000, kRate);

  FakeCaptureDevice capture;
  LSoundRecorder recorder(capture);
  ASSERT_TRUE(recorder.Start(createPcmSink(path, kRate, 1, 16, 0), 0, -127, 216000000));
  const auto recordATenth = [&] { recorder.OnBufferDone(capture.fill(tenth)); };
  // Twelve seconds ahead of the player: the header has been rewritten once.
  for (int i = 0; i < 120; ++i) recordATenth();

  FakePlaybackDevice output;
  LSoundPlayer player(
      output, [] {}, LSoundPlayer::Threading::Manual);
  const LSoundSource source = openWavSource(path);
  ASSERT_FALSE(source->failed()) << source->failure();
  const int32_t lengthAtOpen = source->length();
  EXPECT_GE(lengthAtOpen, 441000);
  EXPECT_LT(lengthAtOpen, 12 * kRate);
  ASSERT_TRUE(player.Open(source, false));

  // Thirty seconds in which both devices run in real time.
  for (int round = 0; round < 300; ++round) {
    recordATenth();
    while (player.serviceBlock() == LSoundPlayer::Service::Serviced) {
    }
    output.play(1);
  }
  EXPECT_TRUE(player.isOpen()) << "the player never ran out of file";
  EXPECT_GT(player.positionFrames(), lengthAtOpen) << "it played past what the file held when it opened";
  EXPECT_NEAR(player.positionFrames(), 299 * kFrames, 2 * kFrames);

  // What it played is the recording: the tone, a 16-bit amplitude of 8192.
  int16_t peak = 0;
  for (int16_t v : output.blocks[output.queue.front()]) peak = std::max<int16_t>(peak, v);
  EXPECT_NEAR(peak, 8192, 30);
  recorder.Stop();
}

}  // namespace
}  // namespace vantr
