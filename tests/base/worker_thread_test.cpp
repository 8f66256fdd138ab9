#include "base/worker_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace vantr {
namespace {

TEST(WorkerThread, RunsUntilStoppedAndStartsAgain) {
  WorkerThread worker;
  EXPECT_TRUE(worker.stop()) << "stopping a worker that never ran is no error";
  std::atomic<int> passes{0};
  const auto body = [&] {
    while (worker.running()) {
      ++passes;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  };
  for (int round = 0; round < 2; ++round) {  // a stopped worker starts again
    passes = 0;
    ASSERT_TRUE(worker.start(body));
    EXPECT_FALSE(worker.start(body)) << "one thread per worker";
    while (passes < 2) std::this_thread::yield();
    EXPECT_TRUE(worker.stop());
    EXPECT_FALSE(worker.alive());
  }
}

}  // namespace
}  // namespace vantr
