// "Vantorel Settings" and "Automation Settings" in the running program,
// driven from another process as an operator would: the Hardware Settings
// lock, the device lists, what OK and Cancel leave in settings.ini, the test
// tone and the level check heard and seen on the test bed's devices, the run
// mode in Wine's registry and service manager, and the system's port
// configuration dialog with the port record it writes.
#include <windows.h>

#include <gtest/gtest.h>
#include <mmsystem.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "audio/audio_test_support.h"
#include "base/clock.h"
#include "dialog_box.h"
#include "program_test.h"
#include "resource.h"
#include "schedule/schedule_time.h"
#include "ui/db_geometry.h"
#include "win/handles_win.h"

namespace vantr::e2e {
namespace {

constexpr char kSettingsTitle[] = "Vantorel Settings";
constexpr char kAutomationTitle[] = "Automation Settings";
constexpr int kTrimTextBox = 100;  // the text box inside the level slider
constexpr int kRate = 44100;
const char* const kSinks[] = {"Vantorel_Out_A", "Vantorel_Out_B", "Vantorel_Out_C", "Vantorel_Out_D"};

// The wave devices in the system's order, as this process sees them.
std::vector<std::string> outputNames() {
  std::vector<std::string> names;
  for (UINT i = 0; i < waveOutGetNumDevs(); ++i) {
    WAVEOUTCAPSA caps{};
    names.push_back(waveOutGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR ? caps.szPname : "");
  }
  return names;
}
std::vector<std::string> inputNames() {
  std::vector<std::string> names;
  for (UINT i = 0; i < waveInGetNumDevs(); ++i) {
    WAVEINCAPSA caps{};
    names.push_back(waveInGetDevCapsA(i, &caps, sizeof caps) == MMSYSERR_NOERROR ? caps.szPname : "");
  }
  return names;
}
int indexOf(const std::vector<std::string>& names, const std::string& name) {
  for (size_t i = 0; i < names.size(); ++i)
    if (names[i] == name) return static_cast<int>(i);
  return -1;
}
std::string monitorOf(const std::string& sink) { return "Monitor of " + sink; }

// Records one input device as 16-bit mono at 44100 Hz for as long as it
// lives; the values are kept on the engines' scale (16-bit times 16), as
// analyseTone takes them.
class Capture {
 public:
  explicit Capture(int device) {
    m_event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    WAVEFORMATEX format{WAVE_FORMAT_PCM, 1, kRate, kRate * 2, 2, 16, 0};
    if (device < 0 || waveInOpen(&m_in, static_cast<UINT>(device), &format, reinterpret_cast<DWORD_PTR>(m_event), 0,
                                 CALLBACK_EVENT) != MMSYSERR_NOERROR) {
      m_in = nullptr;
      return;
    }
    for (size_t i = 0; i < kBuffers; ++i) {
      m_memory[i].resize(kBufferFrames);
      m_headers[i].lpData = reinterpret_cast<LPSTR>(m_memory[i].data());
      m_headers[i].dwBufferLength = kBufferFrames * sizeof(int16_t);
      waveInPrepareHeader(m_in, &m_headers[i], sizeof(WAVEHDR));
      waveInAddBuffer(m_in, &m_headers[i], sizeof(WAVEHDR));
    }
    waveInStart(m_in);
    m_thread = std::thread([this] { run(); });
  }
  ~Capture() {
    if (!m_in) return;
    m_stop = true;
    SetEvent(m_event);
    m_thread.join();
    waveInReset(m_in);
    for (WAVEHDR& header : m_headers) waveInUnprepareHeader(m_in, &header, sizeof(WAVEHDR));
    waveInClose(m_in);
    CloseHandle(m_event);
  }
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  explicit operator bool() const { return m_in != nullptr; }

  size_t frames() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_values.size();
  }
  std::vector<int32_t> since(size_t frame) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return frame < m_values.size()
               ? std::vector<int32_t>(m_values.begin() + static_cast<ptrdiff_t>(frame), m_values.end())
               : std::vector<int32_t>();
  }

 private:
  static constexpr size_t kBuffers = 8, kBufferFrames = kRate / 20;

  void run() {
    // Buffers come back in the order they were given.
    for (size_t next = 0; !m_stop;) {
      WaitForSingleObject(m_event, 100);
      while (!m_stop && (m_headers[next].dwFlags & WHDR_DONE)) {
        WAVEHDR& header = m_headers[next];
        {
          std::lock_guard<std::mutex> lock(m_mutex);
          for (DWORD i = 0; i < header.dwBytesRecorded / sizeof(int16_t); ++i)
            m_values.push_back(m_memory[next][i] * 16);
        }
        header.dwBytesRecorded = 0;
        waveInAddBuffer(m_in, &header, sizeof(WAVEHDR));
        next = (next + 1) % kBuffers;
      }
    }
  }

  HWAVEIN m_in = nullptr;
  HANDLE m_event = nullptr;
  WAVEHDR m_headers[kBuffers] = {};
  std::vector<int16_t> m_memory[kBuffers];
  mutable std::mutex m_mutex;
  std::vector<int32_t> m_values;
  std::atomic<bool> m_stop{false};
  std::thread m_thread;
};

