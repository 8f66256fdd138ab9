#include "ui/main_dialog_win.h"

#include <commdlg.h>
#include <windowsx.h>

#include "automation/automation_dispatch.h"
#include "base/clock.h"
#include "base/file.h"
#include "base/path.h"
#include "base/process.h"
#include "base/text.h"
#include "base/time_position.h"
#include "channels/device_choice.h"
#include "resource.h"
#include "schedule/named_file.h"
#include "schedule/schedule_time.h"
#include "store/settings.h"
#include "ui/db_controls_win.h"
#include "ui/library_dialogs_win.h"
#include "ui/main_commands.h"
#include "ui/play_control_win.h"
#include "ui/print_schedules_win.h"
#include "ui/product_text.h"
#include "ui/settings_dialogs_win.h"
#include "win/messages.h"

namespace vantr {

namespace {

constexpr UINT_PTR kTimerInfo = 1;
constexpr UINT_PTR kTimerScheduler = 2;
constexpr UINT_PTR kTimerBanner = 9;
constexpr UINT kInfoFirstMs = 2000, kInfoMs = 7000, kBannerMs = 7000;
constexpr UINT kSchedulerAfterRebuildMs = 980, kSchedulerAfterWorkMs = 900, kSchedulerSameSecondMs = 100;

}  // namespace

MainDialog::MainDialog(HINSTANCE instance, const AppPaths& paths, AutomationReader* automation)
    : m_instance(instance),
      m_paths(paths),
      m_automation(automation),
      m_log(pathBeside(paths.settingsFile, "Logs"), systemClock()),
      m_banner(instance) {}

MainDialog::~MainDialog() {
  destroy();
  awaitDeviceListing();
}

void MainDialog::awaitDeviceListing() {
  // The window's own questions about the devices wait for the first listing:
  // Wine can hang a process whose threads list the devices for the first
  // time at once.
  if (m_deviceListing.joinable()) m_deviceListing.join();
}

bool MainDialog::create(HWND parent) {
  return CreateDialogParamA(m_instance, MAKEINTRESOURCEA(IDD_MAIN), parent, &MainDialog::StaticProc,
                            reinterpret_cast<LPARAM>(this)) != nullptr;
}

void MainDialog::destroy() {
  if (m_hwnd) DestroyWindow(m_hwnd);
}

bool MainDialog::exitAllowed() {
  return CheckPassword(m_hwnd, m_instance, m_paths.settingsFile, commandRule(CM_EXIT).lock);
}

INT_PTR MainDialog::HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam) {
  switch (msg) {
    case WM_INITDIALOG: OnInitDialog(); return TRUE;
    case WM_TIMER: OnTimer(wParam); return TRUE;
    case WM_COMMAND: OnCommand(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam)); return TRUE;
    case WM_INITMENUPOPUP: OnInitMenuPopup(reinterpret_cast<HMENU>(wParam)); return TRUE;
    case WM_CONTEXTMENU:
      OnContextMenu(reinterpret_cast<HWND>(wParam), POINT{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
      return TRUE;
    case kMsgSecondStart:
      if (m_banner.show(m_hwnd)) SetTimer(m_hwnd, kTimerBanner, kBannerMs, nullptr);
      return TRUE;
    case WM_DESTROY: OnDestroy(); return TRUE;
    case kMsgAutomationInput: OnAutomationInput(wParam, lParam); return TRUE;
    default: return FALSE;
  }
}

void MainDialog::OnInitDialog() {
  static constexpr struct {
    int control;
    const char* resource;
  } kButtons[] = {{IDC_PLAY, "PlayBitmap"}, {IDC_RECORD, "RecordBitmap"}, {IDC_STOP, "StopBitmap"}};
  for (size_t i = 0; i < 3; ++i) {
    // A missing bitmap leaves its button blank.
    m_buttonBitmaps[i].reset(
        static_cast<HBITMAP>(LoadImageA(m_instance, kButtons[i].resource, IMAGE_BITMAP, 0, 0, LR_LOADMAP3DCOLORS)));
    if (m_buttonBitmaps[i])
      SendDlgItemMessageA(m_hwnd, kButtons[i].control, BM_SETIMAGE, IMAGE_BITMAP,
                          reinterpret_cast<LPARAM>(m_buttonBitmaps[i].get()));
  }
  // Each meter lies inside its status line's rectangle: above it in the
  // z-order, the status line's painting (it clips its siblings above it)
  // never covers the meter.
  for (int meter : {IDC_RECORD_METER, IDC_PLAY_METER})
    SetWindowPos(GetDlgItem(m_hwnd, meter), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
  if (m_banner.show(m_hwnd)) SetTimer(m_hwnd, kTimerBanner, kBannerMs, nullptr);

  // The first question about the sound devices makes the system list them
  // all, which with many devices takes half a second or more; asked here on
  // a thread of its own, it is done before an item dialog lists them.
  m_deviceListing = std::thread([] {
    waveOutGetNumDevs();
    waveInGetNumDevs();
  });
  makeDirectory(m_paths.recordingsFolder);
  makeDirectory(m_paths.schedulesFolder);
  std::array<LSoundPlayer*, kChannels> players{};
  std::array<LSoundRecorder*, kChannels> recorders{};
  for (int c = 0; c < kChannels; ++c) {
    m_players[c] = std::make_unique<LSoundPlayer_Window>(m_instance);
    m_recorders[c] = std::make_unique<LSoundRecorder_Window>(m_instance);
    players[c] = &m_players[c]->player();
    recorders[c] = &m_recorders[c]->recorder();
  }
  m_bank = std::make_unique<ChannelBank>(
      ChannelFolders{m_paths.settingsFile, m_paths.recordingsFolder, m_paths.schedulesFolder}, players, recorders);
  m_bank->setObserver(this);
  m_bank->setLog(&m_log);
  checkDefaultDevices();

  SetTimer(m_hwnd, kTimerInfo, kInfoFirstMs, nullptr);
  rebuildSchedules("", -1);
  refreshStatus();

  // Last: the serial line's commands come in only once there is a bank to
  // carry them out.
  if (m_automation) {
    m_automationTarget = std::make_unique<WindowAutomationTarget>(m_hwnd);
    m_automation->setTarget(m_automationTarget.get());
  }
}

void MainDialog::OnDestroy() {
  // No command from the serial line after this; those still queued are
  // dropped, their atoms deleted.
  if (m_automation) m_automation->setTarget(nullptr);
  m_automationTarget.reset();
  for (MSG queued; PeekMessageA(&queued, m_hwnd, kMsgAutomationInput, kMsgAutomationInput, PM_REMOVE);) {
    std::string name;
    takeAutomationName(queued.lParam, name);
  }
  // Every timer stops with the window; the channels stop here, while their
  // engines' windows still exist to report the ends.
  if (m_bank) m_bank->stopAll();
  m_banner.close();
}

void MainDialog::OnAutomationInput(WPARAM command, LPARAM atom) {
  std::string name;
  if (!takeAutomationName(atom, name) || !m_bank) return;
  RunAutomationCommand(*m_bank, ChannelFolders{m_paths.settingsFile, m_paths.recordingsFolder, m_paths.schedulesFolder},
                       static_cast<int>(command), name, &m_log);
  refreshStatus();
}

void MainDialog::automationSettingsChanged() {
  if (m_automation) m_automation->restart();
}

void MainDialog::OnTimer(UINT_PTR id) {
  // Every timer is one-shot: its handler sets it again.
  KillTimer(m_hwnd, id);
  switch (id) {
    case kTimerInfo:
      SetDlgItemTextA(m_hwnd, IDC_INFO_LINE, infoLine(m_infoLine).c_str());
      if (++m_infoLine == kInfoLines) {
        m_infoLine = 0;
        refreshStatus();
      }
      SetTimer(m_hwnd, kTimerInfo, kInfoMs, nullptr);
      break;
    case kTimerScheduler: tick(); break;
    case kTimerBanner: m_banner.close(); break;
    default: break;
  }
}

// ---------------------------------------------------------------- scheduler

void MainDialog::tick() {
  const bool worked = SchedulerTick(m_table, systemClock().now(), *this);
  // A rebuild during the tick (a scheduled delete) has set the timer already;
  // setting it again only moves its moment.
  SetTimer(m_hwnd, kTimerScheduler, worked ? kSchedulerAfterWorkMs : kSchedulerSameSecondMs, nullptr);
}

void MainDialog::starting(const ScheduleEntry& entry) {
  m_dueCause = "schedule " + std::string(entry.fileName) + " sch" + std::to_string(entry.slot);
  checkDefaultDevices();
  // An item's own device is checked against the name its dialog stored.
  m_dueChannel.reset();
  if (entry.channel == kDefaultChannelByte || !isKnownKind(entry.kind)) return;
  const std::string path = scheduleFilePath(m_paths.schedulesFolder, entry.fileName);
  const std::string name = readText(loadSettingsDocument(path), scheduleSection(entry.slot), "channame", "");
  if (name.empty()) return;
  const bool record = isRecordKind(entry.kind);
  awaitDeviceListing();
  const DeviceChoice choice = chooseDevice(entry.channel, name, record ? inputDeviceNames() : outputDeviceNames());
  if (!choice.note.empty()) m_log.append(AsRunAction::Device, "-", entry.fileName, m_dueCause, choice.note);
  m_dueChannel = choice.device;
}

void MainDialog::play(const std::string& fileName, int channel) {
  m_bank->PlayFile(fileName, m_dueChannel.value_or(channel), m_dueCause);
}

void MainDialog::record(const std::string& fileName, int channel, int32_t duration) {
  m_bank->StartRecord(fileName, m_dueChannel.value_or(channel), duration, m_dueCause);
}

void MainDialog::checkDefaultDevices() {
  // The system is asked for its devices only where names were stored: asking
  // costs time with many devices, and older settings have no names.
  const IniDocument settings = loadSettingsDocument(m_paths.settingsFile);
  if (readText(settings, "settings", "playdevicename", "").empty() &&
      readText(settings, "settings", "recorddevicename", "").empty()) {
    m_bank->readDefaultChannels();
    return;
  }
  awaitDeviceListing();
  m_bank->readDefaultChannels(outputDeviceNames(), inputDeviceNames());
}

void MainDialog::deleteFile(const std::string& fileName) {
  deleteNamedFile(*m_bank, m_paths.schedulesFolder, m_paths.recordingsFolder, fileName);
  m_log.append(AsRunAction::Delete, "-", fileName, m_dueCause, "done");
}

void MainDialog::rebuild() { rebuildSchedules("", -1); }

void MainDialog::showTime(int64_t second) {
  SetDlgItemTextA(m_hwnd, IDC_CLOCK, FormatTime(static_cast<ScheduleTime>(second)).c_str());
}

// ---------------------------------------------------------------- lists

void MainDialog::rebuildSchedules(const std::string& select, int slot) {
  KillTimer(m_hwnd, kTimerScheduler);
  HWND files = GetDlgItem(m_hwnd, IDC_FILES_LIST);
  SendMessageA(files, WM_SETREDRAW, FALSE, 0);
  SendMessageA(files, LB_RESETCONTENT, 0, 0);
  const std::vector<std::string> names = RebuildSchedules(m_table, m_paths.schedulesFolder, systemClock().now());
  for (const std::string& name : names) SendMessageA(files, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
  LRESULT index = select.empty() ? LB_ERR
                                 : SendMessageA(files, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                                reinterpret_cast<LPARAM>(select.c_str()));
  if (index == LB_ERR) index = 0;
  if (!names.empty()) SendMessageA(files, LB_SETSEL, TRUE, index);
  SendMessageA(files, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(files, nullptr, TRUE);
  fillScheduleList(slot);
  SetTimer(m_hwnd, kTimerScheduler, kSchedulerAfterRebuildMs, nullptr);
}

void MainDialog::fillScheduleList(int slot) {
  HWND list = GetDlgItem(m_hwnd, IDC_SCHEDULE_LIST);
  SendMessageA(list, WM_SETREDRAW, FALSE, 0);
  SendMessageA(list, LB_RESETCONTENT, 0, 0);
  const std::vector<std::string> files = selectedFiles();
  if (!files.empty()) {
    const IniDocument doc = loadSettingsDocument(scheduleFilePath(m_paths.schedulesFolder, files.front()));
    for (const ScheduleListLine& line : FillScheduleList(doc, localeDateOrder())) {
      const LRESULT at = SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.text.c_str()));
      if (at < 0) continue;
      SendMessageA(list, LB_SETITEMDATA, at, line.slot);
      if (line.slot == slot) SendMessageA(list, LB_SETSEL, TRUE, at);
    }
  }
  SendMessageA(list, WM_SETREDRAW, TRUE, 0);
  InvalidateRect(list, nullptr, TRUE);
  refreshStatus();
}

namespace {
std::vector<int> selectedIndexes(HWND list) {
  const LRESULT count = SendMessageA(list, LB_GETSELCOUNT, 0, 0);
  if (count <= 0) return {};
  std::vector<int> indexes(static_cast<size_t>(count));
  const LRESULT got = SendMessageA(list, LB_GETSELITEMS, count, reinterpret_cast<LPARAM>(indexes.data()));
  indexes.resize(got > 0 ? static_cast<size_t>(got) : 0);
  return indexes;
}

std::string lineText(HWND list, int index) {
  const LRESULT length = SendMessageA(list, LB_GETTEXTLEN, index, 0);
  if (length <= 0) return std::string();
  std::string text(static_cast<size_t>(length) + 1, '\0');
  SendMessageA(list, LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<size_t>(length));
  return text;
}
}  // namespace

std::vector<std::string> MainDialog::selectedFiles() const {
  HWND list = GetDlgItem(m_hwnd, IDC_FILES_LIST);
  std::vector<std::string> names;
  for (int index : selectedIndexes(list)) names.push_back(lineText(list, index));
  return names;
}

std::vector<std::string> MainDialog::allFiles() const {
  HWND list = GetDlgItem(m_hwnd, IDC_FILES_LIST);
  std::vector<std::string> names;
  const LRESULT count = SendMessageA(list, LB_GETCOUNT, 0, 0);
  for (int index = 0; index < count; ++index) names.push_back(lineText(list, index));
  return names;
}

std::vector<int> MainDialog::selectedSlots() const {
  HWND list = GetDlgItem(m_hwnd, IDC_SCHEDULE_LIST);
  std::vector<int> slots;
  for (int index : selectedIndexes(list))
    slots.push_back(static_cast<int>(SendMessageA(list, LB_GETITEMDATA, index, 0)));
  return slots;
}

bool MainDialog::fileSelected() const { return SendDlgItemMessageA(m_hwnd, IDC_FILES_LIST, LB_GETSELCOUNT, 0, 0) > 0; }
bool MainDialog::itemSelected() const {
  return SendDlgItemMessageA(m_hwnd, IDC_SCHEDULE_LIST, LB_GETSELCOUNT, 0, 0) > 0;
}

// ---------------------------------------------------------------- status

void MainDialog::refreshStatus() {
  if (!m_bank) return;
  SetDlgItemTextA(m_hwnd, IDC_RECORD_STATUS, m_bank->recordStatus().c_str());
  SetDlgItemTextA(m_hwnd, IDC_PLAY_STATUS, m_bank->playStatus().c_str());
  setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_RECORD_METER), nullptr, 0);
  setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_PLAY_METER), nullptr, 0);
  m_bank->movePendingRecording();
  // The buttons follow the first selected file: Play and Record while it is
  // idle, Stop while it plays or records.
  const std::vector<std::string> files = selectedFiles();
  const bool any = !files.empty();
  const bool busy = any && (m_bank->isPlaying(files.front()) || m_bank->isRecording(files.front()));
  EnableWindow(GetDlgItem(m_hwnd, IDC_PLAY), any && !busy);
  EnableWindow(GetDlgItem(m_hwnd, IDC_RECORD), any && !busy);
  EnableWindow(GetDlgItem(m_hwnd, IDC_STOP), m_bank->busyCount() > 0);
}

