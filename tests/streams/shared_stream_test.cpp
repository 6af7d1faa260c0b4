// Counted bodies and their holders.
#include "streams/shared_stream.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "streams/buffer_stream.h"
#include "streams/client_stream.h"
#include "streams/file_stream.h"
#include "streams/memory_stream.h"
#include "support/counting_memory.h"

namespace zeb::streams {
namespace {

class WatchedBody final : public SharedStreamData {
 public:
  explicit WatchedBody(int& ended) : ended_(ended) {}
  ~WatchedBody() override { ++ended_; }
  [[nodiscard]] uint64_t End() const override { return 7; }
  [[nodiscard]] bool IsValidPosition(uint64_t position) const noexcept override {
    return isBelowWrapping(position);
  }

 private:
  int& ended_;
};

TEST(SharedBodyTest, EndsWithItsLastHolder) {
  const zeb_test::CountingHost host;
  int ended = 0;
  {
    SharedBody first(makeObject<WatchedBody>(ended));
    {
      const SharedBody second(first);
      EXPECT_EQ(second.get(), first.get());
    }
    EXPECT_EQ(ended, 0);
    const SharedBody moved(std::move(first));
    EXPECT_EQ(moved->End(), 7u);
    EXPECT_EQ(ended, 0);
  }
  EXPECT_EQ(ended, 1);
  EXPECT_EQ(host.live(), 0u);
}

TEST(SharedBodyTest, BeginsAtZeroAndCanBeWritten) {
  const zeb_test::CountingHost host;
  int ended = 0;
  const SharedBody body(makeObject<WatchedBody>(ended));
  EXPECT_EQ(body->Begin(), 0u);
  EXPECT_FALSE(body->isReadOnly());
  body->makeReadOnly();
  body->makeReadOnly();
  EXPECT_TRUE(body->isReadOnly());
}

TEST(SharedBodyTest, HasNoPositionsThatWrapped) {
  const zeb_test::CountingHost host;
  int ended = 0;
  const SharedBody body(makeObject<WatchedBody>(ended));
  EXPECT_TRUE(body->IsValidPosition(uint64_t{INT64_MAX}));
  EXPECT_FALSE(body->IsValidPosition(uint64_t{1} << 63));
  EXPECT_FALSE(body->IsValidPosition(~uint64_t{0}));
}

TEST(StreamFamilyTest, DerivesEachTierFromTheOneBefore) {
  EXPECT_TRUE((std::is_base_of_v<ZEBBase, SimpleStreamImpl>));
  EXPECT_TRUE((std::is_base_of_v<SimpleStreamImpl, RewindableStreamImpl>));
  EXPECT_TRUE((std::is_base_of_v<RewindableStreamImpl, PositionableStreamImpl>));
  EXPECT_TRUE((std::is_base_of_v<PositionableStreamImpl, SharedStreamDataStream>));
  EXPECT_TRUE((std::is_base_of_v<SharedStreamDataStream, MemorySharedStream>));
  EXPECT_TRUE((std::is_base_of_v<SharedStreamDataStream, BufferSharedStream>));
  EXPECT_TRUE((std::is_base_of_v<SharedStreamDataStream, FileSharedStream>));
  EXPECT_FALSE((std::is_base_of_v<RewindableStreamImpl, ClientSimpleStreamImpl>));
  EXPECT_FALSE((std::is_base_of_v<PositionableStreamImpl, ClientRewindableStreamImpl>));
  EXPECT_TRUE((std::is_base_of_v<ZEB_T_MT::CZEBVirtualClientBase, SharedStreamData>));
}

}  // namespace
}  // namespace zeb::streams
