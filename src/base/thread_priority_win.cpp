#include <windows.h>

#include "base/worker_thread.h"

namespace vantr {

void setCurrentThreadPriority(int priority) { SetThreadPriority(GetCurrentThread(), priority); }

}  // namespace vantr
