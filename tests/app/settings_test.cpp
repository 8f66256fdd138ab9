#include "app/settings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>
#include <vector>

#include "app/ini_document.h"
#include "base/file.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

TEST(IniRules, LookupsFollowTheProfileRules) {
  struct Row {
    const char* file;
    const char* section;
    const char* key;
    const char* fallback;
    const char* expected;
  } rows[] = {
      {"[settings]\nsamplerate=22050\n", "settings", "samplerate", "44100", "22050"},
      {"[Settings]\nSampleRate=22050\n", "SETTINGS", "samplerate", "44100", "22050"},      // case-insensitive
      {"[settings]\n  samplerate  =  22050  \n", "settings", "samplerate", "x", "22050"},  // blanks trimmed
      {"[settings]\na=1\na=2\n", "settings", "a", "x", "1"},                               // first key wins
      {"[s]\na=1\n[s]\nb=2\n", "s", "b", "none", "none"},                                  // only the first section
      {"a=1\n[s]\nb=2\n", "", "a", "none", "none"},                                        // keys before any section
      {"[s]\nkey\n", "s", "key", "dflt", "dflt"},                                          // no '=': no value
      {"[s]\nkey=\n", "s", "key", "dflt", ""},                                             // empty value is a value
      {"[s]\nk=\"quoted value\"\n", "s", "k", "", "quoted value"},
      {"[s]\nk='single'\n", "s", "k", "", "single"},
      {"[s]\nk=\"mismatched'\n", "s", "k", "", "\"mismatched'"},
      {"[s]\nk=\"\n", "s", "k", "", "\""},        // a lone quote stays
      {"[s]\nk=a=b=c\n", "s", "k", "", "a=b=c"},  // first '=' splits
      {"[s]\r\nk=crlf\r\n", "s", "k", "", "crlf"},
      {"[s]\nk=v\n\x1a", "s", "k", "", "v"},  // DOS end-of-file mark
      {"[s]\n;k=commented\nk=real\n", "s", "k", "", "real"},
      {"[broken\nk=inside\n", "broken", "k", "none", "none"},  // no ']': not a header
      {"[s] trailing\nk=v\n", "s", "k", "", "v"},              // text after ']' ignored
      {"", "s", "k", "default   ", "default"},                 // default loses trailing spaces
      {"", "s", "k", "\"quoted default\"", "quoted default"},
      {"[s]\n k = v \n", " s ", " k ", "", "v"},      // query names trimmed
      {"[ spaced ]\nk=v\n", "spaced", "k", "", "v"},  // and header names
  };
  for (const Row& row : rows) {
    const IniDocument doc(row.file);
    EXPECT_EQ(profileString(doc, row.section, row.key, row.fallback, kMaxSettingText), row.expected)
        << "file: " << row.file << " key: " << row.key;
  }
  const IniDocument longValue("[s]\nk=" + std::string(400, 'x') + "\n");
  EXPECT_EQ(profileString(longValue, "s", "k", "", kMaxSettingText), std::string(259, 'x'));
}

TEST(IniRules, WritesChangeOnlyTheirLine) {
  struct Row {
    const char* before;
    const char* section;
    const char* key;
    const char* value;  // null deletes the key
    const char* after;
  } rows[] = {
      {"", "settings", "stereo", "true", "[settings]\r\nstereo=true\r\n"},
      {"; my notes\n[settings]\nStereo = false ; old\n\n[auto]\nmode=1\n", "settings", "stereo", "true",
       "; my notes\r\n[settings]\r\nStereo=true\r\n\r\n[auto]\r\nmode=1\r\n"},
      {"[settings]\na=1\n\n[auto]\nmode=1\n", "settings", "b", "2",
       "[settings]\r\na=1\r\nb=2\r\n\r\n[auto]\r\nmode=1\r\n"},
      {"[auto]\nmode=1", "settings", "x", "  leading blanks go",
       "[auto]\r\nmode=1\r\n\r\n[settings]\r\nx=leading blanks go\r\n"},
      {"[s]\na=1\nb=2\nc=3\n", "S", "B", nullptr, "[s]\r\na=1\r\nc=3\r\n"},
      {"[s]\nkey\n", "s", "key", "v", "[s]\r\nkey=v\r\n"},
      {"[s]\na=1\n", "s", "a", "line\r\nbreak=evil", "[s]\r\na=line  break=evil\r\n"},
      {"unknown line\n[s]\na=1\n# another\n", "s", "z", "9", "unknown line\r\n[s]\r\na=1\r\n# another\r\nz=9\r\n"},
  };
  for (const Row& row : rows) {
    IniDocument doc(row.before);
    if (row.value) {
      doc.set(row.section, row.key, row.value);
    } else {
      doc.removeKey(row.section, row.key);
    }
    EXPECT_EQ(doc.text(), row.after) << "before: " << row.before;
  }
  IniDocument doc("[a]\nx=1\n[b]\ny=2\n[a]\nz=3\n");
  EXPECT_TRUE(doc.removeSection("A"));
  EXPECT_EQ(doc.text(), "[b]\r\ny=2\r\n[a]\r\nz=3\r\n");
  EXPECT_FALSE(doc.set("b", "y", "2")) << "the same value is no change";
  EXPECT_FALSE(doc.removeKey("nosuch", "y"));
}

