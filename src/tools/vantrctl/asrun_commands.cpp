// vantrctl asrun: the as-run log of a Logs folder, every line or those of a
// span of time, as the program wrote them.
#include <cstdint>
#include <string>
#include <vector>

#include "asrun/as_run_log.h"
#include "tools/vantrctl/commands.h"

namespace vantr::ctl {

namespace {

int runAsRun(const Args& args, std::ostream& out, std::ostream& err) {
  std::string logs, fromText, toText;
  for (size_t i = 0; i < args.size(); ++i) {
    std::string* target = args[i] == "--logs"   ? &logs
                          : args[i] == "--from" ? &fromText
                          : args[i] == "--to"   ? &toText
                                                : nullptr;
    if (!target) return usageError(err, "unexpected argument '" + args[i] + "'");
    if (i + 1 >= args.size()) return usageError(err, args[i] + " needs a value");
    *target = args[++i];
  }
  if (logs.empty()) return usageError(err, "--logs DIR is required");
  int64_t from = INT64_MIN / 1000, to = INT64_MAX / 1000;
  std::string error;
  if ((!fromText.empty() && !parseMoment("--from", fromText, from, error)) ||
      (!toText.empty() && !parseMoment("--to", toText, to, error)))
    return usageError(err, error);
  std::vector<AsRunEntry> entries;
  if (!readAsRun(logs, from * 1000, to * 1000, entries))
    return usageError(err, "cannot read the logs folder '" + logs + "'");
  for (const AsRunEntry& entry : entries) out << formatAsRunLine(entry) << '\n';
  return 0;
}

}  // namespace

const Command kAsRunCommands[] = {
    {"asrun", "--logs DIR [--from 23/11/26-00:00:00] [--to 24/11/26-00:00:00]", &runAsRun},
    {nullptr, nullptr, nullptr},
};

}  // namespace vantr::ctl
