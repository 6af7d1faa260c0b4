#include "base/value_boundary.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <stdexcept>

namespace {

int calls = 0;

void* pointerOrThrow(bool throws) {
  ++calls;
  if (throws) throw 0;
  return &calls;
}

uint64_t sumOrThrow(uint64_t a, uint64_t b, bool throws) {
  ++calls;
  if (throws) throw std::bad_alloc();
  return a + b;
}

void nothingOrThrow(bool throws) {
  ++calls;
  if (throws) throw std::runtime_error("inside");
}

int32_t twice(int32_t number) noexcept { return 2 * number; }

class ValueBoundary : public testing::Test {
 protected:
  ValueBoundary() { calls = 0; }
};

TEST_F(ValueBoundary, PassesArgumentsAndResults) {
  EXPECT_EQ(zeb::ValueProc<&pointerOrThrow>::call(false), &calls);
  EXPECT_EQ(zeb::ValueProc<&sumOrThrow>::call(40, 2, false), 42u);
  zeb::ValueProc<&nothingOrThrow>::call(false);
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(zeb::ValueProc<&twice>::call(21), 42);
}

TEST_F(ValueBoundary, TurnsWhatIsThrownIntoNullZeroOrNothing) {
  EXPECT_EQ(zeb::ValueProc<&pointerOrThrow>::call(true), nullptr);
  EXPECT_EQ(zeb::ValueProc<&sumOrThrow>::call(40, 2, true), 0u);
  zeb::ValueProc<&nothingOrThrow>::call(true);
  EXPECT_EQ(calls, 3);
}

TEST_F(ValueBoundary, NeverThrows) {
  static_assert(noexcept(zeb::ValueProc<&pointerOrThrow>::call(true)));
  static_assert(noexcept(zeb::ValueProc<&nothingOrThrow>::call(true)));
  SUCCEED();
}

}  // namespace
