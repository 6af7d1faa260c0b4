#include "registry/client_binding.h"

#include <gtest/gtest.h>

#include "registry/memory_binding.h"
#include "support/started_library.h"

namespace zeb::registry {
namespace {

using test::CountingHost;
using test::StartedLibrary;

void one() {}
void two() {}

struct Procs {
  ZEBProc first;
  ZEBProc second;
};

constexpr ClientBinding<Procs>::Requests kRequests{{{"M", "first"}, {"M", "second"}}};

class ClientBindingTest : public testing::Test {
 protected:
  StartedLibrary library_;
  ClientBinding<Procs> binding_{"Bound", kRequests};
};

TEST_F(ClientBindingTest, FetchesOnFirstUse) {
  EXPECT_FALSE(binding_.current());
  ASSERT_TRUE(add("Bound", "M", "first", one) && add("Bound", "M", "second", two));
  ASSERT_TRUE(binding_.refresh());
  EXPECT_TRUE(binding_.current());
  EXPECT_EQ(binding_.procs().first, one);
  EXPECT_EQ(binding_.procs().second, two);
}

TEST_F(ClientBindingTest, FollowsTheChangeCounterToAReplacement) {
  ASSERT_TRUE(add("Bound", "M", "first", one) && add("Bound", "M", "second", one));
  ASSERT_TRUE(binding_.refresh());
  removeInterface("Bound");
  EXPECT_FALSE(binding_.current());
  ASSERT_TRUE(add("Bound", "M", "first", two) && add("Bound", "M", "second", two));
  ASSERT_TRUE(binding_.refresh());
  EXPECT_EQ(binding_.procs().first, two);
}

TEST_F(ClientBindingTest, KeepsItsProcsWhileTheCounterStands) {
  ASSERT_TRUE(add("Bound", "M", "first", one) && add("Bound", "M", "second", two));
  ASSERT_TRUE(binding_.refresh());
  const int64_t blocks = CountingHost::liveBlocks;
  EXPECT_TRUE(binding_.refresh());
  EXPECT_EQ(CountingHost::liveBlocks, blocks);
}

TEST_F(ClientBindingTest, HoldsNothingWhenTheInterfaceIsIncomplete) {
  ASSERT_TRUE(add("Bound", "M", "first", one));
  EXPECT_FALSE(binding_.refresh());
  EXPECT_FALSE(binding_.current());
  EXPECT_EQ(binding_.procs().first, nullptr);
}

TEST_F(ClientBindingTest, FetchesAgainAfterInvalidation) {
  ASSERT_TRUE(add("Bound", "M", "first", one) && add("Bound", "M", "second", two));
  ASSERT_TRUE(binding_.refresh());
  binding_.invalidate();
  EXPECT_EQ(binding_.procs().first, nullptr);
  EXPECT_TRUE(binding_.refresh());
  EXPECT_EQ(binding_.procs().first, one);
}

TEST(MemoryBindingTest, ReachesTheHostsOwnProcs) {
  const StartedLibrary library;
  EXPECT_EQ(memoryProcs().Alloc, &CountingHost::alloc);
  EXPECT_EQ(memoryProcs().Realloc, &CountingHost::realloc);
  EXPECT_EQ(memoryProcs().Free, &CountingHost::free);
  EXPECT_EQ(memoryProcs().GetBlockSize, &CountingHost::size);
}

TEST(MemoryBindingTest, NeverReachesTheLastHostsProcsAfterARestart) {
  { const StartedLibrary library; }
  ASSERT_NE(frame::start({}), nullptr);  // the same change counter, no host procs
  EXPECT_NE(memoryProcs().Alloc, &CountingHost::alloc);
  frame::stop();
}

void reportToStandardError(const char* message) { std::fprintf(stderr, "%s\n", message); }

TEST(MemoryBindingDeathTest, EndsTheProcessWithAReasonWhenItsInterfaceIsGone) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(
      {
        frame::start({.errorReport = reportToStandardError});
        removeInterface("ZEBMemoryInterface");
        (void)memoryProcs();
      },
      "ZEBMemoryInterface");
}

}  // namespace
}  // namespace zeb::registry