TEST(Settings, TypedValues) {
  TempDir dir;
  const std::string ini = dir.file("settings.ini");
  ASSERT_TRUE(replaceFileContents(ini,
                                  "[settings]\nstereo=TRUE\nmono=yes\nempty=\nrate=  22050Hz\nlevel=--dB\n"
                                  "trim=-21dB\nbig=+12dB\nclock=1:00 pm\nrec= 0:30:00.000\n"));
  EXPECT_TRUE(readBool(ini, "settings", "stereo", false));
  EXPECT_FALSE(readBool(ini, "settings", "mono", true));
  EXPECT_FALSE(readBool(ini, "settings", "empty", true));
  EXPECT_TRUE(readBool(ini, "settings", "missing", true));
  EXPECT_FALSE(readBool(ini, "settings", "missing", false));
  EXPECT_EQ(readInt(ini, "settings", "rate", 44100), 22050);
  EXPECT_EQ(readInt(ini, "settings", "missing", 44100), 44100);
  EXPECT_EQ(readInt(ini, "settings", "stereo", 7), 0);  // no digits
  EXPECT_EQ(readLevel(ini, "settings", "level", 0), -127);
  EXPECT_EQ(readLevel(ini, "settings", "trim", 0), -21);
  EXPECT_EQ(readLevel(ini, "settings", "big", 0), 12);
  EXPECT_EQ(readLevel(ini, "settings", "missing", -21), -21);
  EXPECT_EQ(readClockDuration(ini, "settings", "clock", 0), 13u * 3600);
  EXPECT_EQ(readClockDuration(ini, "settings", "missing", 1800), 1800u);
  EXPECT_EQ(readRecordDuration(ini, "settings", "rec", 0), 18000000);
  EXPECT_EQ(readRecordDuration(ini, "auto", "maxrec", 144000000), 144000000);
  EXPECT_EQ(readText(ini, "settings", "missing", "COM1"), "COM1");

  struct Written {
    bool (*write)(const std::string&);
    const char* key;
    const char* text;
  } writes[] = {
      {[](const std::string& p) { return writeLevel(p, "w", "silence", -127); }, "silence", "--dB"},
      {[](const std::string& p) { return writeLevel(p, "w", "below", -128); }, "below", "--dB"},
      {[](const std::string& p) { return writeLevel(p, "w", "trim", -21); }, "trim", "-21dB"},
      {[](const std::string& p) { return writeBool(p, "w", "yes", true); }, "yes", "true"},
      {[](const std::string& p) { return writeBool(p, "w", "no", false); }, "no", "false"},
      {[](const std::string& p) { return writeInt(p, "w", "neg", -2147483647 - 1); }, "neg", "-2147483648"},
      {[](const std::string& p) { return writeClockDuration(p, "w", "clock", 90061); }, "clock", "25:01:01"},
      {[](const std::string& p) { return writeRecordDuration(p, "w", "maxrec", 144000000); }, "maxrec", "4:00:00.000"},
      {[](const std::string& p) { return writeText(p, "w", "port", std::string_view("COM2")); }, "port", "COM2"},
  };
  for (const Written& w : writes) {
    ASSERT_TRUE(w.write(ini)) << w.key;
    EXPECT_EQ(readText(ini, "w", w.key, "?"), w.text) << w.key;
  }
  // Every other line of the file survived the writes.
  EXPECT_EQ(readText(ini, "settings", "rate", ""), "22050Hz");
}

