// The level meter ("LDBDisplay") and the level slider with its text box
// ("LDBEdit"): window classes that dialog templates name, and the calls their
// owners use on them.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace vantr {

// Registers both classes for the module instance (whose "LDBDisplayGreen" and
// "LDBDisplayRed" bitmaps the meters paint with), each only if no class of
// that name exists yet. False if a class could not be registered.
bool registerDbControls(HINSTANCE instance);

// Class-specific style bit of both controls: a raised edge.
constexpr DWORD kDbRaisedEdge = 0x1000;

// The meter: one bar at this level, or one bar per level (at most eight);
// no levels at all shows an empty grey meter. Levels are held in -36..+12 dB.
void setDbDisplayLevel(HWND meter, int8_t level);
void setDbDisplayLevels(HWND meter, const int8_t* levels, size_t count);

// The slider: its range, set by the dialog that owns it, and its value. A
// change by the user is reported to the parent as WM_COMMAND with the
// control's id and EN_CHANGE, as an edit box does.
void setDbEditRange(HWND edit, int minimum, int maximum);
void setDbEditValue(HWND edit, int value);
int8_t dbEditValue(HWND edit);

}  // namespace vantr
