#include "container/recycled_containers.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace zeb::container {
namespace {

// The stack never looks into what waits on it: any address will do.
class RecycledContainersTest : public testing::Test {
 protected:
  ZEBContainer* container(size_t index) {
    return reinterpret_cast<ZEBContainer*>(&places_.at(index));
  }

  std::vector<ZEBContainer*> waiting() const {
    std::vector<ZEBContainer*> found;
    recycled_.forEach([&](ZEBContainer& one) { found.push_back(&one); });
    return found;
  }

  RecycledContainers recycled_;

 private:
  std::array<uint64_t, RecycledContainers::kCapacity + 1> places_{};
};

TEST_F(RecycledContainersTest, HasNothingAtFirst) {
  EXPECT_EQ(recycled_.pop(), nullptr);
  EXPECT_TRUE(waiting().empty());
}

TEST_F(RecycledContainersTest, GivesTheLatestFirst) {
  for (size_t i = 0; i < 3; ++i) EXPECT_TRUE(recycled_.push(container(i)));
  EXPECT_EQ(recycled_.pop(), container(2));
  EXPECT_TRUE(recycled_.push(container(4)));
  EXPECT_EQ(recycled_.pop(), container(4));
  EXPECT_EQ(recycled_.pop(), container(1));
  EXPECT_EQ(recycled_.pop(), container(0));
  EXPECT_EQ(recycled_.pop(), nullptr);
}

TEST_F(RecycledContainersTest, HoldsThirtyTwo) {
  static_assert(RecycledContainers::kCapacity == 32);
  for (size_t i = 0; i < 32; ++i) EXPECT_TRUE(recycled_.push(container(i)));
  EXPECT_FALSE(recycled_.push(container(32)));
  EXPECT_EQ(waiting().size(), 32u);
  EXPECT_EQ(recycled_.pop(), container(31));
  EXPECT_TRUE(recycled_.push(container(32)));
  EXPECT_EQ(recycled_.pop(), container(32));
}

TEST_F(RecycledContainersTest, VisitsThoseThatWaitAndLeavesThemThere) {
  EXPECT_TRUE(recycled_.push(container(7)));
  EXPECT_TRUE(recycled_.push(container(5)));
  EXPECT_EQ(waiting(), (std::vector{container(7), container(5)}));
  EXPECT_EQ(waiting().size(), 2u);
}

}  // namespace
}  // namespace zeb::container
