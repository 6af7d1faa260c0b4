// Sizes computed from what a caller passed, for the library's own side: an overflow is raised.
#ifndef ZEB_BASE_CHECKED_SIZE_H
#define ZEB_BASE_CHECKED_SIZE_H

#include <cstdint>

#include "base/failure.h"
#include "util/checked_math.h"

namespace zeb {

// count * width. A product that cannot be represented is an allocation that cannot succeed, hence
// the id of "Out of Memory".
inline uint64_t sizeOfMany(uint64_t count, uint64_t width) {
  const auto size = checkedMultiply(count, width);
  if (!size) raiseNewKst(kst::kOutOfMemory, kMathOverflowMessage);
  return *size;
}

inline uint64_t sizeOfPointers(uint64_t count) { return sizeOfMany(count, sizeof(void*)); }

// a + b
inline uint64_t sumOfSizes(uint64_t a, uint64_t b) {
  const auto size = checkedAdd(a, b);
  if (!size) raiseNewKst(kst::kUnknown, kMathOverflowMessage);
  return *size;
}

// a + b + 1: two texts joined and their zero.
inline uint64_t sizeOfJoinedTexts(uint64_t a, uint64_t b) {
  return sumOfSizes(sumOfSizes(a, b), 1);
}

}  // namespace zeb

#endif
