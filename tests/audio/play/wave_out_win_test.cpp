// The player on a real device of the test bed: the test tone played on an
// output is heard on that output's monitor at the right level, frequency and
// length, and the player's notifications arrive on the owner's thread.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "audio/data/tone_source.h"
#include "audio/play/wave_out_win.h"
#include "audio/record/wave_in_win.h"
#include "audio/test_bed_devices_win.h"
#include "base/time_position.h"

namespace vantr {
namespace {

constexpr int kRate = 44100;

TEST(WaveOutPlayer, ToneIsHeardOnTheMonitor) {
  const int out = outputDeviceNamed("Vantorel_Out_C");
  const int in = inputDeviceNamed("Monitor of Vantorel_Out_C");
  ASSERT_GE(out, 0);
  ASSERT_GE(in, 0);
  EXPECT_EQ(outputDeviceName(9999), "");
  EXPECT_EQ(inputDeviceName(9999), "");

  // The listeners before the engines, whose destruction still notifies.
  EngineEvents captured, heard;
  const HINSTANCE instance = GetModuleHandleA(nullptr);
  LSoundRecorder_Window recorder(instance);
  recorder.recorder().setDevice(static_cast<int8_t>(in));
  auto* sink = new MemorySink(kRate, 1);
  const LSoundSink output(sink);
  recorder.recorder().setListener(&captured, 0);
  ASSERT_TRUE(recorder.Start(output, 0, -30, 216000000));
  ASSERT_TRUE(waitForCapture(captured, 3)) << "the monitor delivers nothing";

  LSoundPlayer_Window player(instance);
  player.player().setNotify(&heard, 0);
  player.player().setDevice(static_cast<int8_t>(out));
  ASSERT_TRUE(player.Open(LSoundSource(new LSRCSineTone), false));
  // 1.5 s by the player's own position, then the recorder until it has
  // captured a second more than the player played (Wine's capture runs
  // behind): both counted in frames the devices delivered, not in time waited.
  ASSERT_TRUE(pumpUntil([&] { return heard.lastPosition >= 15000; })) << "the player's position stood still";
  player.player().Close();
  const int32_t played = heard.lastPosition;
  ASSERT_TRUE(pumpUntil([&] { return sink->length() >= timeToFrames(played + 10000, kRate); }))
      << "the recorder stopped receiving";
  recorder.recorder().Stop();

  EXPECT_EQ(heard.count("playing"), 1);
  EXPECT_EQ(heard.count("stopped"), 1);
  EXPECT_FALSE(heard.offThread) << "every notification on the owner's thread";
  EXPECT_GT(heard.count("position"), 5);
  EXPECT_LE(heard.lastPosition, 15000 + 2 * 1000) << "the position moves a block at a time";
  ASSERT_EQ(heard.lastLevels.size(), 1u);
  EXPECT_NEAR(heard.lastLevels[0], 0, 1) << "the tone is at 0 dB";

  // What the monitor heard: the tone for as long as the player played it (the
  // recording opens 50 ms before the gate and ends 50 ms after the last loud
  // buffer; Wine plays on a little after a reset), at 0 dB, at 1000 Hz.
  const std::vector<int32_t>& v = sink->values();
  const int32_t duration = framesToTime(sink->length(), kRate);
  EXPECT_GE(duration, played - 1000);
  EXPECT_LE(duration, played + kResetRunOn);
  EXPECT_NEAR(peakLevel(v.data(), static_cast<int32_t>(v.size()), 1, 0), 0, 1) << "no louder anywhere";
  const ToneAnalysis recorded = analyseTone(v, kRate, 7000);
  EXPECT_NEAR(recorded.hz, 1000, 2);
  EXPECT_NEAR(recorded.decibels, 0, 1);
}

}  // namespace
}  // namespace vantr
