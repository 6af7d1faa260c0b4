// Threads that a test directs.
#ifndef ZEB_TESTS_SUPPORT_THREADS_H
#define ZEB_TESTS_SUPPORT_THREADS_H

#include <condition_variable>
#include <functional>
#include <latch>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace zeb_test {

// Calls body(0) ... body(count - 1), each on a thread of its own. All begin together.
template <class Body>
void runTogether(unsigned count, Body body) {
  std::latch ready(count);
  std::vector<std::thread> threads;
  for (unsigned index = 0; index < count; ++index) {
    threads.emplace_back([&ready, &body, index] {
      ready.arrive_and_wait();
      body(index);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// A thread that lives as long as this object and does one thing at a time for the test: with it, a
// test says exactly which thread does what after what.
class OtherThread {
 public:
  OtherThread() : thread_([this] { serve(); }) {}
  ~OtherThread() {
    run(nullptr);
    thread_.join();
  }
  OtherThread(const OtherThread&) = delete;
  OtherThread& operator=(const OtherThread&) = delete;

  // Returns when the thread has done it. A null task ends the thread.
  void run(std::function<void()> task) {
    std::unique_lock guard(mutex_);
    task_ = std::move(task);
    wanted_ = true;
    changed_.notify_all();
    changed_.wait(guard, [this] { return !wanted_; });
  }

 private:
  void serve() {
    std::unique_lock guard(mutex_);
    for (bool more = true; more;) {
      changed_.wait(guard, [this] { return wanted_; });
      more = static_cast<bool>(task_);
      if (more) task_();
      wanted_ = false;
      changed_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::function<void()> task_;
  bool wanted_ = false;
  std::thread thread_;  // last: it starts when the others are there
};

}  // namespace zeb_test

#endif
