// The memory interface of a library without a host's memory procs, the procs of a host that has
// some, and the names of the debugging interface.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <thread>

#include "contract/host_memory.h"
#include "contract/library.h"
#include "contract/sanitizer_options.h"

namespace contract {
namespace {

using Host = HostMemory<0>;

constexpr std::uint64_t kSizes[] = {0,    1,    15,    16,    17,    48,     319,    320,
                                    3999, 4000, 65023, 65024, 65025, 131071, 131072, 1 << 20};

class Memory : public ::testing::Test {
 protected:
  void* Alloc(std::uint64_t size) const { return zeb_.memory.Alloc(size); }
  void Free(void* block) const { zeb_.memory.Free(block); }

  RunningLibrary zeb_;
};

unsigned char* Bytes(void* block) { return static_cast<unsigned char*>(block); }

void Fill(void* block, std::uint64_t size) {
  for (std::uint64_t i = 0; i < size; ++i) Bytes(block)[i] = static_cast<unsigned char>(i * 7);
}

bool IsFilled(void* block, std::uint64_t size) {
  for (std::uint64_t i = 0; i < size; ++i) {
    if (Bytes(block)[i] != static_cast<unsigned char>(i * 7)) return false;
  }
  return true;
}

TEST_F(Memory, GivesBlocksOfTheSizeAskedFor) {
  for (const std::uint64_t size : kSizes) {
    void* block = Alloc(size);
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(zeb_.memory.GetBlockSize(block), size);
    Fill(block, size);
    EXPECT_EQ(zeb_.memory.GetBlockSize(block), size);
    Free(block);
  }
}

TEST_F(Memory, AlignsBlocksToSixteenBytes) {
  for (const std::uint64_t size : kSizes) {
    void* block = Alloc(size);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u) << size;
    Free(block);
  }
}

TEST_F(Memory, GivesEveryBlockAnAddressOfItsOwn) {
  void* first = Alloc(0);
  void* second = Alloc(0);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_NE(first, second);
  Free(first);
  Free(second);
}

TEST_F(Memory, HarmlesslyTakesNull) {
  EXPECT_EQ(zeb_.memory.GetBlockSize(nullptr), 0u);
  Free(nullptr);
}

TEST_F(Memory, AllocatesWhenANullBlockIsResized) {
  for (const std::uint64_t size : kSizes) {
    void* block = zeb_.memory.Realloc(nullptr, size);
    ASSERT_NE(block, nullptr) << size;
    EXPECT_EQ(zeb_.memory.GetBlockSize(block), size);
    Fill(block, size);
    Free(block);
  }
}

TEST_F(Memory, MovesABlockWheneverItIsResized) {
  for (const std::uint64_t newSize : {500u, 1000u, 2000u, 1u, 0u}) {
    void* block = Alloc(1000);
    const auto before = reinterpret_cast<std::uintptr_t>(block);
    void* moved = zeb_.memory.Realloc(block, newSize);
    EXPECT_NE(reinterpret_cast<std::uintptr_t>(moved), before) << newSize;
    Free(moved);
  }
}

TEST_F(Memory, KeepsWhatFitsWhenABlockIsResized) {
  for (const std::uint64_t oldSize : kSizes) {
    for (const std::uint64_t newSize : {std::uint64_t{0}, std::uint64_t{33}, oldSize / 2, oldSize,
                                        oldSize + 1, oldSize * 2 + 70'000}) {
      void* block = Alloc(oldSize);
      Fill(block, oldSize);
      block = zeb_.memory.Realloc(block, newSize);
      ASSERT_NE(block, nullptr);
      EXPECT_EQ(zeb_.memory.GetBlockSize(block), newSize);
      EXPECT_TRUE(IsFilled(block, std::min(oldSize, newSize))) << oldSize << " to " << newSize;
      Free(block);
    }
  }
}

// Sizes that no longer fit once a header is added to them, and sizes that are merely too large.
// Those in between, which are negative numbers to a reader of malloc's argument, are left to
// malloc.
constexpr std::uint64_t kImpossibleSizes[] = {
    UINT64_MAX,      UINT64_MAX - 1,   UINT64_MAX - 15,  UINT64_MAX - 16,  UINT64_MAX - 17,
    UINT64_MAX - 32, UINT64_MAX - 200, UINT64_MAX - 215, INT64_MAX - 1000, INT64_MAX / 2};

TEST_F(Memory, AnswersAnImpossibleSizeWithNull) {
  for (const std::uint64_t size : kImpossibleSizes) EXPECT_EQ(Alloc(size), nullptr) << size;
  void* block = Alloc(10);
  EXPECT_NE(block, nullptr);
  Free(block);
}

TEST_F(Memory, LeavesTheOldBlockAloneWhenItCannotBeResized) {
  void* block = Alloc(1000);
  Fill(block, 1000);
  for (const std::uint64_t size : kImpossibleSizes) {
    EXPECT_EQ(zeb_.memory.Realloc(block, size), nullptr) << size;
    EXPECT_EQ(zeb_.memory.Realloc(nullptr, size), nullptr) << size;
  }
  EXPECT_EQ(zeb_.memory.GetBlockSize(block), 1000u);
  EXPECT_TRUE(IsFilled(block, 1000));
  Free(block);
}

TEST_F(Memory, HandsBlocksFromThreadToThread) {
  void* block = Alloc(4096);
  Fill(block, 4096);
  std::thread([&] { block = zeb_.memory.Realloc(block, 10'000); }).join();
  EXPECT_TRUE(IsFilled(block, 4096));
  std::thread([&] { Free(block); }).join();
}

TEST_F(Memory, FreesBlocksThatOutlivedAStop) {
  void* block = Alloc(64);
  Fill(block, 64);
  zeb_.Stop();
  RunningLibrary again;
  EXPECT_TRUE(IsFilled(block, 64));
  EXPECT_EQ(again.memory.GetBlockSize(block), 64u);
  again.memory.Free(block);
}

TEST(HostMemoryProcs, ArePublishedThemselves) {
  RunningLibrary zeb(Host::WithObjectProcs());
  EXPECT_EQ(zeb.memory.Alloc, &Host::Alloc);
  EXPECT_EQ(zeb.memory.Realloc, &Host::Realloc);
  EXPECT_EQ(zeb.memory.Free, &Host::Free);
  EXPECT_EQ(zeb.memory.GetBlockSize, &Host::Size);
}

TEST(HostMemoryProcs, AreNotAskedByTheLibraryForClientMemory) {
  RunningLibrary zeb;
  const std::uint64_t calls = Host::Calls();
  zeb.memory.Free(zeb.memory.Realloc(zeb.memory.Alloc(10), 20));
  EXPECT_EQ(Host::Calls(), calls);
}

TEST(DebuggingInterface, WatchesNothing) {
  RunningLibrary zeb;
  zeb.memoryDebug.StartWatch();
  void* block = zeb.memory.Alloc(100);
  zeb.memoryDebug.VerifyHeap();
  zeb.memoryDebug.ReportStats();
  EXPECT_EQ(zeb.memoryDebug.GetCurAlloc(), 0u);
  EXPECT_EQ(zeb.memoryDebug.GetHighWaterAlloc(), 0u);
  EXPECT_EQ(zeb.memoryDebug.GetNumAllocs(), 0u);
  zeb.memory.Free(block);
  zeb.memoryDebug.StopWatch();
}

TEST(DebuggingInterface, LetsNoAllocationFail) {
  RunningLibrary zeb;
  for (const std::uint32_t rate : {0u, 1u, UINT32_MAX}) {
    zeb.memoryDebug.SetFailureRate(rate);
    for (int i = 0; i < 20; ++i) {
      void* block = zeb.memory.Alloc(100);
      EXPECT_NE(block, nullptr);
      zeb.memory.Free(block);
    }
  }
}

}  // namespace
}  // namespace contract
