// Starting and killing a helper program from a test, natively and on Windows.
#pragma once

#include <string>
#include <vector>

namespace vantr {

class ChildProcess {
 public:
  ChildProcess() = default;
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // exe may be a build-tree path as CMake gives it; on Windows a Unix path is
  // taken through Wine's Z: drive.
  bool start(const std::string& exe, const std::vector<std::string>& args);
  // Ends it at once, as a power cut would (SIGKILL, TerminateProcess).
  void kill();
  // Waits up to timeoutMs; true and the exit code once it has ended.
  bool wait(int timeoutMs, int* exitCode = nullptr);
  bool running();

 private:
  long long m_handle = -1;  // pid natively, HANDLE on Windows
};

// A Unix path as the Windows side sees it (Z:\...), unchanged natively.
std::string nativePath(const std::string& path);

}  // namespace vantr
