#include "ui/library_dialogs_win.h"

#include <shellapi.h>

#include <array>
#include <vector>

#include "audio/play/wave_out_win.h"
#include "base/clock.h"
#include "base/file.h"
#include "base/path.h"
#include "resource.h"
#include "schedule/file_properties.h"
#include "schedule/schedule_dialog.h"
#include "schedule/schedule_item.h"
#include "schedule/schedule_time.h"
#include "store/settings.h"
#include "ui/small_dialogs_win.h"
#include "win/window_win.h"

namespace vantr {

namespace {

// What a box's text is read with: more than any box's cut, so the cuts are
// made by the rules of the fields and not by the read.
constexpr int kReadChars = 1024;

class FileProperties_Dialog : public FormDialog<FileProperties_Dialog> {
 public:
  explicit FileProperties_Dialog(const std::string& scheduleFile) : m_path(scheduleFile) {}

  void command(int id) {
    if (id == IDHELP) openHelp(m_hwnd, "files.html");
    if (id == IDC_DEFAULT_FORMAT || id == IDC_SPECIFY_FORMAT) enableFormat();
  }

  void open() {
    const FileProperties p = readFileProperties(loadSettingsDocument(m_path));
    CheckRadioButton(m_hwnd, IDC_DEFAULT_FORMAT, IDC_SPECIFY_FORMAT,
                     p.defaultFormat ? IDC_DEFAULT_FORMAT : IDC_SPECIFY_FORMAT);
    SetDlgItemTextA(m_hwnd, IDC_SAMPLE_RATE, p.sampleRate.c_str());
    CheckRadioButton(m_hwnd, IDC_MONO, IDC_STEREO, p.stereo ? IDC_STEREO : IDC_MONO);
    CheckDlgButton(m_hwnd, IDC_AUTOTRIM, p.autoTrim ? BST_CHECKED : BST_UNCHECKED);
    const std::vector<std::string> modes(std::begin(kAutomationModeTexts), std::end(kAutomationModeTexts));
    // A stored number outside the list leaves the list without a selection,
    // and OK then writes the first entry's number.
    fillComboBox(m_hwnd, IDC_AUTOMATED_RECORD, modes, p.automatedRecord);
    fillComboBox(m_hwnd, IDC_AUTOMATED_PLAY, modes, p.automatedPlay);
    enableFormat();
  }

  // The rate and channels are read and written either way; they are greyed
  // while the program's format applies, to show that they do not count then.
  void enableFormat() {
    const bool own = IsDlgButtonChecked(m_hwnd, IDC_SPECIFY_FORMAT) == BST_CHECKED;
    for (int id : {IDC_SAMPLE_RATE_LABEL, IDC_SAMPLE_RATE, IDC_CHANNELS_LABEL, IDC_MONO, IDC_STEREO})
      EnableWindow(GetDlgItem(m_hwnd, id), own);
  }

  void save() {
    FileProperties p;
    p.defaultFormat = IsDlgButtonChecked(m_hwnd, IDC_DEFAULT_FORMAT) == BST_CHECKED;
    p.sampleRate = itemText(m_hwnd, IDC_SAMPLE_RATE, static_cast<int>(kMaxSettingText));
    p.stereo = IsDlgButtonChecked(m_hwnd, IDC_STEREO) == BST_CHECKED;
    p.autoTrim = IsDlgButtonChecked(m_hwnd, IDC_AUTOTRIM) == BST_CHECKED;
    p.automatedRecord = std::max(0, comboSelection(m_hwnd, IDC_AUTOMATED_RECORD));
    p.automatedPlay = std::max(0, comboSelection(m_hwnd, IDC_AUTOMATED_PLAY));
    writeFileProperties(m_path, p);
  }

 private:
  const std::string m_path;
};

struct KindDialog {
  int32_t kind;
  int resource;
};
constexpr KindDialog kKindDialogs[] = {
    {kPlayOnce, IDD_SCH_PLAY_ONCE},         {kPlayRegular, IDD_SCH_PLAY_REGULAR},
    {kRecordOnce, IDD_SCH_RECORD_ONCE},     {kRecordRegular, IDD_SCH_RECORD_REGULAR},
    {kScheduledFileDelete, IDD_SCH_DELETE},
};

// The day boxes and the "days" bit each sets (bit 0 is Sunday).
constexpr std::array<std::pair<int, int32_t>, 7> kDayBoxes = {{{IDC_SCH_MONDAY, 2},
                                                               {IDC_SCH_TUESDAY, 4},
                                                               {IDC_SCH_WEDNESDAY, 8},
                                                               {IDC_SCH_THURSDAY, 16},
                                                               {IDC_SCH_FRIDAY, 32},
                                                               {IDC_SCH_SATURDAY, 64},
                                                               {IDC_SCH_SUNDAY, 1}}};

class ScheduleItem_Dialog : public FormDialog<ScheduleItem_Dialog> {
 public:
  ScheduleItem_Dialog(int32_t kind, const std::string& scheduleFile, int slot)
      : m_kind(kind), m_path(scheduleFile), m_slot(slot) {}
  bool run(HWND owner, HINSTANCE instance) {
    for (const KindDialog& k : kKindDialogs)
      if (k.kind == m_kind) return runForm(owner, instance, k.resource);
    return false;
  }

