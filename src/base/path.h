// Paths as the program handles them: split into drive, folder, name and
// extension the way Windows' _splitpath does, and joined again.
#pragma once

#include <string>
#include <string_view>

namespace vantr {

#ifdef _WIN32
constexpr char kPathSeparator = '\\';
#else
constexpr char kPathSeparator = '/';
#endif

// A path split the way Windows' _splitpath does: "C:" + "\\dir\\" + "name" + ".ext".
// Both '\\' and '/' count as separators; the folder keeps its trailing one.
struct SplitPath {
  std::string drive;
  std::string folder;
  std::string name;
  std::string extension;
};
SplitPath splitPath(std::string_view path);

// folder and name joined by the platform's separator; none is added when the
// folder is empty or already ends in '/' or '\\'.
std::string joinPath(std::string_view folder, std::string_view name);

// A full path's drive and folder joined with another file name ("" for "").
std::string pathBeside(std::string_view fullPath, std::string_view fileName);

}  // namespace vantr
