// The levels an engine reports for the meters: one signed dB value per
// channel, -127 meaning no level.
#pragma once

#include <cstdint>
#include <vector>

namespace vantr {

using LevelList = std::vector<int8_t>;

}  // namespace vantr
