// The work window inside the frame: dialog resource 1 with the files list,
// the schedule list, the Play/Record/Stop buttons, the status lines with
// their level meters, the information line and the clock. It owns the eight
// channels and the scheduler's table, and runs the scheduler on its timer 2.
#pragma once

#include <windows.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "asrun/as_run_log.h"
#include "audio/play/wave_out_win.h"
#include "audio/record/wave_in_win.h"
#include "base/app_paths.h"
#include "channels/channel_bank.h"
#include "schedule/scheduler.h"
#include "ui/small_dialogs_win.h"
#include "win/handles_win.h"
#include "win/window_win.h"

namespace vantr {

class MainDialog : public Dialog<MainDialog>, private ChannelObserver, private SchedulerActions {
 public:
  MainDialog(HINSTANCE instance, const AppPaths& paths);
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

 private:
  // Messages
  void OnInitDialog();
  void OnTimer(UINT_PTR id);
  void OnCommand(UINT id, UINT code, HWND control);
  void OnInitMenuPopup(HMENU menu);
  void OnContextMenu(HWND list, POINT at);
  void OnDestroy();

  // Lists
  void rebuildSchedules(const std::string& select, int slot);
  void fillScheduleList(int slot);
  std::vector<std::string> selectedFiles() const;
  std::vector<int> selectedSlots() const;
  bool fileSelected() const;
  bool itemSelected() const;

  // Commands
  void runCommand(UINT id);
  void playSelected();
  void recordSelected();
  void stopCommand();
  void deleteFiles();
  void deleteScheduleItems();
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

  HINSTANCE m_instance;
  const AppPaths m_paths;
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
  int m_infoLine = 0;
  // The schedule item a due start comes from, for the as-run log.
  std::string m_dueCause = "schedule";
};

}  // namespace vantr
