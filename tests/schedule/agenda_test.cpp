// The agenda worked out from due second to due second against the engine
// ticked second by second, over random tables that crowd their items into a
// few seconds: the window's edges, the catch-up minute before the first tick,
// midnight and the turn of the year.
#include "schedule/agenda.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "base/civil.h"
#include "schedule/schedule_time.h"
#include "store/ini_document.h"

namespace vantr {
namespace {

struct Lines : AgendaOutput {
  std::vector<std::string> lines;
  void add(int64_t second, const std::string& what) { lines.push_back(std::to_string(second) + " " + what); }
  void play(int64_t second, const std::string& name, int channel) override {
    add(second, "play " + name + " " + std::to_string(channel));
  }
  void record(int64_t second, const std::string& name, int channel, int32_t duration) override {
    add(second, "record " + name + " " + std::to_string(channel) + " " + std::to_string(duration));
  }
  void deleteFile(int64_t second, const std::string& name) override { add(second, "delete " + name); }
};

// Schedule files and the window they are run over.
struct Case {
  std::vector<NamedSchedule> files;
  int64_t from = 0, to = 0;
};

// One random case.
class RandomCase : public Case {
 public:
  RandomCase(uint32_t seed, int fileCount, int itemsPerFile, int64_t spanSeconds) : m_random(seed) {
    // Windows that cross a leap day, the turn of a year and a plain week.
    const int64_t bases[] = {secondsFromCivil({2004, 2, 27, 0, 0, 0}), secondsFromCivil({2004, 12, 30, 0, 0, 0}),
                             secondsFromCivil({2005, 6, 6, 0, 0, 0})};
    from = bases[below(3)] + below(86400);
    to = from + spanSeconds - below(120);
    // The window's edges and the minute the first tick looks back over;
    // midnight; seconds that ticks of most steps fall on, and a minute before
    // them, which a delete there drops from the table or not.
    for (const int64_t edge : {from, to}) {
      for (const int64_t d : {-61, -60, -59, -1, 0, 1}) m_hot.push_back(edge + d);
    }
    const int64_t midnight = floorDiv(from, kSecondsPerDay) * kSecondsPerDay + kSecondsPerDay;
    m_hot.push_back(midnight - 1);
    m_hot.push_back(midnight);
    for (int i = 0; i < 3; ++i) {
      const int64_t tick = from + 3600 * below(static_cast<int>((to - from) / 3600));
      for (const int64_t d : {-61, -60, 0}) m_hot.push_back(tick + d);
      m_hot.push_back(from + below(static_cast<int>(to - from)));
    }
    // Names that differ only in case are both dropped by a delete of either;
    // a name past 47 characters is cut in the table and its delete drops nothing.
    const std::string names[] = {"Alpha", "beta", "News", "NEWS", "Gamma", std::string(50, 'L')};
    for (int f = 0; f < fileCount; ++f) {
      std::string text;
      for (int slot = 0; slot < itemsPerFile; ++slot) text += item(slot);
      files.push_back({names[f % 6] + (f < 6 ? "" : std::to_string(f)), IniDocument(text)});
    }
  }

 private:
  int below(int n) { return static_cast<int>(m_random() % static_cast<uint32_t>(n)); }
  // A crowded second, now and then one off it. Every draw is a statement of
  // its own, so that the order of draws, and so each case, is the same with
  // every compiler.
  int64_t hot() {
    const int64_t second = m_hot[below(static_cast<int>(m_hot.size()))];
    return below(5) == 0 ? second + below(3) - 1 : second;
  }
  std::string moment(bool forExpiry) {
    ScheduleTime value = toScheduleTime(hot());
    switch (below(10)) {
      case 0: return forExpiry ? "NEVER" : "IMMEDIATE";
      case 1: return forExpiry ? "IMMEDIATE" : "NEVER";
      case 2: MakeAnnual(value); break;  // the same day and time in any year
      default: break;
    }
    return FormatStoredDateTime(value);
  }
  std::string item(int slot) {
    const int kind = below(12) == 0 ? (below(2) ? -1 : 9) : 1 + below(5);  // now and then deleted or unknown
    const int channel = below(5) - 1;
    const int days = below(3) == 0 ? 127 : below(2) ? 1 << below(7) : below(128);
    const std::string time = below(20) == 0 ? "25:00:00" : FormatTimeOfDay(static_cast<TimeOfDay>(hot() % 86400));
    const std::string commence = below(2) ? "IMMEDIATE" : moment(false);
    const std::string expire = below(2) ? "NEVER" : moment(true);
    const std::string date = moment(false);
    const int seconds = 10 + below(50);
    return "[sch" + std::to_string(slot) + "]\ntype=" + std::to_string(kind) + "\nchan=" + std::to_string(channel) +
           "\ntime=" + time + "\ndays=" + std::to_string(days) + "\ncommence=" + commence + "\nexpire=" + expire +
           "\ndate=" + date + "\nduration=0:00:" + std::to_string(seconds) + ".0\n";
  }

