// The recorder over a scripted device: buffers are filled when the test says
// so, and the output is a sink that keeps what it is given in memory.
#include "audio/record/sound_recorder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "audio/audio_test_support.h"
#include "audio/fake_devices.h"
#include "base/time_position.h"

namespace vantr {
namespace {

// 8000 Hz mono: buffers of 800 frames, a tenth of a second each.
constexpr int kRate = 8000;
constexpr int kFrames = 800;

std::vector<int16_t> tone(int amplitude, int from = 0, int to = kFrames) {
  std::vector<int16_t> s(kFrames, 0);
  for (int i = from; i < to; ++i) s[i] = static_cast<int16_t>(i % 2 ? amplitude : -amplitude);
  return s;
}
const std::vector<int16_t> kSilence(kFrames, 0);

class Recorder : public ::testing::Test {
 protected:
  void SetUp() override {
    sink = new MemorySink(kRate, 1);
    output = LSoundSink(sink);
    recorder.setListener(&events, 3);
  }
  void feed(const std::vector<int16_t>& samples, int times = 1) {
    for (int i = 0; i < times; ++i) {
      const int slot = device.fill(samples);
      ASSERT_GE(slot, 0) << "no buffer queued";
      recorder.OnBufferDone(slot);
    }
  }
  int32_t lengthTime() const { return framesToTime(sink->length(), kRate); }

