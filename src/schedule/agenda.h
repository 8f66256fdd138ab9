// The agenda: what the scheduler engine would start over a span of simulated
// time, ticked every step seconds from `from` to `to` (both inclusive) as the
// main window's timer would, each tick at the start of its second. No file is
// touched: a scheduled delete drops the file (every name equal to it without
// regard to case) from the simulation, and the rebuild that follows, made with
// the tick's now, no longer loads its items.
//
// Two ways give the same starts in the same order. walkAgenda ticks the engine
// itself and evaluates every entry in every second walked, so it costs the
// table's size times the span. computeAgenda goes from one due second to the
// next (nextDueSecond) and evaluates only the entries due there; a delete
// rebuilds the table, after which the rest of that second is walked by the
// engine's own rule and the due seconds are worked out afresh. With a step of
// 21 to 59 seconds every tick walks back over seconds the one before walked
// (the engine's catch-up); with more than 60 some seconds are never walked;
// both ways do the same.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "schedule/scheduler.h"

namespace vantr {

// What the agenda shows: each start with the second the engine evaluated.
class AgendaOutput {
 public:
  virtual ~AgendaOutput() = default;
  virtual void play(int64_t second, const std::string& fileName, int channel) = 0;
  virtual void record(int64_t second, const std::string& fileName, int channel, int32_t duration) = 0;
  virtual void deleteFile(int64_t second, const std::string& fileName) = 0;
};

// step is 1 or more, and to is not before from.
void computeAgenda(std::vector<NamedSchedule> files, int64_t from, int64_t to, int64_t step, AgendaOutput& output);
// The engine ticked second by second: the reference computeAgenda is held to.
void walkAgenda(std::vector<NamedSchedule> files, int64_t from, int64_t to, int64_t step, AgendaOutput& output);

}  // namespace vantr
