// Small text helpers shared by the ini store and the value formats.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vantr {

// ASCII case-insensitive equality, as names of files, sections and keys compare.
bool equalsNoCase(std::string_view a, std::string_view b);

// The standard string-to-long rule with Windows' 32-bit long: optional leading
// blanks, an optional sign, then decimal digits up to the first other
// character; no digits gives 0; values past the range saturate as strtol does.
int32_t parseLong(std::string_view text);

// Space, tab, CR, LF, vertical tab, form feed, and ^Z (the old DOS end of file).
bool isIniSpace(char c);

std::string_view trimIniSpace(std::string_view text);

}  // namespace vantr
