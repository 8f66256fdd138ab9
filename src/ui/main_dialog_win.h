// The work window inside the frame: dialog resource 1 with the files list,
// the schedule list, the Play/Record/Stop buttons, the status lines with
// their level meters, the information line and the clock. It owns the eight
// channels and the scheduler's table, and runs the scheduler on its timer 2.
#pragma once

#include <windows.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "asrun/as_run_log.h"
#include "audio/play/wave_out_win.h"
#include "audio/record/wave_in_win.h"
#include "automation/automation_reader.h"
#include "base/app_paths.h"
#include "channels/channel_bank.h"
#include "schedule/scheduler.h"
#include "ui/automation_target_win.h"
#include "ui/small_dialogs_win.h"
#include "win/handles_win.h"
#include "win/window_win.h"

namespace vantr {

class MainDialog : public Dialog<MainDialog>, private ChannelObserver, private SchedulerActions {
 public:
  // automation is the process's serial reader (may be null): the window is
  // its target while it exists.
  MainDialog(HINSTANCE instance, const AppPaths& paths, AutomationReader* automation = nullptr);
  ~MainDialog() override;
  MainDialog(const MainDialog&) = delete;
  MainDialog& operator=(const MainDialog&) = delete;

  // Creates the window as the client of parent; false if the template could
  // not be built (for instance a control class that is not registered).
  bool create(HWND parent);
  void destroy();

  // Whether the program may exit now: asks for the password when Exit is
  // protected.
  bool exitAllowed();

  // The keys the window catches before the dialog's own key handling; true
  // when the message was taken.
  bool preTranslateMessage(const MSG& msg);

  INT_PTR HandleMessage(UINT msg, WPARAM wParam, LPARAM lParam);

  // The automation settings changed (mode, port, port record): the serial
  // reader starts again under them.
  void automationSettingsChanged();

 private:
  // Messages
  void OnInitDialog();
  void OnTimer(UINT_PTR id);
  void OnCommand(UINT id, UINT code, HWND control);
  void OnInitMenuPopup(HMENU menu);
  void OnContextMenu(HWND list, POINT at);
  void OnDestroy();
  void OnAutomationInput(WPARAM command, LPARAM atom);

  // Lists
  void rebuildSchedules(const std::string& select, int slot);
  void fillScheduleList(int slot);
  std::vector<std::string> selectedFiles() const;
  std::vector<std::string> allFiles() const;
  std::vector<int> selectedSlots() const;
  bool fileSelected() const;
  bool itemSelected() const;

  // Commands
  void runCommand(UINT id);
  void playSelected();
  void recordSelected();
  void stopCommand();
  void newFile();
  void renameFile();
  void deleteFiles();
  void fileProperties();
  void loadWavFile();
  void newScheduleItem(int32_t kind);
  void editScheduleItems();
  void deleteScheduleItems();
  void PrintSchedules();
  bool allowed(UINT id);

  // Status
  void refreshStatus();
  void channelsChanged() override;
  void playLevels(const LevelList& levels) override;
  void recordLevels(const LevelList& levels) override;

  // Scheduler
  void starting(const ScheduleEntry& entry) override;
  void play(const std::string& fileName, int channel) override;
  void record(const std::string& fileName, int channel, int32_t duration) override;
  void deleteFile(const std::string& fileName) override;
  void rebuild() override;
  void showTime(int64_t second) override;
  void tick();
  // Rereads the default devices, checked against their stored names.
  void checkDefaultDevices();
  void awaitDeviceListing();

  HINSTANCE m_instance;
  const AppPaths m_paths;
  AutomationReader* const m_automation;
  // Made with the window, cleared from the reader before the channels stop.
  std::unique_ptr<WindowAutomationTarget> m_automationTarget;
  // The buttons show these but do not own them: deleted after the window
  // (members outlive the destructor's body, which destroys the window).
  GdiObject<HBITMAP> m_buttonBitmaps[3];
  // Declared in the order they are made; the bank goes before the engines it
  // drives, the log after everything that writes to it.
  AsRunLog m_log;
  std::array<std::unique_ptr<LSoundPlayer_Window>, kChannels> m_players;
  std::array<std::unique_ptr<LSoundRecorder_Window>, kChannels> m_recorders;
  std::unique_ptr<ChannelBank> m_bank;
  ScheduleTable m_table;
  Banner m_banner;
  std::thread m_deviceListing;
  int m_infoLine = 0;
  // The schedule item a due start comes from, for the as-run log.
  std::string m_dueCause = "schedule";
  // The device a due item's stored name found, when it is not the stored number.
  std::optional<int> m_dueChannel;
};

}  // namespace vantr
