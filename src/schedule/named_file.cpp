#include "schedule/named_file.h"

#include "base/dir.h"
#include "base/file.h"
#include "base/path.h"
#include "base/process.h"
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

void removeEverySpelling(const std::string& folder, std::string_view name, std::string_view extension) {
  while (removeFile(namedFilePath(folder, name, extension))) {
  }
}

bool isLibraryName(std::string_view name) { return name.size() <= kMaxLibraryName && isSafeName(name); }

bool nameUsed(const std::vector<std::string>& names, std::string_view name) {
  for (const std::string& used : names)
    if (equalsNoCase(used, name)) return true;
  return false;
}

namespace {

void renameOne(const std::string& folder, const std::string& oldName, const std::string& newName,
               std::string_view extension) {
  const std::string from = namedFilePath(folder, oldName, extension);
  if (from.empty() || !fileExists(from)) return;
  const std::string to = joinPath(folder, newName + std::string(extension));
  if (equalsNoCase(oldName, newName)) {
    // Only the case changes: where case does not tell names apart the file of
    // the new name is this very file, which must not be deleted first, and a
    // move onto itself may keep the old spelling; so it moves by way of a
    // temporary name.
    const std::string step = temporaryNameBeside(from);
    if (renameReplacing(from, step) && !renameReplacing(step, to)) renameReplacing(step, from);
    return;
  }
  removeEverySpelling(folder, newName, extension);
  renameReplacing(from, to);
}

}  // namespace

void renameNamedFile(const std::string& schedulesFolder, const std::string& recordingsFolder,
                     const std::string& oldName, const std::string& newName) {
  if (!isLibraryName(newName) || oldName == newName) return;
  renameOne(schedulesFolder, oldName, newName, kScheduleExtension);
  renameOne(recordingsFolder, oldName, newName, kAudioExtension);
}

std::string nameOfChosenFile(std::string_view path) { return splitPath(path).name; }

}  // namespace vantr
