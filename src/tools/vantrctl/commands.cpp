#include "tools/vantrctl/commands.h"

#include "base/civil.h"
#include "schedule/schedule_time.h"

namespace vantr::ctl {

int usageError(std::ostream& err, const std::string& message) {
  err << "vantrctl: " << message << '\n';
  return 2;
}

// An absolute moment in the stored form (05/03/04-14:07:09).
bool parseMoment(const std::string& option, const std::string& text, int64_t& seconds, std::string& error) {
  // The stored reader makes something of any text; here only digits and
  // separators are taken, so that a typing error is not read as 2000-01-01.
  const bool shaped = text.find_first_of("0123456789") != std::string::npos &&
                      text.find_first_not_of("0123456789/\\.:-") == std::string::npos;
  ScheduleTime value = -1;
  if (shaped) ParseStoredDateTime(value, text);
  if (value < 1 || value == kNever || isAnnual(value)) {
    error = option + " needs a date and time such as 05/03/04-14:07:09, not '" + text + "'";
    return false;
  }
  seconds = value;
  return true;
}

}  // namespace vantr::ctl
