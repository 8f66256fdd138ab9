#include "channels/device_choice.h"

namespace vantr {

DeviceChoice chooseDevice(int stored, std::string_view storedName, const std::vector<std::string>& names) {
  if (storedName.empty()) return {stored, {}};
  if (stored >= 0 && static_cast<size_t>(stored) < names.size() && names[static_cast<size_t>(stored)] == storedName)
    return {stored, {}};
  for (size_t i = 0; i < names.size(); ++i) {
    if (names[i] != storedName) continue;
    return {static_cast<int>(i), "device \"" + std::string(storedName) + "\" moved from " + std::to_string(stored) +
                                     " to " + std::to_string(i)};
  }
  return {stored, {}};
}

}  // namespace vantr
