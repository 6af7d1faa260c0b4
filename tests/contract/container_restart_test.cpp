// Containers across stops and starts: what the stop says about their names, what a release outside
// a run does, and where the blocks of recycled containers go back to when the host has changed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "contract/child_process.h"
#include "contract/component_library.h"

namespace contract {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using FirstHost = HostMemory<1>;
using SecondHost = HostMemory<2>;
using Reports = ErrorReports<0>;

constexpr const char* kLeakReport = "string memory leak";

// ---- Names at the stop. In children: what is reported lives on in the process.

class NamesAtTheStop : public ::testing::TestWithParam<bool> {
 protected:
  static StartOptions Options() {
    return GetParam() ? FirstHost::WithObjectProcs(Reports::Told()) : Reports::Told();
  }

  // Runs `use` over a library that is then stopped, and tells what was reported.
  static std::vector<std::string> ReportsOf(const std::function<void(ComponentLibrary&)>& use) {
    ComponentLibrary zeb(Options());
    use(zeb);
    Reports::Take();
    zeb.Stop();
    return Reports::Take();
  }
};

INSTANTIATE_TEST_SUITE_P(Allocator, NamesAtTheStop, ::testing::Bool(), [](const auto& variant) {
  return std::string(variant.param ? "OfTheHost" : "OfTheLibrary");
});

TEST_P(NamesAtTheStop, AreNoLeakWhenOnlyRecycledContainersHoldThem) {
  ExpectPassesInChild([] {
    EXPECT_THAT(ReportsOf([](ComponentLibrary& zeb) {
                  std::vector<ZEBContainer*> made;
                  for (int i = 0; i < 40; ++i) {
                    const std::string name = "recycled " + std::to_string(i);
                    made.push_back(zeb.NewFull(nullptr, {name.c_str(), name.c_str(), nullptr}));
                  }
                  for (ZEBContainer* one : made) zeb.container.Release(one);
                }),
                IsEmpty());
  });
}

TEST_P(NamesAtTheStop, AreNoLeakOfAnEarlierRun) {
  ExpectPassesInChild([] {
    const auto recycle = [](ComponentLibrary& zeb) {
      zeb.container.Release(zeb.NewFull(nullptr, {"instance", "interface", nullptr}));
      ZEBContainer* first = zeb.NewFull(nullptr, {"first", "first", nullptr});
      ZEBContainer* second = zeb.NewFull(nullptr, {"second", "second", nullptr});
      zeb.container.Release(first);
      zeb.container.Release(second);
    };
    for (int run = 0; run < 4; ++run) EXPECT_THAT(ReportsOf(recycle), IsEmpty()) << run;
    EXPECT_THAT(ReportsOf([](ComponentLibrary& zeb) { zeb.DrainRecycled(); }), IsEmpty());
  });
}

TEST_P(NamesAtTheStop, AreALeakWhenAClientHoldsThem) {
  ExpectPassesInChild([] {
    ZEBString* held = nullptr;
    EXPECT_THAT(ReportsOf([&](ComponentLibrary& zeb) {
                  held = zeb.string.NewStringAtom("held by a client");
                  zeb.container.Release(zeb.NewFull(nullptr, {.destroy = nullptr}));
                }),
                ElementsAre(kLeakReport));
    EXPECT_NE(held, nullptr);
  });
}

TEST_P(NamesAtTheStop, AreALeakWhenAClientHoldsThemTogetherWithARecycledContainer) {
  ExpectPassesInChild([] {
    ZEBString* held = nullptr;
    EXPECT_THAT(
        ReportsOf([&](ComponentLibrary& zeb) {
          held = zeb.string.NewStringAtom("held by both");
          zeb.container.Release(zeb.NewFull(nullptr, {"held by both", "held by both", nullptr}));
        }),
        ElementsAre(kLeakReport));
    // It stays valid, also when the container has let go of it.
    ComponentLibrary zeb(Options());
    zeb.DrainRecycled();
    EXPECT_STREQ(zeb.string.GetCString(held), "held by both");
    zeb.string.DeleteStringAtom(held);
  });
}

TEST_P(NamesAtTheStop, AreALeakWhenALiveContainerHoldsThem) {
  ExpectPassesInChild([] {
    ZEBContainer* live = nullptr;
    EXPECT_THAT(ReportsOf([&](ComponentLibrary& zeb) {
                  live = zeb.NewFull(nullptr, {.destroy = nullptr});
                }),
                ElementsAre(kLeakReport));
    EXPECT_NE(live, nullptr);
  });
}

// ---- Releases outside a run

TEST(ContainerOutsideARun, IsNotReleased) {
  ExpectPassesInChild([] {
    Data data;
    ComponentLibrary before;
    ZEBContainer* full = before.NewFull(&data);
    const auto release = before.container.Release;
    before.Stop();
    release(full);
    release(full);
    release(nullptr);
    EXPECT_EQ(data.destroyed, 0);
    ComponentLibrary after;
    EXPECT_EQ(after.InstanceOf(full, "no such name"), nullptr);
    after.container.Release(full);
    EXPECT_EQ(data.destroyed, 1);
  });
}

TEST(ContainerOutsideARun, IsStillDeletedWhenUnowned) {
  ExpectPassesInChild([] {
    const auto keep = [](ZEBContainer*, std::uint64_t, std::uint64_t) -> std::int32_t { return 1; };
    Data data;
    ComponentLibrary zeb;
    ZEBContainer* kept = zeb.NewFull(&data, {.ownerHook = keep});
    zeb.container.Release(kept);
    const auto deleteUnowned = zeb.container.DeleteUnownedContainer;
    zeb.Stop();
    deleteUnowned(kept);
    EXPECT_EQ(data.destroyed, 1);
  });
}

// ---- Recycled containers of an earlier run

// Leaves this many recycled containers behind; answers them in the order in which they wait.
std::vector<ZEBContainer*> LeaveRecycled(const StartOptions& options, int count) {
  ComponentLibrary zeb(options);
  zeb.DrainRecycled();
  std::vector<ZEBContainer*> made;
  for (int i = 0; i < count; ++i) {
    const std::string name = "earlier run " + std::to_string(i);
    made.push_back(zeb.NewFull(nullptr, {name.c_str(), name.c_str(), nullptr}));
  }
  for (ZEBContainer* one : made) zeb.container.Release(one);
  return {made.rbegin(), made.rend()};
}

// Makes all recycled containers anew and deletes them for good.
void UseUp(const StartOptions& options, const std::vector<ZEBContainer*>& waiting) {
  ComponentLibrary zeb(options);
  Data data;
  for (ZEBContainer* expected : waiting) {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb.EventsOf([&] { made = zeb.NewFull(&data); }), (Events{{kRecycledHit, 1}}));
    EXPECT_EQ(made, expected);
    EXPECT_EQ(zeb.InstanceOf(made, "instance"), &data);
    EXPECT_STREQ(zeb.container.GetSignature(made), "interface");
    EXPECT_EQ(zeb.InstanceOf(made, "earlier run 0"), nullptr);
    zeb.AddInstance(made, "second", &data);
    zeb.container.Release(made);
  }
  EXPECT_EQ(data.destroyed, 2 * static_cast<int>(waiting.size()));
  zeb.DrainRecycled();
}

