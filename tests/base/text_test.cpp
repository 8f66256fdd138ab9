#include "base/text.h"

#include <gtest/gtest.h>

namespace vantr {
namespace {

TEST(Text, ParseLongFollowsTheStrtolRuleWith32BitLong) {
  struct Row {
    const char* text;
    int32_t value;
  } rows[] = {
      {"44100", 44100},
      {"  -21", -21},
      {"+7", 7},
      {"12abc", 12},
      {"abc", 0},
      {"", 0},
      {"- 5", 0},
      {"\t\n 9", 9},
      {"2147483647", INT32_MAX},
      {"2147483648", INT32_MAX},
      {"-2147483648", INT32_MIN},
      {"-99999999999999999999", INT32_MIN},
      {"99999999999999999999", INT32_MAX},
      {"0x10", 0},
  };
  for (const Row& row : rows) EXPECT_EQ(parseLong(row.text), row.value) << '"' << row.text << '"';
}

TEST(Text, CaseInsensitiveNamesAndIniTrimming) {
  EXPECT_TRUE(equalsNoCase("Settings", "sETTINGS"));
  EXPECT_FALSE(equalsNoCase("settings", "setting"));
  EXPECT_FALSE(equalsNoCase("a[", "A{"));  // only letters fold
  EXPECT_EQ(trimIniSpace(" \t key \r\x1a"), "key");
  EXPECT_EQ(trimIniSpace("   "), "");
}

}  // namespace
}  // namespace vantr
