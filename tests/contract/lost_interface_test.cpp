// A start during which the host takes one of the library's interfaces away again.
//
// The only moment to do so is in the host's allocator, with a proc that was kept from an earlier
// run. The library holds no lock then.

#include <gtest/gtest.h>

#include "contract/child_process.h"
#include "contract/error_reports.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {
namespace {

using Host = HostMemory<0>;
using Reports = ErrorReports<0>;

ZEBUnregisterInterface g_unregister = nullptr;
const char* g_lostInterface = nullptr;
std::uint64_t g_allocations = 0;

// The first allocations register the memory interfaces; what comes later finds one of them gone.
void* AllocTakingTheInterfaceAway(std::uint64_t size) {
  static bool busy = false;
  if (g_lostInterface != nullptr && ++g_allocations > 40 && !busy) {
    busy = true;
    g_unregister(g_lostInterface);
    busy = false;
  }
  return Host::Alloc(size);
}

// A second start, during which the library loses `interfaceName`.
ZEBGetProcAddress StartLosing(const char* interfaceName) {
  RunningLibrary first;
  g_unregister = first.frame.UnregisterInterface;
  first.Stop();
  StartOptions options = Host::WithObjectProcs(Reports::Told());
  options.objAlloc = &AllocTakingTheInterfaceAway;
  g_lostInterface = interfaceName;
  const ZEBGetProcAddress find = Start(options);
  g_lostInterface = nullptr;
  return find;
}

TEST(LostInterface, FailsTheStartThatNeedsIt) {
  ExpectPassesInFreshChild([] {
    EXPECT_EQ(StartLosing("ZEBMemoryInterface"), nullptr);
    EXPECT_EQ(exports().GetGetProcAddress(), nullptr);
    EXPECT_TRUE(Reports::Take().empty());
  });
}

TEST(LostInterface, DoesNotMatterToAStartThatDoesNotNeedIt) {
  ExpectPassesInFreshChild([] {
    const ZEBGetProcAddress find = StartLosing("ZEBMemDbgInterface");
    ASSERT_NE(find, nullptr);
    EXPECT_EQ(find("ZEBMemDbgInterface", "StopWatch", "ZEBMemDbgStopWatchProc"), nullptr);
    EXPECT_EQ(find("ZEBMemoryInterface", "Alloc", "ZEBMemAllocProc"),
              AsProc(&AllocTakingTheInterfaceAway));
    exports().Terminate();
    EXPECT_TRUE(Reports::Take().empty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  });
}

}  // namespace
}  // namespace contract
