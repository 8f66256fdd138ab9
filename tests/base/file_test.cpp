#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "base/dir.h"
#include "base/file.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

TEST(File, SharingModes) {
  TempDir dir;
  const std::string path = dir.file("shared.bin");
  ASSERT_TRUE(replaceFileContents(path, "abc"));
  for (const FileMode holder : {FileMode::Read, FileMode::Write, FileMode::ReadWrite}) {
    {
      File probe(path, FileMode::Exclusive);  // nobody else has it
      EXPECT_TRUE(probe.isOpen());
    }
    File held(path, holder);
    ASSERT_TRUE(held.isOpen());
    File reader(path, FileMode::Read);
    EXPECT_TRUE(reader.isOpen()) << "others may read";
    File probe(path, FileMode::Exclusive);
    EXPECT_FALSE(probe.isOpen()) << "an exclusive open must fail while the file is in use";
  }
}

TEST(File, ReplaceTruncatesAndLeavesNoTemporaryFiles) {
  TempDir dir;
  const std::string path = dir.file("settings.ini");
  ASSERT_TRUE(replaceFileContents(path, std::string(100000, 'x')));
  // A reader (a virus scanner) holds it for a moment: the replacement waits instead of failing.
  std::atomic<int> state{0};  // 1 held open, -1 could not open
  std::thread reader([&] {
    File held(path, FileMode::Read);
    state = held.isOpen() ? 1 : -1;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
  });
  while (state == 0) std::this_thread::yield();
  EXPECT_EQ(state, 1);
  EXPECT_TRUE(replaceFileContents(path, "short"));
  reader.join();
  std::string text;
  ASSERT_TRUE(readWholeFile(path, text));
  EXPECT_EQ(text, "short");
  EXPECT_EQ(dir.entries(), std::vector<std::string>{"settings.ini"});
}

TEST(Dir, ListsRegularFilesWithTheSuffixInAnyCase) {
  TempDir dir;
  for (const char* name : {"News.qsf", "LOUD.QSF", "notes.txt", "qsf", "a.qsf.bak"}) {
    ASSERT_TRUE(replaceFileContents(dir.file(name), "x")) << name;
  }
  std::filesystem::create_directory(dir.file("folder.qsf"));
  std::vector<std::string> names = {"stale"};
  ASSERT_TRUE(listFolder(dir.path(), ".qsf", names));
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, (std::vector<std::string>{"LOUD.QSF", "News.qsf"}));
  // An empty folder lists nothing; a missing folder, or a file, fails.
  for (const char* folder : {"folder.qsf", "missing", "notes.txt"}) {
    names = {"stale"};
    EXPECT_EQ(listFolder(dir.file(folder), ".qsf", names), folder == std::string("folder.qsf")) << folder;
    EXPECT_TRUE(names.empty()) << folder;
  }
}

}  // namespace
}  // namespace vantr
