#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "test_support/child_process.h"

namespace vantr {

ChildProcess::~ChildProcess() {
  if (m_handle > 0) {
    kill();
    wait(5000);
  }
}

bool ChildProcess::start(const std::string& exe, const std::vector<std::string>& args) {
  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(exe.c_str()));
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  const pid_t pid = fork();
  if (pid < 0) return false;
  if (pid == 0) {
    execv(exe.c_str(), argv.data());
    _exit(127);
  }
  m_handle = pid;
  return true;
}

void ChildProcess::kill() {
  if (m_handle > 0) ::kill(static_cast<pid_t>(m_handle), SIGKILL);
}

bool ChildProcess::wait(int timeoutMs, int* exitCode) {
  if (m_handle <= 0) return true;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    int status = 0;
    const pid_t done = waitpid(static_cast<pid_t>(m_handle), &status, WNOHANG);
    if (done == static_cast<pid_t>(m_handle)) {
      if (exitCode) *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      m_handle = -1;
      return true;
    }
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

bool ChildProcess::running() { return m_handle > 0 && !wait(0); }

std::string nativePath(const std::string& path) { return path; }

}  // namespace vantr
