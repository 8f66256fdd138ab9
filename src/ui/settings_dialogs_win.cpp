#include "ui/settings_dialogs_win.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "audio/data/sample_format.h"
#include "audio/data/tone_source.h"
#include "audio/play/wave_out_win.h"
#include "audio/record/wave_in_win.h"
#include "automation/automation_reader.h"
#include "base/file.h"
#include "channels/channel_bank.h"
#include "install/system_integration_win.h"
#include "resource.h"
#include "store/settings.h"
#include "ui/db_controls_win.h"
#include "ui/library_dialogs_win.h"
#include "ui/small_dialogs_win.h"
#include "win/window_win.h"

namespace vantr {

namespace {

constexpr int8_t kAutoTrimMinimum = -36, kAutoTrimMaximum = 12, kAutoTrimDefault = -21;
// The level check records at this trim, into a sink tied to no file.
constexpr int8_t kLevelCheckTrim = -15;
constexpr char kToneText[] = "0db Test Tone";  // after a stop: with a small "b"
constexpr char kLevelText[] = "Level Check";

class Settings_Dialog : public FormDialog<Settings_Dialog>, private LSoundPlayerNotify, private RecorderListener {
 public:
  Settings_Dialog(HINSTANCE instance, const std::string& settingsFile)
      : m_instance(instance), m_settings(settingsFile) {}

  void open() {
    // The dialog's own recorder and player, for the level check and the tone.
    m_recorder = std::make_unique<LSoundRecorder_Window>(m_instance);
    m_player = std::make_unique<LSoundPlayer_Window>(m_instance);
    m_recorder->recorder().setListener(this, 0);
    m_player->player().setNotify(this, 0);

    fillComboBox(m_hwnd, IDC_SET_RECORD_DEVICE, inputDeviceNames(), readInt(m_settings, "settings", "recorddevice", 0));
    fillComboBox(m_hwnd, IDC_SET_PLAY_DEVICE, outputDeviceNames(), readInt(m_settings, "settings", "playdevice", 0));
    SetDlgItemTextA(m_hwnd, IDC_SET_SAMPLE_RATE, readText(m_settings, "settings", "samplerate", "44100").c_str());
    CheckRadioButton(m_hwnd, IDC_SET_MONO, IDC_SET_STEREO,
                     readBool(m_settings, "settings", "stereo", true) ? IDC_SET_STEREO : IDC_SET_MONO);
    HWND trim = GetDlgItem(m_hwnd, IDC_SET_AUTOTRIM);
    setDbEditRange(trim, kAutoTrimMinimum, kAutoTrimMaximum);
    setDbEditValue(trim, readLevel(m_settings, "settings", "autotrim", kAutoTrimDefault));
    CheckDlgButton(m_hwnd, IDC_SET_RUN_ON_STARTUP, isRunAtStartup() ? BST_CHECKED : BST_UNCHECKED);
    CheckDlgButton(m_hwnd, IDC_SET_RUN_AS_SERVICE, isRunAsService() ? BST_CHECKED : BST_UNCHECKED);
  }

  void command(int id) {
    switch (id) {
      case IDHELP: openHelp(m_hwnd, "settings.html"); break;
      case IDC_SET_AUTOMATION: AutomationSettingsDialog(m_hwnd, m_instance, m_settings); break;
      case IDC_SET_LEVEL_CHECK: levelCheck(); break;
      case IDC_SET_TEST_TONE: testTone(); break;
      default: break;
    }
  }
  // The level check and the tone end with the dialog, whichever way it closes.
  void closing() { stopBoth(); }

