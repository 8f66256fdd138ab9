// The product's own texts: the start-up banner and the information line.
#pragma once

#include <string>

namespace vantr {

constexpr int kInfoLines = 5;

// "Vantorel <version>" and the maker, for the start-up banner.
std::string productBanner();
// Line n (0..4) of the information line's rotation.
std::string infoLine(int n);

}  // namespace vantr
