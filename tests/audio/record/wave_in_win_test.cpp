// The recorder on a real device of the test bed: tone bursts played into a
// null sink are recorded from that sink's monitor; the recording holds the
// bursts, the long silence between them cut to 0.7 s, and 50 ms of tail.
#include <windows.h>

#include <gtest/gtest.h>
#include <mmsystem.h>

#include <string>
#include <vector>

#include "audio/record/wave_in_win.h"
#include "audio/test_bed_devices_win.h"
#include "base/time_position.h"

namespace vantr {
namespace {

constexpr int kRate = 44100;

TEST(WaveInRecorder, RecordsABurstFromASinkMonitor) {
  const int out = outputDeviceNamed("Vantorel_Out_B");
  const int in = inputDeviceNamed("Monitor of Vantorel_Out_B");
  ASSERT_GE(out, 0);
  ASSERT_GE(in, 0);

  // 0.3 s of silence, a burst of 1 s of 1000 Hz at 0 dB (amplitude 8192),
  // 3 s of silence, a burst of 0.5 s, and 1 s of silence.
  std::vector<int16_t> signal(kRate * 58 / 10, 0);
  addSine(signal, kRate * 3 / 10, kRate, 8192, 1000, kRate);
  addSine(signal, kRate * 43 / 10, kRate / 2, 8192, 1000, kRate);

  EngineEvents events;  // before the recorder, whose destruction still notifies
  LSoundRecorder_Window recorder(GetModuleHandleA(nullptr));
  recorder.recorder().setListener(&events, 1);
  recorder.recorder().setDevice(static_cast<int8_t>(in));
  auto* sink = new MemorySink(kRate, 1);
  const LSoundSink output(sink);
  ASSERT_TRUE(recorder.Start(output, 0, -30, 20000));  // 2 s silence limit
  ASSERT_TRUE(waitForCapture(events, 3)) << "the monitor delivers nothing";

  HWAVEOUT wave = nullptr;
  WAVEFORMATEX format{WAVE_FORMAT_PCM, 1, kRate, kRate * 2, 2, 16, 0};
  ASSERT_EQ(waveOutOpen(&wave, out, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
  WAVEHDR header{};
  header.lpData = reinterpret_cast<LPSTR>(signal.data());
  header.dwBufferLength = static_cast<DWORD>(signal.size() * 2);
  waveOutPrepareHeader(wave, &header, sizeof header);
  const int buffersBefore = events.meterReadings;
  waveOutWrite(wave, &header, sizeof header);
  // The signal's 4.8 s and 1.5 s more, counted in the recorder's 100 ms buffers.
  const int signalBuffers = static_cast<int>(signal.size() * 10 / kRate);
  ASSERT_TRUE(pumpUntil([&] { return events.meterReadings >= buffersBefore + signalBuffers + 15; }))
      << "the recorder stopped receiving";
  EXPECT_TRUE(pumpUntil([&] { return (header.dwFlags & WHDR_DONE) != 0; })) << "the signal did not finish playing";
  waveOutUnprepareHeader(wave, &header, sizeof header);
  waveOutClose(wave);

  recorder.recorder().Stop();
  EXPECT_EQ(events.count("started"), 2) << "the gate opens once for each burst";
  EXPECT_EQ(events.count("stopped"), 1);

  // Where the tone is, in 10 ms steps of the recording.
  const std::vector<int32_t>& v = sink->values();
  const ToneAnalysis recorded = analyseTone(v, kRate, 1000);
  ASSERT_EQ(recorded.runs.size(), 2u) << "two bursts, nothing else";
  EXPECT_NEAR(recorded.runs[0].steps(), 100, 3);
  EXPECT_NEAR(recorded.runs[1].steps(), 50, 3);
  EXPECT_LE(recorded.runs[0].first, 16) << "the recording opens with the first burst, after at most the pre-roll";
  // The 3 s silence is cut to 0.7 s after the first burst's last loud buffer;
  // the second burst opens with its pre-roll.
  const int gap = recorded.runs[1].first - recorded.runs[0].last - 1;
  EXPECT_GE(gap, 65);
  EXPECT_LE(gap, 100);
  // The end: 50 ms after the last loud buffer.
  const int tail = static_cast<int>(recorded.peaks.size()) - recorded.runs[1].last - 1;
  EXPECT_GE(tail, 4);
  EXPECT_LE(tail, 16);
  EXPECT_NEAR(peakLevel(v.data(), static_cast<int32_t>(v.size()), 1, 0), 0, 1) << "the bursts' level";
}

}  // namespace
}  // namespace vantr
