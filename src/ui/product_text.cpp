#include "ui/product_text.h"

namespace vantr {

namespace {
constexpr const char* kVersion = "1.0";
}  // namespace

std::string productBanner() { return std::string("Vantorel ") + kVersion + "\nKorvel Works"; }

std::string infoLine(int n) {
  switch (n) {
    case 0: return std::string("Vantorel ") + kVersion + " by Korvel Works";
    case 1: return "Unattended recording and playback";
    case 2: return "Distributed by Korvel Works";
    case 3: return "Four players and four recorders at once";
    default: return "Support and updates from Korvel Works";
  }
}

}  // namespace vantr
