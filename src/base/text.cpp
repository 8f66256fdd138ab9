#include "base/text.h"

#include <cstdint>

namespace vantr {

namespace {
char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
}  // namespace

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (lowerAscii(a[i]) != lowerAscii(b[i])) return false;
  }
  return true;
}

int32_t parseLong(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  int64_t value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    if (value <= INT64_C(0x80000000)) value = value * 10 + (text[i] - '0');
  }
  if (negative) value = -value;
  if (value > INT32_MAX) return INT32_MAX;
  if (value < INT32_MIN) return INT32_MIN;
  return static_cast<int32_t>(value);
}

bool isIniSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r') || c == 0x1a; }

std::string_view trimIniSpace(std::string_view text) {
  while (!text.empty() && isIniSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isIniSpace(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace vantr
