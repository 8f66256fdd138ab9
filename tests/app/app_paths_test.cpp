#include "app/app_paths.h"

#include <gtest/gtest.h>

#include "app/startup_plan.h"

namespace vantr {
namespace {

TEST(AppPaths, BesideTheExecutable) {
  const AppPaths win = appPathsFor("C:\\Program Files\\Korvel Works\\Vantorel\\vantr.exe");
  EXPECT_EQ(win.programFolder, "C:\\Program Files\\Korvel Works\\Vantorel\\");
  EXPECT_EQ(win.settingsFile, "C:\\Program Files\\Korvel Works\\Vantorel\\settings.ini");
  EXPECT_EQ(win.recordingsFolder, "C:\\Program Files\\Korvel Works\\Vantorel\\Recordings\\");
  EXPECT_EQ(win.schedulesFolder, "C:\\Program Files\\Korvel Works\\Vantorel\\Schedules\\");
  const AppPaths unc = appPathsFor("\\\\server\\share\\v.2\\vantr.exe");
  EXPECT_EQ(unc.programFolder, "\\\\server\\share\\v.2\\");
  const AppPaths posix = appPathsFor("/opt/vantr/vantrctl");
  EXPECT_EQ(posix.schedulesFolder, "/opt/vantr/Schedules/");

  const SplitPath parts = splitPath("D:\\dir.x\\name.part.wav");
  EXPECT_EQ(parts.drive, "D:");
  EXPECT_EQ(parts.folder, "\\dir.x\\");
  EXPECT_EQ(parts.name, "name.part");
  EXPECT_EQ(parts.extension, ".wav");
}

TEST(StartupPlan, NameAndFirstArgumentDecide) {
  EXPECT_EQ(appKindFor("SETUP"), AppKind::Installer);
  EXPECT_EQ(appKindFor("setup"), AppKind::Installer);
  EXPECT_EQ(appKindFor("Uninst"), AppKind::Uninstaller);
  EXPECT_EQ(appKindFor("VANTR"), AppKind::RecordingSystem);
  EXPECT_EQ(appKindFor("SETUP2"), AppKind::RecordingSystem);

  struct Row {
    std::vector<std::string> args;
    RunMode mode;
    int showFlag;
  } rows[] = {
      {{}, RunMode::Normal, 1},
      {{"/logon"}, RunMode::Logon, 0},
      {{"/service"}, RunMode::Service, 0},
      {{"/logon", "/service"}, RunMode::Logon, 0},  // only the first argument counts
      {{"/open"}, RunMode::Normal, 1},
      {{"/install"}, RunMode::Normal, 1},
      {{"/LOGON"}, RunMode::Normal, 1},  // compared exactly
      {{"/open", "/logon"}, RunMode::Normal, 1},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(runModeFor(row.args), row.mode);
    EXPECT_EQ(secondStartShowFlag(runModeFor(row.args)), row.showFlag);
    EXPECT_EQ(startsHidden(runModeFor(row.args)), row.showFlag == 0);
  }
}

}  // namespace
}  // namespace vantr
