// A small file interface with the sharing modes the program needs, so that the
// core never includes <windows.h>: CreateFileA on Windows, POSIX natively.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantr {

enum class FileMode {
  // Read an existing file, front to back; others may read, write, rename or
  // delete it while it is open (a player follows a recording that is still
  // being written).
  Read,
  // Create or truncate and write; others may read it meanwhile.
  Write,
  // Read and write an existing file; others may read it meanwhile.
  ReadWrite,
  // Read and write an existing file that no one else has open: the open fails
  // while anyone else uses the file, which is how "is it busy?" is asked.
  Exclusive,
  // Create a file that does not exist yet and write it; no one else may open
  // it meanwhile (the temporary file of a whole-file replacement).
  CreateNew,
  // Open or create a file and add to its end; others may read it meanwhile.
  Append,
};

class File {
 public:
  File() = default;
  File(const std::string& path, FileMode mode) { open(path, mode); }
  ~File() { close(); }
  File(File&& other) noexcept : m_handle(other.m_handle) { other.m_handle = kClosed; }
  File& operator=(File&& other) noexcept;
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool open(const std::string& path, FileMode mode);
  void close();
  bool isOpen() const { return m_handle != kClosed; }

  // Reads up to n bytes at the current position and returns how many were read.
  size_t read(void* data, size_t n);
  // Writes all n bytes at the current position.
  bool write(const void* data, size_t n);
  bool seek(int64_t offset);
  // The file's current size, or -1.
  int64_t size() const;
  // Forces what was written onto the disk.
  bool sync();
  // Makes the current position the end of the file, cutting off what lies
  // beyond it (or extending the file with zeros up to it).
  bool truncate();

 private:
  static constexpr intptr_t kClosed = -1;
  intptr_t m_handle = kClosed;  // a HANDLE on Windows, a descriptor natively
};

// Reads a whole file (shared as FileMode::Read). False when it cannot be opened.
bool readWholeFile(const std::string& path, std::string& contents);

// Replaces a file's contents as one step: the new text goes to a temporary file
// beside it, is synced to disk, and is renamed over the old one. A reader, or
// the disk after a power cut, sees the old or the new file, never a mix or a
// truncated one.
bool replaceFileContents(const std::string& path, const std::string& contents);

// Copies a file of any size over to: the copy is made in a temporary file
// beside to and renamed over it once whole, so to is never left half
// written. False (and to untouched) when from cannot be read or the copy fails.
bool copyFileReplacing(const std::string& from, const std::string& to);

bool fileExists(const std::string& path);
bool removeFile(const std::string& path);
bool makeDirectory(const std::string& path);

}  // namespace vantr
