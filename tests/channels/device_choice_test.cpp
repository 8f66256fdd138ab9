// Stored device numbers checked against the names stored beside them.
#include "channels/device_choice.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vantr {
namespace {

TEST(DeviceChoice, TheNumberStandsUnlessItsNameMoved) {
  const std::vector<std::string> now = {"Speakers", "USB Out", "Line Out", "USB Out"};
  const struct {
    int stored;
    const char* name;
    int device;
    bool noted;
  } rows[] = {
      {1, "", 1, false},          // older settings: no name, no check
      {1, "USB Out", 1, false},   // still there
      {0, "USB Out", 1, true},    // moved: the first device of that name
      {2, "Gone", 2, false},      // no such device now: the number stands
      {7, "Line Out", 2, true},   // a number past the list
      {-1, "Speakers", 0, true},  // no selection stored, the name found
      {3, "USB Out", 3, false},   // two of a name: the stored one stands
      {2, "line out", 2, false},  // names are the system's, compared exactly
  };
  for (const auto& row : rows) {
    const DeviceChoice choice = chooseDevice(row.stored, row.name, now);
    EXPECT_EQ(choice.device, row.device) << row.stored << " " << row.name;
    EXPECT_EQ(!choice.note.empty(), row.noted) << row.stored << " " << row.name;
  }
  EXPECT_EQ(chooseDevice(0, "USB Out", now).note, "device \"USB Out\" moved from 0 to 1");
  EXPECT_EQ(chooseDevice(0, "USB Out", {}).device, 0);
}

}  // namespace
}  // namespace vantr
