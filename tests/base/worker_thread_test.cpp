#include "base/worker_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
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

// A worker stuck in a device call ignores the marker. It must never be let go
// while it can still touch what its owner gave it.
TEST(WorkerThread, OneThatIgnoresTheMarkerIsNeverLetGo) {
  std::atomic<bool> release{false};
  auto owned = std::make_shared<std::atomic<int>>(0);  // what the worker uses
  const auto stuck = [&release, owned] {
    while (!release.load()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    owned->store(1);
  };
  {
    WorkerThread worker(1, 5);
    ASSERT_TRUE(worker.start(stuck));
    EXPECT_FALSE(worker.stop()) << "the polls ran out";
    EXPECT_TRUE(worker.alive()) << "the thread is kept, not detached";
    EXPECT_FALSE(worker.start(stuck)) << "no second thread beside the stuck one";
    release = true;
    while (worker.alive()) std::this_thread::yield();
    EXPECT_TRUE(worker.stop()) << "a later stop finds it ended and joins it";
    EXPECT_TRUE(worker.start([] {})) << "and the worker starts again";
  }
  // The destructor waits past the polls for a worker still inside its owner.
  release = false;
  owned->store(0);
  std::thread releaser;
  {
    WorkerThread worker(1, 2);
    ASSERT_TRUE(worker.start(stuck));
    releaser = std::thread([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      release = true;
    });
  }
  EXPECT_EQ(owned->load(), 1) << "the destructor returned before its worker ended";
  releaser.join();
}

}  // namespace
}  // namespace vantr
