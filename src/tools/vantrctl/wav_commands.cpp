#include "tools/vantrctl/commands.h"

namespace vantr::ctl {

const Command kWavCommands[] = {
    {nullptr, nullptr, nullptr},
};

}  // namespace vantr::ctl
