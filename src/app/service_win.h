// Running as a service: the Windows NT service "VANTR", or on Windows 95/98 a
// registered service process that survives log-off.
#pragma once

namespace vantr {

// Connects to the service control manager as "VANTR" and runs runApp inside
// the service; returns when the dispatcher returns (at once when the process
// was not started by the service control manager).
void runServiceDispatcher(int (*runApp)());

// Windows 95/98: registers the process as a service process through
// RegisterServiceProcess of KERNEL32.DLL, when that function exists.
void registerServiceProcess();

}  // namespace vantr
