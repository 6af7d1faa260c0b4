// The change counter: the number by which a client notices that an interface went away.
//
// It moves with every interface that is unregistered. While it stands still, every proc that was
// found is still there; so a check before each use costs one load and no look-up.
#ifndef EXAMPLES_COMMON_SUPPORT_CHANGE_COUNTER_H
#define EXAMPLES_COMMON_SUPPORT_CHANGE_COUNTER_H

#include <atomic>
#include <cstdint>

#include "zeb/frame.h"

namespace examples {

class ChangeCounter {
 public:
  // The counter is never this, so it says that nothing has been found yet.
  static constexpr uint32_t kNever = 0;

  explicit ChangeCounter(const ZEBFrameProcs& frame) : address_(frame.GetUnregisterCountAddr()) {}

  [[nodiscard]] uint32_t read() const noexcept {
    return std::atomic_ref(*address_).load(std::memory_order_acquire);
  }

 private:
  uint32_t* address_;
};

}  // namespace examples

#endif
