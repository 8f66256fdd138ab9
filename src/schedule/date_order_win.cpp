#include <windows.h>

#include "schedule/schedule_time.h"

namespace vantr {

// The "iDate" key of the "Intl" section of the Windows profile, which Windows
// maps onto the user's regional settings.
int systemDateOrder() { return static_cast<int>(GetProfileIntA("Intl", "iDate", 0)); }

}  // namespace vantr
