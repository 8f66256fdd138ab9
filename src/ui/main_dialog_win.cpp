#include "ui/main_dialog_win.h"

#include <windowsx.h>

#include "base/clock.h"
#include "base/file.h"
#include "base/path.h"
#include "base/time_position.h"
#include "resource.h"
#include "schedule/named_file.h"
#include "schedule/schedule_time.h"
#include "store/settings.h"
#include "ui/db_controls_win.h"
#include "ui/main_commands.h"
#include "ui/product_text.h"
#include "win/messages.h"

namespace vantr {

namespace {

constexpr UINT_PTR kTimerInfo = 1;
constexpr UINT_PTR kTimerScheduler = 2;
constexpr UINT_PTR kTimerBanner = 9;
constexpr UINT kInfoFirstMs = 2000, kInfoMs = 7000, kBannerMs = 7000;
constexpr UINT kSchedulerAfterRebuildMs = 980, kSchedulerAfterWorkMs = 900, kSchedulerSameSecondMs = 100;

}  // namespace

MainDialog::MainDialog(HINSTANCE instance, const AppPaths& paths)
    : m_instance(instance),
      m_paths(paths),
      m_log(pathBeside(paths.settingsFile, "Logs"), systemClock()),
      m_banner(instance) {}

MainDialog::~MainDialog() { destroy(); }

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

  SetTimer(m_hwnd, kTimerInfo, kInfoFirstMs, nullptr);
  rebuildSchedules("", -1);
  refreshStatus();
}

void MainDialog::OnDestroy() {
  // Every timer stops with the window; the channels stop here, while their
  // engines' windows still exist to report the ends.
  if (m_bank) m_bank->stopAll();
  m_banner.close();
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
}

void MainDialog::play(const std::string& fileName, int channel) { m_bank->PlayFile(fileName, channel, m_dueCause); }

void MainDialog::record(const std::string& fileName, int channel, int32_t duration) {
  m_bank->StartRecord(fileName, channel, duration, m_dueCause);
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
}  // namespace

std::vector<std::string> MainDialog::selectedFiles() const {
  HWND list = GetDlgItem(m_hwnd, IDC_FILES_LIST);
  std::vector<std::string> names;
  for (int index : selectedIndexes(list)) {
    const LRESULT length = SendMessageA(list, LB_GETTEXTLEN, index, 0);
    if (length < 0) continue;
    std::string name(static_cast<size_t>(length) + 1, '\0');
    SendMessageA(list, LB_GETTEXT, index, reinterpret_cast<LPARAM>(name.data()));
    name.resize(static_cast<size_t>(length));
    names.push_back(name);
  }
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

void MainDialog::runCommand(UINT id) {
  switch (id) {
    case IDC_PLAY:
    case IDC_RECORD:
    case IDC_STOP:
    case CM_DELETE_FILE:
    case CM_DELETE_SCHEDULE_ITEM:
    case CM_PASSWORD_SETTINGS: break;
    default:
      // The commands whose dialogs come later still ask for their lock.
      allowed(id);
      return;
  }
  if (!allowed(id)) return;
  switch (id) {
    case IDC_PLAY: playSelected(); break;
    case IDC_RECORD: recordSelected(); break;
    case IDC_STOP: stopCommand(); break;
    case CM_DELETE_FILE: deleteFiles(); break;
    case CM_DELETE_SCHEDULE_ITEM: deleteScheduleItems(); break;
    case CM_PASSWORD_SETTINGS: PasswordSettingsDialog(m_hwnd, m_instance, m_paths.settingsFile); break;
    default: break;
  }
}

void MainDialog::playSelected() {
  const std::vector<std::string> files = selectedFiles();
  if (!files.empty()) m_bank->PlayFile(files.front(), -1, "operator");
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
