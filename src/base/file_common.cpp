#include <atomic>
#include <string>

#include "base/file.h"
#include "base/process.h"

namespace vantr {

File& File::operator=(File&& other) noexcept {
  if (this != &other) {
    close();
    m_handle = other.m_handle;
    other.m_handle = kClosed;
  }
  return *this;
}

bool readWholeFile(const std::string& path, std::string& contents) {
  File file(path, FileMode::Read);
  if (!file.isOpen()) return false;
  contents.clear();
  char buffer[16384];
  for (;;) {
    const size_t n = file.read(buffer, sizeof buffer);
    if (n == 0) break;
    contents.append(buffer, n);
  }
  return true;
}

// The temporary name carries the process and a counter so that two writers,
// in one process or in two, never share a temporary file.
std::string temporaryNameBeside(const std::string& path) {
  static std::atomic<unsigned> counter{0};
  return path + "." + std::to_string(currentProcessId()) + "-" + std::to_string(counter++) + ".tmp";
}

bool replaceFileContents(const std::string& path, const std::string& contents) {
  const std::string temp = temporaryNameBeside(path);
  bool written = false;
  {
    File file(temp, FileMode::CreateNew);
    if (!file.isOpen()) return false;
    written = file.write(contents.data(), contents.size()) && file.sync();
  }
  if (!written || !renameReplacing(temp, path)) {
    removeFile(temp);
    return false;
  }
  // Make the rename itself durable.
  syncFolderOf(path);
  return true;
}

}  // namespace vantr
