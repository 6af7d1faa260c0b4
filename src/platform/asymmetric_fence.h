// Two fences that together order what one of each alone orders: a light one that costs its many
// callers nothing, and a heavy one that its rare caller pays for all of them.
//
// If thread A stores x, passes the light fence and loads y, while thread B stores y, passes the
// heavy fence and loads x, at least one of them sees the other's store. Where the system has no
// heavy fence, both are full fences.
#ifndef ZEB_PLATFORM_ASYMMETRIC_FENCE_H
#define ZEB_PLATFORM_ASYMMETRIC_FENCE_H

#include <atomic>
#include <cstdint>

namespace zeb {

namespace asymmetric_fence {
// Set once, when the library is loaded.
extern constinit bool available;
}  // namespace asymmetric_fence

// Stores a value and passes the light fence.
inline void storeThenLightFence(std::atomic<uint64_t>& cell, uint64_t value) noexcept {
  if (asymmetric_fence::available) [[likely]] {
    cell.store(value, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst);
  } else {
    (void)cell.exchange(value, std::memory_order_seq_cst);
  }
}

// False when the system refused: then nothing is known about what other threads see.
[[nodiscard]] bool heavyFence() noexcept;

}  // namespace zeb

#endif
