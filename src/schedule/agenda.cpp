#include "schedule/agenda.h"

#include <algorithm>
#include <deque>
#include <memory>

#include "base/civil.h"
#include "base/text.h"

namespace vantr {

namespace {

// The simulated program: the named files, the table made from them, and the
// actions the engine calls, which print and drop deleted files.
class Simulation : public SchedulerActions {
 public:
  Simulation(std::vector<NamedSchedule> files, int64_t from, AgendaOutput& output)
      : m_files(std::move(files)), m_output(output) {
    RebuildSchedules(*m_table, m_files, from);
  }

  ScheduleTable& table() { return *m_table; }
  // The now of the tick walking the current second: a rebuild drops the items
  // that can no longer fire by it.
  void setNow(int64_t now) { m_now = now; }
  // How many rebuilds there have been, so that a caller can tell the table
  // changed under it.
  unsigned rebuilds() const { return m_rebuilds; }

  void play(const std::string& fileName, int channel) override {
    m_output.play(m_table->lastSecond, fileName, channel);
  }
  void record(const std::string& fileName, int channel, int32_t duration) override {
    m_output.record(m_table->lastSecond, fileName, channel, duration);
  }
  void deleteFile(const std::string& fileName) override {
    m_output.deleteFile(m_table->lastSecond, fileName);
    m_files.erase(std::remove_if(m_files.begin(), m_files.end(),
                                 [&](const NamedSchedule& file) { return equalsNoCase(file.name, fileName); }),
                  m_files.end());
  }
  void rebuild() override {
    RebuildSchedules(*m_table, m_files, m_now);
    ++m_rebuilds;
  }

 private:
  std::vector<NamedSchedule> m_files;
  AgendaOutput& m_output;
  std::unique_ptr<ScheduleTable> m_table = std::make_unique<ScheduleTable>();
  int64_t m_now = 0;
  unsigned m_rebuilds = 0;
};

// An entry of the table due in a second.
struct Due {
  int64_t second;
  size_t index;
};

// The walk's order, reversed for the heap: the earlier second first, and in
// one second the lower index.
bool later(const Due& a, const Due& b) { return a.second != b.second ? a.second > b.second : a.index > b.index; }

// The due seconds of a table in the walk's order. Each entry is queued at its
// next due second only, and queued again at the one after when it is taken.
class DueQueue {
 public:
  explicit DueQueue(const ScheduleTable& table) : m_table(table) {}

  // Queues every entry at its first due second after `after`.
  void reset(int64_t after) {
    m_heap.clear();
    for (size_t i = 0; i < m_table.count; ++i) push({nextDueSecond(m_table.entries[i], after), i});
  }
  // Takes the earliest if it lies at or before last.
  bool takeUpTo(int64_t last, Due& due) {
    if (m_heap.empty() || m_heap.front().second > last) return false;
    due = popEarliest();
    push({nextDueSecond(m_table.entries[due.index], due.second), due.index});
    return true;
  }
  // Passes over the due seconds up to and including last.
  void skipTo(int64_t last) {
    while (!m_heap.empty() && m_heap.front().second <= last) {
      const size_t index = popEarliest().index;
      push({nextDueSecond(m_table.entries[index], last), index});
    }
  }

 private:
  void push(const Due& due) {
    if (due.second == kNeverDue) return;
    m_heap.push_back(due);
    std::push_heap(m_heap.begin(), m_heap.end(), later);
  }
  Due popEarliest() {
    std::pop_heap(m_heap.begin(), m_heap.end(), later);
    const Due due = m_heap.back();
    m_heap.pop_back();
    return due;
  }

  const ScheduleTable& m_table;
  std::vector<Due> m_heap;
};

// Seconds the ticks walk one after another, after `after` up to last. The
// ticks at firstTick, firstTick + step, ... each walk those up to their now.
struct Run {
  int64_t after, last, firstTick;
  // The next run walks again the seconds after this one (none when it lies at
  // or beyond last).
  int64_t keepAfter;
};

// Walks runs from due second to due second.
class DueWalk {
 public:
  DueWalk(Simulation& simulation, int64_t step)
      : m_simulation(simulation), m_table(simulation.table()), m_queue(m_table), m_step(step) {}

