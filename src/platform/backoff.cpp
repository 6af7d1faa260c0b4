#include "platform/backoff.h"

#include <algorithm>

#include "platform/sleep.h"

namespace zeb {

void Backoff::wait() noexcept {
  if (spinsLeft_ > 0) {
    const unsigned pause = std::min(pause_, spinsLeft_);
    for (unsigned i = 0; i < pause; ++i) pauseProcessor();
    spinsLeft_ -= pause;
    pause_ = std::min(pause_ * 2, kLongestPause);
  } else if (yieldsLeft_ > 0) {
    --yieldsLeft_;
    sleepMilliseconds(0);
  } else {
    sleepMicroseconds(nap_);
    nap_ = std::min(nap_ * 2, kLongestNapMicroseconds);
  }
}

}  // namespace zeb
