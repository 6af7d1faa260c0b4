// A cache as somebody would write it with the standard library: an ordered map from keys to
// entries, compared by a client's procedure, a list in the order of use, one mutex around all of
// it.
#ifndef ZEB_BENCH_MAP_CACHE_H
#define ZEB_BENCH_MAP_CACHE_H

#include <cstdint>
#include <list>
#include <map>
#include <mutex>

#include "zeb/cache.h"

namespace zeb::bench {

class MapCache {
 public:
  // What it throws away when it is full.
  enum class Eviction {
    leastRecentlyUsed,
    leastPriority,  // cost by size and age, as the library computes it
  };

  struct Entry;

  struct Before {
    bool operator()(void* a, void* b) const { return compare(a, b) != 0; }
    ZEBCacheCompare compare;
  };
  using Map = std::map<void*, Entry*, Before>;

  struct Entry {
    void* data;
    uint64_t size;
    double cost;
    uint64_t time;  // of the last use
    uint32_t references;
    bool isFiled;
    ZEBCacheDelete end;
    float priority;
    std::list<Entry*>::iterator place;
    Map::iterator filedAt;
  };

  MapCache(ZEBCacheCompare compare, Eviction eviction)
      : eviction_(eviction), map_(Before{compare}) {}
  ~MapCache();
  MapCache(const MapCache&) = delete;
  MapCache& operator=(const MapCache&) = delete;

  // The entry of a key, used anew and with one reference more; null when there is none.
  Entry* find(void* key);

  // An entry with a reference: the one that has this key, else a new one that is filed under it.
  Entry* attach(void* data, uint64_t size, double cost, ZEBCacheDelete end);

  // A new entry with a reference that nobody will find.
  Entry* attachUnfiled(void* data, uint64_t size, double cost, ZEBCacheDelete end);

  // Gives a reference back. A filed entry stays, another one goes with the last.
  void release(Entry* entry);

  void remove(void* key);

  // Sorts the entries by priority, the dearest first; then `count` go from the other end.
  void purge(size_t count);

  uint64_t size() const { return total_; }
  size_t count() const { return order_.size(); }

 private:
  Entry* add(void* data, uint64_t size, double cost, ZEBCacheDelete end);
  void touch(Entry* entry);
  void unlink(Entry* entry);
  void sort();
  bool evictOne();
  void evictToLowWaterMark();

  Eviction eviction_;
  std::mutex mutex_;
  Map map_;
  std::list<Entry*> order_;  // the latest used first
  uint64_t clock_ = 0;
  uint64_t total_ = 0;
};

}  // namespace zeb::bench

#endif