  void save() {
    const int record = comboSelection(m_hwnd, IDC_SET_RECORD_DEVICE),
              play = comboSelection(m_hwnd, IDC_SET_PLAY_DEVICE);
    writeInt(m_settings, "settings", "recorddevice", record);
    writeInt(m_settings, "settings", "playdevice", play);
    // The names go beside the numbers, so that a device that moves in the
    // system's order (a USB device plugged in again) can be found again.
    writeText(m_settings, "settings", "recorddevicename", comboText(m_hwnd, IDC_SET_RECORD_DEVICE));
    writeText(m_settings, "settings", "playdevicename", comboText(m_hwnd, IDC_SET_PLAY_DEVICE));
    writeText(m_settings, "settings", "samplerate",
              itemText(m_hwnd, IDC_SET_SAMPLE_RATE, static_cast<int>(kMaxSettingText)));
    writeBool(m_settings, "settings", "stereo", IsDlgButtonChecked(m_hwnd, IDC_SET_STEREO) == BST_CHECKED);
    writeLevel(m_settings, "settings", "autotrim", dbEditValue(GetDlgItem(m_hwnd, IDC_SET_AUTOTRIM)));

    const bool startup = IsDlgButtonChecked(m_hwnd, IDC_SET_RUN_ON_STARTUP) == BST_CHECKED;
    const bool service = IsDlgButtonChecked(m_hwnd, IDC_SET_RUN_AS_SERVICE) == BST_CHECKED;
    if (startup) {
      if (!isRunAtStartup()) addRunAtStartup();
      if (service && !isRunAsService()) addRunAsService(m_hwnd);
      if (!service && isRunAsService()) removeRunAsService(m_hwnd);
    } else {
      // Without starting with the system there is no service either.
      if (isRunAtStartup()) removeRunAtStartup();
      if (isRunAsService()) removeRunAsService(m_hwnd);
    }
  }

 private:
  bool checking() const { return m_recorder && m_recorder->recorder().state() != LSoundRecorder::State::Idle; }
  bool toning() const { return m_player && m_player->player().isOpen(); }

  void emptyMeter() { setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_SET_METER), nullptr, 0); }

  void stopLevelCheck() {
    if (checking()) m_recorder->recorder().Stop();
    SetDlgItemTextA(m_hwnd, IDC_SET_LEVEL_CHECK, kLevelText);
  }
  void stopTone() {
    if (toning()) m_player->player().Close();
    SetDlgItemTextA(m_hwnd, IDC_SET_TEST_TONE, kToneText);
  }
  void stopBoth() {
    if (!m_recorder) return;
    stopLevelCheck();
    stopTone();
    emptyMeter();
  }

  void levelCheck() {
    if (checking()) {
      stopLevelCheck();
      emptyMeter();
      return;
    }
    stopTone();
    m_recorder->recorder().setDevice(static_cast<int8_t>(comboSelection(m_hwnd, IDC_SET_RECORD_DEVICE)));
    const LSoundSink sink(new LSoundSinkBase(44100, LSF16::kFullScale, 1));
    if (m_recorder->Start(sink, 0, kLevelCheckTrim, kRecordSilenceLimit)) {
      SetDlgItemTextA(m_hwnd, IDC_SET_LEVEL_CHECK, "Stop");
    } else {
      emptyMeter();  // a device that cannot open shows as an empty meter
    }
  }

  void testTone() {
    if (toning()) {
      stopTone();
      emptyMeter();
      return;
    }
    stopLevelCheck();
    m_player->player().setDevice(static_cast<int8_t>(comboSelection(m_hwnd, IDC_SET_PLAY_DEVICE)));
    if (m_player->Open(LSoundSource(new LSRCSineTone), false)) {
      SetDlgItemTextA(m_hwnd, IDC_SET_TEST_TONE, "Stop");
      setDbDisplayLevel(GetDlgItem(m_hwnd, IDC_SET_METER), 0);
    } else {
      emptyMeter();
    }
  }

  // The recorder's levels drive the meter while it waits and records.
  void recordLevels(const LevelList& levels, uint32_t) override {
    setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_SET_METER), levels.data(), levels.size());
  }
  void recordingStarted(uint32_t) override {}
  void waitingForSound(uint32_t) override {}
  void recordingStopped(uint32_t) override {}
  void recordPosition(int32_t, uint32_t) override {}
  // The tone's own end (after six hours) leaves the dialog as a stop would.
  void stopped(uint32_t) override {
    SetDlgItemTextA(m_hwnd, IDC_SET_TEST_TONE, kToneText);
    emptyMeter();
  }
  void playing(uint32_t) override {}
  void cueStarted(uint32_t) override {}
  void paused(uint32_t) override {}
  void position(int32_t, uint32_t) override {}
  void levels(const LevelList&, uint32_t) override {}

  HINSTANCE m_instance;
  const std::string m_settings;
  std::unique_ptr<LSoundRecorder_Window> m_recorder;
  std::unique_ptr<LSoundPlayer_Window> m_player;
};

