// The installer and the uninstaller: the same executable started as
// SETUP.EXE unpacks the files behind its own image into the install folder,
// checks them and registers the program; started as UNINST.EXE it removes the
// registrations and leaves the program's files and recordings on disk.
#pragma once

#include <windows.h>

#include <string>

namespace vantr {

// Titles and texts by which the operator (and the tests) know the boxes.
inline constexpr char kInstallErrorTitle[] = "Install Error";
inline constexpr char kInstallErrorText[] =
    "Installation file corrupt.\n\nA checksum error was detected in your install file, please redownload file "
    "and install again.";
inline constexpr char kUninstallTitle[] = "Uninstall Vantorel";
inline constexpr char kUninstallQuestion[] = "Are you sure you want to remove Vantorel from this computer?";
inline constexpr char kUninstallDoneTitle[] = "Uninstall Complete";
// The folder named here is fixed text, whatever the real install folder is.
inline constexpr char kUninstallDoneText[] =
    "Vantorel has been uninstalled on this system but the recording files have not been deleted.\n\r\n\rYou can "
    "delete the files and folders in the c:\\Program Files\\Korvel Works\\Vantorel directory if the files are no "
    "longer required.";
inline constexpr char kUninstallKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\VANTR";
inline constexpr char kOpenItem[] = "Open Vantorel";
inline constexpr char kManualItem[] = "View Vantorel Manual";

// The page the "View Vantorel Manual" item opens: the Windows help file where
// one is installed, the HTML manual's contents otherwise.
std::string installedManualPath(const std::string& folder);

// Runs the installer from this executable's payload; 0 when it installed.
int InstallApplication(HINSTANCE instance);
// Asks, then removes the registrations; 0 always.
int UninstallApplication(HINSTANCE instance);

// The shortcut the installer puts on the desktop, written through the
// shell's link object; false when it could not be saved.
bool createShortcut(const std::string& linkPath, const std::string& target, const std::string& arguments,
                    const std::string& description);
// Switches the user's Windows sound scheme off: ".None" as the scheme and
// every event's current sound emptied.
void switchSoundSchemeOff();

}  // namespace vantr
