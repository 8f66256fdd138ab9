// vantrctl's list and agenda commands, run in the test process over the example folder.
#include <gtest/gtest.h>

#include <string>

#include "schedule/schedule_time.h"
#include "test_support/run_command.h"
#include "tools/vantrctl/commands.h"

namespace vantr::ctl {

namespace {

const std::string kExamples = VANTR_SCHEDULE_DATA;

int run(const char* name, const Args& args, std::string& out, std::string& err) {
  return runCommand(kScheduleCommands, name, args, out, err);
}

TEST(ScheduleCommands, ListAndAgendaOverTheExamples) {
  // Junk lists nothing; Weather's list ends at its unknown kind; News's deleted sch1 has no line.
  setLocaleDateOrder(kMonthDayYear);
  std::string out, err;
  ASSERT_EQ(run("list", {"--schedules", kExamples}, out, err), 0) << err;
  EXPECT_EQ(err, "");
  EXPECT_EQ(out,
            "[Archive]\n"
            "00:00:10 Delete file on 03/07/04\n"
            "12:00:00 Play file on SMTWTFS\n"
            "14:07:30 Record #1 1:00:00.0 on 03/05/04\n"
            "[Junk]\n"
            "[News]\n"
            " Play #1 file on IMMEDIATE\n"
            "06:00:00 Record #0 0:15:00.0 on SmtwtfS\n"
            "09:00:00 Play #2 file on sMTWTFs from 03/01/04 until 12/31/04\n"
            "14:07:09 Play file on 03/06/04\n"
            "[Weather]\n"
            "14:07:30 Play #3 file on SMTWTFS from 03/06/YY\n");

  // Weather's annual item, News's once and regular ones, and Archive's delete,
  // after which Archive's 12:00 item is gone.
  ASSERT_EQ(
      run("agenda", {"--schedules", kExamples, "--from", "06/03/04-14:00:00", "--to", "07/03/04-14:07:30"}, out, err),
      0)
      << err;
  EXPECT_EQ(out,
            "2004-03-06 14:07:09 play News chan=default\n"
            "2004-03-06 14:07:30 play Weather chan=3\n"
            "2004-03-07 00:00:10 delete Archive\n"
            "2004-03-07 06:00:00 record News chan=0 duration=0:15:00.0\n"
            "2004-03-07 14:07:30 play Weather chan=3\n");

  // A range that ends before it starts: one line and exit code 2.
  EXPECT_EQ(
      run("agenda", {"--schedules", kExamples, "--from", "05/03/04-10:00:00", "--to", "05/03/04-09:00:00"}, out, err),
      2);
  EXPECT_EQ(out, "");
  EXPECT_TRUE(err.rfind("vantrctl: ", 0) == 0 && err.find('\n') == err.size() - 1) << err;
}

}  // namespace
}  // namespace vantr::ctl
