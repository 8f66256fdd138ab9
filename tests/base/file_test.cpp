#include "base/file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "test_support/temp_dir.h"

namespace vantr {
namespace {

TEST(File, SharingModes) {
  TempDir dir;
  const std::string path = dir.file("shared.bin");
  ASSERT_TRUE(replaceFileContents(path, "abc"));

  // Nobody else has it: an exclusive open works.
  {
    File probe(path, FileMode::Exclusive);
    EXPECT_TRUE(probe.isOpen());
  }

  struct Row {
    FileMode holder;
    bool readAllowed;
  } rows[] = {{FileMode::Read, true}, {FileMode::ReadWrite, true}};
  for (const Row& row : rows) {
    File held(path, row.holder);
    ASSERT_TRUE(held.isOpen());
    File reader(path, FileMode::Read);
    EXPECT_EQ(reader.isOpen(), row.readAllowed);
    File probe(path, FileMode::Exclusive);
    EXPECT_FALSE(probe.isOpen()) << "an exclusive open must fail while the file is in use";
  }
  {
    File probe(path, FileMode::Exclusive);
    EXPECT_TRUE(probe.isOpen());
  }
}

TEST(File, ReaderSeesWhatAWriterAppends) {
  TempDir dir;
  const std::string path = dir.file("growing.bin");
  File writer(path, FileMode::Write);
  ASSERT_TRUE(writer.write("0123", 4));
  File reader(path, FileMode::Read);
  ASSERT_TRUE(reader.isOpen());
  EXPECT_EQ(reader.size(), 4);
  ASSERT_TRUE(writer.write("4567", 4));
  EXPECT_EQ(reader.size(), 8);
  char buffer[8] = {};
  ASSERT_TRUE(reader.seek(2));
  EXPECT_EQ(reader.read(buffer, sizeof buffer), 6u);
  EXPECT_EQ(std::string(buffer, 6), "234567");
}

TEST(File, ReplaceIsWholeAndLeavesNoTemporaryFiles) {
  TempDir dir;
  const std::string path = dir.file("settings.ini");
  std::string text;
  EXPECT_FALSE(readWholeFile(path, text));
  ASSERT_TRUE(replaceFileContents(path, std::string(100000, 'x')));
  ASSERT_TRUE(replaceFileContents(path, "short"));
  ASSERT_TRUE(readWholeFile(path, text));
  EXPECT_EQ(text, "short");
  {
    // A reader (another program, a virus scanner) holds the file for a
    // moment: the replacement waits for it instead of failing or writing in
    // place.
    std::atomic<int> state{0};  // 1 held open, -1 could not open
    std::thread reader([&] {
      File held(path, FileMode::Read);
      state = held.isOpen() ? 1 : -1;
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
    });
    while (state == 0) std::this_thread::yield();
    EXPECT_EQ(state, 1);
    EXPECT_TRUE(replaceFileContents(path, "while read"));
    reader.join();
  }
  ASSERT_TRUE(readWholeFile(path, text));
  EXPECT_EQ(text, "while read");
  EXPECT_EQ(dir.entries(), std::vector<std::string>{"settings.ini"});
}

TEST(File, MissingFolderFailsCleanly) {
  TempDir dir;
  EXPECT_FALSE(replaceFileContents(dir.file("no-such-folder/x.ini"), "x"));
  File f(dir.file("no-such-folder/x.ini"), FileMode::Write);
  EXPECT_FALSE(f.isOpen());
  EXPECT_FALSE(f.write("x", 1));
  EXPECT_TRUE(makeDirectory(dir.file("made")));
  EXPECT_TRUE(makeDirectory(dir.file("made")));  // existing is fine
}

}  // namespace
}  // namespace vantr
