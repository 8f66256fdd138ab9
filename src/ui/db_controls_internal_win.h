// Shared by the two level controls' files: the registration of each class.
#pragma once

#include <windows.h>

namespace vantr {

// Registers a control class (double clicks, redrawn whole when resized, with
// extraBytes of window data) unless a class of that name exists already.
bool registerControlClass(HINSTANCE instance, const char* name, WNDPROC proc, int extraBytes);

bool registerDbDisplayClass(HINSTANCE instance);
bool registerDbEditClass(HINSTANCE instance);

}  // namespace vantr
