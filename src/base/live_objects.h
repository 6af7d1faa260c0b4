// Counting the objects that live, kind by kind, for whoever inspects the library.
#ifndef ZEB_BASE_LIVE_OBJECTS_H
#define ZEB_BASE_LIVE_OBJECTS_H

#include <cstdint>

#include "base/tally.h"

namespace zeb {

struct LiveObjects {
  uint64_t live = 0;  // made and not yet freed
  uint64_t kept = 0;  // of these, those that the library alone keeps, for being made anew
};

// The live objects of a kind that has no pool to ask. Making and ending an object cost a load and a
// store each.
class LiveTally {
 public:
  void made() noexcept { sum_.add(1); }
  void ended() noexcept { sum_.add(~uint64_t{0}); }

  // The cells are not read at one moment: an object whose end is seen and its making not would
  // make the sum negative.
  [[nodiscard]] uint64_t live() const noexcept {
    const auto sum = static_cast<int64_t>(sum_.total());
    return sum > 0 ? static_cast<uint64_t>(sum) : 0;
  }

 private:
  Tally sum_;  // modulo 2^64
};

}  // namespace zeb

#endif
