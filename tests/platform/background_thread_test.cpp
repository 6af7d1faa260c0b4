#include "platform/background_thread.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "support/threads.h"

namespace zeb {
namespace {

std::atomic<int> begun{0};
std::atomic<int> ended{0};
std::atomic<bool> mayEnd{true};
std::atomic<bool> signalsBlocked{false};
std::atomic<int> inside{0};
std::atomic<int> mostInside{0};

void work() noexcept {
  const int now = ++inside;
  if (now > mostInside) mostInside = now;
  ++begun;
  sigset_t mask;
  sigemptyset(&mask);
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  signalsBlocked = sigismember(&mask, SIGINT) == 1 && sigismember(&mask, SIGALRM) == 1;
  while (!mayEnd) std::this_thread::yield();
  --inside;
  ++ended;
}

class BackgroundThreadTest : public ::testing::Test {
 protected:
  BackgroundThreadTest() {
    begun = ended = inside = mostInside = 0;
    mayEnd = true;
    signalsBlocked = false;
  }
  BackgroundThread thread_{work};
};

TEST_F(BackgroundThreadTest, RefusesWhileItIsClosed) {
  EXPECT_FALSE(thread_.request());
  thread_.open();
  thread_.close();
  EXPECT_FALSE(thread_.request());
  EXPECT_EQ(begun, 0);
}

TEST_F(BackgroundThreadTest, HasDoneTheWorkWhenItIsClosed) {
  thread_.open();
  EXPECT_TRUE(thread_.request());
  thread_.close();
  EXPECT_EQ(ended, 1);
  thread_.close();
}

TEST_F(BackgroundThreadTest, WorksOnceMoreForARequestMeanwhile) {
  thread_.open();
  mayEnd = false;
  EXPECT_TRUE(thread_.request());
  while (begun == 0) std::this_thread::yield();
  EXPECT_TRUE(thread_.request());
  EXPECT_TRUE(thread_.request());
  mayEnd = true;
  thread_.close();
  EXPECT_EQ(ended, 2);
  EXPECT_EQ(mostInside, 1);
}

TEST_F(BackgroundThreadTest, BeginsAgainAfterItHasEnded) {
  thread_.open();
  for (int round = 1; round <= 50; ++round) {
    EXPECT_TRUE(thread_.request());
    while (ended < round) std::this_thread::yield();
  }
  thread_.close();
  EXPECT_EQ(ended, 50);
}

TEST_F(BackgroundThreadTest, OpensAgain) {
  for (int round = 0; round < 3; ++round) {
    thread_.open();
    EXPECT_TRUE(thread_.request());
    thread_.close();
  }
  EXPECT_EQ(ended, 3);
}

TEST_F(BackgroundThreadTest, KeepsTheHostsSignalsOut) {
  thread_.open();
  EXPECT_TRUE(thread_.request());
  thread_.close();
  EXPECT_TRUE(signalsBlocked);
  sigset_t mask;
  sigemptyset(&mask);
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&mask, SIGALRM), 0);
}

TEST_F(BackgroundThreadTest, TakesRequestsOfManyThreads) {
  thread_.open();
  zeb_test::runTogether(4, [&](unsigned) {
    for (int i = 0; i < 500; ++i) EXPECT_TRUE(thread_.request());
  });
  thread_.close();
  EXPECT_GE(ended, 1);
  EXPECT_EQ(mostInside, 1);
}

// New threads get a stack that no address space has room for.
class NoRoomForStacks {
 public:
  NoRoomForStacks() {
    pthread_getattr_default_np(&before_);
    pthread_attr_t attributes;
    pthread_getattr_default_np(&attributes);
    pthread_attr_setstacksize(&attributes, size_t{1} << 48);
    pthread_setattr_default_np(&attributes);
    pthread_attr_destroy(&attributes);
  }
  ~NoRoomForStacks() {
    pthread_setattr_default_np(&before_);
    pthread_attr_destroy(&before_);
  }
  NoRoomForStacks(const NoRoomForStacks&) = delete;
  NoRoomForStacks& operator=(const NoRoomForStacks&) = delete;

 private:
  pthread_attr_t before_{};
};

TEST_F(BackgroundThreadTest, SaysWhenThereIsNoThreadToBeHad) {
  thread_.open();
  {
    const NoRoomForStacks noRoom;
    EXPECT_FALSE(thread_.request());
  }
  EXPECT_EQ(begun, 0);
  EXPECT_TRUE(thread_.request());  // the failure has left nothing behind
  thread_.close();
  EXPECT_EQ(ended, 1);
}

}  // namespace
}  // namespace zeb
