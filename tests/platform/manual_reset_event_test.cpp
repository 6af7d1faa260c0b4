#include "platform/manual_reset_event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace zeb {
namespace {

TEST(ManualResetEventTest, LetsPassWhileItIsSignalled) {
  ManualResetEvent event;
  event.signal();
  event.wait();
  event.wait();
}

TEST(ManualResetEventTest, HoldsBackUntilItIsSignalled) {
  ManualResetEvent event;
  event.signal();
  event.reset();
  std::atomic<bool> signalled{false};
  std::vector<std::thread> waiters;
  for (int i = 0; i < 4; ++i) {
    waiters.emplace_back([&] {
      event.wait();
      EXPECT_TRUE(signalled);
    });
  }
  signalled = true;
  event.signal();
  for (std::thread& waiter : waiters) waiter.join();
}

}  // namespace
}  // namespace zeb
