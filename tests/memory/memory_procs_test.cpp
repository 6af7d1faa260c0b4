// The memory room's two service tables.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "memory/allocator.h"
#include "memory/memory_services.h"
#include "memory/object_memory.h"
#include "support/counting_memory.h"
#include "support/restored.h"
#include "zeb/memory.h"
#include "zeb/memory_debug.h"

namespace {

using zeb_test::CountingHost;

// The function that a table publishes under these names.
template <class Proc>
Proc procOf(const zeb::ServiceTable& table, const std::string& method, const std::string& name) {
  for (const ZEBProcTableEntry& entry : table.entries) {
    if (entry.methodName == method && entry.procName == name) {
      return reinterpret_cast<Proc>(entry.proc);
    }
  }
  ADD_FAILURE() << "no " << method << "/" << name;
  return nullptr;
}

ZEBMemoryProcs memoryProcs() {
  const zeb::ServiceTable table = zeb::memoryService();
  return {procOf<ZEBMemAllocProc>(table, "Alloc", "ZEBMemAllocProc"),
          procOf<ZEBMemReallocProc>(table, "Realloc", "ZEBMemReallocProc"),
          procOf<ZEBMemFreeProc>(table, "Free", "ZEBMemFreeProc"),
          procOf<ZEBMemGetBlockSizeProc>(table, "GetBlockSize", "ZEBMemGetBlockSizeProc")};
}

TEST(MemoryService, IsOneTableOfFour) {
  const zeb::ServiceTable table = zeb::memoryService();
  EXPECT_STREQ(table.interfaceName, "ZEBMemoryInterface");
  EXPECT_EQ(table.entries.size(), 4u);
  EXPECT_TRUE(table.olderEntries.empty());
}

TEST(MemoryService, ServesBlocksOfTheProcessAllocatorWithoutAHost) {
  const ZEBMemoryProcs memory = memoryProcs();
  void* block = memory.Alloc(5);
  ASSERT_NE(block, nullptr);
  std::memcpy(block, "abcd", 5);
  EXPECT_EQ(memory.GetBlockSize(block), 5u);
  EXPECT_EQ(zeb::processAllocator.blockSize(block), 5u);
  void* moved = memory.Realloc(block, 100);
  ASSERT_NE(moved, nullptr);
  EXPECT_STREQ(static_cast<char*>(moved), "abcd");
  EXPECT_EQ(memory.GetBlockSize(moved), 100u);
  memory.Free(moved);
}

TEST(MemoryService, TakesNullForABlock) {
  const ZEBMemoryProcs memory = memoryProcs();
  memory.Free(nullptr);
  EXPECT_EQ(memory.GetBlockSize(nullptr), 0u);
  void* block = memory.Realloc(nullptr, 10);
  EXPECT_EQ(memory.GetBlockSize(block), 10u);
  memory.Free(block);
}

TEST(MemoryService, AnswersExhaustionWithNull) {
  const ZEBMemoryProcs memory = memoryProcs();
  EXPECT_EQ(memory.Alloc(UINT64_MAX), nullptr);
  void* block = memory.Alloc(10);
  EXPECT_EQ(memory.Realloc(block, UINT64_MAX), nullptr);
  EXPECT_EQ(memory.GetBlockSize(block), 10u);
  memory.Free(block);
}

TEST(MemoryService, PublishesTheHostsOwnFunctionsWhenItGaveAllFour) {
  const CountingHost host;
  const ZEBMemoryProcs memory = memoryProcs();
  EXPECT_EQ(memory.Alloc, CountingHost::procs.alloc);
  EXPECT_EQ(memory.Realloc, CountingHost::procs.realloc);
  EXPECT_EQ(memory.Free, CountingHost::procs.free);
  EXPECT_EQ(memory.GetBlockSize, CountingHost::procs.size);
  EXPECT_STREQ(zeb::memoryService().interfaceName, "ZEBMemoryInterface");
}

TEST(MemoryService, PublishesTheHostsFunctionsUnderTheSameNamesInTheSameOrder) {
  const zeb::ServiceTable library = zeb::memoryService();
  const CountingHost host;
  const zeb::ServiceTable hosts = zeb::memoryService();
  ASSERT_EQ(hosts.entries.size(), library.entries.size());
  for (size_t i = 0; i < hosts.entries.size(); ++i) {
    EXPECT_STREQ(hosts.entries[i].methodName, library.entries[i].methodName);
    EXPECT_STREQ(hosts.entries[i].procName, library.entries[i].procName);
  }
}

TEST(MemoryService, PublishesTheLibrarysFunctionsAgainAfterTheHost) {
  const ZEBMemoryProcs before = memoryProcs();
  {
    const CountingHost host;
    EXPECT_NE(memoryProcs().Alloc, before.Alloc);
  }
  EXPECT_EQ(memoryProcs().Alloc, before.Alloc);
  EXPECT_EQ(memoryProcs().GetBlockSize, before.GetBlockSize);
}

TEST(MemoryService, IgnoresAHostThatLeftOneOut) {
  const ZEBMemoryProcs library = memoryProcs();
  zeb::ObjectAllocatorSet incomplete = CountingHost::procs;
  incomplete.size = nullptr;
  const zeb_test::Restored<zeb::ObjectAllocatorSet> objects(zeb::hostState.objects, incomplete);
  EXPECT_EQ(memoryProcs().Alloc, library.Alloc);
}

// --- The library's procs under a host: they work on a client's behalf ---

class ForwardingMemoryProcs : public testing::Test {
 protected:
  const ZEBMemoryProcs memory = memoryProcs();  // before the host comes
  CountingHost host;
};

TEST_F(ForwardingMemoryProcs, ServeBlocksOfTheHost) {
  void* block = memory.Alloc(5);
  EXPECT_EQ(host.sizeOf(block), 5u);
  EXPECT_EQ(memory.GetBlockSize(block), 5u);
  std::memcpy(block, "abcd", 5);
  void* moved = memory.Realloc(block, 100);
  EXPECT_STREQ(static_cast<char*>(moved), "abcd");
  EXPECT_EQ(memory.GetBlockSize(moved), 100u);
  memory.Free(moved);
  EXPECT_EQ(host.live(), 0u);
}

TEST_F(ForwardingMemoryProcs, DoNotPassNullToTheHostsFree) {
  memory.Free(nullptr);
  EXPECT_EQ(host.takenBack(), 0u);
}

TEST_F(ForwardingMemoryProcs, AnswerTheHostsExhaustionWithNull) {
  void* block = memory.Alloc(10);
  host.grant(0);
  EXPECT_EQ(memory.Alloc(10), nullptr);
  EXPECT_EQ(memory.Realloc(block, 20), nullptr);
  EXPECT_EQ(host.sizeOf(block), 10u);
  memory.Free(block);
}

TEST_F(ForwardingMemoryProcs, TurnWhatTheHostThrowsIntoNullZeroOrNothing) {
  void* block = memory.Alloc(10);
  host.throwOnGive(true);
  EXPECT_EQ(memory.Alloc(10), nullptr);
  EXPECT_EQ(memory.Realloc(block, 20), nullptr);
  int stranger = 0;
  EXPECT_EQ(memory.GetBlockSize(&stranger), 0u);  // the host throws at a block that it never gave
  host.throwOnTakeBack(true);
  memory.Free(block);
  EXPECT_EQ(host.takenBack(), 1u);
}

// --- The debugging interface ---

TEST(MemoryDebugService, IsOneTableOfEight) {
  const zeb::ServiceTable table = zeb::memoryDebugService();
  EXPECT_STREQ(table.interfaceName, "ZEBMemDbgInterface");
  EXPECT_EQ(table.entries.size(), 8u);
  EXPECT_TRUE(table.olderEntries.empty());
}

TEST(MemoryDebugService, HasFiveCommandsThatDoNothing) {
  const zeb::ServiceTable table = zeb::memoryDebugService();
  const zeb_test::CountingHost host;
  procOf<ZEBMemDbgStartWatchProc>(table, "StartWatch", "ZEBMemDbgStartWatchProc")();
  procOf<ZEBMemDbgStopWatchProc>(table, "StopWatch", "ZEBMemDbgStopWatchProc")();
  procOf<ZEBMemDbgVerifyHeapProc>(table, "VerifyHeap", "ZEBMemDbgVerifyHeapProc")();
  procOf<ZEBMemDbgReportStatsProc>(table, "ReportStats", "ZEBMemDbgReportStatsProc")();
  procOf<ZEBMemDbgSetFailureRateProc>(table, "SetFailureRate", "ZEBMemDbgSetFailureRateProc")(1);
  EXPECT_EQ(host.asked(), 0u);
  void* block = zeb::allocObject(10);  // a failure rate of one in one fails nothing
  EXPECT_NE(block, nullptr);
  zeb::freeObject(block);
}

TEST(MemoryDebugService, HasThreeQuestionsThatAnswerZero) {
  const zeb::ServiceTable table = zeb::memoryDebugService();
  void* block = zeb::processAllocator.alloc(10);
  EXPECT_EQ(procOf<ZEBMemDbgGetCurAllocProc>(table, "GetCurAlloc", "ZEBMemDbgGetCurAllocProc")(),
            0u);
  EXPECT_EQ(procOf<ZEBMemDbgGetHighWaterAllocProc>(table, "GetHighWaterAlloc",
                                                   "ZEBMemDbgGetHighWaterAllocProc")(),
            0u);
  EXPECT_EQ(procOf<ZEBMemDbgGetNumAllocsProc>(table, "GetNumAllocs", "ZEBMemDbgGetNumAllocsProc")(),
            0u);
  zeb::processAllocator.free(block);
}

}  // namespace
