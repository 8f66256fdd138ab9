#include "store/settings.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <thread>
#include <vector>

#include "base/file.h"
#include "store/ini_document.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

TEST(IniRules, Lookups) {
  // clang-format off
  struct { std::string file; const char *section, *key, *fallback; std::string expected; } rows[] = {
      {"[Settings]\nSampleRate=22050\n", "SETTINGS", "samplerate", "44100", "22050"},  // case-insensitive
      {"[s]\n  k  =  22050  \n", "s", "k", "x", "22050"},  // blanks trimmed
      {"[s]\na=1\na=2\n", "s", "a", "x", "1"}, {"[s]\na=1\n[s]\nb=2\n", "s", "b", "none", "none"},  // first wins
      {"a=1\n[s]\nb=2\n", "", "a", "none", "none"},  // keys before any section
      {"[s]\nkey\n", "s", "key", "dflt", "dflt"}, {"[s]\nkey=\n", "s", "key", "dflt", ""},  // no '=', empty value
      {"[s]\nk=\"quoted value\"\n", "s", "k", "", "quoted value"}, {"[s]\nk='single'\n", "s", "k", "", "single"},
      {"[s]\nk=\"mismatched'\n", "s", "k", "", "\"mismatched'"}, {"[s]\nk=\"\n", "s", "k", "", "\""},  // unmatched stay
      {"[s]\nk=a=b=c\n", "s", "k", "", "a=b=c"}, {"[s]\r\nk=crlf\r\n", "s", "k", "", "crlf"},
      {"[s]\nk=v\n\x1a", "s", "k", "", "v"}, {"[s]\n;k=commented\nk=real\n", "s", "k", "", "real"},
      {"[broken\nk=inside\n", "broken", "k", "none", "none"}, {"[s] trailing\nk=v\n", "s", "k", "", "v"},  // headers
      {"", "s", "k", "default   ", "default"}, {"", "s", "k", "\"quoted default\"", "quoted default"},  // defaults too
      {"[s]\n k = v \n", " s ", " k ", "", "v"}, {"[ spaced ]\nk=v\n", "spaced", "k", "", "v"},  // names trimmed
      {"[s]\nk=" + std::string(400, 'x'), "s", "k", "", std::string(259, 'x')}};  // cut to 259
  // clang-format on
  for (const auto& row : rows) {
    EXPECT_EQ(profileString(IniDocument(row.file), row.section, row.key, row.fallback, kMaxSettingText), row.expected)
        << "file: " << row.file.substr(0, 40) << " key: " << row.key;
  }
}

TEST(IniRules, WritesChangeOnlyTheirLine) {
  // clang-format off
  struct { const char *before, *section, *key, *value, *after; } rows[] = {  // no value: delete the key
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
      {"unknown line\n[s]\na=1\n# another\n", "s", "z", "9", "unknown line\r\n[s]\r\na=1\r\n# another\r\nz=9\r\n"}};
  // clang-format on
  for (const auto& row : rows) {
    IniDocument doc(row.before);
    row.value ? doc.set(row.section, row.key, row.value) : doc.removeKey(row.section, row.key);
    EXPECT_EQ(doc.text(), row.after) << "before: " << row.before;
  }
  IniDocument doc("[a]\nx=1\n[b]\ny=2\n[a]\nz=3\n");
  EXPECT_TRUE(doc.removeSection("A"));
  EXPECT_EQ(doc.text(), "[b]\r\ny=2\r\n[a]\r\nz=3\r\n");
  EXPECT_FALSE(doc.set("b", "y", "2")) << "the same value is no change";
}

