// The cache with 10,000 entries under keys of 16 bytes.
//
// find + pin + unpin  an entry is found, held against eviction, read and given back
// miss                no entry has the key. Ours answers with an empty identifier, which goes
// again. attach + release    a new entry without a key comes and goes file + remove       a new
// entry under a key comes, is given back, found by its key and removed file at the mark    a new
// entry under a key, 250 units large, comes into a cache that holds as
//                     much as it may, 2,000,000 units, and evicts a quarter of them when it holds
//                     more. A time is that of one entry with its share of evictions, all of which
//                     end their data.
//
// The peer that the goals speak of is what somebody would write with the standard library
// (map_cache.h); at the mark it evicts by the same priority. Beside it: the same that evicts the
// least recently used, and caches of databases, which find by hashes.
#include <cstring>
#include <memory>

#include "cache_host.h"
#include "map_cache.h"
#include "rows.h"
#include "sequences.h"

#ifdef BENCH_HAS_LEVELDB
#include <leveldb/cache.h>
#endif
#ifdef BENCH_HAS_ROCKSDB
#include <rocksdb/cache.h>
#endif

namespace zeb::bench {

namespace {

constexpr const char* kArea = "cache";
constexpr const char* kMapCache = "std::map + list + std::mutex";
constexpr const char* kLruMapCache = "the same, least recently used";
constexpr size_t kMaximumThreads = 2;
constexpr size_t kOthers = 1 << 16;
constexpr uint64_t kUnit = 1;
constexpr uint64_t kLargeSize = 250;
constexpr int64_t kLowestCost = 1;
constexpr int64_t kHighestCost = 8;

// How much the large entries are that fill a cache up to its mark.
constexpr size_t kAtMark = ZEB_CACHE_HIGH_WATER_MARK / kLargeSize;
static_assert(kAtMark <= ZEB_CACHE_SORT_LIMIT);

// The keys of all contenders of a row. Pointers in a random order, one order for each thread.
struct Keys {
  Keys() : live(makeCacheData(kCacheEntries, 1)), others(makeCacheData(kOthers, 2)) {
    for (size_t thread = 0; thread < kMaximumThreads; ++thread) {
      for (const uint32_t i : randomNumbers(kOthers, kCacheEntries, 11 + thread))
        findOrder[thread].push_back(&live[i]);
      for (const uint32_t i : randomNumbers(kOthers, kOthers, 21 + thread))
        missOrder[thread].push_back(&others[i]);
    }
    Random random(31);
    std::uniform_int_distribution<int64_t> cost(kLowestCost, kHighestCost);
    for (CacheData& data : others) priced.push_back({&data, cost(random)});
  }

  struct Priced {
    CacheData* data;
    int64_t cost;
  };

  std::vector<CacheData> live;
  std::vector<CacheData> others;
  std::array<std::vector<CacheData*>, kMaximumThreads> findOrder;
  std::array<std::vector<CacheData*>, kMaximumThreads> missOrder;
  std::vector<Priced> priced;
};

// What a row needs: the keys, and whether the live ones are in the caches or large ones fill them.
struct Setting {
  Shared<Keys> keys{[] { return std::make_unique<Keys>(); }};
  bool isAtMark = false;
};

// Calls `file` with each entry that is there from the beginning.
template <class File>
void fill(const Setting& setting, File file) {
  if (setting.isAtMark) {
    for (size_t i = kOthers - kAtMark; i < kOthers; ++i) {
      const Keys::Priced& priced = setting.keys.get().priced[i];
      file(*priced.data, kLargeSize, priced.cost);
    }
  } else {
    for (CacheData& data : setting.keys.get().live) file(data, kUnit, int64_t{1});
  }
}

// The data is used: its key is read.
void use(const void* data) { benchmark::DoNotOptimize(*static_cast<const unsigned char*>(data)); }

// --- ours -------------------------------------------------------------------------------------

class OurCache {
 public:
  explicit OurCache(const Setting& setting) : keys_(setting.keys) {
    fill(setting,
         [this](CacheData& data, uint64_t size, int64_t cost) { host_.file(data, size, cost); });
    checkAnswers(setting);
  }

  auto find(size_t thread) {
    return [procs = host_.procs(), set = host_.set(),
            walk = Cycle(keys_.get().findOrder[thread])]() mutable {
      ZEBCacheID* id = procs.SearchForID(set, walk.next(), ZEB_CACHE_FIND_EQUAL);
      use(procs.MarkNoPurge(id, nullptr, 1));
      procs.MarkPurge(id);
      procs.Release(id);
    };
  }

