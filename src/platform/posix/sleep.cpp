#include "platform/sleep.h"

#include <sched.h>

#include <cerrno>
#include <ctime>

namespace zeb {

namespace {
constexpr unsigned kMicrosecondsPerSecond = 1'000'000;
constexpr long kNanosecondsPerMicrosecond = 1000;
}  // namespace

void sleepMicroseconds(unsigned microseconds) noexcept {
  timespec left{};
  left.tv_sec = static_cast<time_t>(microseconds / kMicrosecondsPerSecond);
  left.tv_nsec =
      static_cast<long>(microseconds % kMicrosecondsPerSecond) * kNanosecondsPerMicrosecond;
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

void sleepMilliseconds(unsigned milliseconds) noexcept {
  if (milliseconds == 0) {
    sched_yield();
    return;
  }
  timespec left{};
  left.tv_sec = static_cast<time_t>(milliseconds / 1000);
  left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000 * kNanosecondsPerMicrosecond;
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

}  // namespace zeb