void MainDialog::channelsChanged() { refreshStatus(); }

void MainDialog::playLevels(const LevelList& levels) {
  setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_PLAY_METER), levels.data(), static_cast<int>(levels.size()));
}

void MainDialog::recordLevels(const LevelList& levels) {
  setDbDisplayLevels(GetDlgItem(m_hwnd, IDC_RECORD_METER), levels.data(), static_cast<int>(levels.size()));
}

// ---------------------------------------------------------------- commands

void MainDialog::OnCommand(UINT id, UINT code, HWND control) {
  if (id == IDC_FILES_LIST && control) {
    if (code == LBN_SELCHANGE) fillScheduleList(-1);
    if (code == LBN_DBLCLK) runCommand(CM_FILE_PROPERTIES);
    return;
  }
  if (id == IDC_SCHEDULE_LIST && control) {
    if (code == LBN_DBLCLK) runCommand(CM_EDIT_SCHEDULE_ITEM);
    return;
  }
  // Enter and Esc alone never close the work window.
  if (id == IDOK || id == IDCANCEL) return;
  runCommand(id);
}

bool MainDialog::allowed(UINT id) {
  const CommandRule rule = commandRule(id);
  if (!commandEnabled(id, fileSelected(), itemSelected())) return false;
  return rule.lock == 0 || CheckPassword(m_hwnd, m_instance, m_paths.settingsFile, rule.lock);
}

