// The player on a real device of the test bed: the test tone played on an
// output is heard on that output's monitor at the right level, frequency and
// length, and the player's notifications arrive on the owner's thread.
#include <windows.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "audio/data/tone_source.h"
#include "audio/play/wave_out_win.h"
#include "audio/record/memory_sink.h"
#include "audio/record/wave_in_win.h"
#include "audio/test_bed_devices_win.h"
#include "base/time_position.h"

namespace vantr {
namespace {

constexpr int kRate = 44100;

// The power of one frequency in a stretch of samples (Goertzel).
double goertzel(const int32_t* v, size_t n, double frequency) {
  const double k = 2 * std::cos(2 * M_PI * frequency / kRate);
  double s1 = 0, s2 = 0;
  for (size_t i = 0; i < n; ++i) {
    const double s0 = v[i] + k * s1 - s2;
    s2 = s1;
    s1 = s0;
  }
  return s1 * s1 + s2 * s2 - k * s1 * s2;
}

class Heard : public LSoundPlayerNotify {
 public:
  DWORD thread = 0;
  bool otherThread = false;
  int playings = 0, stops = 0, positions = 0;
  int32_t lastPosition = -1;
  LevelList lastLevels;
  void check() { otherThread |= GetCurrentThreadId() != thread; }
  void playing(uint32_t) override { check(), ++playings; }
  void stopped(uint32_t) override { check(), ++stops; }
  void cueStarted(uint32_t) override { check(); }
  void paused(uint32_t) override { check(); }
  void position(int32_t t, uint32_t) override {
    check();
    ++positions;
    lastPosition = t;
  }
  void levels(const LevelList& l, uint32_t) override {
    check();
    lastLevels = l;
  }
};

TEST(WaveOutPlayer, ToneIsHeardOnTheMonitor) {
  const int out = outputDeviceNamed("Vantorel_Out_C");
  const int in = inputDeviceNamed("Monitor of Vantorel_Out_C");
  ASSERT_GE(out, 0);
  ASSERT_GE(in, 0);
  EXPECT_EQ(outputDeviceName(out), "Vantorel_Out_C");
  EXPECT_EQ(outputDeviceName(9999), "");
  EXPECT_EQ(inputDeviceName(9999), "");

  const HINSTANCE instance = GetModuleHandleA(nullptr);
  LSoundRecorder_Window recorder(instance);
  recorder.recorder().setDevice(static_cast<int8_t>(in));
  auto* sink = new MemorySink(kRate, 1);
  const LSoundSink output(sink);
  BufferCounter captured;
  recorder.recorder().setListener(&captured, 0);
  ASSERT_TRUE(recorder.Start(output, 0, -30, 216000000));
  ASSERT_TRUE(waitForCapture(captured, 3)) << "the monitor delivers nothing";

  LSoundPlayer_Window player(instance);
  Heard heard;
  heard.thread = GetCurrentThreadId();
  player.player().setNotify(&heard, 0);
  player.player().setDevice(static_cast<int8_t>(out));
  ASSERT_TRUE(player.Open(LSoundSource(new LSRCSineTone), false));
  pumpMessagesFor(1500);
  player.player().Close();
  pumpMessagesFor(2500);
  recorder.recorder().Stop();

  EXPECT_EQ(heard.playings, 1);
  EXPECT_EQ(heard.stops, 1);
  EXPECT_FALSE(heard.otherThread) << "every notification on the owner's thread";
  EXPECT_GT(heard.positions, 5);
  EXPECT_GE(heard.lastPosition, 8000) << "the position follows the blocks the device finished";
  EXPECT_LE(heard.lastPosition, 16000);
  ASSERT_EQ(heard.lastLevels.size(), 1u);
  EXPECT_NEAR(heard.lastLevels[0], 0, 1) << "the tone is at 0 dB";

  // What the monitor heard: about 1.5 s of the tone, at 0 dB, at 1000 Hz.
  const std::vector<int32_t>& v = sink->values();
  const int32_t duration = framesToTime(sink->length(), kRate);
  EXPECT_GE(duration, 11000);
  EXPECT_LE(duration, 19000);
  ASSERT_GT(v.size(), static_cast<size_t>(kRate / 2));
  EXPECT_NEAR(peakLevel(v.data(), static_cast<int32_t>(v.size()), 1, 0), 0, 1);
  const size_t middle = v.size() / 2 - kRate / 8;
  const double at1000 = goertzel(v.data() + middle, kRate / 4, 1000);
  EXPECT_GT(at1000, 100 * goertzel(v.data() + middle, kRate / 4, 900));
  EXPECT_GT(at1000, 100 * goertzel(v.data() + middle, kRate / 4, 1100));
}

}  // namespace
}  // namespace vantr