  auto miss(size_t thread) {
    return [procs = host_.procs(), set = host_.set(),
            walk = Cycle(keys_.get().missOrder[thread])]() mutable {
      ZEBCacheID* id = procs.SearchForID(set, walk.next(), ZEB_CACHE_FIND_EQUAL);
      benchmark::DoNotOptimize(id);
      procs.Release(id);
    };
  }

  auto attachRelease() {
    return [procs = host_.procs(), walk = Cycle(keys_.get().missOrder[0])]() mutable {
      ZEBCacheID* id = procs.NewCacheID();
      benchmark::DoNotOptimize(
          procs.Attach(&id, walk.next(), nullptr, kUnit, countDeleted, nullptr));
      procs.Release(id);
    };
  }

  auto fileRemove() {
    return [procs = host_.procs(), set = host_.set(),
            walk = Cycle(keys_.get().missOrder[0])]() mutable {
      CacheData* data = walk.next();
      ZEBCacheID* id = procs.NewCacheID();
      benchmark::DoNotOptimize(procs.Attach(&id, data, set, kUnit, countDeleted, nullptr));
      procs.Release(id);
      procs.RemoveID(set, data, ZEB_CACHE_FIND_EQUAL);
    };
  }

  auto fileAtMark() {
    return [procs = host_.procs(), set = host_.set(), walk = Cycle(keys_.get().priced)]() mutable {
      const Keys::Priced& priced = walk.next();
      ZEBCacheID* id = procs.NewCacheID();
      benchmark::DoNotOptimize(
          procs.Attach(&id, priced.data, set, kLargeSize, countDeleted, nullptr));
      procs.UpdateCost(id, 0, &priced.cost);
      procs.Release(id);
    };
  }

 private:
  void checkAnswers(const Setting& setting) {
    const ZEBCacheProcs& procs = host_.procs();
    const int64_t size = procs.CurrentCacheSize();
    if (setting.isAtMark) {
      check(size == ZEB_CACHE_HIGH_WATER_MARK, "the cache does not hold what its mark allows");
      fileAtMark()();
      check(procs.CurrentCacheSize() <= ZEB_CACHE_LOW_WATER_MARK,
            "the cache does not purge above its mark");
      return;
    }
    check(size == static_cast<int64_t>(kCacheEntries), "the cache does not hold what was attached");
    for (CacheData& data : keys_.get().live) {
      ZEBCacheID* id = procs.SearchForID(host_.set(), &data, ZEB_CACHE_FIND_EQUAL);
      check(procs.MarkNoPurge(id, nullptr, 1) == &data, "the cache does not find its entries");
      procs.MarkPurge(id);
      procs.Release(id);
    }
    ZEBCacheID* id =
        procs.SearchForID(host_.set(), keys_.get().others.data(), ZEB_CACHE_FIND_EQUAL);
    check(!procs.MarkNoPurge(id, nullptr, 0), "the cache finds what it does not hold");
    procs.MarkPurge(id);
    procs.Release(id);
    const uint64_t before = deletedTimes();
    attachRelease()();
    fileRemove()();
    check(deletedTimes() == before + 2, "the cache does not end what goes");
    check(procs.CurrentCacheSize() == size, "the cache holds what has gone");
  }

  Shared<Keys> keys_;
  CacheHost host_;
};

// --- std::map ---------------------------------------------------------------------------------

template <MapCache::Eviction eviction>
class StandardCache {
 public:
  explicit StandardCache(const Setting& setting)
      : keys_(setting.keys), cache_(opaque(ordersBefore), eviction) {
    fill(setting, [this](CacheData& data, uint64_t size, int64_t cost) {
      cache_.release(cache_.attach(&data, size, static_cast<double>(cost), countDeleted));
    });
    checkAnswers(setting);
  }

  auto find(size_t thread) {
    return [this, walk = Cycle(keys_.get().findOrder[thread])]() mutable {
      MapCache::Entry* entry = cache_.find(walk.next());
      use(entry->data);
      cache_.release(entry);
    };
  }

  auto miss(size_t thread) {
    return [this, walk = Cycle(keys_.get().missOrder[thread])]() mutable {
      benchmark::DoNotOptimize(cache_.find(walk.next()));
    };
  }

  auto attachRelease() {
    return [this, walk = Cycle(keys_.get().missOrder[0])]() mutable {
      cache_.release(cache_.attachUnfiled(walk.next(), kUnit, 0, countDeleted));
    };
  }

