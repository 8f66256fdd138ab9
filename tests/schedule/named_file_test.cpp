// A named file's paths whatever the case of its file names, and the listing,
// agenda and delete over a folder whose schedule file is "X.QSF".
#include "schedule/named_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/file.h"
#include "base/path.h"
#include "schedule/schedule_time.h"
#include "schedule/scheduler.h"
#include "test_support/run_command.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

TEST(NamedFile, PathOfTheListedSpelling) {
  const struct {
    std::vector<std::string> listed;
    const char* name;
    const char* expected;
  } rows[] = {
      {{"News.QSF"}, "News", "News.QSF"},
      {{"NEWS.qsf"}, "news", "NEWS.qsf"},
      {{"News.QSF", "News.qsf"}, "News", "News.qsf"},       // the exact spelling first
      {{"news.qsf", "News.QSF"}, "NeWs", "News.QSF"},       // else the first in byte order
      {{"News.qsf.QSF", "NewsX.qsf"}, "News", "News.qsf"},  // nothing there: the file to make
      {{}, "News", "News.qsf"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(namedFilePath("dir", row.listed, row.name, kScheduleExtension), joinPath("dir", row.expected))
        << row.name;
  }
}

// Names from the serial line or a hand-made schedule that would leave the
// folder, or that Windows cannot hold, name no file.
TEST(NamedFile, NamesThatCannotBeAFileHaveNoPath) {
  const char* refused[] = {"",    "..\\..\\x", "../x",    "a/b",  "C:x",    "a:b", "a\"b",    "a|b",  "a?",    "a*",
                           "a<b", "a>b",       "tab\tin", "dot.", "space ", "CON", "nul.txt", "Com1", "LPT9.x"};
  for (const char* name : refused) {
    EXPECT_FALSE(isSafeName(name)) << name;
    EXPECT_EQ(namedFilePath("dir", std::vector<std::string>{}, name, kAudioExtension), "") << name;
    EXPECT_EQ(audioFilePath("dir", name), "") << name;
  }
  for (const char* name : {"News", "..News", "a.b", "COM10", "Console", "Morning Show 7", "x~y!"})
    EXPECT_TRUE(isSafeName(name)) << name;
}

struct NoUsers : NamedFileUsers {
  void stopEveryUserOf(const std::string&) override {}
};

TEST(NamedFile, UpperCaseExtensionIsReadListedAndDeleted) {
  TempDir schedules, recordings;
  ASSERT_TRUE(replaceFileContents(schedules.file("X.QSF"), "[sch0]\ntype=2\ntime=08:00:00\n"));
  ASSERT_TRUE(replaceFileContents(schedules.file("y.qsf"), "[sch0]\ntype=1\ndate=05/03/04-09:00:00\n"));
  ASSERT_TRUE(replaceFileContents(recordings.file("X.Wav"), "RIFF"));

  setLocaleDateOrder(kMonthDayYear);
  std::string out, err;
  ASSERT_EQ(runCommand(ctl::kScheduleCommands, "list", {"--schedules", schedules.path()}, out, err), 0) << err;
  EXPECT_EQ(out, "[X]\n08:00:00 Play file on SMTWTFS\n[y]\n09:00:00 Play file on 03/05/04\n");
  ASSERT_EQ(runCommand(ctl::kScheduleCommands, "agenda",
                       {"--schedules", schedules.path(), "--from", "05/03/04-07:00:00", "--to", "05/03/04-10:00:00"},
                       out, err),
            0)
      << err;
  EXPECT_EQ(out, "2004-03-05 08:00:00 play X chan=default\n2004-03-05 09:00:00 play y chan=default\n");

  NoUsers users;
  deleteNamedFile(users, schedules.path(), recordings.path(), "X");
  EXPECT_EQ(schedules.entries(), std::vector<std::string>{"y.qsf"});
  EXPECT_TRUE(recordings.entries().empty());
}

}  // namespace
}  // namespace vantr
