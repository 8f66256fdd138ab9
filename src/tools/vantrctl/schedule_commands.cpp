#include "tools/vantrctl/commands.h"

namespace vantr::ctl {

const Command kScheduleCommands[] = {
    {nullptr, nullptr, nullptr},
};

}  // namespace vantr::ctl
