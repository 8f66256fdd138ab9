// The play control window ("Vantorel Play Control", dialog 14): the operator
// takes hold of one of the play channels in use and plays, scrubs, pauses,
// goes to its start or steps it back and forward, with its position and level
// shown. The keys F9, Space, Pause, Home, Left and Right work as its buttons.
#pragma once

#include <windows.h>

#include "channels/channel_bank.h"

namespace vantr {

// Runs the window modally over owner; while it is open it hears the play
// channels' notifications through the bank's play listener, and on closing it
// stops paused channels and sets scrubbing ones playing. A second call while
// the window is open on this thread only brings it forward.
void LPlayControlDlg(HWND owner, HINSTANCE instance, ChannelBank& bank);

}  // namespace vantr
