#include "base/checked_size.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "atoms/atom.h"
#include "errors/internal_error.h"

namespace {

constexpr uint64_t kMost = UINT64_MAX;

// What a computation raises: "<component> <id> <message>", or "" if nothing.
std::string raisedBy(const std::function<uint64_t()>& computation) {
  try {
    (void)computation();
  } catch (const InternalError& raised) {
    const ZEBErrorObject& error = *raised.error();
    return std::string(error.component.get()->text()) + " " + std::to_string(error.id) + " " +
           error.message.get()->text();
  }
  return "";
}

class CheckedSize : public testing::Test {
 protected:
  // New errors carry atoms; the table that the first one makes goes with its one user.
  void TearDown() override { zeb::atoms::dropTableUser(); }
};

TEST_F(CheckedSize, RaisesTheIdOfExhaustionForAProductThatOverflows) {
  const std::string expected = "KST 1 Math overflow exception";
  EXPECT_EQ(raisedBy([] { return zeb::sizeOfPointers(kMost / 8 + 1); }), expected);
  EXPECT_EQ(raisedBy([] { return zeb::sizeOfMany(kMost / 2 + 1, 2); }), expected);
  EXPECT_EQ(raisedBy([] { return zeb::sizeOfMany(2, kMost); }), expected);
}

TEST_F(CheckedSize, RaisesTheUnknownIdForASumThatOverflows) {
  const std::string expected = "KST 0 Math overflow exception";
  EXPECT_EQ(raisedBy([] { return zeb::sumOfSizes(kMost, 1); }), expected);
  EXPECT_EQ(raisedBy([] { return zeb::sizeOfJoinedTexts(kMost, 1); }), expected);
  EXPECT_EQ(raisedBy([] { return zeb::sizeOfJoinedTexts(kMost - 5, 5); }), expected);
}

TEST(CheckedSizeWithinBounds, IsTheExactResult) {
  EXPECT_EQ(zeb::sizeOfPointers(3), 24u);
  EXPECT_EQ(zeb::sizeOfPointers(kMost / 8), kMost - 7);
  EXPECT_EQ(zeb::sizeOfMany(0, kMost), 0u);
  EXPECT_EQ(zeb::sizeOfMany(kMost / 2, 2), kMost - 1);
  EXPECT_EQ(zeb::sumOfSizes(kMost - 1, 1), kMost);
  EXPECT_EQ(zeb::sizeOfJoinedTexts(kMost - 5, 4), kMost);
  EXPECT_EQ(zeb::sizeOfJoinedTexts(0, 0), 1u);
}

}  // namespace