// Plays `seconds` of a 1000 Hz tone at `decibels` on the program's scale
// (0 dB: 16-bit amplitude 8192), 16-bit mono at 44100 Hz, from one buffer so
// that nothing can run short between buffers; stops when it goes.
class TonePlayer {
 public:
  TonePlayer(int device, double decibels, int seconds) : m_samples(static_cast<size_t>(seconds) * kRate) {
    const double amplitude = 8192 * std::pow(10.0, decibels / 20);
    for (size_t i = 0; i < m_samples.size(); ++i)
      m_samples[i] = static_cast<int16_t>(std::lround(amplitude * std::sin(2 * M_PI * 1000.0 * i / kRate)));
    WAVEFORMATEX format{WAVE_FORMAT_PCM, 1, kRate, kRate * 2, 2, 16, 0};
    if (device < 0 ||
        waveOutOpen(&m_out, static_cast<UINT>(device), &format, 0, 0, CALLBACK_NULL) != MMSYSERR_NOERROR) {
      m_out = nullptr;
      return;
    }
    m_header.lpData = reinterpret_cast<LPSTR>(m_samples.data());
    m_header.dwBufferLength = static_cast<DWORD>(m_samples.size() * sizeof(int16_t));
    waveOutPrepareHeader(m_out, &m_header, sizeof m_header);
    waveOutWrite(m_out, &m_header, sizeof m_header);
  }
  ~TonePlayer() { stop(); }
  TonePlayer(const TonePlayer&) = delete;
  TonePlayer& operator=(const TonePlayer&) = delete;
  explicit operator bool() const { return m_out != nullptr; }
  void stop() {
    if (!m_out) return;
    waveOutReset(m_out);
    waveOutUnprepareHeader(m_out, &m_header, sizeof m_header);
    waveOutClose(m_out);
    m_out = nullptr;
  }

 private:
  std::vector<int16_t> m_samples;
  HWAVEOUT m_out = nullptr;
  WAVEHDR m_header{};
};

// A tone is heard when analyseTone finds an unbroken stretch of at least
// `steps` 10 ms steps whose peaks reach 1/8 of the 0 dB amplitude.
constexpr int32_t kToneThreshold = 1024;
bool heardTone(const Capture& capture, size_t from, int steps, ToneAnalysis& analysis) {
  analysis = analyseTone(capture.since(from), kRate, kToneThreshold);
  for (const StepRun& run : analysis.runs)
    if (run.steps() >= steps) return true;
  return false;
}
// The capture since `from` ends in `steps` steps of digital near-silence
// (the null sinks' monitors deliver zeros when nothing plays).
bool endsInSilence(const Capture& capture, size_t from, int steps) {
  const ToneAnalysis analysis = analyseTone(capture.since(from), kRate, kToneThreshold);
  if (analysis.peaks.size() < static_cast<size_t>(steps)) return false;
  for (size_t i = analysis.peaks.size() - static_cast<size_t>(steps); i < analysis.peaks.size(); ++i)
    if (analysis.peaks[i] > 16) return false;
  return true;
}

// The level meter as the screen shows it: how many columns from its left
// edge are lit (green or red), and whether it is the empty grey meter.
struct MeterPicture {
  int width = 0;
  int bar = 0;
  bool grey = false;
};

MeterPicture readMeter(HWND meter) {
  MeterPicture picture;
  RECT client{};
  GetClientRect(meter, &client);
  POINT origin{0, 0};
  ClientToScreen(meter, &origin);
  const int w = client.right, h = client.bottom;
  picture.width = w;
  if (w <= 0 || h <= 0) return picture;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  BITMAPINFO info{};
  info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
  info.bmiHeader.biWidth = w;
  info.bmiHeader.biHeight = -h;
  info.bmiHeader.biPlanes = 1;
  info.bmiHeader.biBitCount = 32;
  info.bmiHeader.biCompression = BI_RGB;
  void* bits = nullptr;
  HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  HGDIOBJ old = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, w, h, screen, origin.x, origin.y, SRCCOPY);
  GdiFlush();
  const auto* pixels = static_cast<const uint32_t*>(bits);
  const auto lit = [](uint32_t p) {
    const int r = (p >> 16) & 0xFF, g = (p >> 8) & 0xFF, b = p & 0xFF;
    return std::max(r, g) - b > 4;  // the meter's patterns: green or red, little blue
  };
  int greyPixels = 0;
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const uint32_t p = pixels[y * w + x];
      const int r = (p >> 16) & 0xFF, g = (p >> 8) & 0xFF, b = p & 0xFF;
      greyPixels += r == g && g == b && r > 96 && r < 160;
    }
  picture.grey = greyPixels == w * h;
  for (picture.bar = 0; picture.bar < w; ++picture.bar) {
    bool any = false;
    for (int y = 0; y < h && !any; ++y) any = lit(pixels[y * w + picture.bar]);
    if (!any) break;
  }
  SelectObject(memory, old);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
  return picture;
}

std::string describe(const MeterPicture& m) {
  return "bar " + std::to_string(m.bar) + " of " + std::to_string(m.width) + (m.grey ? " (grey)" : "");
}

// The program's start entries as this process reads them from the registry
// and the service manager.
std::optional<std::string> runValue() {
  RegKey key;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run", 0, KEY_QUERY_VALUE,
                    key.put()) != ERROR_SUCCESS)
    return std::nullopt;
  char value[1024] = {};
  DWORD size = sizeof value - 1, type = 0;
  if (RegQueryValueExA(key.get(), "VANTRRun", nullptr, &type, reinterpret_cast<BYTE*>(value), &size) != ERROR_SUCCESS)
    return std::nullopt;
  return std::string(value);
}

