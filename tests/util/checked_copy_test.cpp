#include "util/checked_copy.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

constexpr uint64_t kRoom = 8;

// A destination with a byte behind it that no copy may touch.
class CheckedCopy : public testing::Test {
 protected:
  std::string buffer = "abcdefgh!";
  const std::string source = "12345678";

  [[nodiscard]] bool copy(const void* from, uint64_t count) {
    return zeb::checkedCopy(buffer.data(), kRoom, from, count);
  }
};

TEST_F(CheckedCopy, CopiesWhatFits) {
  EXPECT_TRUE(copy(source.data(), 3));
  EXPECT_EQ(buffer, "123defgh!");
}

TEST_F(CheckedCopy, FillsTheRoomToItsLastByte) {
  EXPECT_TRUE(copy(source.data(), kRoom));
  EXPECT_EQ(buffer, "12345678!");
}

TEST_F(CheckedCopy, ZeroesTheDestinationWhenThereIsTooMuch) {
  EXPECT_FALSE(copy("123456789", kRoom + 1));
  EXPECT_EQ(buffer, std::string(kRoom, '\0') + "!");
}

TEST_F(CheckedCopy, ZeroesTheDestinationWhenTheSourceIsNull) {
  EXPECT_FALSE(copy(nullptr, 1));
  EXPECT_EQ(buffer, std::string(kRoom, '\0') + "!");
}

TEST_F(CheckedCopy, RefusesTheLargestCount) {
  EXPECT_FALSE(copy(source.data(), UINT64_MAX));
  EXPECT_EQ(buffer, std::string(kRoom, '\0') + "!");
}

TEST_F(CheckedCopy, RefusesANullDestination) {
  EXPECT_FALSE(zeb::checkedCopy(nullptr, kRoom, source.data(), 1));
  EXPECT_FALSE(zeb::checkedCopy(nullptr, 0, nullptr, 1));
}

TEST_F(CheckedCopy, RefusesAnythingForNoRoom) {
  EXPECT_FALSE(zeb::checkedCopy(buffer.data(), 0, source.data(), 1));
  EXPECT_EQ(buffer, "abcdefgh!");
}

TEST_F(CheckedCopy, CopiesNothingWhateverThePointers) {
  EXPECT_TRUE(copy(source.data(), 0));
  EXPECT_TRUE(copy(nullptr, 0));
  EXPECT_EQ(buffer, "abcdefgh!");
  EXPECT_TRUE(zeb::checkedCopy(nullptr, 0, nullptr, 0));
  EXPECT_TRUE(zeb::checkedCopy(nullptr, kRoom, source.data(), 0));
}

}  // namespace
