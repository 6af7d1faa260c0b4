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

constexpr size_t objectBytes = 96;
constexpr uint32_t objectsPerPage = 16;
constexpr size_t liveObjects = 40;
constexpr size_t lifoDepth = 64;

struct Object {
  std::array<uint64_t, objectBytes / sizeof(uint64_t)> words;
};

// A pool is anything with `void* Take()` and `void GiveBack(void*)`.

class OurPool {
 public:
  void* Take() { return pool_.take(); }
  void GiveBack(void* object) { pool_.giveBack(object); }

 private:
  ObjectPool pool_{objectsPerPage, ObjectPool::kLinkBytes + objectBytes,
                   counters::containerPageMiss};
};

struct Malloc {
  void* Take() { return std::malloc(objectBytes); }
  void GiveBack(void* object) { std::free(object); }
};

#ifdef BENCH_HAS_BOOST
class BoostPool {
 public:
  void* Take() {
    const std::lock_guard lock(mutex_);
    return pool_.malloc();
  }

  void GiveBack(void* object) {
    const std::lock_guard lock(mutex_);
    pool_.free(object);
  }

 private:
  std::mutex mutex_;
  boost::pool<> pool_{objectBytes, objectsPerPage};
};

class BoostObjectPool {
 public:
  void* Take() {
    const std::lock_guard lock(mutex_);
    return pool_.malloc();
  }

  void GiveBack(void* object) {
    const std::lock_guard lock(mutex_);
    pool_.free(static_cast<Object*>(object));
  }

 private:
  std::mutex mutex_;
  boost::object_pool<Object> pool_{objectsPerPage};
};
#endif

void Use(void* object) {
  static_cast<Object*>(object)->words[0] = 1;
  benchmark::DoNotOptimize(object);
}

// A pool with some objects out for as long as it lives.
template <class Pool>
class PoolInUse {
 public:
  PoolInUse() {
    for (void*& object : live_) object = pool_.Take();
    for (size_t i = 0; i < live_.size(); ++i) Tag(live_[i]) = i;
    for (size_t i = 0; i < live_.size(); ++i) Check(Tag(live_[i]) == i, "two live objects overlap");
  }

  ~PoolInUse() {
    for (void* object : live_) pool_.GiveBack(object);
  }

  Pool& Get() { return pool_; }

 private:
  static uint64_t& Tag(void* object) { return static_cast<Object*>(object)->words.back(); }

  Pool pool_;
  std::array<void*, liveObjects> live_;
};

template <class Pool>
auto OneAtATime(Pool* pool) {
  return [pool] {
    void* object = pool->Take();
    Use(object);
    pool->GiveBack(object);
  };
}

template <class Pool>
auto Lifo(Pool* pool) {
  return [pool, taken = std::array<void*, lifoDepth>{}]() mutable {
    for (void*& object : taken) {
      object = pool->Take();
      Use(object);
    }
    for (size_t i = taken.size(); i-- > 0;) pool->GiveBack(taken[i]);
  };
}

template <class Pool>
Side PoolSide(std::string name, bool lifo) {
  const Shared<PoolInUse<Pool>> pool([] { return std::make_unique<PoolInUse<Pool>>(); });
  if (lifo) return Measure(std::move(name), [pool](size_t) { return Lifo(&pool.Get().Get()); });
  return Measure(std::move(name), [pool](size_t) { return OneAtATime(&pool.Get().Get()); });
}

Row PoolRow(std::string name, bool lifo) {
  Row row{.area = "object pool",
          .name = std::move(name),
          .operations = lifo ? static_cast<int>(lifoDepth) : 1,
          .goal = Goal{1.0}};
  row.ours = PoolSide<OurPool>("ours", lifo);
#ifdef BENCH_HAS_BOOST
  row.peers.push_back(PoolSide<BoostObjectPool>("boost::object_pool + std::mutex", lifo));
  row.peers.push_back(PoolSide<BoostPool>("boost::pool + std::mutex", lifo));
#endif
  row.peers.push_back(PoolSide<Malloc>("glibc malloc", lifo));
  return row;
}

}  // namespace

void AddPoolRows(Rows& rows) {
  rows.push_back(PoolRow("take + give back: one at a time, 40 live", false));
  rows.push_back(PoolRow("take + give back: LIFO 64 deep, 40 live", true));
}

}  // namespace zeb::bench
