// A small number for each thread, for data that every thread keeps in a cell of its own.
//
// The first kExclusiveThreadSlots threads that ask get a number that no other living thread has;
// a thread that ends gives its number back for the next one. All further threads share
// kSharedThreadSlot. What a thread has written to its cell is visible to the next owner.
#ifndef ZEB_PLATFORM_THREAD_SLOT_H
#define ZEB_PLATFORM_THREAD_SLOT_H

namespace zeb {

inline constexpr unsigned kExclusiveThreadSlots = 15;
inline constexpr unsigned kSharedThreadSlot = kExclusiveThreadSlots;
inline constexpr unsigned kThreadSlots = kExclusiveThreadSlots + 1;

namespace thread_slot {
inline constexpr unsigned kUnassigned = ~0u;
// Trivially destructible, so that the library can be unloaded; in static storage of the thread, so
// that reading it is one load.
extern constinit thread_local unsigned current __attribute__((tls_model("initial-exec")));
unsigned assign() noexcept;
}  // namespace thread_slot

// The calling thread's slot, below kThreadSlots.
inline unsigned threadSlot() noexcept {
  const unsigned slot = thread_slot::current;
  return slot != thread_slot::kUnassigned ? slot : thread_slot::assign();
}

// One past the highest exclusive slot that any thread has had so far.
unsigned exclusiveThreadSlotsUsed() noexcept;

}  // namespace zeb

#endif
