// The settings dialogs: "Vantorel Settings" (default devices with a level
// check and a test tone, the default record format and AutoTrim level, the
// run mode) and "Automation Settings" (the serial line and its port record).
#pragma once

#include <windows.h>

#include <string>

namespace vantr {

// "Vantorel Settings": true on OK, when section "settings" and the run mode
// have been written; the caller then rereads the default devices and
// restarts the serial reader. Cancel writes nothing.
bool HardwareSettingsDialog(HWND owner, HINSTANCE instance, const std::string& settingsFile);

// "Automation Settings": true on OK, when "mode" and "comport" have been
// written. "Com Port Settings..." writes the port record itself, when its own
// dialog is confirmed.
bool AutomationSettingsDialog(HWND owner, HINSTANCE instance, const std::string& settingsFile);

}  // namespace vantr
