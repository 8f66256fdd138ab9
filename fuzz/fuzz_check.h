// A promise a fuzz target checks on every input: breaking it is a crash that
// libFuzzer reports with the input that caused it.
#pragma once

#include <cstdlib>

namespace vantr::fuzz {

inline void check(bool ok) {
  if (!ok) std::abort();
}

}  // namespace vantr::fuzz
