// Faults that the compiler has to refuse; PLANTED says which.

#include "platform/spin_lock.h"

namespace zeb {

class Guarded {
 public:
  int take() {
#if PLANTED == 1
    return value_;
#else
    const SpinGuard guard(lock_);
    return value_;
#endif
  }

 private:
  SpinLock lock_{100};
  int value_ ZEB_GUARDED_BY(lock_) = 0;
};

int plantedTake(Guarded& guarded);

int plantedTake(Guarded& guarded) {
#if PLANTED == 2
  const unsigned taken = guarded.take();
  return static_cast<int>(taken);
#else
  return guarded.take();
#endif
}

}  // namespace zeb
