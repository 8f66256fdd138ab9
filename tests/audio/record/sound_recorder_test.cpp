// The recorder over a scripted device: buffers are filled when the test says
// so, and the output is a sink that keeps what it is given in memory.
#include "audio/record/sound_recorder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "audio/fake_devices.h"
#include "audio/record/memory_sink.h"
#include "base/time_position.h"

namespace vantr {
namespace {

class Events : public RecorderListener {
 public:
  std::vector<std::string> seen;
  void recordingStarted(uint32_t c) override { seen.push_back("started " + std::to_string(c)); }
  void waitingForSound(uint32_t c) override { seen.push_back("waiting " + std::to_string(c)); }
  void recordingStopped(uint32_t c) override { seen.push_back("stopped " + std::to_string(c)); }
  void recordPosition(int32_t t, uint32_t c) override {
    seen.push_back("position " + std::to_string(t) + " " + std::to_string(c));
  }
  void recordLevels(const LevelList& levels, uint32_t c) override {
    std::string s = "levels";
    for (int8_t l : levels) s += " " + std::to_string(l);
    seen.push_back(s + " " + std::to_string(c));
  }
};

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
  Events events;
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

TEST_F(Recorder, BufferSizeFollowsTheRate) {
  struct Row {
    uint32_t rate;
    uint8_t channels;
    int32_t frames;
  } rows[] = {{8000, 1, 800}, {44100, 2, 4410}, {96000, 2, 8192}, {150, 1, 20}, {0, 1, 20}};
  for (const Row& r : rows) {
    FakeCaptureDevice d;
    LSoundRecorder rec(d);
    ASSERT_TRUE(rec.Start(LSoundSink(new MemorySink(r.rate, r.channels)), 0, -127, 216000000)) << r.rate;
    EXPECT_EQ(rec.framesPerBuffer(), r.frames) << r.rate;
    EXPECT_EQ(d.bufferBytes, static_cast<size_t>(r.frames) * r.channels * 2) << r.rate;
    EXPECT_EQ(d.queued(), CaptureDevice::kSlots);
  }
}

TEST_F(Recorder, StartOpensTheDeviceOrFallsBackToTheMapper) {
  recorder.setDevice(2);
  ASSERT_TRUE(recorder.Start(output, 0, -15, 20000));
  EXPECT_EQ(device.calls, (std::vector<std::string>{"open 2 1 8000", "start"}));
  EXPECT_EQ(recorder.startThreshold(), -13);
  EXPECT_EQ(recorder.stopThreshold(), -18);
  EXPECT_EQ(events.seen, (std::vector<std::string>{"waiting 3", "position 0 3", "levels 3"}));
  recorder.Stop();

  FakeCaptureDevice direct;
  direct.refuseDirect = true;
  LSoundRecorder viaMapper(direct);
  EXPECT_TRUE(viaMapper.Start(output, 0, -127, 20000));
  EXPECT_EQ(direct.calls, (std::vector<std::string>{"open 0 1 8000", "open mapper 0 1 8000", "start"}));
  EXPECT_EQ(viaMapper.startThreshold(), -125);
  EXPECT_EQ(viaMapper.stopThreshold(), -127) << "clamped from -130";

  FakeCaptureDevice none;
  none.refuseDirect = none.refuseMapper = true;
  LSoundRecorder refused(none);
  Events quiet;
  refused.setListener(&quiet, 0);
  EXPECT_FALSE(refused.Start(output, 0, -127, 20000));
  EXPECT_EQ(refused.state(), LSoundRecorder::State::Idle);
  EXPECT_TRUE(quiet.seen.empty());
  EXPECT_EQ(none.queued(), 0);

  FakeCaptureDevice unused;
  LSoundRecorder noOutput(unused);
  EXPECT_FALSE(noOutput.Start(LSoundSink(), 0, -127, 20000));
  EXPECT_FALSE(noOutput.Start(LSoundSink(new MemorySink(8000, 0)), 0, -127, 20000)) << "a failed output";
  EXPECT_TRUE(unused.calls.empty());

  // Buffers that cannot be had are skipped; the recorder runs with the rest.
  FakeCaptureDevice short_;
  short_.slotsAvailable = 3;
  LSoundRecorder fewer(short_);
  EXPECT_TRUE(fewer.Start(output, 0, -127, 20000));
  EXPECT_EQ(short_.queued(), 3);
}

TEST_F(Recorder, TheGateOpensOnlyAboveTheStartThreshold) {
  const struct {
    int8_t trim;
    int quiet;  // the amplitude that must not open it (16-bit units)
    int loud;   // the one that must
  } rows[] = {
      {-127, 0, 1},       // AutoTrim off: pure digital silence never opens it, a single step does
      {-15, 1500, 2000},  // about -14.7 dB stays below -13 dB, -12 dB is above
  };
  for (const auto& r : rows) {
    FakeCaptureDevice d;
    LSoundRecorder rec(d);
    ASSERT_TRUE(rec.Start(LSoundSink(new MemorySink(kRate, 1)), 0, r.trim, 216000000));
    for (int i = 0; i < 50; ++i) rec.OnBufferDone(d.fill(tone(r.quiet)));
    EXPECT_EQ(rec.state(), LSoundRecorder::State::Waiting) << int(r.trim);
    rec.OnBufferDone(d.fill(tone(r.loud, 400, 402)));
    EXPECT_EQ(rec.state(), LSoundRecorder::State::Recording) << int(r.trim);
  }
}

TEST_F(Recorder, PreRollOpeningTheRecording) {
  struct Row {
    const char* name;
    int loudFrom, loudTo;
    int32_t zerosFirst;
  } rows[] = {
      {"first half loud", 0, 400, kFrames - kFrames / 2},
      {"whole buffer loud", 0, kFrames, kFrames - kFrames / 2},
      {"only second half loud", 400, kFrames, 0},
  };
  for (const Row& r : rows) {
    FakeCaptureDevice d;
    LSoundRecorder rec(d);
    auto* s = new MemorySink(kRate, 1);
    ASSERT_TRUE(rec.Start(LSoundSink(s), 0, -15, 216000000));
    // Quiet but not silent input first: none of it reaches the output.
    for (int i = 0; i < 3; ++i) rec.OnBufferDone(d.fill(tone(100)));
    const std::vector<int16_t> opening = tone(8000, r.loudFrom, r.loudTo);
    rec.OnBufferDone(d.fill(opening));
    ASSERT_EQ(s->length(), r.zerosFirst + kFrames) << r.name;
    for (int32_t i = 0; i < r.zerosFirst; ++i) ASSERT_EQ(s->values()[i], 0) << r.name << " frame " << i;
    for (int32_t i = 0; i < kFrames; ++i) ASSERT_EQ(s->values()[r.zerosFirst + i], opening[i] * 16) << r.name << i;
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
