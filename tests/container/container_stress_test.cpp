// Containers under many threads. Nothing here depends on who comes first; every count is exact.
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <map>
#include <string>
#include <vector>

#include "atoms/atom.h"
#include "base/library_counters.h"
#include "container/container.h"
#include "container/recycled_containers.h"
#include "registry/proc_registry.h"
#include "support/started_library.h"
#include "support/threads.h"

namespace zeb::container {
namespace {

using test::CountingHost;
using test::StartedLibrary;
using test::totalOf;
using zeb_test::runTogether;

constexpr unsigned kThreads = 4;
constexpr int kRounds = 2000;

// Tells the thread that changes things, also when an assertion ends a search early.
class Search {
 public:
  explicit Search(std::atomic<unsigned>& searching) : searching_(searching) {}
  ~Search() { searching_.fetch_sub(1, std::memory_order_relaxed); }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;

 private:
  std::atomic<unsigned>& searching_;
};

// Data that all threads give to their containers.
struct SharedData {
  std::atomic<int64_t> destroyed{0};

  static void destroy(void* data) {
    static_cast<SharedData*>(data)->destroyed.fetch_add(1, std::memory_order_relaxed);
  }
};

class ContainerStressTest : public testing::Test {
 protected:
  ContainerStressTest() { emptyRecycled(); }

  void TearDown() override {
    emptyRecycled();
    names_.clear();
    library_.stop();
    EXPECT_EQ(CountingHost::liveBlocks, 0);
    EXPECT_TRUE(CountingHost::reports.empty());
  }

  ZEBString* name(const std::string& text) {
    const auto [entry, isNew] = names_.try_emplace(text);
    if (isNew) entry->second = atoms::Ref(text.c_str());
    return entry->second.get();
  }

  FullContainerParts parts() {
    return {.data = &data_,
            .instanceName = name("instance"),
            .destroy = SharedData::destroy,
            .interfaceName = name("interface")};
  }

