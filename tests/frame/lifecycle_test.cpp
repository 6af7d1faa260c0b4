#include "frame/lifecycle.h"

#include <gtest/gtest.h>

#include "atoms/atom.h"
#include "base/lazy_list.h"
#include "errors/internal_error.h"
#include "events/event_binding.h"
#include "memory/allocator.h"
#include "registry/interface_terminate.h"
#include "registry/proc_registry.h"
#include "support/started_library.h"

namespace zeb::frame {
namespace {

using test::CountingHost;

StartOptions hostOptions() {
  StartOptions options;
  options.objects = CountingHost::objects();
  options.errorReport = CountingHost::report;
  return options;
}

// A start that failed is not rolled back. This completes it by hand, so that the same process can
// go on: everything that was done so far must then be given back by a stop.
void stopAfterFailedStart() {
  hostState.initCount = 1;
  stop();
}

TEST(LifecycleTest, PutsTheRegistrysTerminatorAtTheHeadOfTheLazyList) {
  EXPECT_NE(dynamic_cast<registry::InterfaceTerminate*>(lazyList.head()), nullptr);
  EXPECT_EQ(lazyList.head()->level(), 3);
  EXPECT_EQ(lazyList.count(), 22u);  // the twenty counters and the containers' offset
}

TEST(LifecycleTest, InternsTheStreamNamesInOrder) {
  CountingHost::reset();
  ASSERT_NE(start(hostOptions()), nullptr);
  const StreamInterfaceNames& names = *hostState.streamInterfaceNames;
  EXPECT_STREQ(names.simpleStreamImplementation->text(), "ZEBSimpleStreamZEBImpl");
  EXPECT_STREQ(names.simpleStream->text(), "ZEBSimpleStreamInterface");
  EXPECT_STREQ(names.rewindableStream->text(), "ZEBRewindableStreamInterface");
  EXPECT_STREQ(names.positionableStream->text(), "ZEBPositionableStreamInterface");
  EXPECT_STREQ(names.stream->text(), "ZEBStreamInterface");
  stop();
  EXPECT_EQ(hostState.streamInterfaceNames, nullptr);
}

TEST(LifecycleTest, RaisesOutOfMemoryOnlyWhileItRuns) {
  const uint64_t tooMuch = ~uint64_t{0};
  EXPECT_THROW((void)processAllocator.alloc(tooMuch), int);
  ASSERT_NE(start({}), nullptr);
  EXPECT_THROW((void)processAllocator.alloc(tooMuch), InternalError);
  stop();
  EXPECT_THROW((void)processAllocator.alloc(tooMuch), int);
}

TEST(LifecycleTest, KeepsTheHostsChoices) {
  CountingHost::reset();
  StartOptions options = hostOptions();
  options.hostValue = 0x123456789abcdef0u;
  options.unregisterCountStart = 41;
  options.purgeRequest = [](int64_t) {};
  ASSERT_NE(start(options), nullptr);
  EXPECT_EQ(hostState.hostValue, 0x123456789abcdef0u);
  EXPECT_EQ(hostState.purgeRequest, options.purgeRequest);
  EXPECT_FALSE(hostState.multiThreaded);
  EXPECT_EQ(stop(), 41u);
}

TEST(LifecycleTest, FailsCleanlyAtEveryAllocationOfAStart) {
  int64_t failures = 0;
  for (int64_t nth = 1;; ++nth) {
    CountingHost::reset();
    CountingHost::failAllocation(nth);
    const ZEBGetProcAddress find = start(hostOptions());
    const bool failed = !CountingHost::failureIsPending();
    CountingHost::stopFailing();
    if (find != nullptr) {
      // Counters and standard errors may be missing: a start goes on without them.
      ASSERT_EQ(stop(), 1u);
      ASSERT_EQ(CountingHost::liveBlocks, 0) << "after the failure of allocation " << nth;
      if (!failed) break;
      continue;
    }
    ++failures;
    ASSERT_TRUE(failed);
    EXPECT_EQ(lookUpFunction(), nullptr);
    EXPECT_EQ(start(hostOptions()), nullptr);  // refused: host allocators are installed
    // No lock is left held: everything below takes them.
    stopAfterFailedStart();
    ASSERT_EQ(CountingHost::liveBlocks, 0) << "after the failure of allocation " << nth;
  }
  EXPECT_GT(failures, 50);
}

// A load-time object that refuses to be initialised, linked at the head for one test.
class Refusing final : public ZEB_T_MT::LazyTerminate {
 public:
  explicit Refusing(int32_t level) : LazyTerminate(level) {}
  bool initialise() override {
    ++asked;
    return false;
  }
  void terminate() override { ++terminated; }
  int asked = 0;
  int terminated = 0;
};

TEST(LifecycleTest, FailsWhenALoadTimeObjectRefuses) {
  CountingHost::reset();
  {
    Refusing refusing(65000);
    EXPECT_EQ(start(hostOptions()), nullptr);
    EXPECT_EQ(refusing.asked, 1);
    EXPECT_EQ(refusing.terminated, 0);
    stopAfterFailedStart();
    EXPECT_EQ(refusing.terminated, 1);
  }
  EXPECT_EQ(CountingHost::liveBlocks, 0);
}

TEST(LifecycleTest, AsksNoLoadTimeObjectOutsideTheBounds) {
  Refusing below(-1);
  Refusing above(65001);
  ASSERT_NE(start({}), nullptr);
  EXPECT_EQ(below.asked + above.asked, 0);
  stop();
  EXPECT_EQ(below.terminated, 1);
  EXPECT_EQ(above.terminated, 1);
}

TEST(LifecycleTest, CountsAStopTooManyBelowZero) {
  stop();
  EXPECT_EQ(hostState.initCount, -1);
  EXPECT_NE(start({}), nullptr);  // only counts
  EXPECT_EQ(hostState.initCount, 0);
  EXPECT_EQ(lookUpFunction(), nullptr);
}

}  // namespace
}  // namespace zeb::frame
