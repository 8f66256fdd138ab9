#include "base/app_paths.h"

#include <gtest/gtest.h>

#include "app/startup_plan.h"
#include "base/path.h"

namespace vantr {
namespace {

TEST(AppPaths, BesideTheExecutable) {
  const AppPaths win = appPathsFor("C:\\Program Files\\Korvel Works\\Vantorel\\vantr.exe");
  EXPECT_EQ(win.programFolder, "C:\\Program Files\\Korvel Works\\Vantorel\\");
  EXPECT_EQ(win.settingsFile, "C:\\Program Files\\Korvel Works\\Vantorel\\settings.ini");
  EXPECT_EQ(win.recordingsFolder, "C:\\Program Files\\Korvel Works\\Vantorel\\Recordings\\");
  EXPECT_EQ(win.schedulesFolder, "C:\\Program Files\\Korvel Works\\Vantorel\\Schedules\\");
  EXPECT_EQ(appPathsFor("\\\\server\\share\\v.2\\vantr.exe").programFolder, "\\\\server\\share\\v.2\\");
  EXPECT_EQ(appPathsFor("/opt/vantr/vantrctl").schedulesFolder, "/opt/vantr/Schedules/");
  const SplitPath parts = splitPath("D:\\dir.x\\name.part.wav");
  EXPECT_EQ(parts.drive + "|" + parts.folder + "|" + parts.name + "|" + parts.extension, "D:|\\dir.x\\|name.part|.wav");

  // clang-format off
  struct { const char *path, *name, *expected; } rows[] = {
      {"C:\\Vantorel\\settings.ini", "a.dcb", "C:\\Vantorel\\a.dcb"}, {"C:settings.ini", "x.dcb", "C:x.dcb"},
      {"/opt/vantr/settings.ini", "a.dcb", "/opt/vantr/a.dcb"}, {"settings.ini", "a.dcb", "a.dcb"},
      {"D:\\a.b\\noext", "n", "D:\\a.b\\n"}, {"", "a.dcb", ""}};
  // clang-format on
  for (const auto& row : rows) EXPECT_EQ(pathBeside(row.path, row.name), row.expected) << row.path;
}

TEST(StartupPlan, NameAndFirstArgumentDecide) {
  EXPECT_EQ(appKindFor("SETUP"), AppKind::Installer);
  EXPECT_EQ(appKindFor("setup"), AppKind::Installer);
  EXPECT_EQ(appKindFor("Uninst"), AppKind::Uninstaller);
  EXPECT_EQ(appKindFor("VANTR"), AppKind::RecordingSystem);
  EXPECT_EQ(appKindFor("SETUP2"), AppKind::RecordingSystem);
  // clang-format off
  struct { std::vector<std::string> args; RunMode mode; } rows[] = {
      {{}, RunMode::Normal}, {{"/logon"}, RunMode::Logon}, {{"/service"}, RunMode::Service},
      {{"/open"}, RunMode::Normal}, {{"/install"}, RunMode::Normal}, {{"/LOGON"}, RunMode::Normal},
      {{"/open", "/logon"}, RunMode::Normal}, {{"/logon", "/service"}, RunMode::Logon}};  // only the first counts
  // clang-format on
  for (const auto& row : rows) {
    const RunMode mode = runModeFor(row.args);
    EXPECT_EQ(mode, row.mode) << row.args.size();
    EXPECT_EQ(secondStartShowFlag(mode), mode == RunMode::Normal ? 1 : 0);
    EXPECT_EQ(startsHidden(mode), mode != RunMode::Normal);
  }
}

}  // namespace
}  // namespace vantr
