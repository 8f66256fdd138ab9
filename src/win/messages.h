// Private window messages: the contract between the running
// copy, a second start, the service control handler and the program's windows.
// Other processes send these numbers, so they never change. Menu and command
// ids live in res/resource.h.
#pragma once

namespace vantr {

constexpr unsigned kMsgPlayerNotify = 1024;     // a player's worker to its hidden window
constexpr unsigned kMsgQuit = 1044;             // quit now, without asking
constexpr unsigned kMsgSecondStart = 1045;      // wParam 1: show yourself; 0: stay in the background
constexpr unsigned kMsgTrayIcon = 1046;         // mouse event on the notification icon (lParam)
constexpr unsigned kMsgAutomationInput = 1047;  // serial automation command for the main window

constexpr unsigned kTrayIconId = 24;

// How other processes find the running copy.
constexpr const char* kFrameClassName = "OWL_Window";
constexpr const char* kFrameTitle = "Vantorel";

}  // namespace vantr
