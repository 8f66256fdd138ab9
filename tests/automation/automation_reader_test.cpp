// The reader thread over a scripted port: what it does with the settings,
// the port record, the bytes it reads, a missing target, and how it stops and
// starts again.
#include "automation/automation_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/file.h"
#include "schedule/schedule_time.h"
#include "store/settings.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr int64_t kStart = 1709647620;  // 05/03/24-14:07:00
constexpr auto kPatience = std::chrono::seconds(10);

class FakePort : public SerialPort {
 public:
  struct Read {
    std::string bytes;
    bool fails = false;
  };

  bool open(const std::string& portName) override {
    std::lock_guard<std::mutex> hold(m_lock);
    calls.push_back("open " + portName);
    return opens;
  }
  void applySettings(const uint8_t* record, size_t size) override {
    std::lock_guard<std::mutex> hold(m_lock);
    calls.push_back("apply " + std::to_string(size));
    applied.assign(record, record + size);
  }
  int read(uint8_t* buffer, size_t size) override {
    std::lock_guard<std::mutex> hold(m_lock);
    ++reads;
    if (size != kSerialReadSize) wrongSizes.push_back(size);
    int result = 0;
    if (m_script.empty()) {
      ++idleReads;
    } else {
      const Read next = m_script.front();
      m_script.pop_front();
      result = next.fails ? -1 : static_cast<int>(next.bytes.size());
      std::copy(next.bytes.begin(), next.bytes.end(), buffer);
    }
    if (result <= 0) ++nothingReads;
    m_changed.notify_all();
    return result;
  }
  void close() override {
    std::lock_guard<std::mutex> hold(m_lock);
    calls.push_back("close");
    m_changed.notify_all();
  }

  void push(std::vector<Read> script) {
    std::lock_guard<std::mutex> hold(m_lock);
    for (Read& r : script) m_script.push_back(std::move(r));
    idleReads = 0;
  }
  // Waits until the script is used up and the reader has read again after it,
  // so every command of the script has been handled.
  bool drained() {
    std::unique_lock<std::mutex> hold(m_lock);
    return m_changed.wait_for(hold, kPatience, [&] { return m_script.empty() && idleReads > 0; });
  }
  std::vector<std::string> callList() {
    std::lock_guard<std::mutex> hold(m_lock);
    return calls;
  }
  int readCount() {
    std::lock_guard<std::mutex> hold(m_lock);
    return reads;
  }

  bool opens = true;
  std::vector<std::string> calls;
  std::vector<uint8_t> applied;
  std::vector<size_t> wrongSizes;
  int reads = 0, idleReads = 0, nothingReads = 0;

 private:
  std::mutex m_lock;
  std::condition_variable m_changed;
  std::deque<Read> m_script;
};

class FakeTarget : public AutomationTarget {
 public:
  bool post(int command, const std::string& name) override {
    std::lock_guard<std::mutex> hold(m_lock);
    posts.push_back(std::to_string(command) + " " + name);
    return accepts;
  }
  std::vector<std::string> postList() {
    std::lock_guard<std::mutex> hold(m_lock);
    return posts;
  }
  bool accepts = true;
  std::vector<std::string> posts;

 private:
  std::mutex m_lock;
};

class AutomationReaderLoop : public ::testing::Test {
 protected:
  AutomationReaderLoop() {
    reader = std::make_unique<AutomationReader>(settings, port, clock, [this](int ms) { sleep(ms); });
  }
  ~AutomationReaderLoop() override { reader.reset(); }