void deleteRunValue() {
  RegKey key;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run", 0, KEY_SET_VALUE,
                    key.put()) == ERROR_SUCCESS)
    RegDeleteValueA(key.get(), "VANTRRun");
}

struct ServiceConfig {
  DWORD type = 0, start = 0;
  std::string binary;
};
std::optional<ServiceConfig> serviceConfig() {
  ServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT));
  if (!manager) return std::nullopt;
  ServiceHandle service(OpenServiceA(manager.get(), "VANTRService", SERVICE_QUERY_CONFIG));
  if (!service) return std::nullopt;
  DWORD needed = 0;
  QueryServiceConfigA(service.get(), nullptr, 0, &needed);
  std::vector<char> buffer(needed + 1);
  auto* config = reinterpret_cast<QUERY_SERVICE_CONFIGA*>(buffer.data());
  if (!QueryServiceConfigA(service.get(), config, needed, &needed)) return std::nullopt;
  return ServiceConfig{config->dwServiceType, config->dwStartType,
                       config->lpBinaryPathName ? config->lpBinaryPathName : ""};
}

void deleteService() {
  ServiceHandle manager(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS));
  if (!manager) return;
  if (ServiceHandle service{OpenServiceA(manager.get(), "VANTRService", DELETE)}) DeleteService(service.get());
}

// The system's Program Files folder.
std::string programFiles() {
  return registryText(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Windows\\CurrentVersion", "ProgramFilesDir");
}

// Top-level dialog boxes of a process that are visible.
std::vector<HWND> visibleBoxesOf(DWORD pid) {
  struct Search {
    DWORD pid;
    std::vector<HWND> found;
  } search{pid, {}};
  EnumWindows(
      [](HWND window, LPARAM data) -> BOOL {
        auto* s = reinterpret_cast<Search*>(data);
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        char cls[64] = {};
        GetClassNameA(window, cls, sizeof cls);
        if (owner == s->pid && IsWindowVisible(window) && std::string(cls) == "#32770") s->found.push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

// What a dialog holds, one control a line: class, id, text and, for a
// combo box, its entries with the selected one marked.
std::string describeDialog(HWND dialog) {
  std::string out = "\"" + Box::textOf(dialog) + "\"\n";
  for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    char cls[64] = {};
    GetClassNameA(child, cls, sizeof cls);
    out += std::string("  ") + cls + " " + std::to_string(GetDlgCtrlID(child)) + " \"" + Box::textOf(child) + "\"";
    if (std::string(cls) == "ComboBox") {
      const int selected = static_cast<int>(SendMessageA(child, CB_GETCURSEL, 0, 0));
      const std::vector<std::string> entries = Box::comboEntries(child);
      for (size_t i = 0; i < entries.size(); ++i)
        out +=
            (static_cast<int>(i) == selected ? " [" : " ") + entries[i] + (static_cast<int>(i) == selected ? "]" : "");
    }
    out += "\n";
  }
  return out;
}

uint32_t u32At(const std::string& bytes, size_t offset) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + offset);
  return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<uint32_t>(p[3]) << 24);
}

class SettingsDialogs : public ProgramTest {
 protected:
  void SetUp() override {
    ProgramTest::SetUp();
    // What the run mode may add to the test bed's system, so that TearDown
    // removes exactly what the test made.
    m_hadRunValue = runValue().has_value();
    m_hadService = serviceConfig().has_value();
    m_hadInstallFolder = fileExists(installFolder());
    m_hadVendorFolder = fileExists(vendorFolder());
    m_outputs = outputNames();
    m_inputs = inputNames();
    for (const char* sink : kSinks) {
      ASSERT_GE(indexOf(m_outputs, sink), 0) << sink << " is missing from the test bed";
      ASSERT_GE(indexOf(m_inputs, monitorOf(sink)), 0) << monitorOf(sink) << " is missing from the test bed";
    }
  }
  void TearDown() override {
    ProgramTest::TearDown();
    if (!m_hadRunValue) deleteRunValue();
    if (!m_hadService) deleteService();
    // The folders the start entries' path made, if empty.
    if (!m_hadInstallFolder) RemoveDirectoryA(installFolder().c_str());
    if (!m_hadVendorFolder) RemoveDirectoryA(vendorFolder().c_str());
  }
  // Where the start entries point: the program's install folder under the
  // system's Program Files folder.
  static std::string vendorFolder() { return programFiles() + "\\Korvel Works"; }
  static std::string installFolder() { return vendorFolder() + "\\Vantorel"; }

  std::string settingsPath() const { return m_folder.file("settings.ini"); }
  void writeSettings(const std::string& text) const { std::ofstream(settingsPath(), std::ios::binary) << text; }
  std::string stored(const char* section, const char* key) const {
    char value[256] = {};
    GetPrivateProfileStringA(section, key, "<missing>", value, sizeof value, settingsPath().c_str());
    return value;
  }
  // Waits until the program's own thread has handled everything before this.
  static void settle(const MainWindow& window) { SendMessageA(window.dialog(), WM_NULL, 0, 0); }
  static DWORD processOf(const MainWindow& window) {
    DWORD pid = 0;
    GetWindowThreadProcessId(window.frame(), &pid);
    return pid;
  }
  // The level slider's text box: typing there sets the slider.
  static void typeTrim(const Box& box, const std::string& text) {
    SendMessageA(GetDlgItem(box.item(IDC_SET_AUTOTRIM), kTrimTextBox), WM_SETTEXT, 0,
                 reinterpret_cast<LPARAM>(text.c_str()));
  }
  static std::string trimText(const Box& box) {
    return Box::textOf(GetDlgItem(box.item(IDC_SET_AUTOTRIM), kTrimTextBox));
  }