namespace {
// The kind of item each New Schedule Item command makes.
int32_t newItemKind(UINT id) {
  switch (id) {
    case CM_PLAY_ONCE: return kPlayOnce;
    case CM_PLAY_REGULAR: return kPlayRegular;
    case CM_RECORD_ONCE: return kRecordOnce;
    case CM_RECORD_REGULAR: return kRecordRegular;
    case CM_SCHEDULED_DELETE: return kScheduledFileDelete;
    default: return 0;
  }
}
}  // namespace

void MainDialog::runCommand(UINT id) {
  switch (id) {
    case IDC_PLAY:
    case IDC_RECORD:
    case IDC_STOP:
    case CM_PLAY_CONTROL:
    case CM_NEW_FILE:
    case CM_RENAME_FILE:
    case CM_DELETE_FILE:
    case CM_FILE_PROPERTIES:
    case CM_LOAD_WAV_FILE:
    case CM_PLAY_ONCE:
    case CM_PLAY_REGULAR:
    case CM_RECORD_ONCE:
    case CM_RECORD_REGULAR:
    case CM_SCHEDULED_DELETE:
    case CM_EDIT_SCHEDULE_ITEM:
    case CM_DELETE_SCHEDULE_ITEM:
    case CM_HARDWARE_SETTINGS:
    case CM_PASSWORD_SETTINGS:
    case CM_PRINT_SCHEDULES:
    case CM_HELP_CONTENTS:
    case CM_WEB_FIRST: break;
    default:
      // The commands whose dialogs come later still ask for their lock.
      allowed(id);
      return;
  }
  if (!allowed(id)) return;
  // The settings and the schedule item dialogs list the devices.
  awaitDeviceListing();
  switch (id) {
    case IDC_PLAY: playSelected(); break;
    case IDC_RECORD: recordSelected(); break;
    case IDC_STOP: stopCommand(); break;
    case CM_PLAY_CONTROL:
      LPlayControlDlg(m_hwnd, m_instance, *m_bank);
      refreshStatus();
      break;
    case CM_NEW_FILE: newFile(); break;
    case CM_RENAME_FILE: renameFile(); break;
    case CM_DELETE_FILE: deleteFiles(); break;
    case CM_FILE_PROPERTIES: fileProperties(); break;
    case CM_LOAD_WAV_FILE: loadWavFile(); break;
    case CM_EDIT_SCHEDULE_ITEM: editScheduleItems(); break;
    case CM_DELETE_SCHEDULE_ITEM: deleteScheduleItems(); break;
    case CM_HARDWARE_SETTINGS:
      if (HardwareSettingsDialog(m_hwnd, m_instance, m_paths.settingsFile)) {
        checkDefaultDevices();
        automationSettingsChanged();
      }
      break;
    case CM_PASSWORD_SETTINGS: PasswordSettingsDialog(m_hwnd, m_instance, m_paths.settingsFile); break;
    case CM_PRINT_SCHEDULES: PrintSchedules(); break;
    case CM_HELP_CONTENTS: openHelp(m_hwnd); break;
    // The Internet Resources entries open pages of the manual.
    case CM_WEB_FIRST: openHelp(m_hwnd, "home.html"); break;
    default:
      if (newItemKind(id)) newScheduleItem(newItemKind(id));
      break;
  }
}

