#include "platform/background_thread.h"

#include <csignal>

namespace zeb {

namespace {

// The host's signals are for the host's threads. A new thread inherits the mask.
class SignalsBlocked {
 public:
  SignalsBlocked() noexcept {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

void BackgroundThread::open() noexcept {
  const MutexGuard guard(mutex_);
  open_ = true;
}

bool BackgroundThread::request() noexcept {
  const MutexGuard guard(mutex_);
  if (!open_) return false;
  requested_ = true;
  if (running_) return true;
  joinLocked();
  if (startLocked()) return true;
  requested_ = false;
  return false;
}

void BackgroundThread::close() noexcept {
  const MutexGuard guard(mutex_);
  open_ = false;
  while (running_) ended_.wait(mutex_);
  joinLocked();
}

// The system's own stack size: clients' procedures run on it.
bool BackgroundThread::startLocked() noexcept {
  const SignalsBlocked blocked;
  running_ = joinable_ = pthread_create(&thread_, nullptr, &BackgroundThread::run, this) == 0;
  return running_;
}

// The thread has said that it ends and takes the mutex no more.
void BackgroundThread::joinLocked() noexcept {
  if (!joinable_) return;
  pthread_join(thread_, nullptr);
  joinable_ = false;
}

void* BackgroundThread::run(void* self) noexcept {
  auto& thread = *static_cast<BackgroundThread*>(self);
  while (thread.takeRequest()) thread.work_();
  return nullptr;
}

bool BackgroundThread::takeRequest() noexcept {
  const MutexGuard guard(mutex_);
  if (requested_ && open_) {
    requested_ = false;
    return true;
  }
  requested_ = running_ = false;
  ended_.wakeAll();
  return false;
}

}  // namespace zeb
