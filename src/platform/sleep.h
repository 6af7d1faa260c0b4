// Giving the processor away.
#ifndef ZEB_PLATFORM_SLEEP_H
#define ZEB_PLATFORM_SLEEP_H

namespace zeb {

// Suspends the calling thread for at least this long; 0 lets another ready thread run first.
void sleepMilliseconds(unsigned milliseconds) noexcept;

// The same for waits shorter than a scheduler's tick.
void sleepMicroseconds(unsigned microseconds) noexcept;

// Tells the processor that the thread is spinning.
inline void pauseProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  __asm__ __volatile__("yield");
#endif
}

}  // namespace zeb

#endif
