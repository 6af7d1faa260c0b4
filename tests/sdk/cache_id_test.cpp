// Cache identifiers and single cached results.
#include "zeb/sdk/cache_id.hpp"

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

class CachedValues : public Started {
 protected:
  sdk::Pinned<std::string> get() {
    return value.get([&] {
      ++made;
      return sdk::CachedResult<std::string>{"result", 10};
    });
  }

  int made = 0;
  sdk::CachedValue<std::string> value;
};

TEST_F(CachedValues, ResultIsMadeOnceAndAgainAfterAnEviction) {
  EXPECT_FALSE(value.exists());
  EXPECT_EQ(*get(), "result");
  EXPECT_EQ(*get(), "result");
  EXPECT_EQ(made, 1);
  EXPECT_TRUE(value.exists());
  sdk::procs<sdk::Cache>().PurgeAll();
  EXPECT_FALSE(value.exists());
  EXPECT_EQ(*get(), "result");
  EXPECT_EQ(made, 2);
}

TEST_F(CachedValues, PinnedResultOutlivesAPurgeAndItsObject) {
  std::optional<sdk::Pinned<std::string>> pinned;
  {
    sdk::CachedValue<std::string> other;
    pinned = other.get([] { return sdk::CachedResult<std::string>{"kept", 1}; });
  }
  sdk::procs<sdk::Cache>().PurgeAll();
  EXPECT_EQ(**pinned, "kept");
  pinned.reset();
  EXPECT_EQ(sdk::procs<sdk::Cache>().CurrentCacheSize(), 0);
}

TEST_F(CachedValues, NothingIsKeptWhenTheMakerThrows) {
  const auto fail = [&]() -> sdk::CachedResult<std::string> { throw std::runtime_error("no"); };
  EXPECT_THROW((void)value.get(fail), std::runtime_error);
  EXPECT_FALSE(value.exists());
  EXPECT_EQ(*get(), "result");
}

TEST_F(CachedValues, ForgettingMakesTheNextResultNew) {
  const auto before = get();
  value.forget();
  EXPECT_FALSE(value.exists());
  EXPECT_EQ(*before, "result");
  (void)get();
  EXPECT_EQ(made, 2);
}

TEST_F(CachedValues, MovedValueTakesItsResultAlong) {
  (void)get();
  sdk::CachedValue<std::string> moved = std::move(value);
  EXPECT_TRUE(moved.exists());
  value = std::move(moved);
  EXPECT_EQ(*get(), "result");
  EXPECT_EQ(made, 1);
}

TEST_F(CachedValues, AssigningAPinnedLetsTheOldResultGo) {
  auto pinned = get();
  sdk::CachedValue<std::string> other;
  pinned = other.get([] { return sdk::CachedResult<std::string>{"other", 1}; });
  sdk::procs<sdk::Cache>().PurgeAll();
  EXPECT_FALSE(value.exists());
  EXPECT_EQ(*pinned, "other");
}

TEST_F(CachedValues, TwoMakersOfOneResultShareTheFirst) {
  std::barrier together(2);
  std::atomic<int> makers = 0;
  std::optional<sdk::Pinned<std::string>> pinned[2];
  const auto look = [&](size_t i) {
    pinned[i] = value.get([&] {
      ++makers;
      together.arrive_and_wait();
      return sdk::CachedResult<std::string>{"result", 1};
    });
  };
  std::thread other(look, 1);
  look(0);
  other.join();
  EXPECT_EQ(makers, 2);
  EXPECT_EQ(&**pinned[0], &**pinned[1]);
  EXPECT_EQ(sdk::procs<sdk::Cache>().CurrentCacheSize(), 1);
}

TEST_F(CachedValues, IdentifierTellsWhatItsResultCost) {
  sdk::CacheID id = sdk::CacheID::make();
  EXPECT_EQ(id.cost().size, 0U);
  const sdk::CacheID second = id.share();
  EXPECT_EQ(second.get(), id.get());
  static int result = 0;
  ZEBCacheID* handle = id.get();
  const auto keep = [](void* /*data*/, int32_t /*survives*/) {};
  ASSERT_EQ(sdk::procs<sdk::Cache>().Attach(&handle, &result, nullptr, 7, keep, nullptr), &result);
  id.addCost(3, 5);
  EXPECT_EQ(second.cost().size, 10U);
  EXPECT_EQ(second.cost().cost, 5);
}

}  // namespace
