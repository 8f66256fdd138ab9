// The commands of the serial line: a body starts with one of five prefixes,
// compared with case and over the prefix's own length; the rest of the body is
// the payload (a date-time for a time set, a named file's name otherwise).
#pragma once

#include <optional>
#include <string_view>

namespace vantr {

// The play and record commands as the main window receives them (the wParam
// of kMsgAutomationInput).
constexpr int kAutomationPlayStart = 0;
constexpr int kAutomationRecordStart = 1;
constexpr int kAutomationPlayStop = 2;
constexpr int kAutomationRecordStop = 3;
// The time set stays with the reader and has no message number.
constexpr int kAutomationTimeSet = -1;

constexpr std::string_view kTimeSetPrefix = "VantorelTimeSet-";
constexpr std::string_view kPlayStartPrefix = "VantorelPlayStart-";
constexpr std::string_view kRecordStartPrefix = "VantorelRecordStart-";
constexpr std::string_view kPlayStopPrefix = "VantorelPlayStop-";
constexpr std::string_view kRecordStopPrefix = "VantorelRecordStop-";

struct AutomationCommand {
  int command = kAutomationTimeSet;  // kAutomationTimeSet or 0..3
  std::string_view payload;          // a view into the body
};

// The command a body carries, or nothing for a body that matches no prefix.
std::optional<AutomationCommand> recognizeAutomationCommand(std::string_view body);

}  // namespace vantr
