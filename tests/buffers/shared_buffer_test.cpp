#include "buffers/shared_buffer.h"

#include <gtest/gtest.h>

#include <cstring>

#include "base/library_counters.h"
#include "errors/internal_error.h"
#include "memory/object_pool.h"
#include "support/started_library.h"

namespace zeb::buffers {
namespace {

using test::CountingHost;
using test::StartedLibrary;
using test::totalOf;

class SharedBufferTest : public testing::Test {
 protected:
  void TearDown() override {
    library_.stop();
    EXPECT_EQ(CountingHost::liveBlocks, 0);
  }

  StartedLibrary library_;
  char bytes_[16] = {};
};

TEST_F(SharedBufferTest, FitsItsSlotExactly) {
  ZEBSharedBuffer* first = make(16, bytes_, nullptr, nullptr, nullptr);
  ZEBSharedBuffer* second = make(16, bytes_, nullptr, nullptr, nullptr);
  EXPECT_EQ(reinterpret_cast<char*>(second) - reinterpret_cast<char*>(first), 56);
  void* page = nullptr;
  std::memcpy(&page, reinterpret_cast<char*>(first) - ObjectPool::kLinkBytes, sizeof page);
  EXPECT_EQ(CountingHost::size(page), 496u);
  release(*first);
  release(*second);
}

// A null delete procedure in the record means bytes of the library's own.
TEST_F(SharedBufferTest, TellsItsOwnBytesFromTheClients) {
  ZEBSharedBuffer* own = make(16, nullptr, nullptr, nullptr, bytes_);
  EXPECT_EQ(own->deleteProc, nullptr);
  EXPECT_EQ(own->deleteContext, nullptr);
  ZEBSharedBuffer* clients = make(16, bytes_, nullptr, nullptr, bytes_);
  EXPECT_NE(clients->deleteProc, nullptr);
  EXPECT_EQ(clients->deleteContext, nullptr);
  release(*own);
  release(*clients);
}

TEST_F(SharedBufferTest, StartsWithNothingOfTheSlotsLastBuffer) {
  ZEBSharedBuffer* other = make(1, bytes_, nullptr, nullptr, nullptr);  // keeps the page
  ZEBSharedBuffer* first = make(
      16, bytes_, [](void*) {}, [](ZEBSharedBuffer*) -> int32_t { return 0; }, bytes_);
  addReference(*first);
  release(*first);
  release(*first);
  ZEBSharedBuffer* second = make(3, nullptr, nullptr, nullptr, nullptr);
  ASSERT_EQ(second, first);
  EXPECT_EQ(second->references.load(), 1u);
  EXPECT_EQ(second->size, 3u);
  EXPECT_EQ(second->hook, nullptr);
  EXPECT_EQ(second->deleteProc, nullptr);
  EXPECT_EQ(second->deleteContext, nullptr);
  release(*second);
  release(*other);
}

TEST_F(SharedBufferTest, SaysWhyItRefusesADeleteProcedureWithoutBytes) {
  try {
    ZEBSharedBuffer* made = make(
        16, nullptr, [](void*) {}, nullptr, nullptr);
    ADD_FAILURE() << "made " << made;
  } catch (const InternalError& error) {
    EXPECT_STREQ(error.error()->message.get()->text(),
                 "NULL client buffer with non-NULL delete proc");
    EXPECT_STREQ(error.error()->component.get()->text(), "KST");
    EXPECT_EQ(error.error()->id, 0);
  }
  EXPECT_EQ(totalOf(counters::sharedBuffer), 1);
  EXPECT_TRUE(CountingHost::reports.empty());
}

TEST_F(SharedBufferTest, GivesItsSlotBackWhenItsBytesCannotBeHad) {
  const int64_t blocks = CountingHost::liveBlocks;
  CountingHost::failAllocation(2);
  EXPECT_THROW((void)make(16, nullptr, nullptr, nullptr, nullptr), InternalError);
  CountingHost::stopFailing();
  EXPECT_EQ(CountingHost::liveBlocks, blocks);
  EXPECT_EQ(totalOf(counters::sharedBufferPageMiss), 1);
}

TEST_F(SharedBufferTest, SurvivesAStopInItsHoldersHands) {
  ZEBSharedBuffer* buffer = make(16, bytes_, nullptr, nullptr, nullptr);
  library_.stop();
  EXPECT_EQ(buffer->data, bytes_);
  EXPECT_EQ(CountingHost::liveBlocks, 1);
  release(*buffer);
}

}  // namespace
}  // namespace zeb::buffers
