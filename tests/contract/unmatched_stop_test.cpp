// Processes in which stops and starts are not paired, each begun without the library.

#include <gtest/gtest.h>

#include "contract/child_process.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {
namespace {

TEST(NeverStartedLibrary, HasNoLookUpFunction) {
  ExpectPassesInFreshChild([] {
    EXPECT_EQ(exports().GetVersion(), 0x40000u);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
  });
}

TEST(NeverStartedLibrary, AnswersAStopWithACounterOfZero) {
  ExpectPassesInFreshChild([] {
    EXPECT_EQ(exports().Terminate(), 0u);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
  });
}

// The count is not guarded: a stop too many must be made good by a start that only counts.
TEST(UnmatchedStop, LetsTheNextStartOnlyCount) {
  ExpectPassesInFreshChild([] {
    exports().Terminate();
    EXPECT_NE(Start({.unregisterCountStart = 50}), nullptr);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);

    RunningLibrary zeb({.unregisterCountStart = 60});
    EXPECT_EQ(exports().GetGetProcAddress(), zeb.getProcAddress);
    EXPECT_EQ(zeb.frame.GetUnregisterCount(), 60u);
    EXPECT_EQ(zeb.Stop(), 60u);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
  });
}

TEST(UnmatchedStop, CountsBelowZeroOneByOne) {
  ExpectPassesInFreshChild([] {
    constexpr int kTooMany = 5;
    for (int i = 0; i < kTooMany; ++i) exports().Terminate();
    for (int i = 0; i < kTooMany; ++i) {
      EXPECT_NE(Start(), nullptr) << i;
      EXPECT_EQ(exports().GetGetProcAddress(), nullptr) << i;
    }
    RunningLibrary zeb;
    EXPECT_EQ(exports().GetGetProcAddress(), zeb.getProcAddress);
  });
}

TEST(UnmatchedStop, AfterARunOnlyAnswersTheCounter) {
  ExpectPassesInFreshChild([] {
    using Host = HostMemory<0>;
    RunningLibrary(Host::WithObjectProcs({.unregisterCountStart = 30})).Stop();
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(exports().Terminate(), 30u);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
    EXPECT_NE(Start(), nullptr);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
    RunningLibrary zeb(Host::WithObjectProcs());
    EXPECT_EQ(zeb.memory.Alloc, &Host::Alloc);
  });
}

}  // namespace
}  // namespace contract
