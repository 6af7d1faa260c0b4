// Unloading a stopped library, and loading it again.

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "contract/child_process.h"
#include "contract/library.h"

namespace contract {
namespace {

TEST(UnloadedLibrary, LeavesTheProcess) {
  ExpectPassesInFreshChild([] {
    void* library = OpenLibrary();
    const Exports zeb = ExportsOf(library);
    ASSERT_NE(zeb.Initialize(nullptr, nullptr, nullptr), nullptr);
    zeb.Terminate();
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_FALSE(IsLoaded());
  });
}

TEST(UnloadedLibrary, StartsAgainWhenLoadedAgain) {
  ExpectPassesInFreshChild([] {
    for (int round = 0; round < 3; ++round) {
      void* library = OpenLibrary();
      const Exports zeb = ExportsOf(library);
      EXPECT_EQ(zeb.GetGetProcAddress(), nullptr);
      const ZEBGetProcAddress find = zeb.Initialize(nullptr, nullptr, nullptr);
      ASSERT_NE(find, nullptr);
      EXPECT_EQ(FetchAll(find).frame.GetUnregisterCount(), 1u);
      zeb.Terminate();
      EXPECT_EQ(dlclose(library), 0);
    }
  });
}

// Whatever the library keeps for a thread must not call back into it once it is gone.
TEST(UnloadedLibrary, LetsThreadsEndThatHaveUsedIt) {
  ExpectPassesInFreshChild([] {
    void* library = OpenLibrary();
    const Exports zeb = ExportsOf(library);
    const ZEBGetProcAddress find = zeb.Initialize(nullptr, nullptr, nullptr);
    ASSERT_NE(find, nullptr);

    std::promise<void> used;
    std::promise<void> unloaded;
    std::thread user([&] {
      const Procs procs = FetchAll(find);
      procs.string.DeleteStringAtom(procs.string.NewStringAtom("used by a thread"));
      procs.string.AddRef(nullptr);
      used.set_value();
      unloaded.get_future().wait();
    });
    used.get_future().wait();
    zeb.Terminate();
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_FALSE(IsLoaded());
    unloaded.set_value();
    user.join();
  });
}

}  // namespace
}  // namespace contract
