// The settings store against Windows' own private-profile functions on the
// same awkward files: every lookup must give the same text, before and after
// the same series of writes, and Windows must read the files we write the
// way we do.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/settings.h"
#include "base/file.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

const char* const kFiles[] = {
    // 0: an ordinary settings file
    "[settings]\r\nrecorddevice=1\r\nplaydevice=2\r\nsamplerate=22050\r\nstereo=false\r\nautotrim=-30dB\r\n"
    "recordtime=1:00:00\r\n[security]\r\npassword=secret\r\nflags=65\r\n[auto]\r\nmode=1\r\ncomport=COM2\r\n",
    // 1: duplicate sections and keys, case mixes
    "[dup]\r\nk=first\r\nK=second\r\n[DUP]\r\nk=third\r\nonly=in second\r\n[Settings]\r\nSampleRate=8000\r\n",
    // 2: blanks everywhere, tabs, and a section name with blanks inside the brackets
    "  [settings]  \r\n  samplerate  =   22050   \r\n\tstereo\t=\tTRUE\t\r\n[ spaced ]\r\nk=in spaced\r\n",
    // 3: quotes
    "[q]\r\nquoted=\"a b\"\r\nsingle='x'\r\nlone=\"\r\nmismatched=\"x'\r\nempty=\"\"\r\ninner=a\"b\"c\r\n"
    "spaced=  \"  padded  \"  \r\n",
    // 4: no '=', empty values, keys before any section, broken headers
    "orphan=before any section\r\n[s]\r\nnoequals\r\nempty=\r\n=novalue\r\n[broken\r\nafter=broken\r\n"
    "[a]junk\r\nk=after junk\r\n",
    // 5: comments of both kinds
    "; a comment\r\n[c]\r\n;commented=1\r\n# hash=2\r\nreal=3\r\n",
    // 6: LF only, no final newline, DOS end-of-file mark
    "[lf]\nk=lf only\n[eof]\nk=v\n\x1a",
    // 7: a long value
    "[long]\r\nk=0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456789"
    "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456789"
    "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890123456789\r\n",
    // 8: empty
    "",
    // 9: values with '=' and ';' and high bytes
    "[x]\r\neq=a=b\r\nsemi=v ; not a comment\r\nhigh=caf\xe9\r\n",
};

const char* const kSections[] = {"settings", "SETTINGS", " settings ", "security", "auto",     "dup",   "Dup",
                                 "s",        "q",        "c",          "lf",       "eof",      "long",  "x",
                                 "a",        "a]junk",   "broken",     "spaced",   " spaced ", "nosuch"};
const char* const kKeys[] = {"samplerate", "SampleRate", " stereo ", "stereo", "mode",     "comport",    "k",
                             "K",          "only",       "quoted",   "single", "lone",     "mismatched", "empty",
                             "inner",      "spaced",     "noequals", "orphan", "after",    ";commented", "# hash",
                             "real",       "eq",         "semi",     "high",   "password", "flags",      "nosuch"};
const char* const kDefaults[] = {"dflt", "  padded default  ", "\"quoted default\"", ""};

std::string windowsRead(const std::string& path, const char* section, const char* key, const char* fallback) {
  char buffer[260] = {};
  GetPrivateProfileStringA(section, key, fallback, buffer, sizeof buffer, path.c_str());
  return buffer;
}

// Compares every lookup; counts them so the test cannot pass by checking nothing.
int compareAll(const std::string& windowsFile, const std::string& ourFile, int fileIndex, const char* stage) {
  // Windows' functions keep a cache of recently used files: drop it.
  WritePrivateProfileStringA(nullptr, nullptr, nullptr, windowsFile.c_str());
  WritePrivateProfileStringA(nullptr, nullptr, nullptr, ourFile.c_str());
  int compared = 0;
  for (const char* section : kSections) {
    for (const char* key : kKeys) {
      for (const char* fallback : kDefaults) {
        const std::string theirs = windowsRead(windowsFile, section, key, fallback);
        const std::string ours = readText(ourFile, section, key, fallback);
        EXPECT_EQ(ours, theirs) << stage << ", file " << fileIndex << ", [" << section << "] " << key << ", default \""
                                << fallback << "\"";
        // Windows reads the files we wrote the way we do.
        EXPECT_EQ(windowsRead(ourFile, section, key, fallback), ours)
            << stage << ", our file " << fileIndex << ", [" << section << "] " << key;
        ++compared;
      }
    }
  }
  return compared;
}

struct Write {
  const char* section;
  const char* key;    // null deletes the section
  const char* value;  // null deletes the key
};

const Write kWrites[] = {
    {"settings", "samplerate", "48000"},
    {"SETTINGS", "stereo", "true"},
    {"newsection", "k", "  leading blanks"},
    {"dup", "only", "now in the first"},
    {"dup", "K", "changed"},
    {"q", "quoted", nullptr},
    {"s", "noequals", "given a value"},
    {"auto", nullptr, nullptr},
    {"lf", "added", "with = sign"},
    {"eof", "k", "v"},  // the same value again
    {"c", "real", nullptr},
};

TEST(ProfileDifferential, ReadsAndWritesMatchWindows) {
  TempDir dir;
  int compared = 0;
  for (size_t i = 0; i < sizeof kFiles / sizeof kFiles[0]; ++i) {
    const std::string windowsFile = dir.file("win" + std::to_string(i) + ".ini");
    const std::string ourFile = dir.file("ours" + std::to_string(i) + ".ini");
    ASSERT_TRUE(replaceFileContents(windowsFile, kFiles[i]));
    ASSERT_TRUE(replaceFileContents(ourFile, kFiles[i]));
    compared += compareAll(windowsFile, ourFile, static_cast<int>(i), "as found");

    for (const Write& w : kWrites) {
      WritePrivateProfileStringA(w.section, w.key, w.value, windowsFile.c_str());
      if (!w.key) {
        deleteSection(ourFile, w.section);
      } else if (!w.value) {
        writeText(ourFile, w.section, w.key, std::nullopt);
      } else {
        writeText(ourFile, w.section, w.key, std::string_view(w.value));
      }
    }
    compared += compareAll(windowsFile, ourFile, static_cast<int>(i), "after the writes");
  }
  EXPECT_GT(compared, 10000);
}

TEST(ProfileDifferential, MissingFileIsCreatedByTheFirstWriteOnly) {
  TempDir dir;
  const std::string ours = dir.file("settings.ini");
  EXPECT_EQ(readText(ours, "settings", "comport", "COM1"), windowsRead(ours, "settings", "comport", "COM1"));
  EXPECT_FALSE(fileExists(ours));
  ASSERT_TRUE(writeText(ours, "auto", "comport", std::string_view("COM3")));
  EXPECT_EQ(windowsRead(ours, "auto", "comport", "COM1"), "COM3");
}

}  // namespace
}  // namespace vantr
