// A machine that loses power in the middle of a settings write must come back
// with a whole settings file holding the old or the new value.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "base/file.h"
#include "store/settings.h"
#include "test_support/child_process.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

TEST(SettingsDurability, KilledWriterLeavesAWholeFileWithTheOldOrNewValue) {
  TempDir dir;
  const std::string path = dir.file("settings.ini");
  std::string text = "[settings]\r\n";
  for (int i = 0; i < 200; ++i) text += "key" + std::to_string(i) + "=value " + std::to_string(i) + "\r\n";
  ASSERT_TRUE(replaceFileContents(path, text + "[state]\r\ncounter=0\r\n"));
  for (int round = 0; round < 15; ++round) {
    // Each round counts up from above every value before it, so a value that
    // went back in time cannot hide.
    const int32_t first = (round + 1) * 1000000;
    ChildProcess writer;
    ASSERT_TRUE(writer.start(VANTR_INI_WRITER, {nativePath(path), std::to_string(first)}));
    // Start-up time varies (Wine, a loaded machine): the kill comes 0-60 ms
    // after the writer's first completed write, a different time each round.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (readInt(path, "state", "counter", -1) < first) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "round " << round << ": the writer never wrote";
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(round * 37 % 61));
    const int32_t before = readInt(path, "state", "counter", -1);
    ASSERT_FALSE(writer.wait(0)) << "round " << round << ": the writer stopped by itself";
    writer.kill();
    ASSERT_TRUE(writer.wait(10000));

    ASSERT_GE(readInt(path, "state", "counter", -1), before) << "round " << round << ": an older value came back";
    for (int i = 0; i < 200; ++i) {
      ASSERT_EQ(readText(path, "settings", "key" + std::to_string(i), "?"), "value " + std::to_string(i))
          << "round " << round << ": key" << i << " lost, the file was cut";
    }
  }
}

}  // namespace
}  // namespace vantr
