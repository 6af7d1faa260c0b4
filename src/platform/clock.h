// Time stamps: how long something took, in a unit of the machine's.
//
// They come from the system's monotonic clock, in nanoseconds, where it works, else from the wall
// clock in units of 100 nanoseconds. Differences are what they are for.
#ifndef ZEB_PLATFORM_CLOCK_H
#define ZEB_PLATFORM_CLOCK_H

#include <cstdint>

namespace zeb {

// Chooses the clock; until then it is the wall clock. Only while one thread uses the library.
void chooseClock() noexcept;

[[nodiscard]] uint64_t timeStamp() noexcept;

}  // namespace zeb

#endif
