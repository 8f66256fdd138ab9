// Runs one vantrctl command in the test process and collects what it prints.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>

#include "tools/vantrctl/commands.h"

namespace vantr {

inline int runCommand(const ctl::Command* table, const char* name, const ctl::Args& args, std::string& out,
                      std::string& err) {
  for (const ctl::Command* c = table; c->name; ++c) {
    if (std::strcmp(c->name, name) != 0) continue;
    std::ostringstream o, e;
    const int code = c->run(args, o, e);
    out = o.str();
    err = e.str();
    return code;
  }
  ADD_FAILURE() << "no command " << name;
  return -1;
}

}  // namespace vantr
