#include "inspect/snapshot_memory.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/counting_memory.h"

namespace zeb::inspect {
namespace {

TEST(SnapshotMemoryTest, FreesAllBlocksByTheFirst) {
  zeb_test::CountingHost host;
  {
    SnapshotMemory memory(100);
    std::memset(memory.data(), 1, 100);
    for (uint64_t size : {0u, 1u, 5000u}) std::memset(memory.addBlock(size), 2, size);
    EXPECT_EQ(host.live(), 4u);
    SnapshotMemory::free(memory.release());
    EXPECT_EQ(host.live(), 0u);
  }
  EXPECT_EQ(host.live(), 0u);
}

TEST(SnapshotMemoryTest, FreesAllBlocksUnlessReleased) {
  zeb_test::CountingHost host;
  {
    SnapshotMemory memory(8);
    (void)memory.addBlock(8);
    const SnapshotMemory moved(std::move(memory));
    EXPECT_EQ(host.live(), 2u);
  }
  EXPECT_EQ(host.live(), 0u);
}

TEST(SnapshotMemoryTest, KeepsWhatItHasWhenABlockFails) {
  zeb_test::CountingHost host;
  SnapshotMemory memory(8);
  host.grant(0);
  EXPECT_ANY_THROW((void)memory.addBlock(8));
  EXPECT_EQ(host.live(), 1u);
  host.grantAll();
  (void)memory.addBlock(8);
  EXPECT_EQ(host.live(), 2u);
}

TEST(SnapshotMemoryTest, AlignsItsBlocks) {
  zeb_test::CountingHost host;
  SnapshotMemory memory(1);
  EXPECT_EQ(reinterpret_cast<uint64_t>(memory.data()) % 16, 0u);
  EXPECT_EQ(reinterpret_cast<uint64_t>(memory.addBlock(1)) % 16, 0u);
}

TEST(SnapshotMemoryTest, IgnoresNull) { SnapshotMemory::free(nullptr); }

}  // namespace
}  // namespace zeb::inspect