  StartedLibrary library_;
  std::map<std::string, atoms::Ref> names_;
  SharedData data_;
};

TEST_F(ContainerStressTest, CountsReferencesExactly) {
  ZEBContainer* shared = makeFull(parts());
  const int64_t before = totalOf(counters::containerAddRef);
  runTogether(kThreads, [&](unsigned) {
    for (int i = 0; i < kRounds; ++i) {
      addReference(*shared);
      addReference(*shared);
      release(*shared);
      decrementWithoutDelete(*shared);
    }
  });
  EXPECT_EQ(data_.destroyed, 0);
  EXPECT_EQ(shared->references.load(), 1u);
  EXPECT_EQ(totalOf(counters::containerAddRef) - before, 2 * kRounds * int64_t{kThreads});
  release(*shared);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ContainerStressTest, EndsEachContainerOnceWhoeverDropsTheLastReference) {
  constexpr int kShared = 500;
  std::vector<ZEBContainer*> shared(kShared);
  for (ZEBContainer*& one : shared) {
    one = makeFull(parts());
    for (unsigned i = 1; i < kThreads; ++i) addReference(*one);
    // Half of them are too large to wait.
    if (&one < shared.data() + kShared / 2) addInterface(*one, name("second"));
  }
  runTogether(kThreads, [&](unsigned) {
    for (ZEBContainer* one : shared) release(*one);
  });
  EXPECT_EQ(data_.destroyed, kShared);
  EXPECT_EQ(totalOf(counters::uncachedContainerDelete), kShared / 2);
}

TEST_F(ContainerStressTest, GivesEachFullContainerToOneThread) {
  const FullContainerParts made = parts();
  runTogether(kThreads, [&](unsigned index) {
    SharedData own;
    FullContainerParts ownParts = made;
    ownParts.data = &own;
    std::vector<ZEBContainer*> held;
    for (int i = 0; i < kRounds; ++i) {
      ZEBContainer* full = makeFull(ownParts);
      ASSERT_EQ(full->cache.instanceData, &own);
      ASSERT_EQ(full->references.load(), 1u);
      held.push_back(full);
      // The threads hold different numbers, so that the stack runs full and empty.
      while (held.size() > 3 + 12 * index) {
        release(*held.back());
        held.pop_back();
      }
    }
    for (ZEBContainer* full : held) {
      ASSERT_EQ(full->cache.instanceData, &own);
      release(*full);
    }
    ASSERT_EQ(own.destroyed, kRounds);
  });
  EXPECT_EQ(totalOf(counters::fullContainerCacheHit) + totalOf(counters::fullContainerCacheMiss),
            kRounds * int64_t{kThreads});
  // Only a new container counts its first reference.
  EXPECT_EQ(totalOf(counters::containerAddRef), totalOf(counters::fullContainerCacheMiss));
}

TEST_F(ContainerStressTest, RenamesRecycledContainersWithoutLosingNames) {
  std::vector<ZEBString*> own;
  for (unsigned i = 0; i < kThreads; ++i) own.push_back(name("of thread " + std::to_string(i)));
  std::vector<uint32_t> before;
  for (ZEBString* each : own) before.push_back(each->references);
  runTogether(kThreads, [&](unsigned index) {
    for (int i = 0; i < kRounds; ++i) {
      ZEBContainer* full = makeFull({.instanceName = own[index], .interfaceName = own[index]});
      ASSERT_EQ(full->signature.get(), own[index]);
      ASSERT_NE(findInstance(*full, own[index]), nullptr);
      ASSERT_EQ(findInstance(*full, own[(index + 1) % kThreads]), nullptr);
      release(*full);
    }
  });
  emptyRecycled();
  for (unsigned i = 0; i < kThreads; ++i) EXPECT_EQ(own[i]->references, before[i]);
}

TEST_F(ContainerStressTest, CountsClonesInTheirSource) {
  ZEBContainer* source = makeFull(parts());
  ZEBString* instance = name("instance");
  runTogether(kThreads, [&](unsigned) {
    for (int i = 0; i < kRounds / 4; ++i) {
      ZEBContainer* clone = makeClone(*source);
      ZEBContainer* second = makeClone(*clone);
      release(*clone);
      ASSERT_EQ(findInstance(*second, instance)->data, &data_);
      release(*second);
    }
  });
  EXPECT_EQ(data_.destroyed, 0);
  EXPECT_EQ(source->references.load(), 1u);
  release(*source);
  EXPECT_EQ(data_.destroyed, 1);
}

TEST_F(ContainerStressTest, OpensAndFreesPagesFromAllThreads) {
  const int64_t blocks = CountingHost::liveBlocks;
  runTogether(kThreads, [&](unsigned) {
    std::vector<ZEBContainer*> held;
    for (int round = 0; round < kRounds / 40; ++round) {
      for (int i = 0; i < 40; ++i) held.push_back(makeEmpty());
      for (ZEBContainer* one : held) release(*one);
      held.clear();
    }
  });
  EXPECT_EQ(CountingHost::liveBlocks, blocks);
  EXPECT_EQ(totalOf(counters::emptyContainer), kRounds * int64_t{kThreads});
}

TEST_F(ContainerStressTest, AsksItsOwnerOnceForEachTimeItIsLetGo) {
  static std::atomic<int64_t> asked;
  asked = 0;
  FullContainerParts owned = parts();
  owned.ownerHook = [](ZEBContainer*, uint64_t, uint64_t) -> int32_t {
    asked.fetch_add(1, std::memory_order_relaxed);
    return 1;
  };
  ZEBContainer* kept = makeFull(owned);
  std::barrier together(kThreads);
  // The last of each round's releases finds the owner; everybody takes the container up again.
  for (unsigned i = 1; i < kThreads; ++i) addReference(*kept);
  runTogether(kThreads, [&](unsigned) {
    for (int i = 0; i < kRounds / 4; ++i) {
      release(*kept);
      together.arrive_and_wait();
      addReference(*kept);
      together.arrive_and_wait();
    }
  });
  EXPECT_EQ(asked, kRounds / 4);
  EXPECT_EQ(data_.destroyed, 0);
  for (unsigned i = 0; i < kThreads; ++i) decrementWithoutDelete(*kept);
  deleteUnowned(*kept);
  EXPECT_EQ(asked, kRounds / 4);
  EXPECT_EQ(data_.destroyed, 1);
}

// Look-ups in a container while strangers come to the registry and go. What is there is never
// missed, and what is not there is never found.
TEST_F(ContainerStressTest, FindsItsMethodsWhileOthersAreRegisteredAndUnregistered) {
  const auto base = reinterpret_cast<ZEBProc>(16);
  const auto top = reinterpret_cast<ZEBProc>(32);
  ASSERT_TRUE(registry::add("base", "method", "proc", base));
  ASSERT_TRUE(registry::add("base", "only in base", "proc", base));
  ASSERT_TRUE(registry::add("top", "method", "proc", top));
  ZEBContainer* container = makeFull(parts());
  for (const char* each : {"base", "between", "top"}) addInterface(*container, name(each));
  ZEBString* method = name("method");
  ZEBString* onlyInBase = name("only in base");
  ZEBString* missing = name("missing");
  ZEBString* proc = name("proc");
  ZEBString* nameOfTop = name("top");
  ZEBString* nameOfBase = name("base");

  std::atomic<unsigned> searching{kThreads - 1};
  std::atomic<int64_t> changes{0};
  runTogether(kThreads, [&](unsigned index) {
    if (index == 0) {
      // Names of many interfaces, so that the registry grows and shrinks, and methods of the
      // container's own under interfaces that it does not have.
      while (searching.load(std::memory_order_relaxed) != 0) {
        for (int i = 0; i < 40; ++i) {
          const std::string stranger = "stranger " + std::to_string(i);
          ASSERT_TRUE(registry::add(stranger.c_str(), "method", "proc", base));
          ASSERT_TRUE(registry::add(stranger.c_str(), "missing", "proc", base));
        }
        for (int i = 0; i < 40; ++i) {
          registry::removeInterface(("stranger " + std::to_string(i)).c_str());
        }
        changes.fetch_add(1, std::memory_order_relaxed);
      }
      return;
    }
    const Search search(searching);
    // At least until the registry has changed once: the changing thread may come late.
    for (int i = 0; i < kRounds || changes.load(std::memory_order_relaxed) == 0; ++i) {
      ASSERT_EQ(findMethod(*container, method, proc), top);
      ASSERT_EQ(findMethod(*container, onlyInBase, proc), base);
      ASSERT_EQ(findMethod(*container, missing, proc), nullptr);
      ASSERT_EQ(findParentMethod(*container, nameOfTop, method, proc), base);
      ASSERT_EQ(findParentMethod(*container, nameOfBase, method, proc), nullptr);
    }
  });
  EXPECT_GT(changes, 0);
  release(*container);
}

// A method of an interface that comes and goes is found whole or not at all.
TEST_F(ContainerStressTest, FindsTheParentWhileAnOverrideComesAndGoes) {
  const auto base = reinterpret_cast<ZEBProc>(16);
  const auto overriding = reinterpret_cast<ZEBProc>(32);
  ASSERT_TRUE(registry::add("base", "method", "proc", base));
  ZEBContainer* container = makeEmpty();
  addInterface(*container, name("base"));
  addInterface(*container, name("override"));
  ZEBString* method = name("method");
  ZEBString* proc = name("proc");
  std::atomic<unsigned> searching{kThreads - 1};
  runTogether(kThreads, [&](unsigned index) {
    if (index == 0) {
      while (searching.load(std::memory_order_relaxed) != 0) {
        ASSERT_TRUE(registry::add("override", "method", "proc", overriding));
        registry::removeInterface("override");
      }
      return;
    }
    const Search search(searching);
    for (int i = 0; i < kRounds; ++i) {
      const ZEBProc found = findMethod(*container, method, proc);
      ASSERT_TRUE(found == base || found == overriding);
    }
  });
  EXPECT_EQ(findMethod(*container, method, proc), base);
  release(*container);
}

TEST(RecycledContainersStressTest, LosesAndDoublesNone) {
  constexpr size_t kTokens = 24;
  struct Token {
    std::atomic<int> holders{0};
  };
  std::vector<Token> tokens(kTokens);
  RecycledContainers recycled;
  for (Token& token : tokens) {
    ASSERT_TRUE(recycled.push(reinterpret_cast<ZEBContainer*>(&token)));
  }
  runTogether(kThreads, [&](unsigned) {
    for (int i = 0; i < kRounds; ++i) {
      auto* token = reinterpret_cast<Token*>(recycled.pop());
      ASSERT_NE(token, nullptr);
      ASSERT_EQ(token->holders.fetch_add(1), 0);
      ASSERT_EQ(token->holders.fetch_sub(1), 1);
      ASSERT_TRUE(recycled.push(reinterpret_cast<ZEBContainer*>(token)));
    }
  });
  size_t waiting = 0;
  while (recycled.pop() != nullptr) ++waiting;
  EXPECT_EQ(waiting, kTokens);
}

}  // namespace
}  // namespace zeb::container