TEST(Settings, TypedReadsAndWrites) {
  TempDir dir;
  const std::string ini = dir.file("settings.ini");
  ASSERT_TRUE(replaceFileContents(ini,
                                  "[s]\nstereo=TRUE\nmono=yes\nempty=\nrate=  22050Hz\nlevel=--dB\ntrim=-21dB\n"
                                  "big=+12dB\nclock=1:00 pm\nrec= 0:30:00.000\n"));
  enum Kind { Bool, Int, Level, Clock, Record };
  auto read = [&](Kind kind, const char* key, int64_t d) -> int64_t {
    switch (kind) {
      case Bool: return readBool(ini, "s", key, d != 0);
      case Int: return readInt(ini, "s", key, static_cast<int32_t>(d));
      case Level: return readLevel(ini, "s", key, static_cast<int8_t>(d));
      case Clock: return readClockDuration(ini, "s", key, static_cast<uint32_t>(d));
      case Record: return readRecordDuration(ini, "s", key, static_cast<int32_t>(d));
    }
    return 0;
  };
  // clang-format off
  struct Read { Kind kind; const char* key; int64_t fallback, expected; } reads[] = {
      {Bool, "stereo", 0, 1}, {Bool, "mono", 1, 0}, {Bool, "empty", 1, 0}, {Bool, "missing", 1, 1},
      {Bool, "missing", 0, 0}, {Int, "rate", 44100, 22050}, {Int, "missing", 44100, 44100}, {Int, "stereo", 7, 0},
      {Level, "level", 0, -127}, {Level, "trim", 0, -21}, {Level, "big", 0, 12}, {Level, "missing", -21, -21},
      {Clock, "clock", 0, 13 * 3600}, {Clock, "missing", 1800, 1800}, {Record, "rec", 0, 18000000},
      {Record, "missing", 144000000, 144000000}};
  struct Write { bool (*write)(const std::string&); const char *key, *text; } writes[] = {
      {[](const std::string& p) { return writeLevel(p, "w", "silence", -127); }, "silence", "--dB"},
      {[](const std::string& p) { return writeLevel(p, "w", "below", -128); }, "below", "--dB"},
      {[](const std::string& p) { return writeLevel(p, "w", "trim", -21); }, "trim", "-21dB"},
      {[](const std::string& p) { return writeBool(p, "w", "yes", true); }, "yes", "true"},
      {[](const std::string& p) { return writeBool(p, "w", "no", false); }, "no", "false"},
      {[](const std::string& p) { return writeInt(p, "w", "min", INT32_MIN); }, "min", "-2147483648"},
      {[](const std::string& p) { return writeClockDuration(p, "w", "clock", 90061); }, "clock", "25:01:01"},
      {[](const std::string& p) { return writeRecordDuration(p, "w", "rec", 144000000); }, "rec", "4:00:00.000"}};
  // clang-format on
  // The reads run again after the writes: every other line survived them.
  for (const char* stage : {"before the writes", "after the writes"}) {
    for (const Read& r : reads) EXPECT_EQ(read(r.kind, r.key, r.fallback), r.expected) << r.key << ", " << stage;
    for (const Write& w : writes) ASSERT_TRUE(w.write(ini)) << w.key;
  }
  for (const Write& w : writes) EXPECT_EQ(readText(ini, "w", w.key, "?"), w.text) << w.key;

  const std::string missing = dir.file("missing.ini");
  EXPECT_EQ(readInt(missing, "s", "k", 44100), 44100);
  EXPECT_FALSE(fileExists(missing)) << "reading must not create the file";
  EXPECT_FALSE(writeInt(dir.file("no-folder/settings.ini"), "s", "k", 1));
}

// "1:2:3:4": further separators stay on the seconds.
TEST(Settings, ClockText) {
  // clang-format off
  struct { const char* text; uint32_t seconds; } rows[] = {
      {"0:30:00", 1800}, {"12:30 am", 1800}, {"1:00 pm", 13 * 3600}, {"12:00 PM", 12 * 3600}, {"1.2.3", 3723},
      {"1\\2\\3", 3723}, {"25:61:61", 25 * 3600 + 3721}, {"1:2:3:4", 3600 + 120 + 34}, {"", 0}, {"abc", 0},
      {"9pM", 21 * 3600}, {"12Am", 0}, {"p m 1", 3600}};
  // clang-format on
  for (const auto& row : rows) EXPECT_EQ(parseClockText(row.text), row.seconds) << '"' << row.text << '"';
  EXPECT_EQ(formatClockText(3723), "01:02:03");
  EXPECT_EQ(formatClockText(100 * 3600), "100:00:00");
  for (uint32_t s : {0u, 59u, 86399u, 86400u * 3 + 7}) EXPECT_EQ(parseClockText(formatClockText(s)), s);
}

// Numbers handed out from many threads at once: none lost or repeated, and no
// temporary file left behind.
TEST(Settings, CountsAcrossThreads) {
  TempDir dir;
  const std::string ini = dir.file("shared.ini");
  constexpr int kThreads = 6, kTotal = kThreads * 60;
  std::vector<std::atomic<int>> handedOut(kTotal);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < kTotal / kThreads; ++i) {
        const int32_t n = nextNumber(ini, "file", "sch");
        if (n >= 0 && n < kTotal) ++handedOut[n];
        EXPECT_GE(readCount(ini, "file", "sch"), 1) << "a reader found a cut file";
      }
    });
  }
  for (std::thread& t : threads) t.join();
  for (int n = 0; n < kTotal; ++n) EXPECT_EQ(handedOut[n], 1) << "number " << n;
  EXPECT_EQ(readCount(ini, "file", "sch"), kTotal);
  EXPECT_EQ(dir.entries(), std::vector<std::string>{"shared.ini"});
}

}  // namespace
}  // namespace vantr
