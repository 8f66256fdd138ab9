#include "automation/automation_command.h"

#include <gtest/gtest.h>

#include <string>

namespace vantr {
namespace {

TEST(AutomationCommand, RecognisesThePrefixesExactlyOverTheirOwnLength) {
  using namespace std::string_literals;
  constexpr int kNone = -99;
  struct Row {
    std::string body;
    int command;  // the message number 0..3 the window receives, kAutomationTimeSet, or kNone
    std::string payload;
  } rows[] = {
      {"VantorelTimeSet-05/03/24-14:07:09", kAutomationTimeSet, "05/03/24-14:07:09"},
      {"VantorelPlayStart-News", 0, "News"},
      {"VantorelRecordStart-News", 1, "News"},
      {"VantorelPlayStop-News", 2, "News"},
      {"VantorelRecordStop-News", 3, "News"},
      {"VantorelPlayStart-", 0, ""},
      {"VantorelTimeSet-", kAutomationTimeSet, ""},
      {"VantorelPlayStart-Morning News ", 0, "Morning News "},
      {"VantorelPlayStart-VantorelPlayStop-x", 0, "VantorelPlayStop-x"},
      {"VantorelPlayStart-a\0b"s, 0, "a\0b"s},
      {"VantorelPlayStart--", 0, "-"},
      {"VantorelPlayStartX", kNone, ""},
      {"VantorelPlayStart", kNone, ""},
      {"vantorelplaystart-News", kNone, ""},
      {"VANTORELPLAYSTART-News", kNone, ""},
      {"VantorelTimeset-05/03/24-14:07:09", kNone, ""},
      {" VantorelPlayStart-News", kNone, ""},
      {"VantorelPlay-News", kNone, ""},
      {"", kNone, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.body);
    const std::optional<AutomationCommand> command = recognizeAutomationCommand(row.body);
    if (row.command == kNone) {
      EXPECT_FALSE(command.has_value());
      continue;
    }
    ASSERT_TRUE(command.has_value());
    EXPECT_EQ(command->command, row.command);
    EXPECT_EQ(std::string(command->payload), row.payload);
  }
}

}  // namespace
}  // namespace vantr
