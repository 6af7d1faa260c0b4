// Cached results in one call.
#include "zeb/sdk/cache.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include "sdk/started.h"

namespace {

namespace sdk = zeb::sdk;

class Caching : public Started {
 protected:
  sdk::Pinned<std::string> get(const std::string& key, uint64_t size = 10) {
    return results.get(key, [&] {
      ++made;
      return sdk::CachedResult<std::string>{"result of " + key, size};
    });
  }

  int made = 0;
  sdk::CacheSet<std::string, std::string> results;
};

TEST_F(Caching, MakesAResultOnce) {
  EXPECT_EQ(*get("a"), "result of a");
  EXPECT_EQ(*get("a"), "result of a");
  EXPECT_EQ(made, 1);
  EXPECT_EQ(get("b")->size(), 11U);
  EXPECT_EQ(made, 2);
  EXPECT_EQ(sdk::procs<sdk::Cache>().CurrentCacheSize(), 20);
}

TEST_F(Caching, KeepsNothingWhenTheMakerThrows) {
  const auto fail = [&]() -> sdk::CachedResult<std::string> {
    throw std::runtime_error("no picture");
  };
  EXPECT_THROW((void)results.get("a", fail), std::runtime_error);
  EXPECT_FALSE(results.contains("a"));
  EXPECT_EQ(*get("a"), "result of a");
  EXPECT_TRUE(results.contains("a"));
}

TEST_F(Caching, PinnedResultOutlivesAPurge) {
  auto pinned = get("a");
  (void)get("b");
  sdk::procs<sdk::Cache>().PurgeAll();
  EXPECT_EQ(*pinned, "result of a");
  EXPECT_TRUE(results.contains("a"));
  EXPECT_FALSE(results.contains("b"));
  (void)get("b");
  EXPECT_EQ(made, 3);
}

TEST_F(Caching, RemovedResultLivesOnWhilePinned) {
  auto pinned = get("a");
  results.remove("a");
  EXPECT_FALSE(results.contains("a"));
  EXPECT_EQ(*pinned, "result of a");
  auto moved = std::move(pinned);
  EXPECT_EQ(*moved, "result of a");
}

TEST_F(Caching, PinnedResultOutlivesItsSet) {
  std::optional<sdk::Pinned<int>> pinned;
  {
    sdk::CacheSet<int, int> numbers;
    pinned = numbers.get(1, [] { return sdk::CachedResult{17, uint64_t{1}}; });
  }
  EXPECT_EQ(**pinned, 17);
}

TEST_F(Caching, TwoMakersOfOneResultShareTheFirst) {
  std::barrier together(2);
  std::atomic<int> makers = 0;
  const std::string* seen[2] = {};
  std::optional<sdk::Pinned<std::string>> pinned[2];
  const auto look = [&](size_t i) {
    pinned[i] = results.get("a", [&] {
      ++makers;
      together.arrive_and_wait();
      return sdk::CachedResult<std::string>{"result", 1};
    });
    seen[i] = &**pinned[i];
  };
  std::thread other(look, 0);
  look(1);
  other.join();
  EXPECT_EQ(makers, 2);
  EXPECT_EQ(seen[0], seen[1]);
}

TEST_F(Caching, ManyThreadsFindEverything) {
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 2000; ++i) {
        const std::string key = std::to_string((i * (t + 3)) % 50);
        const auto result = results.get(key, [&] {
          return sdk::CachedResult<std::string>{"result of " + key, 100};
        });
        if (*result != "result of " + key) ++wrong;
        if (i % 100 == 0) sdk::procs<sdk::Cache>().PurgeAll();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
