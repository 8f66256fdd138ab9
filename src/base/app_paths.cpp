#include "base/app_paths.h"

namespace vantr {

AppPaths appPathsFor(std::string_view exePath) {
  const SplitPath parts = splitPath(exePath);
  AppPaths paths;
  paths.programFolder = parts.drive + parts.folder;
  const char separator = exePath.find('\\') != std::string_view::npos ? '\\' : '/';
  paths.settingsFile = paths.programFolder + "settings.ini";
  paths.recordingsFolder = paths.programFolder + "Recordings" + separator;
  paths.schedulesFolder = paths.programFolder + "Schedules" + separator;
  return paths;
}

namespace {
AppPaths& storedPaths() {
  static AppPaths paths;
  return paths;
}
}  // namespace

const AppPaths& appPaths() { return storedPaths(); }
void setAppPaths(const AppPaths& paths) { storedPaths() = paths; }

}  // namespace vantr
