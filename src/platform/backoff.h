// How a thread waits for another one that will be done soon: it spins, then yields, then sleeps in
// growing steps, so that a preempted thread gets the processor back whatever its priority is.
#ifndef ZEB_PLATFORM_BACKOFF_H
#define ZEB_PLATFORM_BACKOFF_H

namespace zeb {

class Backoff {
 public:
  // Spins so many times before it first yields.
  explicit constexpr Backoff(unsigned spinCount) noexcept : spinsLeft_(spinCount) {}

  // To be called each time the thread finds that it must go on waiting.
  void wait() noexcept;

 private:
  static constexpr unsigned kLongestPause = 32;
  static constexpr unsigned kYields = 16;
  static constexpr unsigned kFirstNapMicroseconds = 20;
  static constexpr unsigned kLongestNapMicroseconds = 1000;

  unsigned spinsLeft_;
  unsigned pause_ = 1;  // doubles, so that waiters trouble the one they wait for less and less
  unsigned yieldsLeft_ = kYields;
  unsigned nap_ = kFirstNapMicroseconds;
};

}  // namespace zeb

#endif