  std::vector<std::string> m_outputs, m_inputs;
  bool m_hadRunValue = false, m_hadService = false, m_hadInstallFolder = false, m_hadVendorFolder = false;
};

TEST_F(SettingsDialogs, LockAsksFirstThenListsShowTheSystemsDevicesAndTheStoredChoice) {
  // Stored choices that are neither the first device nor the same number.
  const int record = static_cast<int>(m_inputs.size()) - 1, play = static_cast<int>(m_outputs.size()) - 2;
  ASSERT_GT(play, 0);
  writeSettings("[security]\npassword=Secret\nflags=1\n[settings]\nrecorddevice=" + std::to_string(record) +
                "\nplaydevice=" + std::to_string(play) + "\n");
  MainWindow window = start();
  window.command(CM_HARDWARE_SETTINGS);
  HWND prompt = nullptr;
  ASSERT_TRUE(waitFor([&] { return (prompt = findBox("Enter Password")) != nullptr; }));
  EXPECT_EQ(findBox(kSettingsTitle), nullptr) << "the lock comes first";
  SetDlgItemTextA(prompt, IDC_PASSWORD_EDIT, "secret");  // case counts
  PostMessageA(GetDlgItem(prompt, IDOK), BM_CLICK, 0, 0);
  ASSERT_TRUE(answerBox("Invalid Password", IDOK));
  EXPECT_EQ(findBox(kSettingsTitle), nullptr);
  SetDlgItemTextA(prompt, IDC_PASSWORD_EDIT, "Secret");
  PostMessageA(GetDlgItem(prompt, IDOK), BM_CLICK, 0, 0);

  Box box(kSettingsTitle);
  ASSERT_TRUE(box);
  EXPECT_EQ(findBox("Enter Password"), nullptr);
  EXPECT_EQ(box.entries(IDC_SET_RECORD_DEVICE), m_inputs);
  EXPECT_EQ(box.entries(IDC_SET_PLAY_DEVICE), m_outputs);
  EXPECT_EQ(box.selection(IDC_SET_RECORD_DEVICE), record);
  EXPECT_EQ(box.selection(IDC_SET_PLAY_DEVICE), play);
  // Nothing else stored: the program's defaults.
  EXPECT_EQ(box.text(IDC_SET_SAMPLE_RATE), "44100");
  EXPECT_TRUE(box.checked(IDC_SET_STEREO));
  EXPECT_FALSE(box.checked(IDC_SET_MONO));
  EXPECT_EQ(trimText(box), "-21dB");
  EXPECT_EQ(box.text(IDC_SET_LEVEL_CHECK), "Level Check");
  EXPECT_EQ(box.text(IDC_SET_TEST_TONE), "0dB Test Tone") << "before any stop, the template's text";
  ASSERT_TRUE(box.press(IDCANCEL));
}

