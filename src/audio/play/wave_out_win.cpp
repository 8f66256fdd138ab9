#include "audio/play/wave_out_win.h"

#include <algorithm>

#include "audio/data/pcm16_format_win.h"
#include "win/messages.h"

namespace vantr {

namespace {

constexpr const char* kPlayerClass = "LSoundPlayer_Window";
constexpr DWORD kEndlessLoop = 0x7FFFFFFF;

}  // namespace

bool WaveOutDevice::open(int device, uint8_t channels, uint32_t rate, bool mapper) {
  close();
  WAVEFORMATEX format = pcm16Format(channels, rate);
  const DWORD flags = CALLBACK_NULL | (mapper ? WAVE_MAPPED : 0);
  // Device -1 is the wave mapper, the system's default output.
  if (waveOutOpen(&m_wave, static_cast<UINT>(device), &format, 0, 0, flags) == MMSYSERR_NOERROR) return true;
  m_wave = nullptr;
  return false;
}

bool WaveOutDevice::makeBlocks(int count, size_t bytes) {
  releaseBlocks();
  m_blocks.resize(count);
  for (Block& block : m_blocks) {
    block.memory = GlobalBuffer(bytes);
    if (!block.memory) {
      releaseBlocks();
      return false;
    }
    block.header.lpData = static_cast<LPSTR>(block.memory.data());
    block.header.dwBufferLength = static_cast<DWORD>(bytes);
    if (waveOutPrepareHeader(m_wave, &block.header, sizeof block.header) != MMSYSERR_NOERROR) {
      releaseBlocks();
      return false;
    }
    // Every block starts out free for the player.
    block.header.dwFlags |= WHDR_DONE;
  }
  return true;
}

int16_t* WaveOutDevice::blockData(int block) { return reinterpret_cast<int16_t*>(m_blocks[block].header.lpData); }

bool WaveOutDevice::blockDone(int block) const {
  // The device's own thread sets the flag; read it afresh every time.
  return (*static_cast<const volatile DWORD*>(&m_blocks[block].header.dwFlags) & WHDR_DONE) != 0;
}

void WaveOutDevice::write(int block, bool loop) {
  WAVEHDR& header = m_blocks[block].header;
  header.dwFlags &= ~(WHDR_DONE | WHDR_BEGINLOOP | WHDR_ENDLOOP);
  header.dwLoops = 0;
  if (loop) {
    header.dwFlags |= WHDR_BEGINLOOP | WHDR_ENDLOOP;
    header.dwLoops = kEndlessLoop;
  }
  waveOutWrite(m_wave, &header, sizeof header);
}

void WaveOutDevice::pause() {
  if (m_wave) waveOutPause(m_wave);
}

void WaveOutDevice::restart() {
  if (m_wave) waveOutRestart(m_wave);
}

void WaveOutDevice::reset() {
  if (m_wave) waveOutReset(m_wave);
}

void WaveOutDevice::releaseBlocks() {
  for (Block& block : m_blocks) {
    if (!block.memory) continue;
    // The header goes back to the device before its memory is freed.
    if (m_wave) waveOutUnprepareHeader(m_wave, &block.header, sizeof block.header);
  }
  m_blocks.clear();
}

void WaveOutDevice::close() {
  if (!m_wave) return;
  // Every block comes back from the device before its memory goes.
  waveOutReset(m_wave);
  releaseBlocks();
  waveOutClose(m_wave);
  m_wave = nullptr;
}

LSoundPlayer_Window::LSoundPlayer_Window(HINSTANCE instance)
    : m_player(m_device, [this] {
        if (m_hwnd) PostMessageA(m_hwnd, kMsgPlayerNotify, 0, 0);
      }) {
  createHidden(instance, kPlayerClass);
}

LSoundPlayer_Window::~LSoundPlayer_Window() {
  m_player.Close();
  if (m_hwnd) DestroyWindow(m_hwnd);
}

bool LSoundPlayer_Window::Open(const LSoundSource& source, bool startPaused) {
  return m_hwnd && m_player.Open(source, startPaused);
}

LRESULT LSoundPlayer_Window::HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
  if (msg == kMsgPlayerNotify) {
    m_player.OnWakeup();
    return 0;
  }
  return DefaultProc(msg, wParam, lParam);
}

std::string outputDeviceName(int device) {
  WAVEOUTCAPSA caps{};
  if (waveOutGetDevCapsA(static_cast<UINT_PTR>(device), &caps, sizeof caps) != MMSYSERR_NOERROR) return {};
  return caps.szPname;
}

std::string inputDeviceName(int device) {
  WAVEINCAPSA caps{};
  if (waveInGetDevCapsA(static_cast<UINT_PTR>(device), &caps, sizeof caps) != MMSYSERR_NOERROR) return {};
  return caps.szPname;
}

std::vector<std::string> outputDeviceNames() {
  std::vector<std::string> names;
  const int count = std::min(static_cast<int>(waveOutGetNumDevs()), kMaxListedDevices);
  for (int i = 0; i < count; ++i) names.push_back(outputDeviceName(i));
  return names;
}

std::vector<std::string> inputDeviceNames() {
  std::vector<std::string> names;
  const int count = std::min(static_cast<int>(waveInGetNumDevs()), kMaxListedDevices);
  for (int i = 0; i < count; ++i) names.push_back(inputDeviceName(i));
  return names;
}

}  // namespace vantr