  std::mt19937 m_random;
  std::vector<int64_t> m_hot;
};

// A delete in a second that a tick falls on, after an item dated a minute
// before it: the rebuild made with that tick's now keeps the item, so the
// walk goes on with the second of the two items behind the delete. A rebuild
// made with a later now would drop it, and both of them would be passed over.
Case deleteOnATick() {
  Case c;
  c.from = secondsFromCivil({2004, 3, 5, 10, 0, 0});
  c.to = c.from + 2 * 3600;
  const int64_t tick = c.from + 3600;
  const auto moment = [](int64_t second) { return FormatStoredDateTime(toScheduleTime(second)); };
  c.files.push_back({"A", IniDocument("[sch0]\ntype=1\ndate=" + moment(tick - 60) + "\n")});
  c.files.push_back({"B", IniDocument("[sch0]\ntype=5\ndate=" + moment(tick) + "\n")});
  c.files.push_back(
      {"C", IniDocument("[sch0]\ntype=1\ndate=" + moment(tick) + "\n[sch1]\ntype=3\ndate=" + moment(tick) + "\n")});
  return c;
}

// What the walks printed, counted so that the test can tell it tried what it
// is meant to.
struct Tally {
  size_t starts = 0, deletes = 0, shared = 0;
};

void expectSameAgenda(const Case& c, const std::string& label, Tally& tally) {
  for (const int64_t step : {1, 20, 21, 30, 59, 60, 61, 3600}) {
    Lines walked, computed;
    walkAgenda(c.files, c.from, c.to, step, walked);
    computeAgenda(c.files, c.from, c.to, step, computed);
    size_t i = 0;
    while (i < walked.lines.size() && i < computed.lines.size() && walked.lines[i] == computed.lines[i]) ++i;
    ASSERT_EQ(walked.lines.size(), computed.lines.size())
        << label << " step " << step << ", first difference at line " << i;
    ASSERT_EQ(i, walked.lines.size()) << label << " step " << step << ": " << walked.lines[i] << " walked, "
                                      << computed.lines[i] << " computed";
    for (size_t k = 0; k < walked.lines.size(); ++k) {
      const std::string& line = walked.lines[k];
      tally.deletes += line.find(" delete ") != std::string::npos;
      tally.shared +=
          k > 0 && line.substr(0, line.find(' ')) == walked.lines[k - 1].substr(0, walked.lines[k - 1].find(' '));
    }
    tally.starts += walked.lines.size();
  }
}

TEST(Agenda, FromDueSecondToDueSecondAsTheEngineWalks) {
  struct Shape {
    uint32_t seeds;
    int fileCount, itemsPerFile;
    int64_t span;
  } shapes[] = {
      {30, 4, 8, 3 * 86400},  // a few files over three days
      {6, 3, 4, 15 * 86400},  // two weeks: weekly items, and bounds days after the first tick
      {1, 6, 250, 2 * 3600},  // more than the table holds: a delete lets the last files in
  };
  Tally tally;
  size_t fullTables = 0;
  for (const Shape& shape : shapes) {
    for (uint32_t seed = 1; seed <= shape.seeds; ++seed) {
      const RandomCase c(seed, shape.fileCount, shape.itemsPerFile, shape.span);
      auto table = std::make_unique<ScheduleTable>();
      RebuildSchedules(*table, c.files, c.from);
      fullTables += table->count == ScheduleTable::kCapacity;
      expectSameAgenda(c, "seed " + std::to_string(seed) + ", " + std::to_string(shape.itemsPerFile) + " items a file",
                       tally);
      if (HasFatalFailure()) return;
    }
  }
  expectSameAgenda(deleteOnATick(), "a delete on a tick", tally);
  // The tables crowd their items enough to try what they are meant to.
  EXPECT_GT(tally.starts, 4000u);
  EXPECT_GT(tally.deletes, 400u);
  EXPECT_GT(tally.shared, 1200u);
  EXPECT_EQ(fullTables, 1u);
}

}  // namespace
}  // namespace vantr
