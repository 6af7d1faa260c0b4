// Random numbers for tests, and the seeds that they come from.
//
// The seeds are fixed, so that a failure repeats. To try another one, set ZEB_TEST_SEED.
#ifndef ZEB_TESTS_SUPPORT_RANDOM_H
#define ZEB_TESTS_SUPPORT_RANDOM_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <vector>

namespace zeb_test {

class Random {
 public:
  explicit Random(uint64_t seed) : engine_(seed) {}

  uint64_t any() { return engine_(); }
  // The remainder is not quite even, but the same with every standard library.
  uint64_t below(uint64_t bound) { return engine_() % bound; }
  uint64_t between(uint64_t least, uint64_t most) { return least + below(most - least + 1); }
  bool oneIn(uint64_t n) { return below(n) == 0; }

 private:
  std::mt19937_64 engine_;
};

inline std::vector<uint64_t> seeds() {
  if (const char* wanted = std::getenv("ZEB_TEST_SEED")) {
    return {std::strtoull(wanted, nullptr, 0)};
  }
  return {1, 20240229, 0x9e3779b97f4a7c15u};
}

// Calls `body` with a Random of each seed and names the seed in the output and in every failure.
template <class Body>
void forEachSeed(Body body) {
  for (const uint64_t seed : seeds()) {
    std::cout << "ZEB_TEST_SEED=" << seed << "\n";
    SCOPED_TRACE(testing::Message() << "ZEB_TEST_SEED=" << seed);
    Random random(seed);
    body(random);
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace zeb_test

#endif
