#include "schedule/named_file.h"

#include "base/dir.h"
#include "base/file.h"
#include "base/path.h"
#include "base/text.h"

namespace vantr {

std::string namedFilePath(const std::string& folder, const std::vector<std::string>& listed, std::string_view name,
                          std::string_view extension) {
  std::string wanted(name);
  wanted += extension;
  const std::string* found = nullptr;
  for (const std::string& candidate : listed) {
    if (candidate == wanted) return joinPath(folder, candidate);
    if (equalsNoCase(candidate, wanted) && (!found || candidate < *found)) found = &candidate;
  }
  return joinPath(folder, found ? *found : wanted);
}

std::string namedFilePath(const std::string& folder, std::string_view name, std::string_view extension) {
  std::string exact = joinPath(folder, std::string(name) + std::string(extension));
  // The usual case, and on Windows the only one: the name as given is there.
  if (fileExists(exact)) return exact;
  std::vector<std::string> listed;
  if (!listFolder(folder, extension, listed)) return exact;
  return namedFilePath(folder, listed, name, extension);
}

}  // namespace vantr
