// Helper for the durability test: rewrites one key of an ini file as fast as
// it can, counting up from FIRST, until it is killed.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "app/settings.h"

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: ini_writer FILE FIRST\n");
    return 2;
  }
  const std::string path = argv[1];
  for (int32_t i = std::atoi(argv[2]);; ++i) {
    if (!vantr::writeInt(path, "state", "counter", i)) return 1;
  }
}
