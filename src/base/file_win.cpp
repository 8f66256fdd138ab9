#include <windows.h>

#include "base/file.h"
#include "base/process.h"

namespace vantr {
namespace {

HANDLE asHandle(intptr_t h) { return reinterpret_cast<HANDLE>(h); }

}  // namespace

bool File::open(const std::string& path, FileMode mode) {
  close();
  DWORD access = GENERIC_READ;
  DWORD share = FILE_SHARE_READ;
  DWORD disposition = OPEN_EXISTING;
  DWORD flags = FILE_ATTRIBUTE_NORMAL;
  switch (mode) {
    case FileMode::Read:
      share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
      // Readers go through a file from front to back: tell the cache so.
      flags |= FILE_FLAG_SEQUENTIAL_SCAN;
      break;
    case FileMode::Write:
      access = GENERIC_WRITE;
      disposition = CREATE_ALWAYS;
      break;
    case FileMode::ReadWrite: access = GENERIC_READ | GENERIC_WRITE; break;
    case FileMode::Exclusive:
      access = GENERIC_READ | GENERIC_WRITE;
      share = 0;
      break;
    case FileMode::Append:
      access = FILE_APPEND_DATA;
      share = FILE_SHARE_READ | FILE_SHARE_WRITE;
      disposition = OPEN_ALWAYS;
      break;
    case FileMode::CreateNew:
      access = GENERIC_WRITE;
      share = 0;
      disposition = CREATE_NEW;
      break;
  }
  HANDLE h = CreateFileA(path.c_str(), access, share, nullptr, disposition, flags, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  m_handle = reinterpret_cast<intptr_t>(h);
  return true;
}

void File::close() {
  if (m_handle != kClosed) {
    CloseHandle(asHandle(m_handle));
    m_handle = kClosed;
  }
}

size_t File::read(void* data, size_t n) {
  if (!isOpen()) return 0;
  size_t done = 0;
  while (done < n) {
    const DWORD chunk = static_cast<DWORD>(n - done > 0x40000000u ? 0x40000000u : n - done);
    DWORD got = 0;
    if (!ReadFile(asHandle(m_handle), static_cast<char*>(data) + done, chunk, &got, nullptr) || got == 0) break;
    done += got;
  }
  return done;
}

bool File::write(const void* data, size_t n) {
  if (!isOpen()) return false;
  size_t done = 0;
  while (done < n) {
    const DWORD chunk = static_cast<DWORD>(n - done > 0x40000000u ? 0x40000000u : n - done);
    DWORD put = 0;
    if (!WriteFile(asHandle(m_handle), static_cast<const char*>(data) + done, chunk, &put, nullptr) || put == 0)
      return false;
    done += put;
  }
  return true;
}

bool File::seek(int64_t offset) {
  LARGE_INTEGER to;
  to.QuadPart = offset;
  return isOpen() && SetFilePointerEx(asHandle(m_handle), to, nullptr, FILE_BEGIN) != FALSE;
}

int64_t File::size() const {
  LARGE_INTEGER size;
  if (!isOpen() || !GetFileSizeEx(asHandle(m_handle), &size)) return -1;
  return size.QuadPart;
}

bool File::sync() { return isOpen() && FlushFileBuffers(asHandle(m_handle)) != FALSE; }

bool File::truncate() { return isOpen() && SetEndOfFile(asHandle(m_handle)) != FALSE; }

unsigned long currentProcessId() { return GetCurrentProcessId(); }

bool renameReplacing(const std::string& from, const std::string& to) {
  // A reader that opened the target without delete sharing (another program,
  // a virus scanner) blocks the replacement; wait for it up to two seconds.
  for (int attempt = 0; attempt < 200; ++attempt) {
    if (MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return true;
    const DWORD error = GetLastError();
    if (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION) return false;
    Sleep(10);
  }
  return false;
}

void syncFolderOf(const std::string& /*path*/) {
  // MOVEFILE_WRITE_THROUGH has already made the rename durable.
}

bool fileExists(const std::string& path) {
  const DWORD attributes = GetFileAttributesA(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool removeFile(const std::string& path) { return DeleteFileA(path.c_str()) != FALSE; }

bool makeDirectory(const std::string& path) {
  return CreateDirectoryA(path.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS;
}

}  // namespace vantr
