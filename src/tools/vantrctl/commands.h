// vantrctl: the operators' and scripts' console tool, built natively and for
// Windows from the same core. Each command is a function taking the arguments
// after the command name and the output and error streams (so tests run it in
// the test process), returning the process exit code.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace vantr::ctl {

using Args = std::vector<std::string>;

struct Command {
  const char* name;
  const char* usage;
  int (*run)(const Args& args, std::ostream& out, std::ostream& err);
};

// The commands of one group, ended by an entry whose name is null. Each group
// lives in its own file.
extern const Command kScheduleCommands[];
extern const Command kWavCommands[];
extern const Command kAsRunCommands[];

// Prints "vantrctl: <message>" as one line on err and returns exit code 2
// (wrong arguments or unreadable input).
int usageError(std::ostream& err, const std::string& message);

// An absolute moment in the stored form (05/03/04-14:07:09) as seconds; false
// with a message naming the option for anything else.
bool parseMoment(const std::string& option, const std::string& text, int64_t& seconds, std::string& error);

}  // namespace vantr::ctl
