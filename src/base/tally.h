// A count that many threads raise at once.
//
// Each thread adds to a cell of its own on a line of its own, with a plain load and store; threads
// beyond the exclusive slots share one cell and add atomically. Nothing is lost and nobody
// contends.
#ifndef ZEB_BASE_TALLY_H
#define ZEB_BASE_TALLY_H

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/thread_slot.h"

namespace zeb {

class Tally {
 public:
  void add(uint64_t amount) noexcept {
    const unsigned slot = threadSlot();
    std::atomic<uint64_t>& count = cells_[slot].count;
    if (slot == kSharedThreadSlot) [[unlikely]] {
      count.fetch_add(amount, std::memory_order_relaxed);
      return;
    }
    // No other thread writes this cell while the slot is ours.
    count.store(count.load(std::memory_order_relaxed) + amount, std::memory_order_relaxed);
  }

  // Every amount that was added before, and perhaps some that are being added now.
  [[nodiscard]] uint64_t total() const noexcept {
    uint64_t sum = cells_[kSharedThreadSlot].count.load(std::memory_order_relaxed);
    const unsigned used = exclusiveThreadSlotsUsed();
    for (unsigned slot = 0; slot < used; ++slot) {
      sum += cells_[slot].count.load(std::memory_order_relaxed);
    }
    return sum;
  }

 private:
  // 64 bytes apart rather than aligned: allocators promise 16, and distance is all that matters.
  struct Cell {
    std::atomic<uint64_t> count{0};
    std::array<uint64_t, 7> distance{};
  };
  std::array<Cell, kThreadSlots> cells_;
};

}  // namespace zeb

#endif