  void sleep(int ms) {
    bool hold = false;
    {
      std::lock_guard<std::mutex> guard(sleepLock);
      sleeps.push_back(ms);
      hold = holdSleep;
      if (hold) {
        sleepHeld = true;
        readsAtHeldSleep = port.reads;
        sleepChanged.notify_all();
      }
    }
    // A held pause lasts until the reader has been told to stop.
    const auto until = std::chrono::steady_clock::now() + kPatience;
    while (hold && reader->running() && std::chrono::steady_clock::now() < until)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  void enable(const char* portName = "COM3") {
    writeInt(settings, "auto", "mode", 1);
    writeText(settings, "auto", "comport", portName);
  }
  bool endsByItself() {
    const auto until = std::chrono::steady_clock::now() + kPatience;
    while (reader->alive() && std::chrono::steady_clock::now() < until)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return !reader->alive();
  }
  static FakePort::Read bytes(std::string text) { return {std::move(text), false}; }
  static FakePort::Read failed() { return {"", true}; }
  static FakePort::Read nothing() { return {"", false}; }
  static std::string timeSet(int64_t seconds) {
    return "[VantorelTimeSet-" + FormatStoredDateTime(toScheduleTime(seconds)) + "]";
  }

  TempDir dir;
  const std::string settings = dir.file("settings.ini");
  FakePort port;
  FakeTarget target;
  ManualClock clock{kStart};
  std::mutex sleepLock;
  std::condition_variable sleepChanged;
  std::vector<int> sleeps;
  bool holdSleep = false;  // guarded by sleepLock
  bool sleepHeld = false;
  int readsAtHeldSleep = 0;
  std::unique_ptr<AutomationReader> reader;
};

TEST_F(AutomationReaderLoop, RunsOnlyInModeOne) {
  struct Row {
    const char* mode;  // nullptr: no key
    bool runs;
  } rows[] = {{nullptr, false}, {"0", false}, {"2", false},  {"-1", false},
              {"on", false},    {"1", true},  {" 1 ", true}, {"01", true}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.mode ? row.mode : "(missing)");
    writeText(settings, "auto", "mode", row.mode ? std::optional<std::string_view>(row.mode) : std::nullopt);
    port.calls.clear();
    port.push({});
    reader->start();
    if (row.runs) {
      ASSERT_TRUE(port.drained());
      EXPECT_TRUE(reader->alive());
      EXPECT_TRUE(reader->stop());
      EXPECT_EQ(port.callList(), (std::vector<std::string>{"open COM1", "close"})) << "COM1 when no port is named";
    } else {
      EXPECT_TRUE(endsByItself());
      EXPECT_TRUE(port.callList().empty()) << "the port is not even opened";
    }
  }
}

TEST_F(AutomationReaderLoop, APortThatWillNotOpenEndsTheThread) {
  enable("COM7");
  port.opens = false;
  reader->start();
  EXPECT_TRUE(endsByItself());
  EXPECT_EQ(port.callList(), std::vector<std::string>{"open COM7"});
  EXPECT_EQ(port.reads, 0);
}

TEST_F(AutomationReaderLoop, AppliesAWholePortRecordOnly) {
  struct Row {
    const char* name;
    int size;  // bytes in settings.dcb; -1: no file
    bool applied;
  } rows[] = {
      {"no file", -1, false}, {"empty", 0, false}, {"one short", 27, false}, {"whole", 28, true}, {"longer", 40, true}};
  enable();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string dcb = dir.file("settings.dcb");
    removeFile(dcb);
    std::vector<uint8_t> record;
    for (int i = 0; i < row.size; ++i) record.push_back(static_cast<uint8_t>(200 + i));
    if (row.size >= 0) {
      ASSERT_TRUE(File(dcb, FileMode::Write).write(record.data(), record.size()));
    }
    port.calls.clear();
    port.applied.clear();
    port.push({nothing()});
    reader->start();
    ASSERT_TRUE(port.drained());
    reader->stop();
    if (row.applied) {
      EXPECT_EQ(port.callList(), (std::vector<std::string>{"open COM3", "apply 28", "close"}));
      EXPECT_EQ(port.applied, std::vector<uint8_t>(record.begin(), record.begin() + 28));
    } else {
      EXPECT_EQ(port.callList(), (std::vector<std::string>{"open COM3", "close"}));
    }
  }
}

