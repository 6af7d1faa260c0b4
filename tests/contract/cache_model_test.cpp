// The cache against a slow, obvious model of it: identifiers, sets, clock, totals, the order of
// purges and what is deleted when. One thread does random things to both; after each, everything
// that the procs can tell must agree.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "contract/cache_library.h"
#include "support/random.h"

namespace contract {
namespace {

using zeb_test::Random;

struct ModelSet;

struct ModelId {
  ZEBCacheID* real = nullptr;
  Result* data = nullptr;
  std::uint64_t size = 0;
  std::int64_t charged = 0;
  std::uint64_t time = 0;
  float cost = 0;
  int references = 1;
  int pins = 0;
  ModelSet* set = nullptr;
};

struct ModelSet {
  ZEBCacheSet* real = nullptr;
  std::map<int, ModelId*> filed;
};

// What the model expects of the client's results.
struct Expected {
  int evicted = 0;
  int gone = 0;
};

class Model {
 public:
  ModelId* make(ZEBCacheID* real) {
    ids.push_front(std::make_unique<ModelId>());
    ids.front()->real = real;
    return ids.front().get();
  }

  void touch(ModelId& id) {
    id.time = ++clock;
    const auto at = place(id);
    ids.splice(ids.begin(), ids, at);
  }

  void attach(ModelId& id, Result& data, std::uint64_t size, ModelSet* set) {
    id.data = &data;
    id.size = size == 0 ? 1 : size;
    id.cost = 0;
    touch(id);
    charge(id, id.size);
    id.set = set;
    if (set != nullptr) set->filed[data.key] = &id;
  }

  void charge(ModelId& id, std::uint64_t size) {
    const auto piece = static_cast<std::int32_t>(static_cast<std::uint32_t>(size));
    id.charged += piece;
    total += piece;
  }

  void release(ModelId& id) {
    if (--id.references == 0 && id.set == nullptr) destroy(id);
  }

  void destroy(ModelId& id) {
    total -= id.charged;
    if (id.data != nullptr) ++expected[id.data].gone;
    const auto at = place(id);
    if (cursor == &id) moveCursor(newerThan(at));
    ids.erase(at);
  }

  void unfile(ModelId& id) {
    id.set->filed.erase(id.data->key);
    id.set = nullptr;
    if (id.references == 0) destroy(id);
  }

  // --- Purging: the list is sorted by sorting it.

  static float priority(const ModelId& id, std::uint64_t clock) {
    if (id.size == 0) return std::numeric_limits<float>::max();
    const auto age = static_cast<float>(clock - id.time);
    const auto logarithm = static_cast<float>(std::log(std::max(1.0, static_cast<double>(age))));
    return (id.cost / static_cast<float>(id.size)) / (logarithm + 1);
  }

  void beginPurge() {
    ids.sort([this](const auto& a, const auto& b) {  // stable
      return priority(*a, clock) > priority(*b, clock);
    });
    cursor = ids.empty() ? nullptr : ids.back().get();
  }

  bool step() {
    while (cursor != nullptr && (cursor->pins != 0 || cursor->data == nullptr)) {
      moveCursor(newerThan(place(*cursor)));
    }
    if (cursor == nullptr) return false;
    ModelId& id = *cursor;
    if (id.set == nullptr) {
      ++expected[id.data].evicted;
      total -= id.charged;
      id.charged = 0;
      id.size = 0;
      id.data = nullptr;
    } else {
      moveCursor(newerThan(place(id)));
      if (id.references == 0) unfile(id);
    }
    return true;
  }

  std::list<std::unique_ptr<ModelId>> ids;  // the newest first
  std::uint64_t clock = 0;
  std::int64_t total = 0;
  ModelId* cursor = nullptr;
  std::map<Result*, Expected> expected;

 private:
  std::list<std::unique_ptr<ModelId>>::iterator place(const ModelId& id) {
    return std::find_if(ids.begin(), ids.end(), [&](const auto& it) { return it.get() == &id; });
  }
  ModelId* newerThan(std::list<std::unique_ptr<ModelId>>::iterator at) {
    return at == ids.begin() ? nullptr : std::prev(at)->get();
  }
  void moveCursor(ModelId* to) { cursor = to; }
};

class CacheModel : public CacheTest {
 protected:
  static constexpr int kKeys = 12;
  static constexpr std::size_t kMostHeld = 60;

  void Run(Random& random, int steps) {
    for (ModelSet& set : sets_) set.real = zeb_.NewSet();
    for (int step = 0; step < steps && !HasFailure(); ++step) {
      SCOPED_TRACE(testing::Message() << "step " << step);
      Act(random);
      Compare();
    }
    GiveEverythingBack();
  }

