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

bool copyFileReplacing(const std::string& from, const std::string& to) {
  File source(from, FileMode::Read);
  if (!source.isOpen()) return false;
  const std::string temp = temporaryNameBeside(to);
  const int64_t size = source.size();
  bool copied = size >= 0;
  {
    File target(temp, FileMode::CreateNew);
    if (!target.isOpen()) return false;
    char buffer[65536];
    int64_t total = 0;
    while (copied) {
      const size_t n = source.read(buffer, sizeof buffer);
      if (n == 0) break;
      copied = target.write(buffer, n);
      total += static_cast<int64_t>(n);
    }
    // A read that failed part way ends the loop early: never a short copy.
    copied = copied && total >= size && target.sync();
  }
  if (!copied || !renameReplacing(temp, to)) {
    removeFile(temp);
    return false;
  }
  syncFolderOf(to);
  return true;
}

}  // namespace vantr
