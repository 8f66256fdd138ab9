// vantrctl list and agenda: the schedule lists of every named file as the main
// window shows them, and what the scheduler engine would do over a span of
// simulated time, without touching any file.
#include <cstdio>
#include <utility>

#include "base/civil.h"
#include "base/text.h"
#include "base/time_position.h"
#include "schedule/agenda.h"
#include "schedule/schedule_item.h"
#include "schedule/schedule_time.h"
#include "schedule/scheduler.h"
#include "tools/vantrctl/commands.h"

namespace vantr::ctl {

namespace {

// Options of the form "--name value"; false (with a message) for anything else.
struct Options {
  std::string schedules, from, to, step;
};

bool parseOptions(const Args& args, bool agenda, Options& options, std::string& error) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& name = args[i];
    std::string* target = nullptr;
    if (name == "--schedules") target = &options.schedules;
    if (agenda && name == "--from") target = &options.from;
    if (agenda && name == "--to") target = &options.to;
    if (agenda && name == "--step") target = &options.step;
    if (!target) {
      error = "unexpected argument '" + name + "'";
      return false;
    }
    if (i + 1 >= args.size()) {
      error = name + " needs a value";
      return false;
    }
    *target = args[++i];
  }
  if (options.schedules.empty()) {
    error = "--schedules DIR is required";
    return false;
  }
  return true;
}

std::string channelText(int channel) { return channel < 0 ? "default" : std::to_string(channel); }

// Prints what the engine starts, one line each.
class AgendaPrinter : public AgendaOutput {
 public:
  explicit AgendaPrinter(std::ostream& out) : m_out(out) {}

  void play(int64_t second, const std::string& fileName, int channel) override {
    m_out << formatCivilStamp(second) << " play " << fileName << " chan=" << channelText(channel) << '\n';
  }
  void record(int64_t second, const std::string& fileName, int channel, int32_t duration) override {
    m_out << formatCivilStamp(second) << " record " << fileName << " chan=" << channelText(channel)
          << " duration=" << formatPosition(duration, PositionFormat::Tenths).substr(1) << '\n';
  }
  void deleteFile(int64_t second, const std::string& fileName) override {
    m_out << formatCivilStamp(second) << " delete " << fileName << '\n';
  }

 private:
  std::ostream& m_out;
};

int runList(const Args& args, std::ostream& out, std::ostream& err) {
  Options options;
  std::string error;
  if (!parseOptions(args, false, options, error)) return usageError(err, error);
  std::vector<NamedSchedule> files;
  if (!loadNamedSchedules(options.schedules, files)) {
    return usageError(err, "cannot read the schedules folder '" + options.schedules + "'");
  }
  const int order = localeDateOrder();
  for (const NamedSchedule& file : files) {
    out << '[' << file.name << "]\n";
    for (const ScheduleListLine& line : FillScheduleList(file.doc, order)) out << line.text << '\n';
  }
  return 0;
}

int runAgenda(const Args& args, std::ostream& out, std::ostream& err) {
  Options options;
  std::string error;
  if (!parseOptions(args, true, options, error)) return usageError(err, error);
  if (options.from.empty() || options.to.empty()) return usageError(err, "--from and --to are required");
  int64_t from = 0, to = 0;
  if (!parseMoment("--from", options.from, from, error) || !parseMoment("--to", options.to, to, error)) {
    return usageError(err, error);
  }
  if (to < from) return usageError(err, "--to lies before --from");
  int64_t step = 1;
  if (!options.step.empty()) {
    const bool digitsOnly = options.step.find_first_not_of("0123456789") == std::string::npos;
    step = digitsOnly ? parseLong(options.step) : 0;
    if (step < 1) return usageError(err, "--step needs a whole number of seconds of 1 or more");
  }
  std::vector<NamedSchedule> files;
  if (!loadNamedSchedules(options.schedules, files)) {
    return usageError(err, "cannot read the schedules folder '" + options.schedules + "'");
  }

  AgendaPrinter printer(out);
  computeAgenda(std::move(files), from, to, step, printer);
  return 0;
}

}  // namespace

const Command kScheduleCommands[] = {
    {"list", "--schedules DIR", runList},
    {"agenda", "--schedules DIR --from DD/MM/YY-HH:MM:SS --to DD/MM/YY-HH:MM:SS [--step N]", runAgenda},
    {nullptr, nullptr, nullptr},
};

}  // namespace vantr::ctl