  auto fileRemove() {
    return [this, walk = Cycle(keys_.get().missOrder[0])]() mutable {
      CacheData* data = walk.next();
      cache_.release(cache_.attach(data, kUnit, 0, countDeleted));
      cache_.remove(data);
    };
  }

  auto fileAtMark() {
    return [this, walk = Cycle(keys_.get().priced)]() mutable {
      const Keys::Priced& priced = walk.next();
      cache_.release(
          cache_.attach(priced.data, kLargeSize, static_cast<double>(priced.cost), countDeleted));
    };
  }

 private:
  void checkAnswers(const Setting& setting) {
    if (setting.isAtMark) {
      fileAtMark()();
      check(cache_.size() == ZEB_CACHE_LOW_WATER_MARK, "the map does not purge above the mark");
      return;
    }
    for (CacheData& data : keys_.get().live) {
      MapCache::Entry* entry = cache_.find(&data);
      check(entry && entry->data == &data, "the map does not find its entries");
      cache_.release(entry);
    }
    check(!cache_.find(keys_.get().others.data()), "the map finds what it does not hold");
    const uint64_t before = deletedTimes();
    attachRelease()();
    fileRemove()();
    check(deletedTimes() == before + 2, "the map does not end what goes");
    check(cache_.count() == kCacheEntries, "the map holds what has gone");
  }

  Shared<Keys> keys_;
  MapCache cache_;
};

using PriorityMapCache = StandardCache<MapCache::Eviction::leastPriority>;
using LruMapCache = StandardCache<MapCache::Eviction::leastRecentlyUsed>;

// --- caches of databases ----------------------------------------------------------------------

#if defined(BENCH_HAS_LEVELDB) || defined(BENCH_HAS_ROCKSDB)
// `Adapter` has find, release, file and remove for its cache's handles.
template <class Adapter>
class DatabaseCache {
 public:
  explicit DatabaseCache(const Setting& setting) : keys_(setting.keys) {
    fill(setting, [this](CacheData& data, uint64_t size, int64_t) {
      cache_.release(cache_.file(data, size));
    });
    if (!setting.isAtMark) checkAnswers();
  }

  auto find(size_t thread) {
    return [this, walk = Cycle(keys_.get().findOrder[thread])]() mutable {
      auto* handle = cache_.find(*walk.next());
      use(cache_.value(handle));
      cache_.release(handle);
    };
  }

  auto miss(size_t thread) {
    return [this, walk = Cycle(keys_.get().missOrder[thread])]() mutable {
      benchmark::DoNotOptimize(cache_.find(*walk.next()));
    };
  }

  auto fileRemove() {
    return [this, walk = Cycle(keys_.get().missOrder[0])]() mutable {
      CacheData* data = walk.next();
      cache_.release(cache_.file(*data, kUnit));
      cache_.remove(*data);
    };
  }

  auto fileAtMark() {
    return [this, walk = Cycle(keys_.get().priced)]() mutable {
      cache_.release(cache_.file(*walk.next().data, kLargeSize));
    };
  }

 private:
  void checkAnswers() {
    for (CacheData& data : keys_.get().live) {
      auto* handle = cache_.find(data);
      check(handle && cache_.value(handle) == &data, "a database's cache loses its entries");
      cache_.release(handle);
    }
    check(!cache_.find(keys_.get().others.front()),
          "a database's cache finds what it does not hold");
  }

  Shared<Keys> keys_;
  Adapter cache_;
};
#endif

#ifdef BENCH_HAS_LEVELDB
class LevelDb {
 public:
  using Handle = leveldb::Cache::Handle;

  Handle* find(const CacheData& data) { return cache_->Lookup(slice(data)); }
  void* value(Handle* handle) { return cache_->Value(handle); }
  void release(Handle* handle) { cache_->Release(handle); }
  Handle* file(CacheData& data, size_t size) {
    return cache_->Insert(slice(data), &data, size, end);
  }
  void remove(const CacheData& data) { cache_->Erase(slice(data)); }

 private:
  static leveldb::Slice slice(const CacheData& data) {
    return {reinterpret_cast<const char*>(data.key.data()), data.key.size()};
  }
  static void end(const leveldb::Slice&, void* data) { countDeleted(data, 0); }

  std::unique_ptr<leveldb::Cache> cache_{leveldb::NewLRUCache(ZEB_CACHE_HIGH_WATER_MARK)};
};
#endif

#ifdef BENCH_HAS_ROCKSDB
class RocksDb {
 public:
  using Handle = rocksdb::Cache::Handle;