void MainDialog::playSelected() {
  const std::vector<std::string> files = selectedFiles();
  if (files.empty()) return;
  m_bank->PlayFile(files.front(), -1, "operator");
  // The operator takes hold of what was just started.
  LPlayControlDlg(m_hwnd, m_instance, *m_bank);
  refreshStatus();
}

void MainDialog::recordSelected() {
  const std::vector<std::string> files = selectedFiles();
  if (files.empty()) return;
  std::string text = readText(m_paths.settingsFile, "settings", "recordtime", "0:30:00");
  if (!LTextEditDlg(m_hwnd, m_instance, "Enter Record Duration", text)) return;
  m_bank->StartRecord(files.front(), -1, parsePosition(text), "operator");
  writeText(m_paths.settingsFile, "settings", "recordtime", text);
}

void MainDialog::stopCommand() {
  struct Busy {
    bool play;
    int channel;
  };
  std::vector<Busy> busy;
  std::vector<std::string> lines;
  for (int c = 0; c < kChannels; ++c)
    if (!m_bank->playName(c).empty()) {
      busy.push_back({true, c});
      lines.push_back("[PLAYING] " + m_bank->playName(c));
    }
  for (int c = 0; c < kChannels; ++c)
    if (!m_bank->recordName(c).empty()) {
      busy.push_back({false, c});
      lines.push_back("[RECORD] " + m_bank->recordName(c));
    }
  if (busy.empty()) return;
  if (busy.size() == 1) {
    m_bank->stopAll();
    return;
  }
  for (int chosen : StopDialog(m_hwnd, m_instance, lines)) {
    const Busy& b = busy[static_cast<size_t>(chosen)];
    if (b.play)
      m_bank->stopPlay(b.channel);
    else
      m_bank->stopRecord(b.channel);
  }
}