TEST_F(SettingsDialogs, CancelWritesNothingAndOkWritesEveryControlThatThePlayerThenUses) {
  m_library.schedule("Show", "");
  m_library.tone("Show", 4);
  writeSettings("[settings]\nrecorddevice=0\nplaydevice=0\n");
  // A sink the program can play on (its channels are the devices 0..3) that
  // the old choice, device 0, does not reach: device 0 is the system's
  // default, which the test bed makes Vantorel_Out_A.
  std::string sink;
  for (const char* name : {kSinks[1], kSinks[2], kSinks[3]})
    if (sink.empty() && indexOf(m_outputs, name) >= 1 && indexOf(m_outputs, name) <= 3) sink = name;
  ASSERT_FALSE(sink.empty());
  const int play = indexOf(m_outputs, sink), record = indexOf(m_inputs, monitorOf(kSinks[1]));
  MainWindow window = start();
  const std::string before = fileText(settingsPath());
  const auto change = [&](const Box& box) {
    box.choose(IDC_SET_RECORD_DEVICE, record);
    box.choose(IDC_SET_PLAY_DEVICE, play);
    box.set(IDC_SET_SAMPLE_RATE, "22050");
    box.click(IDC_SET_MONO);
    typeTrim(box, "-30");
  };

  window.command(CM_HARDWARE_SETTINGS);
  {
    Box box(kSettingsTitle);
    ASSERT_TRUE(box);
    change(box);
    box.click(IDC_SET_RUN_ON_STARTUP);
    EXPECT_TRUE(box.checked(IDC_SET_MONO));
    EXPECT_FALSE(box.checked(IDC_SET_STEREO));
    ASSERT_TRUE(box.press(IDCANCEL));
  }
  settle(window);
  EXPECT_EQ(fileText(settingsPath()), before);
  EXPECT_FALSE(runValue()) << "Cancel leaves the run mode alone";

  window.command(CM_HARDWARE_SETTINGS);
  {
    Box box(kSettingsTitle);
    ASSERT_TRUE(box);
    change(box);
    EXPECT_EQ(trimText(box), "-30") << "what is typed stays as typed";
    ASSERT_TRUE(box.press(IDOK));
  }
  settle(window);
  const std::string written[][2] = {{"recorddevice", std::to_string(record)},
                                    {"playdevice", std::to_string(play)},
                                    {"recorddevicename", monitorOf(kSinks[1])},
                                    {"playdevicename", sink},
                                    {"samplerate", "22050"},
                                    {"stereo", "false"},
                                    {"autotrim", "-30dB"}};
  for (const auto& kv : written) EXPECT_EQ(stored("settings", kv[0].c_str()), kv[1]) << kv[0];

  // Opened again, the dialog shows what was stored; the level slider holds
  // a typed level within its range (-36 to +12 dB).
  const char* trims[][2] = {{"-50", "-36dB"}, {"40", "12dB"}, {"-7dB", "-7dB"}, {"x", "0dB"}};
  std::string shown = "-30dB";
  for (const auto& trim : trims) {
    window.command(CM_HARDWARE_SETTINGS);
    Box box(kSettingsTitle);
    ASSERT_TRUE(box);
    EXPECT_EQ(box.selection(IDC_SET_RECORD_DEVICE), record);
    EXPECT_EQ(box.selection(IDC_SET_PLAY_DEVICE), play);
    EXPECT_EQ(box.text(IDC_SET_SAMPLE_RATE), "22050");
    EXPECT_TRUE(box.checked(IDC_SET_MONO));
    EXPECT_FALSE(box.checked(IDC_SET_STEREO));
    EXPECT_EQ(trimText(box), shown);
    typeTrim(box, trim[0]);
    ASSERT_TRUE(box.press(IDOK));
    settle(window);
    EXPECT_EQ(stored("settings", "autotrim"), trim[1]) << "typed " << trim[0];
    shown = trim[1];
  }

  // Play starts the selected file on the new default output, which the
  // sink's monitor hears, and not on the old one.
  Capture monitor(indexOf(m_inputs, monitorOf(sink))), oldMonitor(indexOf(m_inputs, monitorOf(kSinks[0])));
  ASSERT_TRUE(monitor);
  ASSERT_TRUE(oldMonitor);
  window.select(IDC_FILES_LIST, 0);
  window.command(IDC_PLAY);
  HWND control = nullptr;
  ASSERT_TRUE(waitFor([&] { return (control = findBox("Vantorel Play Control")) != nullptr; }));
  PostMessageA(control, WM_COMMAND, IDCANCEL, 0);
  EXPECT_TRUE(waitFor([&] { return window.text(IDC_PLAY_STATUS) == "[play] Show"; })) << window.text(IDC_PLAY_STATUS);
  const std::string started = "\tplay " + std::to_string(play) + "\tplay start\tShow\t";
  EXPECT_TRUE(waitFor([&] { return m_library.asRun().find(started) != std::string::npos; })) << m_library.asRun();
  ToneAnalysis heard;
  ASSERT_TRUE(waitFor([&] { return heardTone(monitor, 0, 50, heard); }, 15000)) << "nothing heard on " << sink;
  EXPECT_NEAR(heard.hz, 1000, 1);
  // Vantorel_Out_A's monitor, started with the other, has by then captured a
  // second more than it, and heard no tone.
  const size_t caughtUp = monitor.frames() + kRate;
  ASSERT_TRUE(waitFor([&] { return oldMonitor.frames() >= caughtUp; }));
  EXPECT_FALSE(heardTone(oldMonitor, 0, 10, heard)) << "the file also played on " << kSinks[0];
}

TEST_F(SettingsDialogs, TestToneAndLevelCheckAreHeardAndShown) {
  MainWindow window = start();
  window.command(CM_HARDWARE_SETTINGS);
  Box box(kSettingsTitle);
  ASSERT_TRUE(box);
  HWND meter = box.item(IDC_SET_METER);
  // Before anything runs, the empty grey meter (once the new box has painted).
  MeterPicture idle;
  EXPECT_TRUE(waitFor([&] { return (idle = readMeter(meter)).grey; })) << describe(idle);
  ASSERT_GT(idle.width, 0);
  // The meter spans 48 dB; a level is a whole number of dB, so a reading may
  // sit a pixel-rounded decibel either side of the exact level.
  const auto barAt = [&](int level) { return meterLevelX(level, idle.width); };
  const int oneDb = barAt(1) - barAt(0);

  // The tone on Vantorel_Out_A: 1000 Hz at the program's 0 dB on the monitor,
  // and a full bar up to 0 dB on the meter.
  box.choose(IDC_SET_PLAY_DEVICE, indexOf(m_outputs, kSinks[0]));
  box.choose(IDC_SET_RECORD_DEVICE, indexOf(m_inputs, monitorOf(kSinks[1])));
  {
    Capture monitorA(indexOf(m_inputs, monitorOf(kSinks[0])));
    ASSERT_TRUE(monitorA);
    box.click(IDC_SET_TEST_TONE);
    EXPECT_EQ(box.text(IDC_SET_TEST_TONE), "Stop");
    MeterPicture shown;
    EXPECT_TRUE(waitFor([&] { return (shown = readMeter(meter)).bar == barAt(0); })) << describe(shown);
    ToneAnalysis tone;
    ASSERT_TRUE(waitFor([&] { return heardTone(monitorA, 0, 100, tone); }, 15000)) << "no tone on the monitor";
    EXPECT_NEAR(tone.hz, 1000, 1);
    EXPECT_NEAR(tone.decibels, 0, 0.5) << "the program's 0 dB: a 16-bit amplitude of 8192";

    const size_t stopped = monitorA.frames();
    box.click(IDC_SET_TEST_TONE);
    EXPECT_EQ(box.text(IDC_SET_TEST_TONE), "0db Test Tone");
    EXPECT_TRUE(waitFor([&] { return readMeter(meter).grey; })) << describe(readMeter(meter));
    EXPECT_TRUE(waitFor([&] { return endsInSilence(monitorA, stopped, 100); }, 15000)) << "the tone goes on after Stop";
  }

  // One at a time: each button stops the other first.
  box.click(IDC_SET_LEVEL_CHECK);
  EXPECT_EQ(box.text(IDC_SET_LEVEL_CHECK), "Stop");
  box.click(IDC_SET_TEST_TONE);
  EXPECT_EQ(box.text(IDC_SET_LEVEL_CHECK), "Level Check");
  EXPECT_EQ(box.text(IDC_SET_TEST_TONE), "Stop");
  box.click(IDC_SET_LEVEL_CHECK);
  EXPECT_EQ(box.text(IDC_SET_TEST_TONE), "0db Test Tone");
  EXPECT_EQ(box.text(IDC_SET_LEVEL_CHECK), "Stop");

  // The level check hears "Monitor of Vantorel_Out_B": silence first (a
  // black meter with no bar), then this process's tone at -9 dB.
  MeterPicture shown;
  EXPECT_TRUE(waitFor([&] { return !(shown = readMeter(meter)).grey && shown.bar == 0; }, 15000)) << describe(shown);
  constexpr int kLevel = -9;
  {
    TonePlayer tone(indexOf(m_outputs, kSinks[1]), kLevel, 20);
    ASSERT_TRUE(tone);
    EXPECT_TRUE(waitFor([&] { return (shown = readMeter(meter)).bar > barAt(-20); }, 15000)) << describe(shown);
    EXPECT_NEAR(shown.bar, barAt(kLevel), oneDb) << describe(shown) << ", " << kLevel << " dB at " << barAt(kLevel);
    tone.stop();
    EXPECT_TRUE(waitFor([&] { return (shown = readMeter(meter)).bar < barAt(kLevel - 10); }, 15000)) << describe(shown);
    EXPECT_FALSE(shown.grey);
  }
  box.click(IDC_SET_LEVEL_CHECK);
  EXPECT_EQ(box.text(IDC_SET_LEVEL_CHECK), "Level Check");
  EXPECT_TRUE(waitFor([&] { return readMeter(meter).grey; })) << describe(readMeter(meter));
  ASSERT_TRUE(box.press(IDCANCEL));
}

