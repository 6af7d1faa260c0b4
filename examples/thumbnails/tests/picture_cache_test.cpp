// The host's cache of pictures, and its budget.
#include "host/picture_cache.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "host/budget.h"
#include "tests/module_fixture.h"

namespace examples {
namespace {

using namespace std::chrono_literals;

// About 30 kB each.
constexpr uint32_t kEdge = 100;
constexpr int64_t kSize = kEdge * kEdge * 3;

class KeptPictures : public ModuleFixture {
 protected:
  static FileState file(const std::string& name) { return {name, 10, 20}; }

  KeptPicture picture(const FileState& state) {
    Picture made(zeb().buffers, kEdge, kEdge);
    made.pixels()[0] = static_cast<uint8_t>(state.path.back());
    return {state, std::move(made), 5ms};
  }

  void keep(PictureCache& cache, const std::string& name) {
    cache.find(file(name)).fill(picture(file(name)));
  }

  static bool holds(PictureCache& cache, const FileState& state) {
    return cache.find(state).picture() != nullptr;
  }
};

TEST_F(KeptPictures, AreFoundUnderTheStateOfTheirFile) {
  PictureCache cache(zeb().cache);
  keep(cache, "a");
  keep(cache, "b");
  const PictureCache::Place place = cache.find(file("a"));
  ASSERT_NE(place.picture(), nullptr);
  EXPECT_EQ(place.picture()->path, "a");
  EXPECT_EQ(place.picture()->picture.pixels()[0], 'a');
  EXPECT_EQ(place.picture()->made, 5ms);
  EXPECT_EQ(cache.lookups().hits, 1U);
  EXPECT_EQ(cache.lookups().misses, 2U);
}

TEST_F(KeptPictures, AreNotFoundForAFileThatHasChanged) {
  PictureCache cache(zeb().cache);
  keep(cache, "a");
  EXPECT_TRUE(holds(cache, {"a", 10, 20}));
  EXPECT_FALSE(holds(cache, {"a", 11, 20}));
  EXPECT_FALSE(holds(cache, {"a", 10, 21}));
  EXPECT_FALSE(holds(cache, {"b", 10, 20}));
}

TEST_F(KeptPictures, AreNotFoundInAnotherCache) {
  PictureCache cache(zeb().cache);
  PictureCache other(zeb().cache);
  keep(cache, "a");
  EXPECT_FALSE(holds(other, file("a")));
}

TEST_F(KeptPictures, GoWithTheirCache) {
  {
    PictureCache cache(zeb().cache);
    keep(cache, "a");
    EXPECT_GT(zeb().cache.CurrentCacheSize(), kSize);
  }
  EXPECT_EQ(zeb().cache.CurrentCacheSize(), 0);
}

TEST_F(KeptPictures, StayAsLongAsThereIsNoBudget) {
  PictureCache cache(zeb().cache);
  for (int i = 0; i < 100; ++i) keep(cache, std::to_string(i));
  EXPECT_EQ(cache.evictions(), 0U);
  EXPECT_GT(zeb().cache.CurrentCacheSize(), 100 * kSize);
}

TEST_F(KeptPictures, KeepToTheBudget) {
  PictureCache cache(zeb().cache);
  const Budget budget(zeb().cache, 10 * kSize);
  for (int i = 0; i < 100; ++i) {
    keep(cache, std::to_string(i));
    EXPECT_LE(zeb().cache.CurrentCacheSize(), 10 * kSize);
  }
  EXPECT_GE(cache.evictions(), 90U);
  EXPECT_LT(cache.evictions(), 100U);
}

TEST_F(KeptPictures, StayWhileTheyAreInUse) {
  PictureCache cache(zeb().cache);
  keep(cache, "in use");
  const PictureCache::Place place = cache.find(file("in use"));
  const Budget budget(zeb().cache, 1);
  for (int i = 0; i < 10; ++i) keep(cache, std::to_string(i));
  ASSERT_NE(place.picture(), nullptr);
  EXPECT_EQ(place.picture()->picture.pixels()[0], 'e');
  EXPECT_TRUE(holds(cache, file("in use")));
}

TEST_F(KeptPictures, TakeAPlaceThatSomebodyHasFilledMeanwhile) {
  PictureCache cache(zeb().cache);
  PictureCache::Place first = cache.find(file("a"));
  PictureCache::Place second = cache.find(file("a"));
  first.fill(picture(file("a")));
  second.fill(picture(file("a")));
  EXPECT_EQ(second.picture(), first.picture());
  const Budget budget(zeb().cache, 1);
  keep(cache, "b");
  EXPECT_EQ(second.picture()->picture.pixels()[0], 'a');
}

}  // namespace
}  // namespace examples
