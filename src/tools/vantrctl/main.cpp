#include <cstdio>
#include <cstring>
#include <iostream>

#include "tools/vantrctl/commands.h"

namespace vantr::ctl {

namespace {

const Command* const kGroups[] = {kScheduleCommands, kWavCommands, kAsRunCommands};

void printUsage(FILE* out) {
  std::fprintf(out, "usage:\n");
  for (const Command* group : kGroups) {
    for (const Command* c = group; c->name; ++c) std::fprintf(out, "  vantrctl %s %s\n", c->name, c->usage);
  }
}

}  // namespace
}  // namespace vantr::ctl

int main(int argc, char** argv) {
  using namespace vantr::ctl;
  if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "help") == 0) {
    printUsage(argc < 2 ? stderr : stdout);
    return argc < 2 ? 2 : 0;
  }
  const Args args(argv + 2, argv + argc);
  for (const Command* group : kGroups) {
    for (const Command* c = group; c->name; ++c) {
      if (std::strcmp(c->name, argv[1]) == 0) return c->run(args, std::cout, std::cerr);
    }
  }
  return usageError(std::cerr, std::string("unknown command '") + argv[1] + "' (vantrctl --help lists the commands)");
}
