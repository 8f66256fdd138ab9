// Where a named file's files are: its schedule file "<name>.qsf" in the
// schedules folder and its audio file "<name>.wav" in the recordings folder.
// Every path of a named file is made here.
//
// Windows finds a file whatever the case of its name; other file systems tell
// "News.QSF" from "News.qsf", while the listing of named files takes any case
// of the extension. So a named file's path is that of the existing file whose
// name is the wanted one without regard to case: the exact spelling when it is
// there, else the first such name in byte order (the same whatever order the
// folder lists them in). Only when there is none is it the exact spelling, for
// a file about to be made.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantr {

constexpr char kScheduleExtension[] = ".qsf";
constexpr char kAudioExtension[] = ".wav";

// Whether a name can name a file inside its folder on every system the program
// runs on: not empty, no path separators or drive colon (so never outside
// the folder, "..\\x" included), none of the characters Windows refuses in a
// name, no control characters, no trailing dot or space, and not a device
// name (CON, NUL, COM1, ...). Names come from the lists, the schedules and
// the serial line; one that fails names no file at all.
bool isSafeName(std::string_view name);

// The path of the file name + extension in folder, asking the file system;
// "" for a name that is not safe, so the operation fails like any
// file-system failure and nothing is written outside the folder.
std::string namedFilePath(const std::string& folder, std::string_view name, std::string_view extension);
// The same choice made among the names of folder's files listed already
// ("" again for a name that is not safe)
// (listFolder's names), without asking the file system again.
std::string namedFilePath(const std::string& folder, const std::vector<std::string>& listed, std::string_view name,
                          std::string_view extension);

// Where case tells names apart, "News.qsf" and "News.QSF" both list as News;
// every spelling goes, so that the name leaves the list.
void removeEverySpelling(const std::string& folder, std::string_view name, std::string_view extension);

inline std::string scheduleFilePath(const std::string& schedulesFolder, std::string_view name) {
  return namedFilePath(schedulesFolder, name, kScheduleExtension);
}
inline std::string audioFilePath(const std::string& recordingsFolder, std::string_view name) {
  return namedFilePath(recordingsFolder, name, kAudioExtension);
}

// A name the library takes for a new or renamed file: a safe name the
// scheduler keeps whole (it keeps at most 47 characters of a name, and a
// longer one would have its items act on another name).
constexpr size_t kMaxLibraryName = 47;
bool isLibraryName(std::string_view name);

// Whether name is one of names, without regard to case.
bool nameUsed(const std::vector<std::string>& names, std::string_view name);

// Renames both files of a named file, the schedule file and then the audio:
// any file of the new name goes first, then the old file moves to the new
// name as typed. A new name that differs only in case renames the files in
// place. Nothing happens for a new name the library does not take; failures
// are left to show in the rebuilt lists. The caller stops the file's players
// and recorders first.
void renameNamedFile(const std::string& schedulesFolder, const std::string& recordingsFolder,
                     const std::string& oldName, const std::string& newName);

// The name a chosen audio file brings into the library: its file name without
// folder and extension.
std::string nameOfChosenFile(std::string_view path);

}  // namespace vantr
