// A copy that knows how much room there is.
#ifndef ZEB_UTIL_CHECKED_COPY_H
#define ZEB_UTIL_CHECKED_COPY_H

#include <cstdint>
#include <cstring>

namespace zeb {

// Copies `count` bytes to a destination of `capacity` bytes and returns true. Copying nothing
// always succeeds. A null pointer or a count beyond the capacity is refused with false; a
// destination that is there is then zeroed, so that nobody goes on with half of the old contents.
[[nodiscard]] inline bool checkedCopy(void* destination, uint64_t capacity, const void* source,
                                      uint64_t count) noexcept {
  if (count == 0) return true;
  if (destination == nullptr) return false;
  if (source == nullptr || count > capacity) {
    std::memset(destination, 0, capacity);
    return false;
  }
  std::memcpy(destination, source, count);
  return true;
}

}  // namespace zeb

#endif
