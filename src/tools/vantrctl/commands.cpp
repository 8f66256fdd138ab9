#include "tools/vantrctl/commands.h"

namespace vantr::ctl {

int usageError(std::ostream& err, const std::string& message) {
  err << "vantrctl: " << message << '\n';
  return 2;
}

}  // namespace vantr::ctl
