// Where the program keeps its state: everything lives beside the executable.
#pragma once

#include <string>
#include <string_view>

#include "base/path.h"

namespace vantr {

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
