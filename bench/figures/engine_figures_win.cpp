// Not a test: prints what the engines cost under Wine on the test bed.
//   1. The process's CPU time with four recorders and four players idle (their
//      windows made, nothing running).
//   2. The peer: the same eight devices in the same formats with the same
//      buffers, kept running by one thread that only hands every buffer back
//      (no engine work at all): what Wine's sound path costs by itself.
//   3. Four recorders (each output's monitor into a WAV file), then the four
//      players as well (the tone on each output) for 60 s, then the players
//      alone; the line for all eight ends with its ratio to the peer.
//   4. The time from a player's open to its first block reaching waveOut.
#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "audio/data/pcm_file_sink.h"
#include "audio/data/tone_source.h"
#include "audio/play/wave_out_win.h"
#include "audio/record/wave_in_win.h"
#include "audio/test_bed_devices_win.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

double seconds(const FILETIME& t) { return ((static_cast<uint64_t>(t.dwHighDateTime) << 32) | t.dwLowDateTime) / 1e7; }

// The ids of the process's threads.
std::vector<DWORD> threadIds() {
  std::vector<DWORD> ids;
  HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) ids.push_back(entry.th32ThreadID);
  CloseHandle(snapshot);
  return ids;
}

double threadSeconds(DWORD id) {
  HANDLE thread = OpenThread(THREAD_QUERY_INFORMATION, FALSE, id);
  if (!thread) return 0;
  FILETIME created, exited, kernel, user;
  const double s = GetThreadTimes(thread, &created, &exited, &kernel, &user) ? seconds(kernel) + seconds(user) : 0;
  CloseHandle(thread);
  return s;
}

// The player workers: the threads that the players' opens added.
std::vector<DWORD> g_workers;

struct CpuTimes {
  double process;
  double mainThread;  // the recorders' work and the message loop
  double workers;     // the players' work
};

CpuTimes cpuTimes() {
  FILETIME created, exited, kernel, user;
  GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
  CpuTimes t{seconds(kernel) + seconds(user), 0, 0};
  GetThreadTimes(GetCurrentThread(), &created, &exited, &kernel, &user);
  t.mainThread = seconds(kernel) + seconds(user);
  for (DWORD id : g_workers) t.workers += threadSeconds(id);
  return t;
}

// Pumps messages for ms, prints the share of one core used meanwhile and
// returns the process's share.
double reportCpuWhilePumping(const char* what, DWORD ms) {
  const CpuTimes before = cpuTimes();
  pumpMessagesFor(ms);
  const CpuTimes after = cpuTimes();
  const double wall = ms / 1000.0;
  const double process = 100 * (after.process - before.process) / wall;
  std::printf("%s, %lu s: process %.2f%% of one core (main thread %.2f%%, player workers %.2f%%)", what, ms / 1000,
              process, 100 * (after.mainThread - before.mainThread) / wall,
              100 * (after.workers - before.workers) / wall);
  return process;
}

// The peer: four waveIn devices (44100 Hz stereo, 40 buffers of 4410 frames,
// as a recorder opens them) and four waveOut devices (44100 Hz mono, 70
// blocks of 4410 frames of the tone, as a player opens them), every buffer
// handed straight back when it is done, by one thread woken by the devices.
class BareDevices {
 public:
  static constexpr int kInBuffers = 40, kOutBlocks = 70, kFrames = 4410;

  bool start(const int (&outputs)[4], const int (&inputs)[4]) {
    m_event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    WAVEFORMATEX in{WAVE_FORMAT_PCM, 2, 44100, 44100 * 4, 4, 16, 0};
    WAVEFORMATEX out{WAVE_FORMAT_PCM, 1, 44100, 44100 * 2, 2, 16, 0};
    std::vector<int32_t> tone(kFrames);
    LSRCSineTone().read(tone.data(), kFrames);
    for (int c = 0; c < 4; ++c) {
      if (waveInOpen(&m_in[c], static_cast<UINT>(inputs[c]), &in, reinterpret_cast<DWORD_PTR>(m_event), 0,
                     CALLBACK_EVENT) != MMSYSERR_NOERROR ||
          waveOutOpen(&m_out[c], static_cast<UINT>(outputs[c]), &out, reinterpret_cast<DWORD_PTR>(m_event), 0,
                      CALLBACK_EVENT) != MMSYSERR_NOERROR)
        return false;
      m_inBuffers[c].resize(kInBuffers);
      for (Buffer& b : m_inBuffers[c]) {
        b.samples.resize(kFrames * 2);
        b.header.lpData = reinterpret_cast<LPSTR>(b.samples.data());
        b.header.dwBufferLength = kFrames * 4;
        waveInPrepareHeader(m_in[c], &b.header, sizeof b.header);
        waveInAddBuffer(m_in[c], &b.header, sizeof b.header);
      }
      waveInStart(m_in[c]);
      m_outBlocks[c].resize(kOutBlocks);
      for (Buffer& b : m_outBlocks[c]) {
        for (int32_t v : tone) b.samples.push_back(static_cast<int16_t>(v >> 4));
        b.header.lpData = reinterpret_cast<LPSTR>(b.samples.data());
        b.header.dwBufferLength = kFrames * 2;
        waveOutPrepareHeader(m_out[c], &b.header, sizeof b.header);
        waveOutWrite(m_out[c], &b.header, sizeof b.header);
      }
    }
    m_thread = std::thread([this] { serve(); });
    return true;
  }