  void open() {
    const ScheduleDialogFields f =
        scheduleDialogFields(loadSettingsDocument(m_path), m_slot, m_kind, systemClock().now(), localeDateOrder());
    SetDlgItemTextA(m_hwnd, IDC_SCH_FIRST, f.first.c_str());
    if (isRegularKind(m_kind)) {
      for (const auto& [box, bit] : kDayBoxes)
        CheckDlgButton(m_hwnd, box, (f.days & bit) ? BST_CHECKED : BST_UNCHECKED);
      SetDlgItemTextA(m_hwnd, IDC_SCH_COMMENCE, f.commence.c_str());
      SetDlgItemTextA(m_hwnd, IDC_SCH_EXPIRE, f.expire.c_str());
    } else {
      SetDlgItemTextA(m_hwnd, IDC_SCH_SECOND, f.second.c_str());
    }
    if (isRecordKind(m_kind)) SetDlgItemTextA(m_hwnd, IDC_SCH_DURATION, f.duration.c_str());
    if (hasChannel(m_kind)) {
      const bool record = isRecordKind(m_kind);
      std::vector<std::string> devices = record ? inputDeviceNames() : outputDeviceNames();
      devices.insert(devices.begin(), record ? "[Use Default Record Device]" : "[Use Default Play Device]");
      m_storedDevice = f.deviceIndex;
      fillComboBox(m_hwnd, IDC_SCH_DEVICE, devices, f.deviceIndex);
    }
  }

  void save() {
    ScheduleDialogFields f;
    f.first = itemText(m_hwnd, IDC_SCH_FIRST, kReadChars);
    if (isRegularKind(m_kind)) {
      for (const auto& [box, bit] : kDayBoxes)
        if (IsDlgButtonChecked(m_hwnd, box) == BST_CHECKED) f.days |= bit;
      f.commence = itemText(m_hwnd, IDC_SCH_COMMENCE, kReadChars);
      f.expire = itemText(m_hwnd, IDC_SCH_EXPIRE, kReadChars);
    } else {
      f.second = itemText(m_hwnd, IDC_SCH_SECOND, kReadChars);
    }
    if (isRecordKind(m_kind)) f.duration = itemText(m_hwnd, IDC_SCH_DURATION, kReadChars);
    // A stored device that is not in the list now (unplugged) shows no
    // selection; unless another is chosen, the item keeps it.
    if (hasChannel(m_kind)) {
      const int chosen = comboSelection(m_hwnd, IDC_SCH_DEVICE);
      f.deviceIndex = chosen >= 0 ? chosen : m_storedDevice;
    }
    applyScheduleDialog(m_path, m_slot, m_kind, f, systemClock().now(), localeDateOrder());
    // The chosen device's name goes beside its number, so that the item
    // finds its device again when the system numbers the devices anew.
    // A device kept because it is not in the list now keeps its name too.
    if (hasChannel(m_kind) && comboSelection(m_hwnd, IDC_SCH_DEVICE) >= 0) {
      const std::string name = f.deviceIndex > 0 ? comboText(m_hwnd, IDC_SCH_DEVICE) : std::string();
      if (name.empty())
        writeText(m_path, scheduleSection(m_slot), "channame", std::nullopt);
      else
        writeText(m_path, scheduleSection(m_slot), "channame", name);
      flushSettings(m_path);
    }
  }

 private:
  const int32_t m_kind;
  const std::string m_path;
  const int m_slot;
  int m_storedDevice = 0;
};

}  // namespace

bool FilePropertiesDialog(HWND owner, HINSTANCE instance, const std::string& scheduleFile) {
  FileProperties_Dialog dialog(scheduleFile);
  return dialog.runForm(owner, instance, IDD_FILE_PROPERTIES);
}

bool ScheduleItemDialog(HWND owner, HINSTANCE instance, int32_t kind, const std::string& scheduleFile, int slot) {
  ScheduleItem_Dialog dialog(kind, scheduleFile, slot);
  return dialog.run(owner, instance);
}

bool openHelp(HWND owner, const char* page) {
  char program[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, program, MAX_PATH);
  // WinHelp cannot open help files on Windows 10 and later; the HTML manual
  // is what the program ships.
  const std::string helpFile = pathBeside(program, "vantr.hlp");
  if (fileExists(helpFile) && WinHelpA(owner, helpFile.c_str(), HELP_CONTENTS, 0)) return true;
  const std::string manualPage = pathBeside(program, std::string("manual\\") + page);
  if (!fileExists(manualPage)) return false;
  return reinterpret_cast<INT_PTR>(ShellExecuteA(owner, "open", manualPage.c_str(), nullptr, nullptr, SW_SHOWNORMAL)) >
         32;
}

}  // namespace vantr
