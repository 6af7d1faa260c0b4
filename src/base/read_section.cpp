#include "base/read_section.h"

namespace zeb::read_section {

constinit std::array<Cell, kExclusiveThreadSlots> cells{};

Moment Moment::now() noexcept {
  Moment moment;
  moment.proven = heavyFence();
  moment.anybodyReading = !moment.proven;
  const unsigned used = exclusiveThreadSlotsUsed();
  for (unsigned slot = 0; slot < used; ++slot) {
    const uint64_t sequence = cells[slot].sequence.load(std::memory_order_seq_cst);
    moment.sequences[slot] = sequence;
    moment.anybodyReading |= (sequence & 1) != 0;
  }
  return moment;
}

bool nobodyCanBeReading() noexcept {
  // A thread that gets a further cell moves the number before it first enters a section, and so
  // either is seen here or sees what the caller has unlinked.
  if (exclusiveThreadSlotsUsed() != 1 || threadSlot() != 0) return false;
  return (cells[0].sequence.load(std::memory_order_relaxed) & 1) == 0;
}

bool Moment::passed() const noexcept {
  if (!proven) return false;
  for (unsigned slot = 0; slot < sequences.size(); ++slot) {
    const bool wasReading = (sequences[slot] & 1) != 0;
    if (wasReading && cells[slot].sequence.load(std::memory_order_seq_cst) == sequences[slot]) {
      return false;
    }
  }
  return true;
}

}  // namespace zeb::read_section