// The run mode against Wine's registry and service manager, from a system
// without either entry.
class RunMode : public SettingsDialogs {
 protected:
  void SetUp() override {
    // Left by an earlier run that did not finish.
    deleteRunValue();
    deleteService();
    SettingsDialogs::SetUp();
  }
};

TEST_F(RunMode, StartupAndServiceFollowTheBoxes) {
  const std::string program = installFolder() + "\\vantr.exe";
  MainWindow window = start();
  struct Step {
    const char* what;
    bool startupBefore, serviceBefore;  // the boxes as the dialog opens
    std::vector<int> clicks;
    bool startupAfter, serviceAfter;  // the entries after OK
  };
  const Step steps[] = {
      {"startup on", false, false, {IDC_SET_RUN_ON_STARTUP}, true, false},
      {"service on", true, false, {IDC_SET_RUN_AS_SERVICE}, true, true},
      {"startup off takes the service with it", true, true, {IDC_SET_RUN_ON_STARTUP}, false, false},
      {"a service alone is not made", false, false, {IDC_SET_RUN_AS_SERVICE}, false, false},
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    window.command(CM_HARDWARE_SETTINGS);
    Box box(kSettingsTitle);
    ASSERT_TRUE(box);
    EXPECT_EQ(box.checked(IDC_SET_RUN_ON_STARTUP), step.startupBefore);
    EXPECT_EQ(box.checked(IDC_SET_RUN_AS_SERVICE), step.serviceBefore);
    for (int id : step.clicks) box.click(id);
    ASSERT_TRUE(box.press(IDOK));
    settle(window);
    const std::optional<std::string> run = runValue();
    EXPECT_EQ(run.has_value(), step.startupAfter);
    if (run) {
      EXPECT_EQ(*run, program + " /logon");
    }
    const std::optional<ServiceConfig> service = serviceConfig();
    EXPECT_EQ(service.has_value(), step.serviceAfter);
    if (service) {
      EXPECT_EQ(service->type, static_cast<DWORD>(SERVICE_WIN32_OWN_PROCESS | SERVICE_INTERACTIVE_PROCESS));
      EXPECT_EQ(service->start, static_cast<DWORD>(SERVICE_AUTO_START));
      EXPECT_EQ(service->binary, program + " /service");
    }
  }
}

