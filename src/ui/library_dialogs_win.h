// The dialogs that edit the library: File Properties (a file's record format,
// trim and automation modes) and the five schedule item dialogs.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace vantr {

// "File Properties" for a schedule file: true on OK, when every key of the
// "file" section has been written; Cancel writes nothing.
bool FilePropertiesDialog(HWND owner, HINSTANCE instance, const std::string& scheduleFile);

// The dialog of an item kind (SchDlgPlayOnce ... SchDlgDelete) on one slot of
// a schedule file: true on OK, when the slot has been written.
bool ScheduleItemDialog(HWND owner, HINSTANCE instance, int32_t kind, const std::string& scheduleFile, int slot);

// The program's help at a page of its manual: the help file vantr.hlp
// through WinHelp where both are there (older Windows), else the HTML manual
// beside the program (manual\page) in the user's browser. False when
// neither could be opened.
bool openHelp(HWND owner, const char* page = "index.html");

}  // namespace vantr
