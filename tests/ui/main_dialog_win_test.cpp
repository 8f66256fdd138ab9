// The work window in the test's own process, with the program's resources:
// which menu entries its rules enable for a selection, read from the menus
// after the window has handled their opening as it does for the real ones.
#include "ui/main_dialog_win.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>

#include "resource.h"
#include "test_support/temp_dir.h"
#include "ui/db_controls_win.h"
#include "win/handles_win.h"

namespace vantr {
namespace {

class Work : public ::testing::Test {
 protected:
  void SetUp() override {
    const HINSTANCE instance = GetModuleHandleA(nullptr);
    registerDbControls(instance);
    CreateDirectoryA(m_dir.file("Schedules").c_str(), nullptr);
    std::ofstream(m_dir.file("Schedules/Alpha.qsf")) << "[sch0]\ntype=2\ntime=10:00:00\n";
    std::ofstream(m_dir.file("Schedules/Beta.qsf")) << "";
    m_dialog = std::make_unique<MainDialog>(instance, appPathsFor(m_dir.file("vantr.exe")));
    m_parent = CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 600, 300, nullptr, nullptr, instance, nullptr);
    ASSERT_TRUE(m_dialog->create(m_parent));
    m_menus = OwnedMenu(LoadMenuA(instance, MAKEINTRESOURCEA(IDM_FRAME)));
    m_popups[0] = OwnedMenu(LoadMenuA(instance, MAKEINTRESOURCEA(IDM_FILES_POPUP)));
    m_popups[1] = OwnedMenu(LoadMenuA(instance, MAKEINTRESOURCEA(IDM_SCHEDULE_POPUP)));
  }
  void TearDown() override {
    m_dialog.reset();
    DestroyWindow(m_parent);
  }

  void select(int list, int index) {
    HWND box = GetDlgItem(m_dialog->hwnd(), list);
    SendMessageA(box, LB_SETSEL, FALSE, -1);
    if (index >= 0) SendMessageA(box, LB_SETSEL, TRUE, index);
    SendMessageA(m_dialog->hwnd(), WM_COMMAND, MAKEWPARAM(list, LBN_SELCHANGE), reinterpret_cast<LPARAM>(box));
  }

  // Every entry with that id in the frame's menu and both popups, each popup
  // opened first; true when each shows enabled, false when each is grey.
  // Entries that disagree fail the test.
  bool enabled(unsigned id) {
    int on = 0, off = 0;
    const std::function<void(HMENU)> walk = [&](HMENU menu) {
      SendMessageA(m_dialog->hwnd(), WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu), 0);
      for (int i = 0, n = GetMenuItemCount(menu); i < n; ++i) {
        if (HMENU sub = GetSubMenu(menu, i)) {
          walk(sub);
        } else if (GetMenuItemID(menu, i) == id) {
          (GetMenuState(menu, i, MF_BYPOSITION) & MF_GRAYED ? off : on)++;
        }
      }
    };
    walk(m_menus.get());
    for (const OwnedMenu& popup : m_popups) walk(popup.get());
    EXPECT_GT(on + off, 0) << id << " is in no menu";
    EXPECT_TRUE(on == 0 || off == 0) << id << " is enabled in one menu and grey in another";
    return on > 0;
  }

  TempDir m_dir;
  std::unique_ptr<MainDialog> m_dialog;
  HWND m_parent = nullptr;
  OwnedMenu m_menus, m_popups[2];
};

TEST_F(Work, MenusFollowTheSelection) {
  HWND files = GetDlgItem(m_dialog->hwnd(), IDC_FILES_LIST);
  ASSERT_EQ(SendMessageA(files, LB_GETCOUNT, 0, 0), 2);
  EXPECT_EQ(SendMessageA(files, LB_GETSEL, 0, 0), 1) << "the first file starts selected";
  const unsigned needFile[] = {
      IDC_PLAY,     IDC_RECORD,      CM_RENAME_FILE, CM_DELETE_FILE,    CM_FILE_PROPERTIES, CM_SAVE_PACKED_SCHEDULE,
      CM_PLAY_ONCE, CM_PLAY_REGULAR, CM_RECORD_ONCE, CM_RECORD_REGULAR, CM_SCHEDULED_DELETE};
  const unsigned needItem[] = {CM_DELETE_SCHEDULE_ITEM, CM_EDIT_SCHEDULE_ITEM};
  const unsigned always[] = {CM_NEW_FILE,
                             CM_PLAY_CONTROL,
                             IDC_STOP,
                             CM_LOAD_WAV_FILE,
                             CM_LOAD_PACKED_SCHEDULE,
                             CM_PRINT_SCHEDULES,
                             CM_HARDWARE_SETTINGS,
                             CM_PASSWORD_SETTINGS,
                             CM_CLOSE_WINDOW,
                             CM_EXIT,
                             CM_HELP_CONTENTS,
                             CM_ABOUT};
  struct Row {
    int file, item;  // the lines selected, -1 for none
  } rows[] = {{-1, -1}, {0, -1}, {0, 0}};
  for (const Row& r : rows) {
    select(IDC_FILES_LIST, r.file);
    select(IDC_SCHEDULE_LIST, r.item);
    SCOPED_TRACE("file " + std::to_string(r.file) + ", item " + std::to_string(r.item));
    for (unsigned id : needFile) EXPECT_EQ(enabled(id), r.file >= 0) << id;
    for (unsigned id : needItem) EXPECT_EQ(enabled(id), r.item >= 0) << id;
    for (unsigned id : always) EXPECT_TRUE(enabled(id)) << id;
  }
}

}  // namespace
}  // namespace vantr
