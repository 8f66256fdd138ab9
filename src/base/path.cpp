#include "base/path.h"

namespace vantr {

SplitPath splitPath(std::string_view path) {
  SplitPath parts;
  if (path.size() >= 2 && path[1] == ':') {
    parts.drive = std::string(path.substr(0, 2));
    path.remove_prefix(2);
  }
  const size_t slash = path.find_last_of("\\/");
  if (slash != std::string_view::npos) {
    parts.folder = std::string(path.substr(0, slash + 1));
    path.remove_prefix(slash + 1);
  }
  const size_t dot = path.find_last_of('.');
  if (dot != std::string_view::npos) {
    parts.extension = std::string(path.substr(dot));
    path = path.substr(0, dot);
  }
  parts.name = std::string(path);
  return parts;
}

std::string joinPath(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && path.back() != '/' && path.back() != '\\') path += kPathSeparator;
  path += name;
  return path;
}

std::string pathBeside(std::string_view fullPath, std::string_view fileName) {
  if (fullPath.empty()) return std::string();
  const SplitPath parts = splitPath(fullPath);
  return parts.drive + parts.folder + std::string(fileName);
}

}  // namespace vantr