template <class Host>
void ExpectAllIsBack() {
  EXPECT_EQ(Host::LiveBlocks(), 0u);
  EXPECT_EQ(Host::ForeignFrees(), 0u);
}

TEST(RecycledInAnEarlierRun, AreMadeAnewOverTheSameHost) {
  const StartOptions options = FirstHost::WithObjectProcs();
  UseUp(options, LeaveRecycled(options, 20));
  ExpectAllIsBack<FirstHost>();
}

TEST(RecycledInAnEarlierRun, AreMadeAnewOverTheLibrarysAllocator) {
  UseUp({}, LeaveRecycled({}, 20));
}

TEST(RecycledInAnEarlierRun, StayTheHostsBlocksMeanwhile) {
  const std::vector<ZEBContainer*> waiting = LeaveRecycled(FirstHost::WithObjectProcs(), 1);
  // The pages of a container, an instance and an interface, and the one name with its text.
  EXPECT_GE(FirstHost::LiveBlocks(), 3u);
  UseUp(FirstHost::WithObjectProcs(), waiting);
  ExpectAllIsBack<FirstHost>();
}

TEST(RecycledInAnEarlierRun, GoBackToTheirOwnHost) {
  UseUp(SecondHost::WithObjectProcs(), LeaveRecycled(FirstHost::WithObjectProcs(), 40 - 8));
  ExpectAllIsBack<FirstHost>();
  ExpectAllIsBack<SecondHost>();
}

TEST(RecycledInAnEarlierRun, GoBackToTheirOwnHostFromARunWithoutAny) {
  UseUp({}, LeaveRecycled(FirstHost::WithObjectProcs(), 20));
  ExpectAllIsBack<FirstHost>();
}

TEST(RecycledInAnEarlierRun, GoBackToTheLibrarysAllocatorFromARunOverAHost) {
  UseUp(FirstHost::WithObjectProcs(), LeaveRecycled({}, 20));
  ExpectAllIsBack<FirstHost>();
}

// Pages of different hosts stand beside each other, each with free slots.
TEST(RecycledInAnEarlierRun, ShareNoPageWithAnotherHost) {
  const std::vector<ZEBContainer*> waiting = LeaveRecycled(FirstHost::WithObjectProcs(), 1);
  Data data;
  {
    ComponentLibrary zeb(SecondHost::WithObjectProcs());
    ZEBContainer* fromFirst = zeb.NewFull(&data);
    ZEBContainer* fromSecond = zeb.NewFull(&data);
    EXPECT_EQ(fromFirst, waiting.front());
    zeb.container.Release(fromSecond);
    zeb.container.Release(fromFirst);
  }
  EXPECT_EQ(data.destroyed, 2);
  {
    ComponentLibrary zeb;
    zeb.DrainRecycled();
  }
  ExpectAllIsBack<FirstHost>();
  ExpectAllIsBack<SecondHost>();
}

TEST(RecycledInAnEarlierRun, ShareTheirPlacesAcrossRuns) {
  LeaveRecycled({}, kMaxRecycled);
  ComponentLibrary zeb;
  std::vector<ZEBContainer*> made;
  Events events = zeb.EventsOf([&] {
    for (int i = 0; i <= kMaxRecycled; ++i) {
      made.push_back(zeb.NewFull(nullptr, {.destroy = nullptr}));
    }
  });
  EXPECT_EQ(events[kRecycledHit], kMaxRecycled);
  EXPECT_EQ(events[kRecycledMiss], 1);
  for (ZEBContainer* one : made) zeb.container.Release(one);
  zeb.DrainRecycled();
}

}  // namespace
}  // namespace contract
