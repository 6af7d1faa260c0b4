#include "platform/clock.h"

#include <ctime>

namespace zeb {

namespace {

constexpr uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr uint64_t kNanosecondsPerWallTick = 100;

constinit bool monotonicWorks = false;

bool read(clockid_t clock, uint64_t& nanoseconds) noexcept {
  timespec time{};
  if (clock_gettime(clock, &time) != 0) return false;
  nanoseconds = static_cast<uint64_t>(time.tv_sec) * kNanosecondsPerSecond +
                static_cast<uint64_t>(time.tv_nsec);
  return true;
}

}  // namespace

void chooseClock() noexcept {
  uint64_t ignored = 0;
  monotonicWorks = read(CLOCK_MONOTONIC, ignored);
}

uint64_t timeStamp() noexcept {
  uint64_t nanoseconds = 0;
  if (monotonicWorks) {
    read(CLOCK_MONOTONIC, nanoseconds);
    return nanoseconds;
  }
  read(CLOCK_REALTIME, nanoseconds);
  return nanoseconds / kNanosecondsPerWallTick;
}

}  // namespace zeb
