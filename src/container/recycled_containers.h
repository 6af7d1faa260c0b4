// The full containers that wait to be made anew: a stack of at most 32.
#ifndef ZEB_CONTAINER_RECYCLED_CONTAINERS_H
#define ZEB_CONTAINER_RECYCLED_CONTAINERS_H

#include <array>
#include <cstddef>

#include "platform/biased_lock.h"
#include "zeb/types.h"

namespace zeb::container {

// Thread safety: any thread may push and pop; the lock is held for nothing else.
class RecycledContainers {
 public:
  static constexpr size_t kCapacity = 32;

  constexpr RecycledContainers() noexcept = default;

  // False when the stack is full.
  bool push(ZEBContainer* container) noexcept ZEB_EXCLUDES(lock_) {
    const BiasedGuard guard(lock_);
    if (count_ == kCapacity) return false;
    stack_[count_++] = container;
    return true;
  }

  // Null when the stack is empty.
  ZEBContainer* pop() noexcept ZEB_EXCLUDES(lock_) {
    const BiasedGuard guard(lock_);
    return count_ != 0 ? stack_[--count_] : nullptr;
  }

  [[nodiscard]] size_t count() noexcept ZEB_EXCLUDES(lock_) {
    const BiasedGuard guard(lock_);
    return count_;
  }

  // Only while one thread uses the library.
  template <class Visit>
  void forEach(Visit visit) const ZEB_NO_THREAD_SAFETY_ANALYSIS {
    for (size_t i = 0; i < count_; ++i) visit(*stack_[i]);
  }

 private:
  BiasedLock lock_{50};
  size_t count_ ZEB_GUARDED_BY(lock_) = 0;
  std::array<ZEBContainer*, kCapacity> stack_ ZEB_GUARDED_BY(lock_){};
};

}  // namespace zeb::container

#endif
