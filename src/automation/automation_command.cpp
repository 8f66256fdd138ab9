#include "automation/automation_command.h"

namespace vantr {

namespace {

bool startsWith(std::string_view body, std::string_view prefix) {
  return body.size() >= prefix.size() && body.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

std::optional<AutomationCommand> recognizeAutomationCommand(std::string_view body) {
  if (startsWith(body, kTimeSetPrefix))
    return AutomationCommand{kAutomationTimeSet, body.substr(kTimeSetPrefix.size())};
  // In the order of their numbers; no prefix is the start of another, so the
  // order decides nothing but is kept fixed all the same.
  static constexpr std::string_view kPrefixes[] = {kPlayStartPrefix, kRecordStartPrefix, kPlayStopPrefix,
                                                   kRecordStopPrefix};
  for (int command = 0; command < 4; ++command) {
    const std::string_view prefix = kPrefixes[command];
    if (startsWith(body, prefix)) return AutomationCommand{command, body.substr(prefix.size())};
  }
  return std::nullopt;
}

}  // namespace vantr