void MainDialog::deleteFiles() {
  if (MessageBoxA(m_hwnd, "Are you sure you want to delete the selected file(s)?", "Confirm Delete",
                  MB_YESNO | MB_ICONEXCLAMATION) != IDYES)
    return;
  for (const std::string& name : selectedFiles()) {
    deleteNamedFile(*m_bank, m_paths.schedulesFolder, m_paths.recordingsFolder, name);
    m_log.append(AsRunAction::Delete, "-", name, "operator", "done");
  }
  rebuildSchedules("", -1);
}

// ---------------------------------------------------------------- the library

namespace {
constexpr char kNameTitle[] = "New File Name";
void nameUsedMessage(HWND owner) {
  MessageBoxA(owner, "That name is already used, please enter a different name", "Name used",
              MB_OK | MB_ICONEXCLAMATION);
}
}  // namespace

void MainDialog::newFile() {
  std::string name = "Untitled File";
  for (;;) {
    if (!LTextEditDlg(m_hwnd, m_instance, kNameTitle, name)) return;
    if (!nameUsed(allFiles(), name)) break;
    nameUsedMessage(m_hwnd);
  }
  // A name that cannot name a file in the folders (or that the scheduler
  // would cut) makes nothing; the list shows what is on disk.
  if (isLibraryName(name)) {
    FilePropertiesDialog(m_hwnd, m_instance, scheduleFilePath(m_paths.schedulesFolder, name));
  }
  rebuildSchedules(name, -1);
}

