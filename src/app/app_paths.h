// Where the program keeps its state: everything lives beside the executable.
#pragma once

#include <string>
#include <string_view>

namespace vantr {

// A path split the way Windows' _splitpath does: "C:" + "\\dir\\" + "name" + ".ext".
// Both '\\' and '/' count as separators; the folder keeps its trailing one.
struct SplitPath {
  std::string drive;
  std::string folder;
  std::string name;
  std::string extension;
};
SplitPath splitPath(std::string_view path);

struct AppPaths {
  std::string programFolder;     // drive and folder of the executable, ending in a separator
  std::string settingsFile;      // programFolder + "settings.ini"
  std::string recordingsFolder;  // programFolder + "Recordings\"
  std::string schedulesFolder;   // programFolder + "Schedules\"
};

// The paths of a program whose executable is exePath. The separator added to
// the folder names is the one the executable's path uses.
AppPaths appPathsFor(std::string_view exePath);

// The paths computed once at start (empty until setAppPaths is called).
const AppPaths& appPaths();
void setAppPaths(const AppPaths& paths);

}  // namespace vantr
