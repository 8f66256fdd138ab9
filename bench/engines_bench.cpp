// The engines' own work for one second of 44100 Hz stereo audio, without the
// devices: the recorder's ten buffers (convert, levels, gate, write to a WAV
// file) and the player's ten blocks (read a WAV file, narrow to 16 bits,
// levels). Also the time from a player's open to its first block on the
// device, with the worker thread as the program runs it.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "audio/data/pcm_file_sink.h"
#include "audio/data/pcm_file_source.h"
#include "audio/fake_devices.h"
#include "audio/play/sound_player.h"
#include "audio/record/sound_recorder.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr int kRate = 44100;
constexpr int kChannels = 2;
constexpr int kFrames = kRate / 10;

std::vector<int16_t> stereoTenth() {
  std::vector<int16_t> s(kFrames * kChannels);
  for (int i = 0; i < kFrames; ++i)
    for (int c = 0; c < kChannels; ++c)
      s[i * kChannels + c] = static_cast<int16_t>(8192 * std::sin(2 * M_PI * (1000 + 500 * c) * i / kRate));
  return s;
}

void BM_RecorderOneSecond(benchmark::State& state) {
  TempDir dir;
  FakeCaptureDevice capture;
  LSoundRecorder recorder(capture);
  LSoundSink sink = createPcmSink(dir.file("bench.wav"), kRate, kChannels, 16, 0);
  recorder.Start(sink, 0, -127, 216000000);
  const std::vector<int16_t> tenth = stereoTenth();
  for (auto _ : state) {
    for (int b = 0; b < 10; ++b) recorder.OnBufferDone(capture.fill(tenth));
    state.PauseTiming();
    sink->setLength(0);  // keep the file small
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kRate);
}
BENCHMARK(BM_RecorderOneSecond)->Unit(benchmark::kMicrosecond);

void BM_PlayerOneSecond(benchmark::State& state) {
  TempDir dir;
  const std::string path = dir.file("play.wav");
  {
    LSoundSink sink = createPcmSink(path, kRate, kChannels, 16, 0);
    std::vector<int32_t> values(kFrames * kChannels);
    const std::vector<int16_t> tenth = stereoTenth();
    for (size_t i = 0; i < values.size(); ++i) values[i] = tenth[i] * 16;
    for (int t = 0; t < 600; ++t) sink->write(values.data(), kFrames);
  }
  FakePlaybackDevice device;
  device.finishAtOnce = true;
  LSoundPlayer player(
      device, [] {}, LSoundPlayer::Threading::Manual);
  player.Open(openWavSource(path), false);
  for (auto _ : state) {
    for (int b = 0; b < 10; ++b) player.serviceBlock();
    if (player.positionFrames() > 50 * kRate) {
      state.PauseTiming();
      player.Seek(0);
      state.ResumeTiming();
    }
  }
  state.SetItemsProcessed(state.iterations() * kRate);
}
BENCHMARK(BM_PlayerOneSecond)->Unit(benchmark::kMicrosecond);

// A device that notes when the first block reaches it.
class FirstWrite : public FakePlaybackDevice {
 public:
  void write(int block, bool loop) override {
    FakePlaybackDevice::write(block, loop);
    std::lock_guard<std::mutex> hold(m_lock);
    if (!m_written) {
      m_written = true;
      m_at = std::chrono::steady_clock::now();
      m_done.notify_all();
    }
  }
  // Forgets the blocks of the last open.
  void arm() {
    std::lock_guard<std::mutex> hold(m_lock);
    m_written = false;
  }
  std::chrono::steady_clock::time_point waitForIt() {
    std::unique_lock<std::mutex> hold(m_lock);
    m_done.wait(hold, [this] { return m_written; });
    return m_at;
  }

 private:
  std::mutex m_lock;
  std::condition_variable m_done;
  bool m_written = false;
  std::chrono::steady_clock::time_point m_at;
};

void BM_PlayerOpenToFirstBlock(benchmark::State& state) {
  TempDir dir;
  const std::string path = dir.file("short.wav");
  {
    LSoundSink sink = createPcmSink(path, kRate, kChannels, 16, 0);
    std::vector<int32_t> values(kFrames * kChannels, 16);
    for (int t = 0; t < 20; ++t) sink->write(values.data(), kFrames);
  }
  FirstWrite device;
  LSoundPlayer player(device, [] {});
  for (auto _ : state) {
    device.arm();
    const auto start = std::chrono::steady_clock::now();
    player.Open(openWavSource(path), false);
    const auto first = device.waitForIt();
    state.SetIterationTime(std::chrono::duration<double>(first - start).count());
    player.Close();
  }
}
// Each close waits for the worker to end (polled every 50 ms), so a few dozen
// opens are enough.
BENCHMARK(BM_PlayerOpenToFirstBlock)->UseManualTime()->Iterations(40)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vantr