void MainDialog::renameFile() {
  const std::vector<std::string> files = selectedFiles();
  if (files.empty()) return;
  const std::string old = files.front();
  std::string name = old;
  for (;;) {
    if (!LTextEditDlg(m_hwnd, m_instance, kNameTitle, name)) return;
    if (name == old) return;
    // Only the case changes: the file may take its own name.
    if (equalsNoCase(name, old) || !nameUsed(allFiles(), name)) break;
    nameUsedMessage(m_hwnd);
  }
  if (isLibraryName(name)) {
    m_bank->stopEveryUserOf(old);
    renameNamedFile(m_paths.schedulesFolder, m_paths.recordingsFolder, old, name);
  }
  rebuildSchedules(name, -1);
}

void MainDialog::fileProperties() {
  const std::vector<std::string> files = selectedFiles();
  if (files.empty()) return;
  const std::string path = scheduleFilePath(m_paths.schedulesFolder, files.front());
  if (path.empty()) return;
  if (FilePropertiesDialog(m_hwnd, m_instance, path)) flushSettings(path);
}

void MainDialog::loadWavFile() {
  char chosen[MAX_PATH] = {};
  OPENFILENAMEA ofn{};
  ofn.lStructSize = sizeof ofn;
  ofn.hwndOwner = m_hwnd;
  ofn.lpstrFilter = "Wav Files\0*.wav\0";
  ofn.lpstrFile = chosen;
  ofn.nMaxFile = MAX_PATH;
  ofn.lpstrTitle = "Load New Wav File";
  ofn.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY;
  if (!GetOpenFileNameA(&ofn)) return;
  const std::string name = nameOfChosenFile(chosen);
  if (!isLibraryName(name)) return;
  const std::string audio = audioFilePath(m_paths.recordingsFolder, name);
  const bool replacing = fileExists(audio);
  if (replacing &&
      MessageBoxA(m_hwnd, "A file with that file name already exists. Are you sure you want to overwrite it?",
                  "Confirm Overwrite", MB_YESNO | MB_ICONEXCLAMATION) != IDYES)
    return;
  // The copy waits beside the audio until the properties are confirmed, so
  // that Cancel leaves no new audio behind and never costs a file's old
  // recording; taken as it is, whatever it holds (the player reads the header).
  const std::string staged = temporaryNameBeside(audio);
  const bool copied = copyFileReplacing(chosen, staged);
  const std::string schedule = scheduleFilePath(m_paths.schedulesFolder, name);
  const bool confirmed = FilePropertiesDialog(m_hwnd, m_instance, schedule);
  flushSettings(schedule);
  if (!confirmed) {
    removeFile(staged);
    return;
  }
  if (copied) {
    // The file's channels let go of the old audio first.
    if (replacing) m_bank->stopEveryUserOf(name);
    removeFile(audio);
    renameReplacing(staged, audio);
  }
  rebuildSchedules(name, -1);
}

