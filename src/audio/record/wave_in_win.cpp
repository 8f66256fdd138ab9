#include "audio/record/wave_in_win.h"

#include "audio/data/pcm16_format_win.h"

namespace vantr {

namespace {

constexpr const char* kRecorderClass = "LSoundRecorder_Window";

}  // namespace

int WaveInDevice::slotOf(const WAVEHDR* header) const {
  for (int i = 0; i < kSlots; ++i)
    if (&m_slots[i].header == header) return i;
  return -1;
}

bool WaveInDevice::open(int device, uint8_t channels, uint32_t rate, bool mapper) {
  close();
  WAVEFORMATEX format = pcm16Format(channels, rate);
  const DWORD flags = CALLBACK_WINDOW | (mapper ? WAVE_MAPPED : 0);
  if (waveInOpen(&m_wave, static_cast<UINT>(device), &format, reinterpret_cast<DWORD_PTR>(m_window), 0, flags) ==
      MMSYSERR_NOERROR)
    return true;
  m_wave = nullptr;
  return false;
}

void WaveInDevice::start() {
  if (m_wave) waveInStart(m_wave);
}

bool WaveInDevice::addBuffer(int slot, size_t bytes) {
  Slot& s = m_slots[slot];
  freeSlot(s);
  s.memory = GlobalBuffer(bytes);
  if (!s.memory) return false;
  s.header = WAVEHDR{};
  s.header.lpData = static_cast<LPSTR>(s.memory.data());
  s.header.dwBufferLength = static_cast<DWORD>(bytes);
  requeue(slot);
  return true;
}

bool WaveInDevice::takeFilled(int slot) {
  Slot& s = m_slots[slot];
  if (!s.memory || !(s.header.dwFlags & WHDR_DONE)) return false;
  waveInUnprepareHeader(m_wave, &s.header, sizeof s.header);
  s.header.dwFlags = 0;
  return true;
}

const int16_t* WaveInDevice::samples(int slot) const {
  return reinterpret_cast<const int16_t*>(m_slots[slot].header.lpData);
}

void WaveInDevice::requeue(int slot) {
  WAVEHDR& header = m_slots[slot].header;
  header.dwFlags = 0;
  waveInPrepareHeader(m_wave, &header, sizeof header);
  waveInAddBuffer(m_wave, &header, sizeof header);
}

void WaveInDevice::freeSlot(Slot& slot) {
  if (!slot.memory) return;
  if (m_wave) waveInUnprepareHeader(m_wave, &slot.header, sizeof slot.header);
  slot.header.dwFlags = 0;
  slot.memory.reset();
}

void WaveInDevice::close() {
  if (!m_wave) return;
  // The reset hands every queued buffer back first, so none is freed while
  // the device still writes into it.
  waveInReset(m_wave);
  for (Slot& slot : m_slots) freeSlot(slot);
  waveInClose(m_wave);
  m_wave = nullptr;
}

LSoundRecorder_Window::LSoundRecorder_Window(HINSTANCE instance) {
  createHidden(instance, kRecorderClass);
  m_device.setWindow(m_hwnd);
}

LSoundRecorder_Window::~LSoundRecorder_Window() {
  m_recorder.Stop();
  if (m_hwnd) DestroyWindow(m_hwnd);
}

bool LSoundRecorder_Window::Start(const LSoundSink& output, int32_t maxDuration, int8_t trimLevel,
                                  int32_t silenceLimit) {
  return m_hwnd && m_recorder.Start(output, maxDuration, trimLevel, silenceLimit);
}

LRESULT LSoundRecorder_Window::HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
  if (msg == MM_WIM_DATA) {
    const int slot = m_device.slotOf(reinterpret_cast<const WAVEHDR*>(lParam));
    if (slot >= 0) m_recorder.OnBufferDone(slot);
    return 0;
  }
  return DefaultProc(msg, wParam, lParam);
}

}  // namespace vantr