TEST_F(AutomationReaderLoop, HandsCommandsOnAndSetsTheClock) {
  enable();
  writeInt(settings, "auto", "timeoffsetmin", 1);
  reader->setTarget(&target);
  port.push({
      bytes("noise[VantorelPlay"),
      failed(),
      bytes("Start-News]"),
      nothing(),
      bytes("[VantorelRecordStart-Talk][Junk][VantorelPlayStop-News]"),
      bytes("[VantorelRecordStop-Talk]\r\n[VantorelPlayStart-"),
      failed(),
      failed(),
      bytes("A very long name"),
      bytes("]"),
      // Read with one minute added: ten seconds ahead of the clock, twice.
      bytes(timeSet(kStart - 50)),
      bytes(timeSet(kStart - 50)),
  });
  reader->start();
  ASSERT_TRUE(port.drained());
  EXPECT_TRUE(reader->stop());
  EXPECT_EQ(target.postList(),
            (std::vector<std::string>{"0 News", "1 Talk", "2 News", "3 Talk", "0 A very long name"}));
  EXPECT_EQ(clock.now(), kStart + 10) << "moved at the second agreeing reading";
  EXPECT_EQ(reader->clockMemory(), 0);
  EXPECT_TRUE(port.wrongSizes.empty()) << "every read asks for 64 bytes";
  // Each read that brought nothing, failed ones included, is followed by one pause.
  EXPECT_EQ(port.nothingReads, 4 + port.idleReads);
  EXPECT_EQ(sleeps, std::vector<int>(port.nothingReads, kEmptyReadSleepMs));
}

TEST_F(AutomationReaderLoop, DropsCommandsWhileNoTargetIsSetAndGoesOnAfterAFailedPost) {
  enable();
  EXPECT_FALSE(reader->hasTarget());
  port.push({bytes("[VantorelPlayStart-Lost]")});
  reader->start();
  ASSERT_TRUE(port.drained());
  reader->setTarget(&target);
  EXPECT_TRUE(reader->hasTarget());
  target.accepts = false;
  port.push({bytes("[VantorelPlayStart-Refused][VantorelPlayStop-Refused]")});
  ASSERT_TRUE(port.drained());
  EXPECT_TRUE(reader->alive()) << "a refused post does not end the thread";
  reader->setTarget(nullptr);
  port.push({bytes("[VantorelRecordStart-AfterTheWindow]")});
  ASSERT_TRUE(port.drained());
  reader->stop();
  EXPECT_EQ(target.postList(), (std::vector<std::string>{"0 Refused", "2 Refused"}));
}

TEST_F(AutomationReaderLoop, StopsWithinOneReadCycle) {
  enable();
  reader->start();
  ASSERT_TRUE(port.drained());
  {
    std::unique_lock<std::mutex> hold(sleepLock);
    holdSleep = true;
    ASSERT_TRUE(sleepChanged.wait_for(hold, kPatience, [&] { return sleepHeld; }));
  }
  const auto started = std::chrono::steady_clock::now();
  EXPECT_TRUE(reader->stop());
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(2));
  EXPECT_FALSE(reader->alive());
  EXPECT_EQ(port.reads, readsAtHeldSleep) << "no read after the pause in which it was told to stop";
  EXPECT_EQ(port.calls.back(), "close");
}

TEST_F(AutomationReaderLoop, RestartReadsTheSettingsAgainAndKeepsTheClockMemory) {
  enable("COM1");
  port.push({bytes(timeSet(kStart + 10))});
  reader->start();
  ASSERT_TRUE(port.drained());
  reader->start();  // runs already: nothing happens
  EXPECT_EQ(clock.now(), kStart) << "one reading alone moves nothing";
  writeText(settings, "auto", "comport", "COM2");
  port.push({bytes(timeSet(kStart + 10))});
  reader->restart();
  ASSERT_TRUE(port.drained());
  reader->stop();
  EXPECT_EQ(port.callList(), (std::vector<std::string>{"open COM1", "close", "open COM2", "close"}));
  EXPECT_EQ(clock.now(), kStart + 10) << "the reading before the restart counts as the first of two";

  // A command cut off by the restart is not completed by the next opening.
  reader->setTarget(&target);
  port.push({bytes("[VantorelPlayStart-Hal")});
  reader->start();
  ASSERT_TRUE(port.drained());
  reader->stop();
  port.push({bytes("f]")});
  reader->start();
  ASSERT_TRUE(port.drained());
  reader->stop();
  EXPECT_TRUE(target.postList().empty());
}

TEST_F(AutomationReaderLoop, GoingAwayStopsTheThreadAndClosesThePort) {
  enable();
  reader->start();
  ASSERT_TRUE(port.drained());
  reader.reset();
  EXPECT_EQ(port.calls.back(), "close");
}

}  // namespace
}  // namespace vantr
