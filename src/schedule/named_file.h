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

inline std::string scheduleFilePath(const std::string& schedulesFolder, std::string_view name) {
  return namedFilePath(schedulesFolder, name, kScheduleExtension);
}
inline std::string audioFilePath(const std::string& recordingsFolder, std::string_view name) {
  return namedFilePath(recordingsFolder, name, kAudioExtension);
}

}  // namespace vantr
