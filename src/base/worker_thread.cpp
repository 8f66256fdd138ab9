#include "base/worker_thread.h"

#include <chrono>

namespace vantr {

bool WorkerThread::start(std::function<void()> body) {
  if (alive()) return false;
  if (m_thread.joinable()) m_thread.join();
  m_finished.store(false, std::memory_order_release);
  m_marker.store(kRunningMarker, std::memory_order_release);
  m_appliedPriority = 0;
  m_thread = std::thread([this, body = std::move(body)] {
    body();
    m_finished.store(true, std::memory_order_release);
  });
  return true;
}

bool WorkerThread::stop() {
  m_marker.store(0, std::memory_order_release);
  if (!m_thread.joinable()) return true;
  for (int poll = 0; poll < m_stopPolls && !m_finished.load(std::memory_order_acquire); ++poll)
    std::this_thread::sleep_for(std::chrono::milliseconds(m_stopPollMs));
  if (!m_finished.load(std::memory_order_acquire)) return false;
  m_thread.join();
  return true;
}

WorkerThread::~WorkerThread() {
  // The thread uses its owner, which is going away with this object: past the
  // polls there is nothing safe left but to wait for it.
  if (!stop()) m_thread.join();
}

void WorkerThread::applyPriority() {
  const int wanted = m_priority.load(std::memory_order_acquire);
  if (wanted == m_appliedPriority) return;
  setCurrentThreadPriority(wanted);
  m_appliedPriority = wanted;
}

}  // namespace vantr
