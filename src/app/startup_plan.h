// The decisions the program entry makes from its own name and command line,
// kept apart from Windows so that every combination can be tested.
#pragma once

#include <string>
#include <vector>

namespace vantr {

enum class AppKind { RecordingSystem, Installer, Uninstaller };
enum class RunMode { Normal, Logon, Service };

// "SETUP" selects the installer and "UNINST" the uninstaller, in any case.
AppKind appKindFor(const std::string& baseName);

// Only the first argument counts, compared exactly: "/service", "/logon", or
// anything else (a normal, visible start).
RunMode runModeFor(const std::vector<std::string>& args);

// The wParam of the second-start message to the running copy: 0 keeps it in
// the background, 1 brings it to the front.
int secondStartShowFlag(RunMode mode);

// Whether the frame starts hidden, in the notification area only.
bool startsHidden(RunMode mode);

}  // namespace vantr
