// A machine that loses power in the middle of a settings write must come back
// with a whole settings file holding the old or the new value.
#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>
#include <thread>

#include "app/settings.h"
#include "base/file.h"
#include "test_support/child_process.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

constexpr int kFillerKeys = 200;

std::string fillerFile() {
  std::string text = "; settings kept across power cuts\r\n[settings]\r\n";
  for (int i = 0; i < kFillerKeys; ++i) text += "key" + std::to_string(i) + "=value " + std::to_string(i * 7) + "\r\n";
  return text + "[state]\r\ncounter=0\r\n";
}

void expectWholeFile(const std::string& path) {
  for (int i = 0; i < kFillerKeys; ++i) {
    ASSERT_EQ(readText(path, "settings", "key" + std::to_string(i), "MISSING"), "value " + std::to_string(i * 7))
        << "key" << i << " lost: the file was cut";
  }
}

TEST(SettingsDurability, KilledWriterLeavesAWholeFileWithTheOldOrNewValue) {
  TempDir dir;
  const std::string path = dir.file("settings.ini");
  ASSERT_TRUE(replaceFileContents(path, fillerFile()));
  std::mt19937 random(20261123);
  for (int round = 0; round < 15; ++round) {
    // Each round counts up from above every value of the rounds before, so a
    // value that went back in time cannot hide.
    const int32_t first = (round + 1) * 1000000;
    ChildProcess writer;
    ASSERT_TRUE(writer.start(VANTR_INI_WRITER, {nativePath(path), std::to_string(first)}));
    // Process start-up time varies (Wine, a loaded machine): the kill moment
    // is random from the writer's first completed write on.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (readInt(path, "state", "counter", -1) < first) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "round " << round << ": the writer never wrote";
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution<int>(0, 60)(random)));
    // A reader while the writer runs always finds a whole file.
    const int32_t during = readInt(path, "state", "counter", -1);
    ASSERT_GE(during, first);
    std::this_thread::sleep_for(std::chrono::milliseconds(std::uniform_int_distribution<int>(0, 20)(random)));
    int exitCode = 0;
    ASSERT_FALSE(writer.wait(0, &exitCode)) << "round " << round << ": the writer stopped by itself, code " << exitCode;
    writer.kill();
    ASSERT_TRUE(writer.wait(10000));

    const int32_t after = readInt(path, "state", "counter", -1);
    ASSERT_GE(after, during) << "round " << round << ": the file went back to an older value";
    expectWholeFile(path);
  }
}

}  // namespace
}  // namespace vantr
