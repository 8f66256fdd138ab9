// The start/stop record every worker thread of the program shares (the
// players' feeders, the serial reader): a thread and a running marker that
// holds 12344321 while the thread is to run. Stopping clears the marker and
// looks for the thread's end every 50 ms, up to 800 times (40 s), so a worker
// stuck in a device call cannot hang the program for ever. A worker that does
// not end in that time is never let go: it stays joinable, its owner is told
// (stop() answers false) and must leave alone what the worker still uses, and
// the destructor waits for it without limit, so the thread can never run on
// with a destroyed owner.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>

namespace vantr {

// Thread priorities as Windows numbers them: -15 idle, -2 lowest, 0 normal,
// 2 highest.
constexpr int kPriorityIdle = -15;
constexpr int kPriorityLowest = -2;
constexpr int kPriorityHighest = 2;

// Sets the priority of the calling thread (a no-op where the platform has no
// such thing for ordinary users).
void setCurrentThreadPriority(int priority);

class WorkerThread {
 public:
  static constexpr int32_t kRunningMarker = 12344321;
  static constexpr int kStopPollMs = 50;
  static constexpr int kStopPolls = 800;

  // The stop polls can be shortened for tests of a worker that will not stop.
  explicit WorkerThread(int stopPollMs = kStopPollMs, int stopPolls = kStopPolls)
      : m_stopPollMs(stopPollMs), m_stopPolls(stopPolls) {}
  ~WorkerThread();
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;

  // Starts body on a new thread unless one runs already. body should return
  // soon after running() turns false.
  bool start(std::function<void()> body);
  // Clears the marker and waits for the thread as described above; false if
  // it did not end in time: it is still running, start() refuses until it has
  // ended, and a later stop() looks again.
  bool stop();
  // True while the thread is to keep running.
  bool running() const { return m_marker.load(std::memory_order_acquire) == kRunningMarker; }
  // True while a started thread has not yet returned from its body.
  bool alive() const { return m_thread.joinable() && !m_finished.load(std::memory_order_acquire); }

  // A priority the worker applies to itself at its next applyPriority() call.
  void requestPriority(int priority) { m_priority.store(priority, std::memory_order_release); }
  // Called by the worker: takes on the last requested priority, if it changed.
  void applyPriority();

 private:
  const int m_stopPollMs;
  const int m_stopPolls;
  std::thread m_thread;
  std::atomic<int32_t> m_marker{0};
  std::atomic<bool> m_finished{false};
  std::atomic<int> m_priority{0};
  int m_appliedPriority = 0;  // the worker's own view
};

}  // namespace vantr