TEST_F(SettingsDialogs, AutomationSettingsEnableThePortAndWriteOnTheirOwnOk) {
  writeSettings("[auto]\nmode=0\ncomport=COM1\n");
  MainWindow window = start();
  window.command(CM_HARDWARE_SETTINGS);
  {
    Box settings(kSettingsTitle);
    ASSERT_TRUE(settings);
    settings.post(IDC_SET_AUTOMATION);
    Box box(kAutomationTitle);
    ASSERT_TRUE(box);
    EXPECT_EQ(GetWindow(box.hwnd(), GW_OWNER), settings.hwnd()) << "opened over the settings dialog";
    EXPECT_TRUE(box.checked(IDC_AUTO_NONE));
    EXPECT_FALSE(box.checked(IDC_AUTO_SERIAL));
    for (int id : {IDC_AUTO_PORT_LABEL, IDC_AUTO_PORT, IDC_AUTO_PORT_SETTINGS}) EXPECT_FALSE(box.enabled(id)) << id;
    EXPECT_EQ(box.entries(IDC_AUTO_PORT), (std::vector<std::string>{"COM1", "COM2", "COM3", "COM4"}));
    EXPECT_EQ(box.selection(IDC_AUTO_PORT), 0);
    box.click(IDC_AUTO_SERIAL);
    EXPECT_FALSE(box.checked(IDC_AUTO_NONE));
    for (int id : {IDC_AUTO_PORT_LABEL, IDC_AUTO_PORT, IDC_AUTO_PORT_SETTINGS}) EXPECT_TRUE(box.enabled(id)) << id;
    box.click(IDC_AUTO_NONE);
    for (int id : {IDC_AUTO_PORT_LABEL, IDC_AUTO_PORT, IDC_AUTO_PORT_SETTINGS}) EXPECT_FALSE(box.enabled(id)) << id;
    box.click(IDC_AUTO_SERIAL);
    box.choose(IDC_AUTO_PORT, 1);
    ASSERT_TRUE(box.press(IDOK));
    EXPECT_EQ(stored("auto", "mode"), "1");
    EXPECT_EQ(stored("auto", "comport"), "COM2");
    // The settings dialog cancelled keeps what Automation Settings wrote.
    ASSERT_TRUE(settings.press(IDCANCEL));
  }
  settle(window);
  EXPECT_EQ(stored("auto", "mode"), "1");
  EXPECT_EQ(stored("auto", "comport"), "COM2");

  // A mode that is neither none nor serial: both buttons clear, the port
  // disabled; Cancel writes nothing.
  writeSettings("[auto]\nmode=5\ncomport=COM3\n");
  const std::string before = fileText(settingsPath());
  window.command(CM_HARDWARE_SETTINGS);
  {
    Box settings(kSettingsTitle);
    ASSERT_TRUE(settings);
    settings.post(IDC_SET_AUTOMATION);
    Box box(kAutomationTitle);
    ASSERT_TRUE(box);
    EXPECT_FALSE(box.checked(IDC_AUTO_NONE));
    EXPECT_FALSE(box.checked(IDC_AUTO_SERIAL));
    EXPECT_FALSE(box.enabled(IDC_AUTO_PORT));
    EXPECT_EQ(box.selection(IDC_AUTO_PORT), 2);
    box.click(IDC_AUTO_SERIAL);
    ASSERT_TRUE(box.press(IDCANCEL));
    ASSERT_TRUE(settings.press(IDCANCEL));
  }
  settle(window);
  EXPECT_EQ(fileText(settingsPath()), before);
}

// "Com Port Settings..." shows the system's own dialog for the chosen port
// (Wine's: "Settings for COM1", with combo boxes for baud rate, parity, flow
// control, data bits and stop bits); its OK writes the port record, its
// Cancel nothing, and the program's serial reader puts the recorded rate on
// the line once the settings dialog's OK restarts it.
TEST_F(SettingsDialogs, PortSettingsShowTheSystemsDialogAndTheirRateReachesTheLine) {
  constexpr int kBaudCombo = 1026;  // in Wine's dialog
  const char* tty = std::getenv("VANTR_TTY_COM1");
  ASSERT_TRUE(tty) << "the test bed's COM1 (VANTR_TTY_COM1) is missing";
  KernelHandle line(CreateFileA(nativePath(tty).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(line);
  const std::string lineSpeed = "stty -F '" + testBedFolder() + "/ttyWINE1' speed";
  writeSettings("[auto]\nmode=1\ncomport=COM1\n");
  MainWindow window = start();
  // The reader answers a stop for a file that does not play with an as-run
  // line; one more of those says it reads the line.
  const std::string answer = "\tplay end\tReady\tautomation\tnot playing";
  const auto answers = [&] {
    const std::string log = m_library.asRun();
    size_t n = 0;
    for (size_t at = log.find(answer); at != std::string::npos; at = log.find(answer, at + 1)) ++n;
    return n;
  };
  const auto reading = [&] {
    const size_t before = answers();
    return waitFor(
        [&] {
          const std::string probe = "[VantorelPlayStop-Ready]";
          DWORD wrote = 0;
          WriteFile(line.get(), probe.data(), static_cast<DWORD>(probe.size()), &wrote, nullptr);
          return waitFor([&] { return answers() > before; }, 300);
        },
        15000);
  };
  ASSERT_TRUE(reading()) << "the program never read COM1";
  const std::optional<std::string> speedBefore = hostOutput(lineSpeed);
  ASSERT_TRUE(speedBefore);

  const DWORD pid = processOf(window);
  const std::string record = m_folder.file("settings.dcb");
  window.command(CM_HARDWARE_SETTINGS);
  Box settings(kSettingsTitle);
  ASSERT_TRUE(settings);
  settings.post(IDC_SET_AUTOMATION);
  Box automation(kAutomationTitle);
  ASSERT_TRUE(automation);
  EXPECT_TRUE(automation.checked(IDC_AUTO_SERIAL));
  ASSERT_EQ(automation.selection(IDC_AUTO_PORT), 0);
  // The system's dialog: a new visible dialog box of the program's process.
  const auto portDialog = [&] {
    HWND found = nullptr;
    const std::vector<HWND> known = visibleBoxesOf(pid);
    automation.post(IDC_AUTO_PORT_SETTINGS);
    waitFor([&] {
      for (HWND box : visibleBoxesOf(pid))
        if (std::find(known.begin(), known.end(), box) == known.end()) found = box;
      return found != nullptr;
    });
    return Box(found);
  };
  const auto chooseRate = [](const Box& port, const std::string& rate) {
    const std::vector<std::string> rates = port.entries(kBaudCombo);
    const int index = indexOf(rates, rate);
    port.choose(kBaudCombo, index);
    return index >= 0;
  };

  std::string shown;
  {
    Box port = portDialog();
    ASSERT_TRUE(port);
    EXPECT_EQ(Box::textOf(port.hwnd()), "Settings for COM1") << describeDialog(port.hwnd());
    shown = port.text(kBaudCombo);
    ASSERT_TRUE(chooseRate(port, "19200")) << describeDialog(port.hwnd());
    ASSERT_TRUE(port.press(IDCANCEL));
  }
  EXPECT_FALSE(fileExists(record)) << "Cancel writes no port record";

  // A rate that is neither on the line now nor what the dialog offers first.
  std::string rate;
  for (const char* candidate : {"19200", "4800", "2400"})
    if (rate.empty() && candidate != *speedBefore && candidate != shown) rate = candidate;
  {
    Box port = portDialog();
    ASSERT_TRUE(port);
    EXPECT_EQ(port.text(kBaudCombo), shown) << "the cancelled choice is gone";
    ASSERT_TRUE(chooseRate(port, rate)) << describeDialog(port.hwnd());
    ASSERT_TRUE(port.press(IDOK));
  }
  const std::string bytes = fileText(record);
  ASSERT_EQ(bytes.size(), 28u) << "one DCB, nothing else";
  EXPECT_EQ(u32At(bytes, 0), 28u) << "DCBlength";
  EXPECT_EQ(std::to_string(u32At(bytes, 4)), rate) << "BaudRate";
  {
    Box port = portDialog();
    ASSERT_TRUE(port);
    EXPECT_EQ(port.text(kBaudCombo), rate) << "the record is shown again";
    ASSERT_TRUE(chooseRate(port, "2400" == rate ? "4800" : "2400"));
    ASSERT_TRUE(port.press(IDCANCEL));
  }
  EXPECT_EQ(fileText(record), bytes) << "Cancel leaves the record as it was";

  ASSERT_TRUE(automation.press(IDOK));
  ASSERT_TRUE(settings.press(IDOK));
  settle(window);  // the reader has started again under the new settings
  ASSERT_TRUE(reading()) << "the program no longer reads COM1";
  EXPECT_EQ(hostOutput(lineSpeed).value_or("<no answer>"), rate) << "was " << *speedBefore;
  hostOutput("stty -F '" + testBedFolder() + "/ttyWINE1' " + *speedBefore);
}

}  // namespace
}  // namespace vantr::e2e