  // Declared before the recorder: its destruction stops it, which still notifies.
  FakeCaptureDevice device;
  EngineEvents events;
  LSoundRecorder recorder{device};
  MemorySink* sink = nullptr;
  LSoundSink output;
};

TEST(RecorderLevels, PeakLevelOnTheCommonScale) {
  struct Row {
    int amplitude16;
    int level;
  } rows[] = {
      {32767, 12}, {-32768, 12}, {8192, 0},  {4096, -6}, {16384, 6},
      {1, -78},    {0, -127},    {5793, -3}, {8191, 0},  {8193, 0},
  };
  for (const Row& r : rows) {
    const std::vector<int32_t> values = {0, r.amplitude16 * 16, 0, 0};
    EXPECT_EQ(peakLevel(values.data(), 4, 1, 0), r.level) << r.amplitude16;
  }
  // Interleaved: each channel only sees its own samples.
  const std::vector<int32_t> stereo = {8192 * 16, 0, -8192 * 16, 4096 * 16};
  EXPECT_EQ(peakLevel(stereo.data(), 2, 2, 0), 0);
  EXPECT_EQ(peakLevel(stereo.data(), 2, 2, 1), -6);
}

// Start opens device 2 directly or through the mapper, sizes its buffers to a
// tenth of a second (20 to 8192 frames), queues what it can get, sets its
// thresholds 2 dB above and 3 dB below the trim level (-130 clamped to -127)
// and waits for sound; refused, it says nothing.
TEST(RecorderStart, OpensTheDeviceAndSizesItsBuffers) {
  const struct {
    const char* name;
    int refusing;  // 1: the device itself, 2: the mapper too
    int slots;
    uint32_t rate;
    int channels;  // 0: a failed sink, -1: none at all
    int8_t trim, startThreshold, stopThreshold;
    std::vector<std::string> calls;
    int32_t frames;
    int queued;  // 0: refused
  } rows[] = {
      {"direct", 0, 40, 8000, 1, -15, -13, -18, {"open 2 1 8000", "start"}, 800, 40},
      {"mapper", 1, 40, 8000, 1, -127, -125, -127, {"open 2 1 8000", "open mapper 2 1 8000", "start"}, 800, 40},
      {"no device", 2, 40, 8000, 1, -127, 0, 0, {"open 2 1 8000", "open mapper 2 1 8000"}, 0, 0},
      {"three buffers to be had", 0, 3, 8000, 1, -127, -125, -127, {"open 2 1 8000", "start"}, 800, 3},
      {"no output", 0, 40, 8000, -1, -127, 0, 0, {}, 0, 0},
      {"failed output", 0, 40, 8000, 0, -127, 0, 0, {}, 0, 0},
      {"44100 stereo", 0, 40, 44100, 2, -127, -125, -127, {"open 2 2 44100", "start"}, 4410, 40},
      {"96000 stereo", 0, 40, 96000, 2, -127, -125, -127, {"open 2 2 96000", "start"}, 8192, 40},
      {"150 Hz", 0, 40, 150, 1, -127, -125, -127, {"open 2 1 150", "start"}, 20, 40},
      {"0 Hz", 0, 40, 0, 1, -127, -125, -127, {"open 2 1 0", "start"}, 20, 40},
  };
  ASSERT_EQ(CaptureDevice::kSlots, 40);
  for (const auto& r : rows) {
    SCOPED_TRACE(r.name);
    FakeCaptureDevice device;
    device.refuseDirect = r.refusing >= 1;
    device.refuseMapper = r.refusing >= 2;
    device.slotsAvailable = r.slots;
    EngineEvents events;
    LSoundRecorder recorder(device);
    recorder.setDevice(2);
    recorder.setListener(&events, 3);
    const bool started = recorder.Start(
        r.channels < 0 ? LSoundSink() : LSoundSink(new MemorySink(r.rate, static_cast<uint8_t>(r.channels))), 0, r.trim,
        216000000);
    EXPECT_EQ(started, r.queued > 0);
    EXPECT_EQ(device.calls, r.calls);
    EXPECT_EQ(device.queued(), r.queued);
    EXPECT_EQ(recorder.state(), started ? LSoundRecorder::State::Waiting : LSoundRecorder::State::Idle);
    const std::vector<std::string> waiting = {"waiting 3", "position 0 3", "levels 3"};
    EXPECT_EQ(events.seen, started ? waiting : std::vector<std::string>());
    if (!started) continue;
    EXPECT_EQ(recorder.startThreshold(), r.startThreshold);
    EXPECT_EQ(recorder.stopThreshold(), r.stopThreshold);
    EXPECT_EQ(recorder.framesPerBuffer(), r.frames);
    EXPECT_EQ(device.bufferBytes, static_cast<size_t>(r.frames) * r.channels * sizeof(int16_t));
  }
}

// Input below the start threshold leaves the recorder waiting and reaches
// nothing; the buffer that opens the gate is written whole, after half a
// buffer of silence when its loud part begins in its first half.
TEST(RecorderGate, OpensAboveTheStartThresholdAfterItsPreRoll) {
  const struct {
    const char* name;
    int8_t trim;
    int quiet;           // the amplitude that must not open it (16-bit units)
    int loud, from, to;  // the opening buffer
    int32_t zerosFirst;
  } rows[] = {
      {"AutoTrim off: silence waits, a single step opens", -127, 0, 1, 400, 402, 0},
      {"-14.7 dB stays below -13 dB, -12 dB opens", -15, 1500, 2000, 400, 402, 0},
      {"first half loud", -15, 100, 8000, 0, 400, kFrames / 2},
      {"whole buffer loud", -15, 100, 8000, 0, kFrames, kFrames / 2},
      {"only second half loud", -15, 100, 8000, 400, kFrames, 0},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.name);
    FakeCaptureDevice device;
    LSoundRecorder recorder(device);
    auto* sink = new MemorySink(kRate, 1);
    ASSERT_TRUE(recorder.Start(LSoundSink(sink), 0, r.trim, 216000000));
    for (int i = 0; i < 50; ++i) recorder.OnBufferDone(device.fill(tone(r.quiet)));
    EXPECT_EQ(recorder.state(), LSoundRecorder::State::Waiting);
    EXPECT_EQ(sink->length(), 0);
    const std::vector<int16_t> opening = tone(r.loud, r.from, r.to);
    recorder.OnBufferDone(device.fill(opening));
    EXPECT_EQ(recorder.state(), LSoundRecorder::State::Recording);
    std::vector<int32_t> expected(static_cast<size_t>(r.zerosFirst), 0);
    for (int16_t v : opening) expected.push_back(v * 16);
    EXPECT_EQ(sink->values(), expected);
  }
}

TEST_F(Recorder, NotificationsOfAGateOpeningAndAStop) {
  ASSERT_TRUE(recorder.Start(output, 0, -127, 216000000));
  feed(kSilence);
  feed(tone(8192));
  recorder.Stop();
  EXPECT_EQ(events.seen, (std::vector<std::string>{
                             "waiting 3", "position 0 3", "levels 3",       // Start
                             "levels -127 3",                               // quiet buffer
                             "started 3", "position 1500 3", "levels 0 3",  // the gate opens
                             "stopped 3", "position 0 3", "levels 3",       // Stop
                         }));
  EXPECT_EQ(device.calls.back(), "close");
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Idle);
}

