// Builds the installer: the program image followed by the payload of the
// files to install and its trailer (see install/payload.h).
//
//   vantrpack OUT PROGRAM NAME=FILE...
//
// OUT is written whole under a temporary name and then moved into place, so a
// failed build leaves no half-made installer.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "install/payload.h"

namespace {

bool readWhole(const std::string& path, std::string& bytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::cerr << "usage: vantrpack OUT PROGRAM NAME=FILE...\n";
    return 2;
  }
  const std::string out = argv[1];
  std::string image;
  if (!readWhole(argv[2], image)) {
    std::cerr << "vantrpack: cannot read " << argv[2] << "\n";
    return 1;
  }
  std::vector<vantr::PayloadFile> files;
  for (int i = 3; i < argc; ++i) {
    const std::string arg = argv[i];
    const size_t eq = arg.find('=');
    vantr::PayloadFile file;
    if (eq != std::string::npos) file.name = arg.substr(0, eq);
    if (eq == std::string::npos || !vantr::isPayloadName(file.name) || !readWhole(arg.substr(eq + 1), file.bytes)) {
      std::cerr << "vantrpack: bad file argument " << arg << "\n";
      return 1;
    }
    files.push_back(std::move(file));
  }
  const std::string temp = out + ".part";
  {
    std::ofstream stream(temp, std::ios::binary | std::ios::trunc);
    stream << image << vantr::payloadWithTrailer(files);
    if (!stream.flush()) {
      std::cerr << "vantrpack: cannot write " << temp << "\n";
      return 1;
    }
  }
  if (std::rename(temp.c_str(), out.c_str()) != 0) {
    std::cerr << "vantrpack: cannot move " << temp << " to " << out << "\n";
    return 1;
  }
  return 0;
}
