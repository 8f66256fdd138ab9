// MainApplication: the recording system's application object and its message loop.
#pragma once

#include <windows.h>

#include "app/startup_plan.h"

namespace vantr {

// Runs the recording system until its frame closes; returns the exit code.
int runMainApplication(HINSTANCE instance, RunMode mode);

}  // namespace vantr
