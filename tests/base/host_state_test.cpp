#include "base/host_state.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/restored.h"
#include "support/threads.h"

namespace {

using zeb_test::Restored;

std::vector<std::string> reports;

TEST(HostState, KnowsNoHostWhenTheLibraryIsLoaded) {
  EXPECT_EQ(zeb::hostState.initCount, 0);
  EXPECT_FALSE(zeb::hostState.hostAllocatorsInstalled);
  EXPECT_FALSE(zeb::hostState.objects.complete());
  EXPECT_EQ(zeb::hostState.errorReport, nullptr);
  EXPECT_EQ(zeb::hostState.purgeRequest, nullptr);
}

TEST(HostState, CallsAnAllocatorSetCompleteOnlyWithAllFour) {
  const zeb::ObjectAllocatorSet all{[](uint64_t) -> void* { return nullptr; },
                                    [](void*, uint64_t) -> void* { return nullptr; }, [](void*) {},
                                    [](void*) -> uint64_t { return 0; }};
  EXPECT_TRUE(all.complete());
  zeb::ObjectAllocatorSet without = all;
  without.alloc = nullptr;
  EXPECT_FALSE(without.complete());
  without = all;
  without.realloc = nullptr;
  EXPECT_FALSE(without.complete());
  without = all;
  without.free = nullptr;
  EXPECT_FALSE(without.complete());
  without = all;
  without.size = nullptr;
  EXPECT_FALSE(without.complete());
}

TEST(HostState, PassesReportsToTheHost) {
  reports.clear();
  const Restored<ZEBErrorReport> restored(
      zeb::hostState.errorReport, [](const char* message) { reports.emplace_back(message); });
  zeb::reportToHost("string memory leak");
  EXPECT_EQ(reports, std::vector<std::string>{"string memory leak"});
}

TEST(HostState, DropsReportsWhenTheHostWantsNone) {
  reports.clear();
  zeb::reportToHost("nobody listens");
  EXPECT_TRUE(reports.empty());
}

TEST(HostState, SwallowsWhatTheReportProcedureThrows) {
  static int calls = 0;
  calls = 0;
  const Restored<ZEBErrorReport> restored(zeb::hostState.errorReport, [](const char*) {
    ++calls;
    throw 1;
  });
  EXPECT_NO_THROW(zeb::reportToHost("the host stumbles"));
  EXPECT_EQ(calls, 1);
}

TEST(HostState, MovesTheChangeCounterInTheWordThatClientsRead) {
  const Restored<uint32_t> restored(zeb::hostState.unregisterCount, 41);
  zeb::moveUnregisterCount();
  EXPECT_EQ(zeb::unregisterCount(), 42u);
  EXPECT_EQ(zeb::hostState.unregisterCount, 42u);
}

TEST(HostState, LosesNoMoveOfTheChangeCounter) {
  constexpr unsigned kThreads = 4;
  constexpr uint32_t kTimes = 5000;
  const Restored<uint32_t> restored(zeb::hostState.unregisterCount, 1);
  zeb_test::runTogether(kThreads, [](unsigned) {
    for (uint32_t i = 0; i < kTimes; ++i) zeb::moveUnregisterCount();
  });
  EXPECT_EQ(zeb::unregisterCount(), 1 + kThreads * kTimes);
}

}  // namespace
