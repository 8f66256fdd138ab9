// The settings store against Windows' own private-profile functions on the
// same awkward files: every lookup gives the same text, before and after the
// same series of writes, and Windows reads the files we write the way we do.
#include <windows.h>

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "base/file.h"
#include "store/settings.h"
#include "test_support/temp_dir.h"

namespace vantr {
namespace {

const std::optional<std::string> kFiles[] = {
    // duplicate sections and keys, case mixes
    "[settings]\r\nsamplerate=22050\r\nstereo=false\r\n[auto]\r\nmode=1\r\ncomport=COM2\r\n[dup]\r\nk=first\r\n"
    "K=second\r\n[DUP]\r\nk=third\r\nonly=in second\r\n[Settings]\r\nSampleRate=8000\r\n",
    // blanks and tabs, quotes, a section name with blanks inside the brackets
    "  [settings]  \r\n  samplerate  =   22050   \r\n\tstereo\t=\tTRUE\t\r\n[ spaced ]\r\nk=in spaced\r\n[q]\r\n"
    "quoted=\"a b\"\r\nsingle='x'\r\nlone=\"\r\nmismatched=\"x'\r\nempty=\"\"\r\ninner=a\"b\"c\r\nspaced=  \" p \"  "
    "\r\n",
    // no '=', keys before any section, broken headers, comments, '=' and ';' in values, high bytes
    "orphan=before any section\r\n[s]\r\nnoequals\r\nempty=\r\n=novalue\r\n[broken\r\nafter=broken\r\n[a]junk\r\n"
    "k=after junk\r\n; a comment\r\n[c]\r\n;commented=1\r\n# hash=2\r\nreal=3\r\n[x]\r\neq=a=b\r\n"
    "semi=v ; not a comment\r\nhigh=caf\xe9\r\n",
    // LF only, a long value, a DOS end-of-file mark and no final newline
    "[lf]\nk=lf only\n[long]\nk=" + std::string(300, '7') + "\n[eof]\nk=v\n\x1a",
    std::nullopt,  // no file: the first write creates it
};
// clang-format off
const char* const kSections[] = {"settings", "SETTINGS", " settings ", "auto", "dup", "Dup", "s", "q", "c", "lf",
                                 "eof", "long", "x", "a", "a]junk", "broken", "spaced", "nosuch"};
const char* const kKeys[] = {"samplerate", "SampleRate", " stereo ", "stereo", "mode", "comport", "k", "K", "only",
                             "quoted", "single", "lone", "mismatched", "empty", "inner", "spaced", "noequals",
                             "orphan", "after", ";commented", "# hash", "real", "eq", "semi", "high", "nosuch"};
// clang-format on
const char* const kDefaults[] = {"dflt", "  padded default  ", "\"quoted default\"", ""};

std::string windowsRead(const std::string& path, const char* section, const char* key, const char* fallback) {
  char buffer[260] = {};
  GetPrivateProfileStringA(section, key, fallback, buffer, sizeof buffer, path.c_str());
  return buffer;
}

void compareAll(const std::string& windowsFile, const std::string& ourFile, const std::string& stage) {
  // Windows' functions keep a cache of recently used files: drop it.
  WritePrivateProfileStringA(nullptr, nullptr, nullptr, windowsFile.c_str());
  WritePrivateProfileStringA(nullptr, nullptr, nullptr, ourFile.c_str());
  for (const char* section : kSections) {
    for (const char* key : kKeys) {
      for (const char* fallback : kDefaults) {
        // The same text as Windows from the same file, and Windows reads our file the same.
        const std::string ours = readText(ourFile, section, key, fallback);
        EXPECT_EQ(ours, windowsRead(windowsFile, section, key, fallback)) << stage << ", [" << section << "] " << key;
        EXPECT_EQ(windowsRead(ourFile, section, key, fallback), ours)
            << stage << ", our file, [" << section << "] " << key;
      }
    }
  }
}

TEST(ProfileDifferential, ReadsAndWritesMatchWindows) {
  // clang-format off
  struct { const char *section, *key, *value; } writes[] = {  // no key: delete the section; no value: the key
      {"settings", "samplerate", "48000"}, {"SETTINGS", "stereo", "true"}, {"new", "k", "  leading blanks"},
      {"dup", "only", "now in the first"}, {"dup", "K", "changed"}, {"q", "quoted", nullptr},
      {"s", "noequals", "given a value"}, {"auto", nullptr, nullptr}, {"lf", "added", "with = sign"},
      {"eof", "k", "v"}, {"c", "real", nullptr}};
  // clang-format on
  TempDir dir;
  for (size_t i = 0; i < std::size(kFiles); ++i) {
    const std::string windowsFile = dir.file("win" + std::to_string(i) + ".ini");
    const std::string ourFile = dir.file("ours" + std::to_string(i) + ".ini");
    const bool present = kFiles[i].has_value();
    ASSERT_TRUE(!present || (replaceFileContents(windowsFile, *kFiles[i]) && replaceFileContents(ourFile, *kFiles[i])));
    compareAll(windowsFile, ourFile, "file " + std::to_string(i) + " as found");
    EXPECT_EQ(fileExists(ourFile), present) << "a read created the file";
    for (const auto& w : writes) {
      WritePrivateProfileStringA(w.section, w.key, w.value, windowsFile.c_str());
      w.key ? writeText(ourFile, w.section, w.key, w.value ? std::optional<std::string_view>(w.value) : std::nullopt)
            : deleteSection(ourFile, w.section);
    }
    compareAll(windowsFile, ourFile, "file " + std::to_string(i) + " after the writes");
  }
}

}  // namespace
}  // namespace vantr
