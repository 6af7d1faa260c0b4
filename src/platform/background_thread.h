// Work that is done on a thread of its own whenever somebody asks for it.
//
//   closed ── open ──> idle ── request ──> running ── nothing asked for ──> idle, thread ends
//                       └──────── close: waits for the thread ────────> closed
//
// There is one thread at the most. A request that comes while it runs makes it do the work once
// more before it ends. Nothing of it is left when close returns: not even the last instructions of
// a thread that has finished its work, which is why it is joined and not detached.
//
// Thread safety: any thread may request; open and close are called by one thread at a time.
#ifndef ZEB_PLATFORM_BACKGROUND_THREAD_H
#define ZEB_PLATFORM_BACKGROUND_THREAD_H

#include <pthread.h>

#include "platform/mutex.h"

namespace zeb {

class BackgroundThread {
 public:
  using Work = void (*)() noexcept;

  explicit constexpr BackgroundThread(Work work) noexcept : work_(work) {}
  BackgroundThread(const BackgroundThread&) = delete;
  BackgroundThread& operator=(const BackgroundThread&) = delete;

  void open() noexcept ZEB_EXCLUDES(mutex_);

  // The work will be begun at least once from now on. False when it will not: while closed, and
  // when the system has no thread to give.
  [[nodiscard]] bool request() noexcept ZEB_EXCLUDES(mutex_);

  // Lets a thread that runs end the work it has begun and waits for it.
  void close() noexcept ZEB_EXCLUDES(mutex_);

 private:
  static void* run(void* self) noexcept;
  [[nodiscard]] bool takeRequest() noexcept ZEB_EXCLUDES(mutex_);
  [[nodiscard]] bool startLocked() noexcept ZEB_REQUIRES(mutex_);
  void joinLocked() noexcept ZEB_REQUIRES(mutex_);

  const Work work_;
  Mutex mutex_;
  Condition ended_;
  bool open_ ZEB_GUARDED_BY(mutex_) = false;
  bool requested_ ZEB_GUARDED_BY(mutex_) = false;
  bool running_ ZEB_GUARDED_BY(mutex_) = false;
  bool joinable_ ZEB_GUARDED_BY(mutex_) = false;
  pthread_t thread_ ZEB_GUARDED_BY(mutex_){};
};

}  // namespace zeb

#endif