  void walk(const Run& run) {
    if (run.after < m_queuedAfter) {
      // The first run, or one that walks again seconds walked before the
      // last rebuild: those are walked over the table as it is now.
      queueAfter(run.after);
    } else {
      while (!m_window.empty() && m_window.front().second <= run.after) m_window.pop_front();
      if (m_window.empty()) m_queue.skipTo(run.after);
    }
    size_t next = 0;  // the window's first entry not yet started in this run
    for (;;) {
      if (next == m_window.size()) {
        Due taken{};
        if (!m_queue.takeUpTo(run.last, taken)) break;
        m_window.push_back(taken);
      }
      const Due due = m_window[next];
      if (start(run, due)) {
        next = 0;
        continue;
      }
      // What the next run does not walk again is left behind; it always lies
      // at the front, as the window is in walk order.
      if (due.second <= run.keepAfter)
        m_window.pop_front();
      else
        ++next;
    }
  }

 private:
  // The tick whose walk reaches second: the first at or after it.
  int64_t tickOf(const Run& run, int64_t second) const {
    if (second <= run.firstTick) return run.firstTick;
    return run.firstTick + floorDiv(second - run.firstTick + m_step - 1, m_step) * m_step;
  }

  // Starts one due entry. After a rebuild the rest of its second is walked
  // over the new table by the engine's own rule, and the due seconds after it
  // are queued afresh; returns true then.
  bool start(const Run& run, const Due& due) {
    m_table.lastSecond = due.second;
    m_simulation.setNow(tickOf(run, due.second));
    const unsigned rebuilds = m_simulation.rebuilds();
    startItem(m_table.entries[due.index], m_simulation);
    if (m_simulation.rebuilds() == rebuilds) return false;
    runDueItems(m_table, daySecond(due.second), due.index + 1, m_simulation);
    queueAfter(due.second);
    return true;
  }

  // Queues the table's due seconds after second afresh.
  void queueAfter(int64_t second) {
    m_queue.reset(second);
    m_window.clear();
    m_queuedAfter = second;
  }

  Simulation& m_simulation;
  ScheduleTable& m_table;
  DueQueue m_queue;
  const int64_t m_step;
  // Due seconds taken from the queue and not yet left behind, in walk order.
  std::deque<Due> m_window;
  // The second after which the due seconds were last queued afresh. Later
  // runs start no earlier than the one before, so only a rebuild makes a run
  // start before it.
  int64_t m_queuedAfter = INT64_MAX;
};

}  // namespace

void computeAgenda(std::vector<NamedSchedule> files, int64_t from, int64_t to, int64_t step, AgendaOutput& output) {
  Simulation simulation(std::move(files), from, output);
  DueWalk walk(simulation, step);
  const int64_t lastTick = from + (to - from) / step * step;
  // The first tick starts from the table's last second (0 for a new table).
  const int64_t firstAfter = catchUpStart(simulation.table().lastSecond, from);
  if (lastTick == from) {
    walk.walk({firstAfter, from, from, from});
    return;
  }
  // Every later tick comes step seconds after the last second walked, so each
  // starts its walk the same distance back from its now.
  const int64_t reach = from + step - catchUpStart(from, from + step);
  if (reach == step) {
    // Each tick walks on from where the one before stopped: one run.
    walk.walk({firstAfter, lastTick, from, lastTick});
    return;
  }
  walk.walk({firstAfter, from, from, from + step - reach});
  for (int64_t now = from + step; now <= lastTick; now += step) {
    walk.walk({now - reach, now, now, now < lastTick ? now + step - reach : now});
  }
}

void walkAgenda(std::vector<NamedSchedule> files, int64_t from, int64_t to, int64_t step, AgendaOutput& output) {
  Simulation simulation(std::move(files), from, output);
  for (int64_t now = from; now <= to; now += step) {
    simulation.setNow(now);
    SchedulerTick(simulation.table(), now, simulation);
  }
}

}  // namespace vantr
