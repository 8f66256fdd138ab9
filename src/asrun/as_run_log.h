// The as-run log: one line for every start and end of a play or a recording,
// every scheduled delete, and every start that failed, appended to a daily
// text file in the Logs folder. An operator (or vantrctl asrun) reads what the
// station actually did; the tests compare it with what the schedules predict.
//
// A line: "YYYY-MM-DD HH:MM:SS.mmm<TAB>channel<TAB>action<TAB>file<TAB>cause<TAB>result",
// with the local wall clock, the channel as "play 0".."play 3" /
// "record 0".."record 3" (or "-" where no channel is involved), and the
// action, cause and result as given.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "base/clock.h"

namespace vantr {

// Device: a stored device found at another number (the file field names the
// setting or item, the result what was done).
enum class AsRunAction { PlayStart, PlayEnd, RecordStart, RecordEnd, Delete, Device };

struct AsRunEntry {
  int64_t milliseconds = 0;  // local wall clock, milliseconds since 1970 counted as UTC
  std::string channel;       // "play 2", "record 0" or "-"
  std::string action;        // "play start", "record end", "delete", ...
  std::string file;
  std::string cause;   // "schedule News sch3", "operator", "automation"
  std::string result;  // "done", "failed: file missing", ...
};

std::string asRunActionText(AsRunAction action);
std::string asRunChannelText(bool play, int channel);

// The line of an entry, without its line end. Tabs and line ends inside the
// fields become spaces, so every entry stays one line of six fields.
std::string formatAsRunLine(const AsRunEntry& entry);
// False for a line that is not six fields with a well-formed time (a line cut
// short by a power failure, say).
bool parseAsRunLine(std::string_view line, AsRunEntry& entry);

// "asrun-YYYY-MM-DD.log": the file that holds the entries of a day.
std::string asRunFileName(int64_t milliseconds);

// Every entry of the log files in folder whose time lies in [from, to)
// (milliseconds), in file and line order. Lines that do not parse are skipped.
// False when the folder cannot be read.
bool readAsRun(const std::string& folder, int64_t from, int64_t to, std::vector<AsRunEntry>& entries);

// Appends entries from any thread without waiting for the disk: a writer
// thread of its own takes the lines and appends each with one write to the
// file of its day. A line that cannot be written (disk full, folder gone) is
// counted and dropped, and the next line that can be written is preceded by a
// note of how many were lost; nothing here ever stops the caller.
class AsRunLog {
 public:
  // Lines kept waiting for the writer at the most; more are counted as lost.
  static constexpr size_t kMaxPending = 4096;

  AsRunLog(std::string folder, const Clock& clock);
  ~AsRunLog();
  AsRunLog(const AsRunLog&) = delete;
  AsRunLog& operator=(const AsRunLog&) = delete;

  // Stamps the entry with the clock's time and queues it.
  void append(AsRunAction action, std::string_view channel, std::string_view file, std::string_view cause,
              std::string_view result);
  // Queues an entry as it is (its time included).
  void append(AsRunEntry entry);
  // Waits until every queued line has been written or given up.
  void flush();

 private:
  void run();
  bool writeLine(int64_t milliseconds, const std::string& line);

  const std::string m_folder;
  const Clock& m_clock;
  std::mutex m_lock;
  std::condition_variable m_wake, m_idle;
  std::deque<AsRunEntry> m_pending;
  uint64_t m_lost = 0;  // guarded by m_lock
  bool m_writing = false, m_stop = false;
  std::thread m_thread;
};

}  // namespace vantr
