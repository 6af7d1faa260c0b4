#include "platform/thread_slot.h"

#include <pthread.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>

namespace zeb {

namespace {

constexpr uint32_t kAllFree = (uint32_t{1} << kExclusiveThreadSlots) - 1;
constinit std::atomic<uint32_t> freeSlots{kAllFree};
constinit std::atomic<unsigned> slotsUsed{0};

// What a thread's key holds: the address of its slot's element, since null would mean nothing.
constinit std::array<char, kExclusiveThreadSlots> slotTokens{};

void giveBack(void* token) noexcept {
  // Another destructor of this thread may still call the library: it then gets a slot again.
  thread_slot::current = thread_slot::kUnassigned;
  const auto slot = static_cast<unsigned>(static_cast<char*>(token) - slotTokens.data());
  freeSlots.fetch_or(uint32_t{1} << slot, std::memory_order_release);
}

// The key whose destructor sees threads end. It goes when the library is unloaded, so that no
// thread calls into code that is no longer there.
class ThreadEndKey {
 public:
  ThreadEndKey() noexcept : valid_(pthread_key_create(&key_, &giveBack) == 0) {}
  ~ThreadEndKey() {
    if (valid_) pthread_key_delete(key_);
  }
  ThreadEndKey(const ThreadEndKey&) = delete;
  ThreadEndKey& operator=(const ThreadEndKey&) = delete;

  [[nodiscard]] bool watch(unsigned slot) const noexcept {
    return valid_ && pthread_setspecific(key_, &slotTokens[slot]) == 0;
  }

 private:
  pthread_key_t key_{};
  bool valid_;
};

const ThreadEndKey threadEnd;

void raiseSlotsUsed(unsigned atLeast) noexcept {
  unsigned used = slotsUsed.load(std::memory_order_relaxed);
  while (used < atLeast &&
         !slotsUsed.compare_exchange_weak(used, atLeast, std::memory_order_seq_cst)) {
  }
}

unsigned takeExclusive() noexcept {
  uint32_t available = freeSlots.load(std::memory_order_relaxed);
  while (available != 0) {
    const auto slot = static_cast<unsigned>(std::countr_zero(available));
    if (!freeSlots.compare_exchange_weak(available, available & ~(uint32_t{1} << slot),
                                         std::memory_order_acquire, std::memory_order_relaxed)) {
      continue;
    }
    if (threadEnd.watch(slot)) return slot;
    freeSlots.fetch_or(uint32_t{1} << slot, std::memory_order_release);
    break;
  }
  return kSharedThreadSlot;
}

}  // namespace

namespace thread_slot {

constinit thread_local unsigned current = kUnassigned;

unsigned assign() noexcept {
  const unsigned slot = takeExclusive();
  if (slot != kSharedThreadSlot) raiseSlotsUsed(slot + 1);
  current = slot;
  return slot;
}

}  // namespace thread_slot

unsigned exclusiveThreadSlotsUsed() noexcept { return slotsUsed.load(std::memory_order_seq_cst); }

}  // namespace zeb
