// Helper for the kill test: rewrites one key of an ini file as fast as it can,
// counting up from FIRST, until it is killed.
#include <cstdlib>

#include "store/settings.h"

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  for (int32_t i = std::atoi(argv[2]);; ++i) {
    if (!vantr::writeInt(argv[1], "state", "counter", i)) return 1;
  }
}