namespace vantr::e2e {
namespace {

// A device stored by number whose name now stands at another number (a USB
// device plugged in again) is found by its name: the program's default output
// at start, and a schedule item's own device at its start.
TEST_F(SettingsDialogs, DevicesThatMovedAreFoundByTheirNames) {
  // Two of the test bed's outputs among the four play channels: the stored
  // number points at the one, the stored name at the other.
  std::vector<int> channels;
  for (const char* sink : kSinks)
    if (const int at = indexOf(m_outputs, sink); at >= 0 && at < 4) channels.push_back(at);
  ASSERT_GE(channels.size(), 2u) << "the test bed must give two sinks among the first four outputs";
  const int storedNumber = channels[0], namedDevice = channels[1];
  const std::string name = m_outputs[static_cast<size_t>(namedDevice)];
  writeSettings("[settings]\nplaydevice=" + std::to_string(storedNumber) + "\nplaydevicename=" + name + "\n");
  m_library.tone("Show", 3);
  m_library.schedule("Show", "");
  const ScheduleTime due = toScheduleTime(systemClock().now() + 5);
  m_library.tone("Item", 3);
  m_library.schedule("Item", "[sch0]\ntype=1\nchan=" + std::to_string(storedNumber) + "\nchanname=" + name +
                                 "\ndate=" + FormatStoredDateTime(due) + "\n");
  MainWindow window = start();
  ASSERT_TRUE(window.dialog());

  const std::string moved =
      "device \"" + name + "\" moved from " + std::to_string(storedNumber) + " to " + std::to_string(namedDevice);
  const std::string onNamed = "\tplay " + std::to_string(namedDevice) + "\tplay start\t";
  EXPECT_NE(m_library.asRun().find("\tdevice\tplaydevice\tsettings\t" + moved), std::string::npos) << m_library.asRun();
  window.select(IDC_FILES_LIST, 1);  // Show
  window.command(IDC_PLAY);
  HWND control = nullptr;
  ASSERT_TRUE(waitFor([&] { return (control = findBox("Vantorel Play Control")) != nullptr; }));
  PostMessageA(control, WM_COMMAND, IDCANCEL, 0);
  EXPECT_TRUE(waitFor([&] { return m_library.asRun().find(onNamed + "Show\toperator") != std::string::npos; }))
      << m_library.asRun();
  // The item's own device, at its second.
  EXPECT_TRUE(
      waitFor([&] { return m_library.asRun().find(onNamed + "Item\tschedule Item sch0") != std::string::npos; }, 20000))
      << m_library.asRun();
  EXPECT_NE(m_library.asRun().find("\tdevice\tItem\tschedule Item sch0\t" + moved), std::string::npos)
      << m_library.asRun();
}

}  // namespace
}  // namespace vantr::e2e