 private:
  void Act(Random& random) {
    switch (random.below(18)) {
      case 0:
      case 1:
        return Hold(*model_.make(cache_.NewCacheID()));
      case 2:
      case 3:
      case 4:
        return Attach(random, nullptr);
      case 5:
      case 6:
      case 7:
        return Attach(random, &sets_[random.below(2)]);
      case 8:
        return Grow(random);
      case 9:
        return Pin(random);
      case 10:
        return Unpin(random);
      case 11:
      case 12:
        return Release(random);
      case 13:
        return Search(random);
      case 14:
        return Remove(random);
      case 15:
        return random.oneIn(4) ? RemoveSelected(random) : AddReference(random);
      case 16:
        return random.oneIn(20) ? PurgeAll() : Begin(random);
      default:
        return Step();
    }
  }

  // The client's references, one entry each.
  void Hold(ModelId& id) { held_.push_back(&id); }
  ModelId* AnyHeld(Random& random) {
    return held_.empty() ? nullptr : held_[random.below(held_.size())];
  }
  Result& NewResult(Random& random) {
    results_.push_back(std::make_unique<Result>(static_cast<int>(random.below(kKeys))));
    return *results_.back();
  }
  static std::uint64_t AnySize(Random& random) {
    switch (random.below(10)) {
      case 0:
        return 0;
      case 1:
        return (random.any() & 0xFFFF00000000u) + random.below(100);
      default:
        return random.between(1, 2000);
    }
  }

  void Attach(Random& random, ModelSet* set) {
    const std::size_t at = held_.empty() ? 0 : random.below(held_.size());
    if (held_.empty()) return;
    ModelId& id = *held_[at];
    Result& data = NewResult(random);
    const std::uint64_t size = AnySize(random);
    ZEBCacheID* real = id.real;
    Result* answer = &data;
    ModelId* found = nullptr;
    if (set != nullptr && set->filed.contains(data.key)) found = set->filed[data.key];
    if (found != nullptr) {
      answer = found->data;
      ++found->references;
      held_[at] = found;
      model_.release(id);
    } else if (id.data != nullptr) {
      answer = id.data;
    } else {
      model_.attach(id, data, size, set);
    }
    ModelId* const after = held_[at];
    EXPECT_EQ(cache_.Attach(&real, &data, set != nullptr ? set->real : nullptr, size,
                            Result::Delete, nullptr),
              answer);
    EXPECT_EQ(real, after->real);
  }

  void Grow(Random& random) {
    ModelId* id = AnyHeld(random);
    if (id == nullptr) return;
    const std::uint64_t size = AnySize(random);
    const auto change = static_cast<std::int32_t>(random.below(2000)) - 1000;
    const auto cost = static_cast<std::int64_t>(random.below(1000000)) - 1000;
    cache_.Add(id->real, size, nullptr);
    cache_.UpdateCost(id->real, change, &cost);
    if (id->data == nullptr) return;
    id->size += size;
    model_.charge(*id, size);
    const auto extended = static_cast<std::uint64_t>(static_cast<std::int64_t>(change));
    id->size += extended;
    model_.charge(*id, extended);
    id->cost += static_cast<float>(cost);
  }

  void Pin(Random& random) {
    ModelId* id = AnyHeld(random);
    if (id == nullptr || pinned_.size() > 20) return;
    const bool touch = random.oneIn(2);
    ++id->references;
    ++id->pins;
    if (touch) model_.touch(*id);
    pinned_.push_back(id);
    EXPECT_EQ(
        touch ? cache_.MarkNoPurgeV1(id->real, nullptr) : cache_.MarkNoPurge(id->real, nullptr, 0),
        id->data);
  }

  void Unpin(Random& random) {
    if (pinned_.empty()) return;
    const std::size_t at = random.below(pinned_.size());
    ModelId* id = pinned_[at];
    pinned_.erase(pinned_.begin() + static_cast<std::ptrdiff_t>(at));
    cache_.MarkPurge(id->real);
    --id->pins;
    model_.release(*id);
  }

  void Release(Random& random) {
    if (held_.empty()) return;
    const std::size_t at = random.below(held_.size());
    ModelId* id = held_[at];
    held_.erase(held_.begin() + static_cast<std::ptrdiff_t>(at));
    cache_.Release(id->real);
    model_.release(*id);
  }

  void AddReference(Random& random) {
    ModelId* id = AnyHeld(random);
    if (id == nullptr || held_.size() > kMostHeld) return;
    cache_.AddRef(id->real);
    ++id->references;
    Hold(*id);
  }

  static ModelId* FindIn(ModelSet& set, int key, std::int32_t mode) {
    auto it = set.filed.lower_bound(key);
    const bool equal = it != set.filed.end() && it->first == key;
    if (equal) return it->second;
    if (mode == ZEB_CACHE_FIND_EQUAL) return nullptr;
    if (mode == ZEB_CACHE_FIND_AT_LEAST) return it == set.filed.end() ? nullptr : it->second;
    return it == set.filed.begin() ? nullptr : std::prev(it)->second;
  }