  Handle* find(const CacheData& data) { return cache_->Lookup(slice(data)); }
  void* value(Handle* handle) { return cache_->Value(handle); }
  void release(Handle* handle) { cache_->Release(handle); }
  Handle* file(CacheData& data, size_t size) {
    Handle* handle = nullptr;
    check(cache_->Insert(slice(data), &data, size, end, &handle).ok(), "RocksDB refuses an entry");
    return handle;
  }
  void remove(const CacheData& data) { cache_->Erase(slice(data)); }

 private:
  static rocksdb::Slice slice(const CacheData& data) {
    return {reinterpret_cast<const char*>(data.key.data()), data.key.size()};
  }
  static void end(const rocksdb::Slice&, void* data) { countDeleted(data, 0); }

  std::shared_ptr<rocksdb::Cache> cache_ = [] {
    rocksdb::LRUCacheOptions options;
    options.capacity = ZEB_CACHE_HIGH_WATER_MARK;
    options.metadata_charge_policy = rocksdb::kDontChargeCacheMetadata;
    return rocksdb::NewLRUCache(options);
  }();
};
#endif

// --- rows -------------------------------------------------------------------------------------

// A side whose operation `makeOperation` gets from the contender, which is made when the row is
// prepared and stays for the row.
template <class Contender, class MakeOperation>
Side sideOf(Row& row, const char* name, const Setting& setting, MakeOperation makeOperation) {
  const Shared<Contender> contender([=] { return std::make_unique<Contender>(setting); });
  row.prepare = [others = row.prepare, contender] {
    if (others) others();
    contender.get();
  };
  return measure(name, [=](size_t thread) { return makeOperation(contender.get(), thread); });
}

template <class MakeOperation>
void addDatabaseSides([[maybe_unused]] Row& row, [[maybe_unused]] const Setting& setting,
                      [[maybe_unused]] MakeOperation makeOperation) {
#ifdef BENCH_HAS_LEVELDB
  row.peers.push_back(
      sideOf<DatabaseCache<LevelDb>>(row, "leveldb::NewLRUCache", setting, makeOperation));
#endif
#ifdef BENCH_HAS_ROCKSDB
  row.peers.push_back(
      sideOf<DatabaseCache<RocksDb>>(row, "rocksdb::NewLRUCache", setting, makeOperation));
#endif
}

template <class MakeOperation>
Row cacheRow(std::string name, int threads, const Setting& setting, MakeOperation makeOperation) {
  Row row{
      .area = kArea, .name = std::move(name), .threads = threads, .goal = Goal{1.0, {kMapCache}}};
  row.ours = sideOf<OurCache>(row, "ours", setting, makeOperation);
  row.peers = {sideOf<PriorityMapCache>(row, kMapCache, setting, makeOperation)};
  return row;
}

Row findRow(int threads) {
  const auto find = [](auto& cache, size_t thread) { return cache.find(thread); };
  const Setting setting;
  Row row = cacheRow("find + pin + unpin 1 of 10,000", threads, setting, find);
  addDatabaseSides(row, setting, find);
  return row;
}

Row missRow(int threads) {
  const auto miss = [](auto& cache, size_t thread) { return cache.miss(thread); };
  const Setting setting;
  Row row = cacheRow("miss among 10,000", threads, setting, miss);
  addDatabaseSides(row, setting, miss);
  return row;
}

Row attachRow() {
  return cacheRow("attach + release, unfiled", 1, {},
                  [](auto& cache, size_t) { return cache.attachRelease(); });
}

Row fileRow() {
  const auto file = [](auto& cache, size_t) { return cache.fileRemove(); };
  const Setting setting;
  Row row = cacheRow("file + release + remove", 1, setting, file);
  addDatabaseSides(row, setting, file);
  return row;
}

Row atMarkRow() {
  const auto file = [](auto& cache, size_t) { return cache.fileAtMark(); };
  const Setting setting{.isAtMark = true};
  Row row = cacheRow("file at the mark, with evictions", 1, setting, file);
  row.peers.push_back(sideOf<LruMapCache>(row, kLruMapCache, setting, file));
  addDatabaseSides(row, setting, file);
  return row;
}

}  // namespace

void addCacheRows(Rows& rows) {
  for (const int threads : {1, 2}) {
    rows.push_back(findRow(threads));
    rows.push_back(missRow(threads));
  }
  rows.push_back(attachRow());
  rows.push_back(fileRow());
  rows.push_back(atMarkRow());
}

}  // namespace zeb::bench
