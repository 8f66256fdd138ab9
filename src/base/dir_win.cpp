#include <windows.h>

#include "base/dir.h"
#include "base/path.h"
#include "base/text.h"

namespace vantr {

bool listFolder(const std::string& folder, std::string_view suffix, std::vector<std::string>& names) {
  names.clear();
  WIN32_FIND_DATAA data;
  const HANDLE find = FindFirstFileA(joinPath(folder.empty() ? "." : folder, "*").c_str(), &data);
  if (find == INVALID_HANDLE_VALUE) {
    // An empty drive root has not even "." in it; a missing folder is an error.
    return GetLastError() == ERROR_FILE_NOT_FOUND;
  }
  do {
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
    const std::string name = data.cFileName;
    if (endsWithNoCase(name, suffix)) names.push_back(name);
  } while (FindNextFileA(find, &data));
  FindClose(find);
  return true;
}

}  // namespace vantr
