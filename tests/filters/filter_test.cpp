// What no client can make: filters that never had a target.

#include "filters/filter.h"

#include <gtest/gtest.h>

#include "filters/chain.h"
#include "memory/object_memory.h"
#include "support/started_library.h"

namespace zeb::filters {
namespace {

using test::CountingHost;
using test::StartedLibrary;

// A filter of the barest kind.
class BareFilter final : public ZEBFilterImpl {
 public:
  explicit BareFilter(ZEBDataSink* target) noexcept
      : ZEBFilterImpl(ZEBDataSinkKind::kFilter, target) {}
  ZEBErrorObject* Write(const void* /*data*/, uint64_t /*size*/) override { return nullptr; }
};

class FilterWithoutTarget : public testing::Test {
 protected:
  FilterWithoutTarget() : filter_(makeObject<BareFilter>(nullptr)) { addReference(filter_); }

  void TearDown() override {
    release(filter_);
    library_.stop();
    EXPECT_EQ(CountingHost::liveBlocks, 0);
  }

  StartedLibrary library_;
  BareFilter* filter_;
};

TEST_F(FilterWithoutTarget, HasNoneToShow) {
  const auto peek = library_.proc<ZEBFilterPeekTargetProc>(ZEB_FILTER_INTERFACE, "PeekTarget",
                                                           "ZEBFilterPeekTargetProc");
  EXPECT_EQ(peek(filter_), nullptr);
}

TEST_F(FilterWithoutTarget, IsAFilterWithoutANameThatClosesNothing) {
  EXPECT_EQ(asFilter(filter_), filter_);
  EXPECT_EQ(filter_->GetPostScriptFilter(), nullptr);
  closeChain(*filter_);
}

TEST_F(FilterWithoutTarget, IsTheEndOfItsChain) {
  auto* sink = makeObject<NullDataSink>();
  append(*filter_, *sink);
  EXPECT_EQ(filter_->target(), sink);
  EXPECT_EQ(sink->references, 1);
}

TEST_F(FilterWithoutTarget, LosesALaterTargetWithItsState) {
  ZEBChainState* state = stateOf(*filter_);
  EXPECT_EQ(state->filter, filter_);
  EXPECT_EQ(state->target, nullptr);
  append(*filter_, *makeObject<NullDataSink>());
  reset(state);
  EXPECT_EQ(filter_->target(), nullptr);
}

TEST(DataSink, IsPinnedWithoutBeingOwned) {
  const StartedLibrary library;
  const int64_t blocks = CountingHost::liveBlocks;
  auto* sink = makeObject<NullDataSink>();
  { const Pin<ZEBDataSink> pin(*sink); }
  EXPECT_EQ(sink->references, 0);
  {
    const Pin<ZEBDataSink> outer(*sink);
    const Pin<ZEBDataSink> inner(*sink);
    addReference(sink);
    release(sink);
    EXPECT_TRUE(sink->condemned);
  }
  EXPECT_EQ(CountingHost::liveBlocks, blocks);
}

}  // namespace
}  // namespace zeb::filters
