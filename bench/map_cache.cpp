#include "map_cache.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace zeb::bench {

namespace {

float priorityOf(const MapCache::Entry& entry, uint64_t now) {
  const float value = static_cast<float>(entry.cost) / static_cast<float>(entry.size);
  const double age = std::max(1.0, static_cast<double>(now - entry.time));
  return value / (static_cast<float>(std::log(age)) + 1.0F);
}

}  // namespace

MapCache::~MapCache() {
  for (Entry* entry : order_) {
    entry->end(entry->data, 0);
    delete entry;
  }
}

MapCache::Entry* MapCache::find(void* key) {
  const std::lock_guard lock(mutex_);
  const auto found = map_.find(key);
  if (found == map_.end()) return nullptr;
  ++found->second->references;
  touch(found->second);
  return found->second;
}

MapCache::Entry* MapCache::attach(void* data, uint64_t size, double cost, ZEBCacheDelete end) {
  Entry* entry;
  {
    const std::lock_guard lock(mutex_);
    const auto [place, isNew] = map_.try_emplace(data, nullptr);
    if (!isNew) {
      ++place->second->references;
      return place->second;
    }
    entry = place->second = add(data, size, cost, end);
    entry->isFiled = true;
    entry->filedAt = place;
    if (total_ <= ZEB_CACHE_HIGH_WATER_MARK) return entry;
  }
  evictToLowWaterMark();
  return entry;
}

MapCache::Entry* MapCache::attachUnfiled(void* data, uint64_t size, double cost,
                                         ZEBCacheDelete end) {
  const std::lock_guard lock(mutex_);
  return add(data, size, cost, end);
}

MapCache::Entry* MapCache::add(void* data, uint64_t size, double cost, ZEBCacheDelete end) {
  auto* entry = new Entry{data, size, cost, ++clock_, 1, false, end, 0, {}, {}};
  entry->place = order_.insert(order_.begin(), entry);
  total_ += size;
  return entry;
}

void MapCache::touch(Entry* entry) {
  entry->time = ++clock_;
  order_.splice(order_.begin(), order_, entry->place);
}

void MapCache::unlink(Entry* entry) {
  order_.erase(entry->place);
  total_ -= entry->size;
}

void MapCache::release(Entry* entry) {
  {
    const std::lock_guard lock(mutex_);
    if (--entry->references || entry->isFiled) return;
    unlink(entry);
  }
  entry->end(entry->data, 0);
  delete entry;
}

void MapCache::remove(void* key) {
  Entry* entry;
  {
    const std::lock_guard lock(mutex_);
    const auto found = map_.find(key);
    if (found == map_.end()) return;
    entry = found->second;
    map_.erase(found);
    entry->isFiled = false;
    if (entry->references) return;
    unlink(entry);
  }
  entry->end(entry->data, 0);
  delete entry;
}

// Priorities are computed into an array, which is sorted and then orders the list.
void MapCache::sort() {
  const std::lock_guard lock(mutex_);
  std::vector<Entry*> entries(order_.begin(), order_.end());
  for (Entry* entry : entries) entry->priority = priorityOf(*entry, clock_);
  std::sort(entries.begin(), entries.end(),
            [](const Entry* a, const Entry* b) { return a->priority > b->priority; });
  for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry)
    order_.splice(order_.begin(), order_, (*entry)->place);
}

// From the list's end, the first that nobody holds.
bool MapCache::evictOne() {
  Entry* entry = nullptr;
  {
    const std::lock_guard lock(mutex_);
    for (auto place = order_.rbegin(); place != order_.rend() && !entry; ++place)
      if (!(*place)->references) entry = *place;
    if (!entry) return false;
    if (entry->isFiled) map_.erase(entry->filedAt);
    unlink(entry);
  }
  entry->end(entry->data, 0);
  delete entry;
  return true;
}

void MapCache::evictToLowWaterMark() {
  if (eviction_ == Eviction::leastPriority) sort();
  while (total_ > ZEB_CACHE_LOW_WATER_MARK && evictOne()) {
  }
}

void MapCache::purge(size_t count) {
  sort();
  for (size_t i = 0; i < count; ++i)
    if (!evictOne()) return;
}

}  // namespace zeb::bench