  void stop() {
    m_stop = true;
    SetEvent(m_event);
    m_thread.join();
    for (int c = 0; c < 4; ++c) {
      waveInReset(m_in[c]);
      waveOutReset(m_out[c]);
      for (Buffer& b : m_inBuffers[c]) waveInUnprepareHeader(m_in[c], &b.header, sizeof b.header);
      for (Buffer& b : m_outBlocks[c]) waveOutUnprepareHeader(m_out[c], &b.header, sizeof b.header);
      waveInClose(m_in[c]);
      waveOutClose(m_out[c]);
    }
    CloseHandle(m_event);
  }

  DWORD threadId() {
    while (m_threadId == 0) Sleep(1);
    return m_threadId;
  }

 private:
  struct Buffer {
    std::vector<int16_t> samples;
    WAVEHDR header{};
  };

  void serve() {
    m_threadId = GetCurrentThreadId();
    while (WaitForSingleObject(m_event, INFINITE) == WAIT_OBJECT_0 && !m_stop) {
      for (int c = 0; c < 4; ++c) {
        for (Buffer& b : m_inBuffers[c])
          if (b.header.dwFlags & WHDR_DONE) {
            b.header.dwFlags &= ~WHDR_DONE;
            waveInAddBuffer(m_in[c], &b.header, sizeof b.header);
          }
        for (Buffer& b : m_outBlocks[c])
          if (b.header.dwFlags & WHDR_DONE) waveOutWrite(m_out[c], &b.header, sizeof b.header);
      }
    }
  }

  HANDLE m_event = nullptr;
  std::atomic<bool> m_stop{false};
  std::atomic<DWORD> m_threadId{0};
  std::thread m_thread;
  std::array<HWAVEIN, 4> m_in{};
  std::array<HWAVEOUT, 4> m_out{};
  std::array<std::vector<Buffer>, 4> m_inBuffers, m_outBlocks;
};

// waveOut, noting when the first block is written after each arm(); the
// worker writes, the main thread reads.
class TimedWaveOut : public WaveOutDevice {
 public:
  void arm() { m_first = 0; }
  void write(int block, bool loop) override {
    int64_t none = 0;
    m_first.compare_exchange_strong(none, now());
    WaveOutDevice::write(block, loop);
  }
  int64_t first() const { return m_first; }
  static int64_t now() {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
  }

 private:
  std::atomic<int64_t> m_first{0};
};

int run() {
  const HINSTANCE instance = GetModuleHandleA(nullptr);
  TempDir dir;
  EngineEvents captured[4];  // before the recorders, whose destruction still notifies
  std::unique_ptr<LSoundRecorder_Window> recorders[4];
  std::unique_ptr<LSoundPlayer_Window> players[4];
  int outputs[4], inputs[4];
  for (int c = 0; c < 4; ++c) {
    const std::string output = std::string("Vantorel_Out_") + static_cast<char>('A' + c);
    outputs[c] = outputDeviceNamed(output);
    inputs[c] = inputDeviceNamed("Monitor of " + output);
    if (outputs[c] < 0 || inputs[c] < 0) {
      std::fprintf(stderr, "no device %s or its monitor\n", output.c_str());
      return 1;
    }
    recorders[c] = std::make_unique<LSoundRecorder_Window>(instance);
    recorders[c]->recorder().setDevice(static_cast<int8_t>(inputs[c]));
    recorders[c]->recorder().setListener(&captured[c], static_cast<uint32_t>(c));
    players[c] = std::make_unique<LSoundPlayer_Window>(instance);
    players[c]->player().setDevice(static_cast<int8_t>(outputs[c]));
  }

  reportCpuWhilePumping("engines idle", 20000);
  std::printf("\n");

  BareDevices peer;
  if (!peer.start(outputs, inputs)) {
    std::fprintf(stderr, "the peer could not open the devices\n");
    return 1;
  }
  g_workers = {peer.threadId()};
  const double bare = reportCpuWhilePumping("peer: the 8 devices alone, buffers handed back", 60000);
  std::printf("\n");
  peer.stop();
  g_workers.clear();

  for (int c = 0; c < 4; ++c)
    recorders[c]->Start(createPcmSink(dir.file("rec" + std::to_string(c) + ".wav"), 44100, 2, 16, 0), 0, -30,
                        216000000);
  reportCpuWhilePumping("4 recorders", 20000);
  std::printf("\n");
  const std::vector<DWORD> before = threadIds();
  for (int c = 0; c < 4; ++c) players[c]->Open(LSoundSource(new LSRCSineTone), false);
  for (DWORD id : threadIds())
    if (std::find(before.begin(), before.end(), id) == before.end()) g_workers.push_back(id);
  const double engines = reportCpuWhilePumping("4 recorders + 4 players", 60000);
  std::printf("; %.2f of the peer, the engines' own work %.2f%% of one core\n", engines / bare, engines - bare);
  for (int c = 0; c < 4; ++c) recorders[c]->recorder().Stop();
  reportCpuWhilePumping("4 players", 20000);
  std::printf("\n");
  for (int c = 0; c < 4; ++c) players[c]->player().Close();
  std::printf("(%zu threads started with the players; the rest of the process's time is Wine's audio threads)\n",
              g_workers.size());

  TimedWaveOut device;
  LSoundPlayer player(device, [] {});
  player.setDevice(static_cast<int8_t>(outputs[0]));
  std::vector<double> latencies;
  for (int i = 0; i < 20; ++i) {
    device.arm();
    const int64_t start = TimedWaveOut::now();
    player.Open(LSoundSource(new LSRCSineTone), false);
    while (device.first() == 0) Sleep(1);
    latencies.push_back((device.first() - start) / 1000.0);
    player.Close();
  }
  std::sort(latencies.begin(), latencies.end());
  std::printf("open to first block:    median %.2f ms (min %.2f, max %.2f, 20 opens)\n", latencies[10], latencies[0],
              latencies.back());
  return 0;
}

}  // namespace
}  // namespace vantr

int main() { return vantr::run(); }
