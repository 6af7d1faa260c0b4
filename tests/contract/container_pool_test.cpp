// The pages that containers come from: sixteen to a page, a page given back with its last one.

#include <gtest/gtest.h>

#include <vector>

#include "contract/component_library.h"

namespace contract {
namespace {

constexpr int kPerPage = 16;

class ContainerPages : public ComponentTest {
 protected:
  void Make(int count) {
    for (int i = 0; i < count; ++i) live_.push_back(zeb_.NewEmpty());
  }

  void Release(std::size_t which) {
    zeb_.container.Release(live_[which]);
    live_.erase(live_.begin() + static_cast<std::ptrdiff_t>(which));
  }

  void TearDown() override {
    for (ZEBContainer* made : live_) zeb_.container.Release(made);
    ComponentTest::TearDown();
  }

  std::int64_t PagesOf(int count) {
    return zeb_.EventsOf([&] { Make(count); })[kContainerPage];
  }

  std::vector<ZEBContainer*> live_;
};

TEST_F(ContainerPages, HoldSixteen) {
  EXPECT_EQ(PagesOf(1), 1);
  EXPECT_EQ(PagesOf(15), 0);
  EXPECT_EQ(PagesOf(1), 1);
  EXPECT_EQ(PagesOf(15), 0);
  EXPECT_EQ(PagesOf(1), 1);
}

TEST_F(ContainerPages, AreOneBlockOfTheHostEach) {
  const std::uint64_t before = Host::LiveBlocks();
  Make(kPerPage);
  EXPECT_EQ(Host::LiveBlocks(), before + 1);
  Make(1);
  EXPECT_EQ(Host::LiveBlocks(), before + 2);
  Release(kPerPage);
  EXPECT_EQ(Host::LiveBlocks(), before + 1);
}

TEST_F(ContainerPages, HaveAKnownSize) {
  Make(1);
  EXPECT_EQ(Host::Size(reinterpret_cast<char*>(live_[0]) - kPageHeaderAndLink), 1712u);
}

TEST_F(ContainerPages, AreGivenBackWithTheirLastContainer) {
  Make(kPerPage);
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(PagesOf(1), 1);
    Release(kPerPage);
  }
}

TEST_F(ContainerPages, AreUsedAgainBeforeOthersOnceTheyWereFull) {
  Make(2 * kPerPage + 1);
  for (const std::size_t which : {std::size_t{5}, std::size_t{20}}) {
    ZEBContainer* released = live_[which];
    Release(which);
    Make(1);
    EXPECT_EQ(live_.back(), released);
  }
}

TEST_F(ContainerPages, GiveTheSlotReleasedLastFirst) {
  Make(kPerPage);
  ZEBContainer* first = live_[3];
  ZEBContainer* second = live_[9];
  Release(9);
  Release(3);
  Make(2);
  EXPECT_EQ(live_[14], first);
  EXPECT_EQ(live_[15], second);
}

TEST_F(ContainerPages, AreSharedByFullContainers) {
  Make(kPerPage - 1);
  const FullParts parts = {.destroy = nullptr};
  ZEBContainer* sixteenth = nullptr;
  ZEBContainer* seventeenth = nullptr;
  EXPECT_EQ(zeb_.EventsOf([&] { sixteenth = zeb_.NewFull(nullptr, parts); }).count(kContainerPage),
            0u);
  EXPECT_EQ(zeb_.EventsOf([&] { seventeenth = zeb_.NewFull(nullptr, parts); })[kContainerPage], 1);
  zeb_.container.Release(sixteenth);
  zeb_.container.Release(seventeenth);
}

}  // namespace
}  // namespace contract
