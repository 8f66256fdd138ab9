// FillScheduleList's order must be that of the sorted list box the main window shows it in.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "schedule/schedule_item.h"

namespace vantr {
namespace {

TEST(ScheduleListOrder, MatchesTheSortedListBox) {
  // Lines that differ only in case (SmtwtfS, sMTWTFs), in the channel ("#10",
  // "#2", none), an empty time (IMMEDIATE) and hours past 23.
  const std::string text =
      "[sch0]\ntype=2\ntime=09:00:00\ndays=65\n[sch1]\ntype=2\ntime=09:00:00\ndays=62\n"
      "[sch2]\ntype=1\nchan=2\ndate=05/03/04-09:00:00\n[sch3]\ntype=1\ndate=05/03/04-09:00:00\n"
      "[sch4]\ntype=1\ndate=IMMEDIATE\n[sch5]\ntype=2\ntime=25:00:00\n"
      "[sch6]\ntype=1\nchan=10\ndate=05/03/04-09:00:00\n";
  const auto lines = FillScheduleList(IniDocument(text), kMonthDayYear);
  ASSERT_EQ(lines.size(), 7u);

  HWND list = CreateWindowExA(0, "LISTBOX", "", WS_POPUP | LBS_SORT, 0, 0, 300, 300, nullptr, nullptr,
                              GetModuleHandleA(nullptr), nullptr);
  ASSERT_NE(list, nullptr);
  // Added in slot order, as FillScheduleList walks the slots.
  std::vector<const char*> bySlot(lines.size());
  for (const ScheduleListLine& line : lines) bySlot[line.slot] = line.text.c_str();
  for (const char* line : bySlot) SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line));
  for (size_t i = 0; i < lines.size(); ++i) {
    char shown[256] = {};
    SendMessageA(list, LB_GETTEXT, i, reinterpret_cast<LPARAM>(shown));
    EXPECT_EQ(lines[i].text, shown) << i;
  }
  DestroyWindow(list);
}

}  // namespace
}  // namespace vantr
