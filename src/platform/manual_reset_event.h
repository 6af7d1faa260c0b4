// An event that stays signalled until it is reset; all who wait go on. It starts reset.
//
// Thread safety: any thread may call anything.
#ifndef ZEB_PLATFORM_MANUAL_RESET_EVENT_H
#define ZEB_PLATFORM_MANUAL_RESET_EVENT_H

#include "platform/mutex.h"

namespace zeb {

class ManualResetEvent {
 public:
  constexpr ManualResetEvent() noexcept = default;
  ManualResetEvent(const ManualResetEvent&) = delete;
  ManualResetEvent& operator=(const ManualResetEvent&) = delete;

  void signal() noexcept ZEB_EXCLUDES(mutex_) {
    const MutexGuard guard(mutex_);
    signalled_ = true;
    changed_.wakeAll();
  }
  void reset() noexcept ZEB_EXCLUDES(mutex_) {
    const MutexGuard guard(mutex_);
    signalled_ = false;
  }
  void wait() noexcept ZEB_EXCLUDES(mutex_) {
    const MutexGuard guard(mutex_);
    while (!signalled_) changed_.wait(mutex_);
  }

 private:
  Mutex mutex_;
  Condition changed_;
  bool signalled_ ZEB_GUARDED_BY(mutex_) = false;
};

}  // namespace zeb

#endif