constexpr const char* kPorts[] = {"COM1", "COM2", "COM3", "COM4"};
constexpr int kMaxPortName = 20;

class AutomationSettings_Dialog : public FormDialog<AutomationSettings_Dialog> {
 public:
  explicit AutomationSettings_Dialog(const std::string& settingsFile) : m_settings(settingsFile) {}

  void command(int id) {
    if (id == IDC_AUTO_NONE || id == IDC_AUTO_SERIAL) enablePort();
    if (id == IDC_AUTO_PORT_SETTINGS) portSettings();
  }

  void open() {
    const int32_t mode = readInt(m_settings, "auto", "mode", 0);
    // A mode that is neither leaves both buttons clear.
    if (mode == 0 || mode == 1)
      CheckRadioButton(m_hwnd, IDC_AUTO_NONE, IDC_AUTO_SERIAL, mode ? IDC_AUTO_SERIAL : IDC_AUTO_NONE);
    HWND list = GetDlgItem(m_hwnd, IDC_AUTO_PORT);
    for (const char* port : kPorts) SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(port));
    const std::string port = readText(m_settings, "auto", "comport", "COM1");
    SendMessageA(list, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(port.c_str()));
    enablePort();
  }

  void enablePort() {
    const bool serial = IsDlgButtonChecked(m_hwnd, IDC_AUTO_SERIAL) == BST_CHECKED;
    for (int id : {IDC_AUTO_PORT_LABEL, IDC_AUTO_PORT, IDC_AUTO_PORT_SETTINGS})
      EnableWindow(GetDlgItem(m_hwnd, id), serial);
  }

  void save() {
    writeInt(m_settings, "auto", "mode", IsDlgButtonChecked(m_hwnd, IDC_AUTO_SERIAL) == BST_CHECKED ? 1 : 0);
    writeText(m_settings, "auto", "comport", comboText(m_hwnd, IDC_AUTO_PORT).substr(0, kMaxPortName));
  }

 private:
  // The port's own configuration dialog over the stored port record: the
  // system's defaults for the port, the record laid over them if it can be
  // read whole, and on OK the record written back (28 bytes, nothing else).
  void portSettings() {
    const std::string port = comboText(m_hwnd, IDC_AUTO_PORT);
    if (port.empty()) return;
    COMMCONFIG config{};
    config.dwSize = sizeof config;
    DWORD size = sizeof config;
    if (!GetDefaultCommConfigA(port.c_str(), &config, &size)) {
      config = COMMCONFIG{};
      config.dwSize = sizeof config;
      config.wVersion = 1;
      config.dcb.DCBlength = sizeof(DCB);
    }
    const std::string recordPath = portSettingsPath(m_settings);
    std::string record;
    if (readWholeFile(recordPath, record) && record.size() >= kPortSettingsSize)
      std::memcpy(&config.dcb, record.data(), kPortSettingsSize);
    if (!CommConfigDialogA(port.c_str(), m_hwnd, &config)) return;
    replaceFileContents(recordPath, std::string(reinterpret_cast<const char*>(&config.dcb), kPortSettingsSize));
  }

  const std::string m_settings;
};

}  // namespace

bool HardwareSettingsDialog(HWND owner, HINSTANCE instance, const std::string& settingsFile) {
  Settings_Dialog dialog(instance, settingsFile);
  return dialog.runForm(owner, instance, IDD_SETTINGS);
}

bool AutomationSettingsDialog(HWND owner, HINSTANCE instance, const std::string& settingsFile) {
  AutomationSettings_Dialog dialog(settingsFile);
  return dialog.runForm(owner, instance, IDD_AUTOMATION_SETTINGS);
}

}  // namespace vantr
