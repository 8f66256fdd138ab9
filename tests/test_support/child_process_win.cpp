#include <windows.h>

#include "test_support/child_process.h"

namespace vantr {

namespace {
HANDLE asHandle(long long h) { return reinterpret_cast<HANDLE>(static_cast<intptr_t>(h)); }
}  // namespace

ChildProcess::~ChildProcess() {
  if (m_handle != -1) {
    kill();
    wait(5000);
  }
}

std::string nativePath(const std::string& path) {
  if (path.empty() || path[0] != '/') return path;
  std::string out = "Z:" + path;
  for (char& c : out) {
    if (c == '/') c = '\\';
  }
  return out;
}

bool ChildProcess::start(const std::string& exe, const std::vector<std::string>& args) {
  const std::string program = nativePath(exe);
  std::string commandLine = "\"" + program + "\"";
  for (const std::string& a : args) commandLine += " \"" + a + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  if (!CreateProcessA(program.c_str(), &commandLine[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &info)) {
    return false;
  }
  CloseHandle(info.hThread);
  m_handle = static_cast<long long>(reinterpret_cast<intptr_t>(info.hProcess));
  return true;
}

void ChildProcess::kill() {
  if (m_handle != -1) TerminateProcess(asHandle(m_handle), 9);
}

bool ChildProcess::wait(int timeoutMs, int* exitCode) {
  if (m_handle == -1) return true;
  if (WaitForSingleObject(asHandle(m_handle), static_cast<DWORD>(timeoutMs)) != WAIT_OBJECT_0) return false;
  DWORD code = 0;
  GetExitCodeProcess(asHandle(m_handle), &code);
  if (exitCode) *exitCode = static_cast<int>(code);
  CloseHandle(asHandle(m_handle));
  m_handle = -1;
  return true;
}

bool ChildProcess::running() { return m_handle != -1 && !wait(0); }

}  // namespace vantr
