#include <cstdlib>

#include "base/text.h"
#include "schedule/schedule_time.h"

namespace vantr {

// No old Windows profile here: the user states the order in VANTR_DATE_ORDER
// (0 month/day/year, 1 day/month/year, 2 year/month/day).
int systemDateOrder() {
  const char* text = std::getenv("VANTR_DATE_ORDER");
  return text ? parseLong(text) : kMonthDayYear;
}

}  // namespace vantr