void MainDialog::newScheduleItem(int32_t kind) {
  const std::vector<std::string> files = selectedFiles();
  if (files.empty()) return;
  const std::string path = scheduleFilePath(m_paths.schedulesFolder, files.front());
  if (path.empty()) return;
  const int slot = NewScheduleItem(path, kind);
  if (slot < 0) return;
  if (!ScheduleItemDialog(m_hwnd, m_instance, kind, path, slot)) {
    DeleteScheduleItems(path, {slot});
    return;
  }
  flushSettings(path);
  rebuildSchedules(files.front(), slot);
}

void MainDialog::editScheduleItems() {
  const std::vector<std::string> files = selectedFiles();
  if (files.empty()) return;
  const std::string path = scheduleFilePath(m_paths.schedulesFolder, files.front());
  if (path.empty()) return;
  for (const int slot : selectedSlots()) {
    const int32_t kind = readScheduleType(loadSettingsDocument(path), slot);
    if (!isKnownKind(kind) || !ScheduleItemDialog(m_hwnd, m_instance, kind, path, slot)) continue;
    flushSettings(path);
    rebuildSchedules(files.front(), slot);
  }
}

void MainDialog::deleteScheduleItems() {
  const std::vector<std::string> files = selectedFiles();
  if (files.empty()) return;
  if (MessageBoxA(m_hwnd, "Are you sure you want to delete the selected schedule item(s)?", "Confirm Delete",
                  MB_YESNO | MB_ICONWARNING) != IDYES)
    return;
  DeleteScheduleItems(scheduleFilePath(m_paths.schedulesFolder, files.front()), selectedSlots());
  rebuildSchedules(files.front(), -1);
}

// ---------------------------------------------------------------- menus and keys