TEST_F(Recorder, LongSilenceIsCutBackAndTheGateWaitsAgain) {
  ASSERT_TRUE(recorder.Start(output, 0, -127, 20000));  // 2 s silence limit
  feed(tone(8192), 10);                                 // 1.05 s with the pre-roll
  const int32_t lastLoud = lengthTime();
  EXPECT_EQ(lastLoud, 10500);
  feed(kSilence, 20);  // 2.0 s of silence: not yet beyond the limit
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Recording);
  events.seen.clear();
  feed(kSilence);  // 2.1 s: beyond
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Waiting);
  EXPECT_EQ(lengthTime(), lastLoud + 7000) << "0.7 s kept after the last loud moment";
  EXPECT_EQ(events.seen, (std::vector<std::string>{"waiting 3", "position 17500 3"}));

  // The next sound opens the gate again and appends to what was kept.
  feed(tone(8192));
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Recording);
  EXPECT_EQ(lengthTime(), lastLoud + 7000 + 500 + 1000);
}

TEST_F(Recorder, StopCutsTheTailTo50ms) {
  ASSERT_TRUE(recorder.Start(output, 0, -127, 216000000));
  feed(tone(8192), 5);
  const int32_t lastLoud = lengthTime();
  feed(kSilence, 20);  // two seconds after the last loud moment
  recorder.Stop();
  EXPECT_EQ(lengthTime(), lastLoud + 500);
  EXPECT_EQ(sink->length(), timeToFrames(lastLoud + 500, kRate));

  // Stopped right at the last loud moment nothing is cut.
  auto* s = new MemorySink(kRate, 1);
  const LSoundSink kept(s);  // the recorder lets go of it at Stop
  ASSERT_TRUE(recorder.Start(kept, 0, -127, 216000000));
  feed(tone(8192), 2);
  const int32_t length = s->length();
  recorder.Stop();
  EXPECT_EQ(s->length(), length);
}

TEST_F(Recorder, MaximumDurationStopsIt) {
  ASSERT_TRUE(recorder.Start(output, 5000, -127, 216000000));  // 0.5 s
  feed(tone(8192), 4);                                         // 0.45 s written
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Recording);
  feed(tone(8192));  // 0.55 s: beyond the maximum
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Idle);
  EXPECT_EQ(events.seen.back(), "levels 3");
  EXPECT_EQ(device.calls.back(), "close");

  ASSERT_TRUE(recorder.Start(LSoundSink(new MemorySink(kRate, 1)), 0, -127, 216000000));
  feed(tone(8192), 39);
  feed(tone(8192), 39);
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Recording) << "no maximum: never stops by itself";
}

TEST_F(Recorder, RestartEmptiesTheOutputAndWaits) {
  ASSERT_TRUE(recorder.Start(output, 0, -127, 216000000));
  feed(tone(8192), 3);
  events.seen.clear();
  recorder.Restart();
  EXPECT_EQ(sink->length(), 0);
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Waiting);
  EXPECT_EQ(events.seen, (std::vector<std::string>{"waiting 3", "position 0 3", "levels 3"}));
  events.seen.clear();
  recorder.Restart();
  EXPECT_TRUE(events.seen.empty()) << "already waiting: only the output is emptied";
  feed(tone(8192));
  EXPECT_EQ(sink->length(), kFrames / 2 + kFrames);

  // Notices for buffers the device did not fill, or after a reset, do nothing.
  recorder.OnBufferDone(7);
  const int slot = device.fill(tone(8192));
  recorder.Stop();
  const int32_t kept = sink->length();
  recorder.OnBufferDone(slot);
  EXPECT_EQ(sink->length(), kept);
}

TEST_F(Recorder, StereoLevelsAndTheLouderOfTheFirstTwoChannels) {
  auto* s = new MemorySink(kRate, 2);
  ASSERT_TRUE(recorder.Start(LSoundSink(s), 0, -10, 216000000));
  std::vector<int16_t> frames(2 * kFrames);
  for (int i = 0; i < kFrames; ++i) {
    frames[2 * i] = 100;       // left quiet
    frames[2 * i + 1] = 8192;  // right at 0 dB
  }
  feed(frames);
  EXPECT_EQ(recorder.levels(), (LevelList{-38, 0}));
  EXPECT_EQ(recorder.state(), LSoundRecorder::State::Recording);
}

}  // namespace
}  // namespace vantr
