#include "util/checked_math.h"

#include <gtest/gtest.h>

#include <array>

namespace {

__extension__ using Wide = unsigned __int128;

constexpr uint64_t kMost = UINT64_MAX;

// Around every border that an overflow test can get wrong.
constexpr std::array<uint64_t, 18> kBorders{0,
                                            1,
                                            2,
                                            3,
                                            8,
                                            uint64_t{1} << 31,
                                            UINT32_MAX,
                                            (1ull << 32),
                                            (1ull << 32) + 1,
                                            1ull << 61,
                                            (1ull << 61) - 1,
                                            (1ull << 62),
                                            kMost / 3,
                                            kMost / 2,
                                            kMost / 2 + 1,
                                            kMost - 2,
                                            kMost - 1,
                                            kMost};

std::optional<uint64_t> ifRepresentable(Wide exact) {
  if (exact > kMost) return std::nullopt;
  return static_cast<uint64_t>(exact);
}

TEST(CheckedMath, AddsExactlyOrNotAtAll) {
  for (const uint64_t a : kBorders) {
    for (const uint64_t b : kBorders) {
      EXPECT_EQ(zeb::checkedAdd(a, b), ifRepresentable(Wide{a} + b)) << a << " + " << b;
    }
  }
}

TEST(CheckedMath, MultipliesExactlyOrNotAtAll) {
  for (const uint64_t a : kBorders) {
    for (const uint64_t b : kBorders) {
      EXPECT_EQ(zeb::checkedMultiply(a, b), ifRepresentable(Wide{a} * b)) << a << " * " << b;
    }
  }
}

TEST(CheckedMath, CountsTheZeroOfJoinedTexts) {
  for (const uint64_t a : kBorders) {
    for (const uint64_t b : kBorders) {
      EXPECT_EQ(zeb::checkedJoinedSize(a, b), ifRepresentable(Wide{a} + b + 1)) << a << ", " << b;
    }
  }
}

// The sum itself fits; only the zero behind it does not.
TEST(CheckedMath, RefusesJoinedTextsThatLeaveNoRoomForTheZero) {
  EXPECT_EQ(zeb::checkedJoinedSize(kMost - 5, 5), std::nullopt);
  EXPECT_EQ(zeb::checkedJoinedSize(kMost - 5, 4), kMost);
}

TEST(CheckedMath, IsUsableAtCompileTime) {
  static_assert(zeb::checkedAdd(2, 3) == 5);
  static_assert(zeb::checkedMultiply(2, 3) == 6);
  static_assert(!zeb::checkedAdd(kMost, 1));
  static_assert(!zeb::checkedMultiply(kMost, 2));
  SUCCEED();
}

}  // namespace
