// A pool of equal objects of 96 bytes, 16 to a page.
//
// one at a time  take and give back while 40 objects are live, so that no page comes or goes
// LIFO 64 deep   take 64, give them back the last first, over the same 40: pages come and go, as
//                ours gives an empty page back at once
//
// boost::object_pool keeps its free list in the order of addresses and so suits LIFO only; it and
// boost::pool need a lock to be shared by threads, as ours has one. A time is that of one taking
// and one giving back. Each object's first word is written.
#include <array>
#include <cstdlib>
#include <mutex>

#include "base/library_counters.h"
#include "memory/object_pool.h"
#include "rows.h"

#ifdef BENCH_HAS_BOOST
#include <boost/pool/object_pool.hpp>
#include <boost/pool/pool.hpp>
#endif

namespace zeb::bench {

namespace {

constexpr size_t kObjectBytes = 96;
constexpr uint32_t kObjectsPerPage = 16;
constexpr size_t kLiveObjects = 40;
constexpr size_t kLifoDepth = 64;

struct Object {
  std::array<uint64_t, kObjectBytes / sizeof(uint64_t)> words;
};

// A pool is anything with `void* Take()` and `void GiveBack(void*)`.

class OurPool {
 public:
  void* take() { return pool_.take(); }
  void giveBack(void* object) { pool_.giveBack(object); }

 private:
  ObjectPool pool_{kObjectsPerPage, ObjectPool::kLinkBytes + kObjectBytes,
                   counters::containerPageMiss};
};

struct Malloc {
  void* take() { return std::malloc(kObjectBytes); }
  void giveBack(void* object) { std::free(object); }
};

#ifdef BENCH_HAS_BOOST
class BoostPool {
 public:
  void* take() {
    const std::lock_guard lock(mutex_);
    return pool_.malloc();
  }

  void giveBack(void* object) {
    const std::lock_guard lock(mutex_);
    pool_.free(object);
  }

 private:
  std::mutex mutex_;
  boost::pool<> pool_{kObjectBytes, kObjectsPerPage};
};

class BoostObjectPool {
 public:
  void* take() {
    const std::lock_guard lock(mutex_);
    return pool_.malloc();
  }

  void giveBack(void* object) {
    const std::lock_guard lock(mutex_);
    pool_.free(static_cast<Object*>(object));
  }

 private:
  std::mutex mutex_;
  boost::object_pool<Object> pool_{kObjectsPerPage};
};
#endif

void use(void* object) {
  static_cast<Object*>(object)->words[0] = 1;
  benchmark::DoNotOptimize(object);
}

// A pool with some objects out for as long as it lives.
template <class Pool>
class PoolInUse {
 public:
  PoolInUse() {
    for (void*& object : live_) object = pool_.take();
    for (size_t i = 0; i < live_.size(); ++i) tag(live_[i]) = i;
    for (size_t i = 0; i < live_.size(); ++i) check(tag(live_[i]) == i, "two live objects overlap");
  }

  ~PoolInUse() {
    for (void* object : live_) pool_.giveBack(object);
  }

  Pool& get() { return pool_; }

 private:
  static uint64_t& tag(void* object) { return static_cast<Object*>(object)->words.back(); }

  Pool pool_;
  std::array<void*, kLiveObjects> live_;
};

template <class Pool>
auto takeAndGiveBack(Pool* pool) {
  return [pool] {
    void* object = pool->take();
    use(object);
    pool->giveBack(object);
  };
}

template <class Pool>
auto takeAndGiveBackMany(Pool* pool) {
  return [pool, taken = std::array<void*, kLifoDepth>{}]() mutable {
    for (void*& object : taken) {
      object = pool->take();
      use(object);
    }
    for (size_t i = taken.size(); i-- > 0;) pool->giveBack(taken[i]);
  };
}

template <class Pool>
Side poolSide(std::string name, bool lifo) {
  const Shared<PoolInUse<Pool>> pool([] { return std::make_unique<PoolInUse<Pool>>(); });
  if (lifo)
    return measure(std::move(name),
                   [pool](size_t) { return takeAndGiveBackMany(&pool.get().get()); });
  return measure(std::move(name), [pool](size_t) { return takeAndGiveBack(&pool.get().get()); });
}

Row poolRow(std::string name, bool lifo, int threads, std::optional<Goal> goal) {
  Row row{.area = "object pool",
          .name = std::move(name),
          .threads = threads,
          .operations = lifo ? static_cast<int>(kLifoDepth) : 1,
          .goal = std::move(goal)};
  row.ours = poolSide<OurPool>("ours", lifo);
#ifdef BENCH_HAS_BOOST
  row.peers.push_back(poolSide<BoostObjectPool>("boost::object_pool + std::mutex", lifo));
  row.peers.push_back(poolSide<BoostPool>("boost::pool + std::mutex", lifo));
#endif
  row.peers.push_back(poolSide<Malloc>("glibc malloc", lifo));
  return row;
}

}  // namespace

void addPoolRows(Rows& rows) {
  for (const int threads : {1, 2}) {
    const auto goal = threads == 1 ? std::optional(Goal{1.0}) : std::nullopt;
    rows.push_back(poolRow("take + give back: one at a time, 40 live", false, threads, goal));
    rows.push_back(poolRow("take + give back: LIFO 64 deep, 40 live", true, threads, goal));
  }
}

}  // namespace zeb::bench
