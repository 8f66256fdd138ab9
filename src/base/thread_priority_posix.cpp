#include "base/worker_thread.h"

namespace vantr {

// Ordinary users may not raise a thread's priority here, and lowering it only
// slows the tests; the native build leaves every thread at its priority.
void setCurrentThreadPriority(int) {}

}  // namespace vantr
