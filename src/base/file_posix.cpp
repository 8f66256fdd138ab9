#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "base/file.h"
#include "base/process.h"

namespace vantr {

// Windows' sharing modes have no POSIX equivalent; advisory locks stand in for
// them among Vantorel's own processes: Exclusive takes an exclusive lock, every
// other mode a shared one, so an Exclusive open fails while anyone has the file.
bool File::open(const std::string& path, FileMode mode) {
  close();
  int flags = 0;
  switch (mode) {
    case FileMode::Read: flags = O_RDONLY; break;
    case FileMode::Write: flags = O_WRONLY | O_CREAT | O_TRUNC; break;
    case FileMode::ReadWrite:
    case FileMode::Exclusive: flags = O_RDWR; break;
    case FileMode::CreateNew: flags = O_WRONLY | O_CREAT | O_EXCL; break;
    case FileMode::Append: flags = O_WRONLY | O_CREAT | O_APPEND; break;
  }
  const int fd = ::open(path.c_str(), flags | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  struct stat st {};
  if (fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
    ::close(fd);
    return false;
  }
  // Readers go through a file from front to back: tell the cache so.
  if (mode == FileMode::Read) posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
  const int lock = mode == FileMode::Exclusive || mode == FileMode::CreateNew ? LOCK_EX : LOCK_SH;
  if (flock(fd, lock | LOCK_NB) != 0) {
    ::close(fd);
    return false;
  }
  m_handle = fd;
  return true;
}

void File::close() {
  if (m_handle != kClosed) {
    ::close(static_cast<int>(m_handle));
    m_handle = kClosed;
  }
}

size_t File::read(void* data, size_t n) {
  if (!isOpen()) return 0;
  size_t done = 0;
  while (done < n) {
    const ssize_t r = ::read(static_cast<int>(m_handle), static_cast<char*>(data) + done, n - done);
    if (r < 0 && errno == EINTR) continue;
    if (r <= 0) break;
    done += static_cast<size_t>(r);
  }
  return done;
}

bool File::write(const void* data, size_t n) {
  if (!isOpen()) return false;
  size_t done = 0;
  while (done < n) {
    const ssize_t r = ::write(static_cast<int>(m_handle), static_cast<const char*>(data) + done, n - done);
    if (r < 0 && errno == EINTR) continue;
    if (r <= 0) return false;
    done += static_cast<size_t>(r);
  }
  return true;
}

bool File::seek(int64_t offset) {
  return isOpen() && lseek(static_cast<int>(m_handle), static_cast<off_t>(offset), SEEK_SET) >= 0;
}

int64_t File::size() const {
  struct stat st {};
  if (!isOpen() || fstat(static_cast<int>(m_handle), &st) != 0) return -1;
  return static_cast<int64_t>(st.st_size);
}

bool File::sync() { return isOpen() && fsync(static_cast<int>(m_handle)) == 0; }

bool File::truncate() {
  if (!isOpen()) return false;
  const off_t here = lseek(static_cast<int>(m_handle), 0, SEEK_CUR);
  return here >= 0 && ftruncate(static_cast<int>(m_handle), here) == 0;
}

unsigned long currentProcessId() { return static_cast<unsigned long>(getpid()); }

bool renameReplacing(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

void syncFolderOf(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  const std::string folder = slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
  const int dirfd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dirfd >= 0) {
    fsync(dirfd);
    ::close(dirfd);
  }
}

bool fileExists(const std::string& path) {
  struct stat st {};
  return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool removeFile(const std::string& path) { return ::unlink(path.c_str()) == 0; }

bool makeDirectory(const std::string& path) { return ::mkdir(path.c_str(), 0755) == 0 || errno == EEXIST; }

}  // namespace vantr
