#include "asrun/as_run_log.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "base/civil.h"
#include "base/dir.h"
#include "base/file.h"
#include "base/path.h"

namespace vantr {

namespace {

constexpr size_t kFields = 6;
constexpr std::string_view kFilePrefix = "asrun-";
constexpr std::string_view kFileSuffix = ".log";

// Tabs and line ends would split an entry: they become spaces.
std::string oneField(std::string_view text) {
  std::string field(text);
  std::replace_if(
      field.begin(), field.end(), [](char c) { return c == '\t' || c == '\r' || c == '\n'; }, ' ');
  return field;
}

std::string formatStamp(int64_t milliseconds) {
  char millis[8];
  std::snprintf(millis, sizeof millis, ".%03lld", static_cast<long long>(floorMod(milliseconds, 1000)));
  return formatCivilStamp(floorDiv(milliseconds, 1000)) + millis;
}

// "YYYY-MM-DD HH:MM:SS.mmm" exactly, with every field in its range.
bool parseStamp(std::string_view text, int64_t& milliseconds) {
  static constexpr std::string_view kShape = "0000-00-00 00:00:00.000";
  if (text.size() != kShape.size()) return false;
  for (size_t i = 0; i < kShape.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (kShape[i] == '0' ? !digit : text[i] != kShape[i]) return false;
  }
  const auto number = [&](size_t at, size_t n) {
    int64_t v = 0;
    for (size_t i = at; i < at + n; ++i) v = v * 10 + (text[i] - '0');
    return v;
  };
  CivilTime t;
  t.year = number(0, 4);
  t.month = number(5, 2);
  t.day = number(8, 2);
  t.hour = number(11, 2);
  t.minute = number(14, 2);
  t.second = number(17, 2);
  if (t.month < 1 || t.month > 12 || t.day < 1 || t.day > 31 || t.hour > 23 || t.minute > 59 || t.second > 59)
    return false;
  const int64_t seconds = secondsFromCivil(t);
  if (civilFromSeconds(seconds).day != t.day) return false;  // 31 April and the like
  milliseconds = seconds * 1000 + number(20, 3);
  return true;
}

}  // namespace

std::string asRunActionText(AsRunAction action) {
  switch (action) {
    case AsRunAction::PlayStart: return "play start";
    case AsRunAction::PlayEnd: return "play end";
    case AsRunAction::RecordStart: return "record start";
    case AsRunAction::RecordEnd: return "record end";
    case AsRunAction::Delete: return "delete";
    case AsRunAction::Device: return "device";
  }
  return "?";
}

std::string asRunChannelText(bool play, int channel) {
  if (channel < 0) return "-";
  return (play ? "play " : "record ") + std::to_string(channel);
}

std::string formatAsRunLine(const AsRunEntry& e) {
  std::string line = formatStamp(e.milliseconds);
  for (const std::string* field : {&e.channel, &e.action, &e.file, &e.cause, &e.result}) {
    line += '\t';
    line += oneField(*field);
  }
  return line;
}

bool parseAsRunLine(std::string_view line, AsRunEntry& entry) {
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  // A line end inside a line is no line this log wrote.
  if (line.find_first_of("\r\n") != std::string_view::npos) return false;
  std::string_view fields[kFields];
  size_t count = 0;
  for (;;) {
    const size_t tab = line.find('\t');
    if (count == kFields) return false;
    fields[count++] = line.substr(0, tab);
    if (tab == std::string_view::npos) break;
    line.remove_prefix(tab + 1);
  }
  if (count != kFields) return false;
  AsRunEntry parsed;
  if (!parseStamp(fields[0], parsed.milliseconds)) return false;
  parsed.channel = std::string(fields[1]);
  parsed.action = std::string(fields[2]);
  parsed.file = std::string(fields[3]);
  parsed.cause = std::string(fields[4]);
  parsed.result = std::string(fields[5]);
  entry = std::move(parsed);
  return true;
}

std::string asRunFileName(int64_t milliseconds) {
  return std::string(kFilePrefix) + formatStamp(milliseconds).substr(0, 10) + std::string(kFileSuffix);
}

bool readAsRun(const std::string& folder, int64_t from, int64_t to, std::vector<AsRunEntry>& entries) {
  std::vector<std::string> names;
  if (!listFolder(folder, kFileSuffix, names)) return false;
  // The names carry the date, so their order is the order of the days.
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    if (name.compare(0, kFilePrefix.size(), kFilePrefix) != 0) continue;
    std::string text;
    if (!readWholeFile(joinPath(folder, name), text)) continue;
    size_t start = 0;
    // A last line without its line end was cut short and is left out.
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
      AsRunEntry entry;
      if (parseAsRunLine(std::string_view(text).substr(start, end - start), entry) && entry.milliseconds >= from &&
          entry.milliseconds < to)
        entries.push_back(std::move(entry));
    }
  }
  return true;
}

AsRunLog::AsRunLog(std::string folder, const Clock& clock)
    : m_folder(std::move(folder)), m_clock(clock), m_thread([this] { run(); }) {}

AsRunLog::~AsRunLog() {
  {
    std::lock_guard<std::mutex> hold(m_lock);
    m_stop = true;
  }
  m_wake.notify_one();
  m_thread.join();
}

void AsRunLog::append(AsRunAction action, std::string_view channel, std::string_view file, std::string_view cause,
                      std::string_view result) {
  AsRunEntry entry;
  entry.milliseconds = m_clock.nowMilliseconds();
  entry.channel = std::string(channel);
  entry.action = asRunActionText(action);
  entry.file = std::string(file);
  entry.cause = std::string(cause);
  entry.result = std::string(result);
  append(std::move(entry));
}

void AsRunLog::append(AsRunEntry entry) {
  {
    std::lock_guard<std::mutex> hold(m_lock);
    if (m_pending.size() >= kMaxPending) {
      ++m_lost;
      return;
    }
    m_pending.push_back(std::move(entry));
  }
  m_wake.notify_one();
}

void AsRunLog::flush() {
  std::unique_lock<std::mutex> hold(m_lock);
  m_idle.wait(hold, [this] { return m_pending.empty() && !m_writing; });
}

bool AsRunLog::writeLine(int64_t milliseconds, const std::string& line) {
  makeDirectory(m_folder);
  File file(joinPath(m_folder, asRunFileName(milliseconds)), FileMode::Append);
  // One write per line: a reader, or the disk after a crash, sees whole lines
  // and at most a cut-off last one.
  return file.isOpen() && file.write(line.data(), line.size());
}

void AsRunLog::run() {
  std::unique_lock<std::mutex> hold(m_lock);
  for (;;) {
    m_wake.wait(hold, [this] { return m_stop || !m_pending.empty(); });
    if (m_pending.empty()) break;  // stopping, and everything is written
    std::deque<AsRunEntry> batch;
    batch.swap(m_pending);
    uint64_t lost = std::exchange(m_lost, 0);
    m_writing = true;
    hold.unlock();
    for (const AsRunEntry& entry : batch) {
      std::string line;
      if (lost > 0) {
        AsRunEntry note;
        note.milliseconds = entry.milliseconds;
        note.channel = "-";
        note.action = "log";
        note.result = std::to_string(lost) + " earlier lines could not be written";
        line = formatAsRunLine(note) + "\r\n";
      }
      line += formatAsRunLine(entry) + "\r\n";
      lost = writeLine(entry.milliseconds, line) ? 0 : lost + 1;
    }
    hold.lock();
    m_lost += lost;
    m_writing = false;
    m_idle.notify_all();
  }
}

}  // namespace vantr
