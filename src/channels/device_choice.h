// Sound devices are stored by number, and the system numbers them in the order
// it finds them: a USB device plugged in again, or one more device, moves the
// others. Beside each stored number the settings keep the device's name, and
// the number is checked against the name before it is used.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantr {

struct DeviceChoice {
  int device;
  // Empty when the stored number stands; else what happened, for the as-run log.
  std::string note;
};

// The device to use for a stored number and name, among the system's devices
// by name in device order. The number stands when no name was stored (older
// settings), when the device at that number has that name, or when no device
// has it; otherwise the first device of that name is taken.
DeviceChoice chooseDevice(int stored, std::string_view storedName, const std::vector<std::string>& names);

}  // namespace vantr
