// Starting and stopping the library from C++.
#include "zeb/sdk/library.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

namespace sdk = zeb::sdk;

TEST(Library, SaysThatItCannotBeLoaded) {
  EXPECT_THROW((void)sdk::Library::load("there is no such library.so"), sdk::StartFailure);
}

TEST(Library, RefusesAFileThatIsAnotherLibrary) {
  EXPECT_THROW((void)sdk::Library::load("libc.so.6"), sdk::StartFailure);
  EXPECT_EQ(sdk::lookUp(), nullptr);
}

TEST(Library, StopsOnceAtTheEndOfItsScope) {
  {
    sdk::Library library = sdk::Library::load(ZEB_LIBRARY_PATH, {.unregisterCountStart = 40});
    EXPECT_NE(library.find(), nullptr);
    const sdk::Library moved = std::move(library);
    EXPECT_NE(moved.find(), nullptr);
  }
  EXPECT_EQ(sdk::lookUp(), nullptr);
}

TEST(Library, ReturnsTheChangeCounterForTheNextStart) {
  sdk::Library library = sdk::Library::load(ZEB_LIBRARY_PATH, {.unregisterCountStart = 40});
  sdk::procs<sdk::Frame>().UnregisterInterface("Nobody");
  const uint32_t count = library.stop();
  EXPECT_GT(count, 40U);
  EXPECT_EQ(library.stop(), 0U);
  const sdk::Library again = sdk::Library::load(ZEB_LIBRARY_PATH, {.unregisterCountStart = count});
  EXPECT_EQ(sdk::procs<sdk::Frame>().GetUnregisterCount(), count);
}

uint64_t blocks = 0;
void* countedAlloc(uint64_t size) {
  void* block = std::malloc(size);
  if (block != nullptr) ++blocks;
  return block;
}
void* countedRealloc(void* block, uint64_t size) {
  void* larger = std::realloc(block, size);
  if (block == nullptr && larger != nullptr) ++blocks;
  return larger;
}
void countedFree(void* block) {
  if (block != nullptr) --blocks;
  std::free(block);
}
uint64_t sizeOfNothing(void* /*block*/) { return 0; }

TEST(Library, GivesTheHostsMemoryBackBeforeItStops) {
  blocks = 0;
  {
    const sdk::Library library =
        sdk::Library::load(ZEB_LIBRARY_PATH, {.objAlloc = &countedAlloc,
                                              .objRealloc = &countedRealloc,
                                              .objFree = &countedFree,
                                              .objSize = &sizeOfNothing});
    // A full container goes to the recycled ones, which keep it over an ordinary stop.
    ZEBString* name = sdk::procs<sdk::Strings>().NewStringAtom("name");
    ZEBContainer* container = nullptr;
    ASSERT_EQ(sdk::procs<sdk::Containers>().NewFullContainer(&container, nullptr, name, nullptr,
                                                             name, nullptr, nullptr, 0),
              nullptr);
    sdk::procs<sdk::Containers>().Release(container);
    sdk::procs<sdk::Strings>().DeleteStringAtom(name);
    EXPECT_GT(blocks, 0U);
  }
  EXPECT_EQ(blocks, 0U);
}

TEST(Library, RefusesAnAllocatorThatIsNotWhole) {
  EXPECT_THROW((void)sdk::Library::load(ZEB_LIBRARY_PATH, {.objAlloc = &countedAlloc,
                                                           .objRealloc = &countedRealloc,
                                                           .objFree = &countedFree}),
               sdk::StartFailure);
  EXPECT_THROW((void)sdk::Library::load(ZEB_LIBRARY_PATH, {.pageFree = &countedFree}),
               sdk::StartFailure);
  EXPECT_EQ(sdk::tryProcs<sdk::Strings>(), nullptr);
}

TEST(Library, IsRefusedWhileAnotherHostsAllocatorsServe) {
  const sdk::Library first = sdk::Library::load(ZEB_LIBRARY_PATH, {.objAlloc = &countedAlloc,
                                                                   .objRealloc = &countedRealloc,
                                                                   .objFree = &countedFree,
                                                                   .objSize = &sizeOfNothing});
  EXPECT_THROW((void)sdk::Library::load(ZEB_LIBRARY_PATH), sdk::StartFailure);
  EXPECT_NE(sdk::tryProcs<sdk::Strings>(), nullptr) << "the first host goes on";
}

}  // namespace
