#include "base/text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

namespace vantr {
namespace {

TEST(Text, ParseLongCaseAndTrimming) {
  // parseLong follows strtol with a 32-bit long; only letters fold in names.
  const std::pair<const char*, int32_t> rows[] = {
      {"\t\n -21", -21},
      {"+7", 7},
      {"12abc", 12},
      {"- 5", 0},
      {"0x10", 0},
      {"2147483648", INT32_MAX},
      {"-99999999999999999999", INT32_MIN},
  };
  for (const auto& [text, value] : rows) EXPECT_EQ(parseLong(text), value) << '"' << text << '"';
  EXPECT_TRUE(equalsNoCase("Settings", "sETTINGS"));
  EXPECT_FALSE(equalsNoCase("settings", "setting"));
  EXPECT_FALSE(equalsNoCase("a[", "A{"));
  EXPECT_EQ(trimIniSpace(" \t key \r\x1a"), "key");
}

}  // namespace
}  // namespace vantr