void MainDialog::PrintSchedules() {
  HDC printer = choosePrinter(m_hwnd);
  if (!printer) return;
  // Every file is printed as the window shows it: each in turn is selected
  // alone and its schedule list refilled, and the selection stays on the last.
  HWND list = GetDlgItem(m_hwnd, IDC_FILES_LIST);
  std::vector<PrintFile> files;
  const LRESULT count = SendMessageA(list, LB_GETCOUNT, 0, 0);
  for (int index = 0; index < count; ++index) {
    SendMessageA(list, LB_SETSEL, FALSE, -1);
    SendMessageA(list, LB_SETSEL, TRUE, index);
    fillScheduleList(-1);
    PrintFile file{lineText(list, index), {}};
    HWND schedule = GetDlgItem(m_hwnd, IDC_SCHEDULE_LIST);
    const LRESULT lines = SendMessageA(schedule, LB_GETCOUNT, 0, 0);
    for (int line = 0; line < lines; ++line) file.lines.push_back(lineText(schedule, line));
    files.push_back(std::move(file));
  }
  printOnPrinter(printer, files);
}

void MainDialog::OnInitMenuPopup(HMENU menu) {
  const bool file = fileSelected(), item = itemSelected();
  for (int i = 0, n = GetMenuItemCount(menu); i < n; ++i) {
    const UINT id = GetMenuItemID(menu, i);
    if (id == 0 || id == static_cast<UINT>(-1)) continue;  // separators and sub-menus
    EnableMenuItem(menu, i, MF_BYPOSITION | (commandEnabled(id, file, item) ? MF_ENABLED : MF_GRAYED));
  }
}

void MainDialog::OnContextMenu(HWND list, POINT at) {
  const int id = GetDlgCtrlID(list);
  if (id != IDC_FILES_LIST && id != IDC_SCHEDULE_LIST) return;
  // The item under the cursor is selected first, as a left click would.
  POINT client = at;
  ScreenToClient(list, &client);
  const LRESULT hit = SendMessageA(list, LB_ITEMFROMPOINT, 0, MAKELPARAM(client.x, client.y));
  if (HIWORD(hit) == 0) {
    SendMessageA(list, LB_SETSEL, FALSE, -1);
    SendMessageA(list, LB_SETSEL, TRUE, LOWORD(hit));
    if (id == IDC_FILES_LIST) fillScheduleList(-1);
  }
  OwnedMenu menu(LoadMenuA(m_instance, MAKEINTRESOURCEA(id == IDC_FILES_LIST ? IDM_FILES_POPUP : IDM_SCHEDULE_POPUP)));
  if (!menu) return;
  TrackPopupMenu(GetSubMenu(menu.get(), 0), TPM_RIGHTBUTTON, at.x, at.y, 0, m_hwnd, nullptr);
}

bool MainDialog::preTranslateMessage(const MSG& msg) {
  if (msg.message != WM_KEYDOWN && msg.message != WM_SYSKEYDOWN) return false;
  if (!m_hwnd || (msg.hwnd != m_hwnd && !IsChild(m_hwnd, msg.hwnd))) return false;
  const bool ctrl = GetKeyState(VK_CONTROL) < 0, shift = GetKeyState(VK_SHIFT) < 0;
  switch (msg.wParam) {
    case VK_F5: runCommand(IDC_RECORD); return true;
    case VK_F9: runCommand(IDC_PLAY); return true;
    case VK_F10: runCommand(CM_PLAY_CONTROL); return true;
    case VK_F2: runCommand(CM_RENAME_FILE); return true;
    case VK_F1: runCommand(CM_HELP_CONTENTS); return true;
    case 'N':
      if (!ctrl) return false;
      runCommand(CM_NEW_FILE);
      return true;
    case VK_ESCAPE:
      // Shift+Esc stops, and the key goes on to the dialog as well.
      if (shift) runCommand(IDC_STOP);
      return false;
    case VK_DELETE: {
      const HWND focus = GetFocus();
      if (focus == GetDlgItem(m_hwnd, IDC_FILES_LIST))
        runCommand(CM_DELETE_FILE);
      else if (focus == GetDlgItem(m_hwnd, IDC_SCHEDULE_LIST))
        runCommand(CM_DELETE_SCHEDULE_ITEM);
      else
        return false;
      return true;
    }
    default: return false;
  }
}

}  // namespace vantr