TEST(Settings, ClockTextRule) {
  struct Row {
    const char* text;
    uint32_t seconds;
  } rows[] = {
      {"0:30:00", 1800},
      {"12:30 am", 1800},
      {"1:00 pm", 13 * 3600},
      {"12:00 PM", 12 * 3600},
      {"1.2.3", 3723},
      {"1\\2\\3", 3723},
      {"25:61:61", 25 * 3600 + 61 * 60 + 61},
      {"1:2:3:4", 3600 + 120 + 34},  // further separators stay on the seconds
      {"", 0},
      {"abc", 0},
      {"9pM", 21 * 3600},
      {"12Am", 0},
      {"p m 1", 3600},
  };
  for (const Row& row : rows) EXPECT_EQ(parseClockText(row.text), row.seconds) << '"' << row.text << '"';
  EXPECT_EQ(formatClockText(3723), "01:02:03");
  EXPECT_EQ(formatClockText(100 * 3600), "100:00:00");
  for (uint32_t s : {0u, 59u, 3599u, 86399u, 86400u * 3 + 7}) EXPECT_EQ(parseClockText(formatClockText(s)), s);
}

TEST(Settings, MissingFileReadsDefaultsAndIsCreatedByTheFirstWrite) {
  TempDir dir;
  const std::string ini = dir.file("settings.ini");
  EXPECT_EQ(readInt(ini, "settings", "samplerate", 44100), 44100);
  EXPECT_TRUE(readBool(ini, "settings", "stereo", true));
  EXPECT_EQ(readLevel(ini, "settings", "autotrim", -21), -21);
  EXPECT_EQ(readClockDuration(ini, "settings", "recordtime", parseClockText("0:30:00")), 1800u);
  EXPECT_FALSE(fileExists(ini)) << "reading must not create the file";
  EXPECT_TRUE(deleteSection(ini, "settings")) << "deleting from nothing is no error";
  EXPECT_FALSE(fileExists(ini));
  ASSERT_TRUE(writeInt(ini, "settings", "playdevice", 2));
  EXPECT_EQ(readInt(ini, "settings", "playdevice", 0), 2);
  EXPECT_FALSE(writeInt(dir.file("no-folder/settings.ini"), "s", "k", 1));
}

TEST(Settings, CountsAndNumbers) {
  TempDir dir;
  const std::string ini = dir.file("file.qsf");
  EXPECT_EQ(readCount(ini, "file", "sch"), 0);
  EXPECT_EQ(nextNumber(ini, "file", "sch"), 0);
  EXPECT_EQ(nextNumber(ini, "file", "sch"), 1);
  EXPECT_EQ(readText(ini, "file", "schcount", ""), "2");
  ASSERT_TRUE(writeCount(ini, "file", "sch", 40));
  EXPECT_EQ(nextNumber(ini, "file", "sch"), 40);
  EXPECT_EQ(readCount(ini, "file", "sch"), 41);
}

TEST(Settings, PathBeside) {
  struct Row {
    const char* path;
    const char* name;
    const char* expected;
  } rows[] = {
      {"C:\\Program Files\\Vantorel\\settings.ini", "settings.dcb", "C:\\Program Files\\Vantorel\\settings.dcb"},
      {"C:settings.ini", "x.dcb", "C:x.dcb"},
      {"/opt/vantr/settings.ini", "settings.dcb", "/opt/vantr/settings.dcb"},
      {"settings.ini", "settings.dcb", "settings.dcb"},
      {"D:\\a.b\\noext", "n", "D:\\a.b\\n"},
      {"", "settings.dcb", ""},
  };
  for (const Row& row : rows) EXPECT_EQ(pathBeside(row.path, row.name), row.expected) << row.path;
}

TEST(Settings, ThreadsNeverLoseOrRepeatAnUpdate) {
  TempDir dir;
  const std::string ini = dir.file("shared.ini");
  constexpr int kThreads = 6;
  constexpr int kEach = 60;
  std::vector<std::vector<int32_t>> got(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kEach; ++i) {
        got[t].push_back(nextNumber(ini, "file", "sch"));
        writeInt(ini, "thread" + std::to_string(t), "last", i);
        // A reader in the middle of all this always sees a whole file.
        EXPECT_GE(readInt(ini, "file", "schcount", -1), 1);
      }
    });
  }
  for (std::thread& t : threads) t.join();
  std::set<int32_t> all;
  for (const auto& numbers : got) all.insert(numbers.begin(), numbers.end());
  EXPECT_EQ(all.size(), static_cast<size_t>(kThreads * kEach)) << "a number was handed out twice";
  EXPECT_EQ(*all.rbegin(), kThreads * kEach - 1);
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(readInt(ini, "thread" + std::to_string(t), "last", -1), kEach - 1);
  EXPECT_EQ(dir.entries(), std::vector<std::string>{"shared.ini"}) << "no temporary file may be left behind";
}

}  // namespace
}  // namespace vantr
