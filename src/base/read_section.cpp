#include "base/read_section.h"

namespace zeb::read_section {

constinit std::array<Cell, kExclusiveThreadSlots> cells{};

Moment Moment::now() noexcept {
  Moment moment;
  const unsigned used = exclusiveThreadSlotsUsed();
  for (unsigned slot = 0; slot < used; ++slot) {
    const uint64_t sequence = cells[slot].sequence.load(std::memory_order_seq_cst);
    moment.sequences[slot] = sequence;
    moment.anybodyReading |= (sequence & 1) != 0;
  }
  return moment;
}

bool Moment::passed() const noexcept {
  for (unsigned slot = 0; slot < sequences.size(); ++slot) {
    const bool wasReading = (sequences[slot] & 1) != 0;
    if (wasReading && cells[slot].sequence.load(std::memory_order_seq_cst) == sequences[slot]) {
      return false;
    }
  }
  return true;
}

}  // namespace zeb::read_section