  void Search(Random& random) {
    ModelSet& set = sets_[random.below(2)];
    Result key(static_cast<int>(random.below(kKeys + 4)) - 2);
    const auto mode = static_cast<std::int32_t>(random.below(3));
    ZEBCacheID* real = cache_.SearchForID(set.real, &key, mode);
    ASSERT_NE(real, nullptr);
    if (ModelId* id = FindIn(set, key.key, mode)) {
      EXPECT_EQ(real, id->real);
      ++id->references;
      Hold(*id);
    } else {
      Hold(*model_.make(real));
    }
  }

  void Remove(Random& random) {
    ModelSet& set = sets_[random.below(2)];
    Result key(static_cast<int>(random.below(kKeys + 4)) - 2);
    const auto mode = static_cast<std::int32_t>(random.below(3));
    cache_.RemoveID(set.real, &key, mode);
    if (ModelId* id = FindIn(set, key.key, mode)) model_.unfile(*id);
  }

  void RemoveSelected(Random& random) {
    ModelSet& set = sets_[random.below(2)];
    int divisor = static_cast<int>(random.between(2, 4));
    cache_.RemoveIDs(set.real, &divisor, [](void* value, void* key) -> std::int32_t {
      return static_cast<Result*>(key)->key % *static_cast<int*>(value) == 0 ? 1 : 0;
    });
    for (int key = 0; key < kKeys; ++key) {
      const auto it = set.filed.find(key);
      if (it != set.filed.end() && key % divisor == 0) model_.unfile(*it->second);
    }
  }

  void Begin(Random& random) {
    if (purge_ != nullptr && (model_.cursor == nullptr || random.oneIn(3))) {
      cache_.DeleteCachePurge(purge_);
      purge_ = nullptr;
      model_.cursor = nullptr;
      return;
    }
    ZEBCachePurge* begun = cache_.NewCachePurge();
    EXPECT_EQ(begun == nullptr, model_.cursor != nullptr);
    if (begun == nullptr) return;
    cache_.DeleteCachePurge(purge_);
    purge_ = begun;
    model_.beginPurge();
  }

  void Step() { EXPECT_EQ(cache_.PurgeNextBlock(purge_), model_.step() ? 1 : 0); }

  void PurgeAll() {
    if (model_.cursor != nullptr) return;  // it would wait
    cache_.PurgeAll();
    model_.beginPurge();
    while (model_.step()) {
    }
  }

  void Compare() {
    ASSERT_EQ(zeb_.Total(), model_.total);
    for (const auto& result : results_) {
      const Expected& expected = model_.expected[result.get()];
      ASSERT_EQ(result->evicted, expected.evicted);
      ASSERT_EQ(result->gone, expected.gone);
    }
    for (const auto& id : model_.ids) {
      ASSERT_EQ(zeb_.DataOf(id->real), id->data);
      const ReturnedCost cost = zeb_.CostOf(id->real);
      ASSERT_EQ(cost.size, static_cast<std::uint32_t>(id->size));
      ASSERT_EQ(cost.cacheTime, static_cast<std::uint32_t>(id->time));
      ASSERT_EQ(cost.cost, static_cast<std::int64_t>(id->cost));
    }
    // What has come to its end need not be looked at for ever.
    if (results_.size() > 400) ForgetDeadResults();
  }

  void ForgetDeadResults() {
    std::map<const Result*, bool> alive;
    for (const auto& id : model_.ids) alive[id->data] = true;
    std::erase_if(results_, [&](const auto& result) {
      if (alive.contains(result.get())) return false;
      model_.expected.erase(result.get());
      return true;
    });
  }

  void GiveEverythingBack() {
    cache_.DeleteCachePurge(purge_);
    purge_ = nullptr;
    model_.cursor = nullptr;
    for (ModelId* id : pinned_) cache_.MarkPurge(id->real);
    for (ModelId* id : held_) cache_.Release(id->real);
    for (ModelSet& set : sets_) {
      cache_.DeleteCacheSet(set.real);
      set.filed.clear();
    }
    EXPECT_EQ(zeb_.Total(), 0);
    held_.clear();
    pinned_.clear();
    // The clock goes on.
    const std::uint64_t clock = model_.clock;
    model_ = Model();
    model_.clock = clock;
    results_.clear();
  }

  Model model_;
  ModelSet sets_[2];
  std::vector<ModelId*> held_;
  std::vector<ModelId*> pinned_;
  std::vector<std::unique_ptr<Result>> results_;
  ZEBCachePurge* purge_ = nullptr;
};

TEST_F(CacheModel, AgreesAfterEveryStep) {
  zeb_test::forEachSeed([&](Random& random) { Run(random, 8000); });
}

}  // namespace
}  // namespace contract
