#include "app/app_paths.h"

namespace vantr {

SplitPath splitPath(std::string_view path) {
  SplitPath parts;
  if (path.size() >= 2 && path[1] == ':') {
    parts.drive = std::string(path.substr(0, 2));
    path.remove_prefix(2);
  }
  const size_t slash = path.find_last_of("\\/");
  if (slash != std::string_view::npos) {
    parts.folder = std::string(path.substr(0, slash + 1));
    path.remove_prefix(slash + 1);
  }
  const size_t dot = path.find_last_of('.');
  if (dot != std::string_view::npos) {
    parts.extension = std::string(path.substr(dot));
    path = path.substr(0, dot);
  }
  parts.name = std::string(path);
  return parts;
}

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
