#include "schedule/named_file.h"

#include "base/dir.h"
#include "base/file.h"
#include "base/path.h"
#include "base/text.h"

namespace vantr {

bool isSafeName(std::string_view name) {
  if (name.empty() || name.back() == '.' || name.back() == ' ') return false;
  for (const char c : name) {
    if (static_cast<unsigned char>(c) < 32) return false;
    if (std::string_view("<>:\"/\\|?*").find(c) != std::string_view::npos) return false;
  }
  // Device names stay devices whatever extension follows them.
  const std::string_view stem = name.substr(0, name.find('.'));
  for (const char* device : {"CON", "PRN", "AUX", "NUL"})
    if (equalsNoCase(stem, device)) return false;
  if (stem.size() == 4 && (equalsNoCase(stem.substr(0, 3), "COM") || equalsNoCase(stem.substr(0, 3), "LPT")) &&
      stem[3] >= '1' && stem[3] <= '9')
    return false;
  return true;
}

std::string namedFilePath(const std::string& folder, const std::vector<std::string>& listed, std::string_view name,
                          std::string_view extension) {
  if (!isSafeName(name)) return std::string();
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
  if (!isSafeName(name)) return std::string();
  std::string exact = joinPath(folder, std::string(name) + std::string(extension));
  // The usual case, and on Windows the only one: the name as given is there.
  if (fileExists(exact)) return exact;
  std::vector<std::string> listed;
  if (!listFolder(folder, extension, listed)) return exact;
  return namedFilePath(folder, listed, name, extension);
}

}  // namespace vantr
