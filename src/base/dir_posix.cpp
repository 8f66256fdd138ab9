#include <dirent.h>
#include <sys/stat.h>

#include "base/dir.h"
#include "base/path.h"
#include "base/text.h"

namespace vantr {

bool listFolder(const std::string& folder, std::string_view suffix, std::vector<std::string>& names) {
  names.clear();
  DIR* dir = opendir(folder.empty() ? "." : folder.c_str());
  if (!dir) return false;
  while (const dirent* entry = readdir(dir)) {
    const std::string name = entry->d_name;
    if (name == "." || name == ".." || !endsWithNoCase(name, suffix)) continue;
    // d_type is not filled in by every file system; stat answers for all.
    struct stat st {};
    if (stat(joinPath(folder, name).c_str(), &st) != 0 || !S_ISREG(st.st_mode)) continue;
    names.push_back(name);
  }
  closedir(dir);
  return true;
}

}  // namespace vantr
