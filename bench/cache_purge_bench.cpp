// Purging the cache.
//
// sort + evict half  10,000 filed entries of different sizes, costs and ages are sorted by priority
//                    and 5,000 of them evicted, step by step. The peer keeps its entries in a map
//                    and a list (map_cache.h) and does the same.
// longest step       the longest time that others must wait for the cache while a purge begins and
//                    takes its first 10,000 steps. Each of these calls takes the cache's lock once,
//                    so the time of the longest call is at least that of the longest hold. Ours
//                    with a million identifiers, beside ours with as many as are sorted, and with
//                    one more, which is too many to be sorted.
#include <algorithm>
#include <chrono>
#include <memory>

#include "cache_host.h"
#include "map_cache.h"
#include "rows.h"
#include "sequences.h"

namespace zeb::bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kArea = "cache purge";
constexpr size_t kEvicted = kCacheEntries / 2;

double secondsSince(Clock::time_point begin) {
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

// --- sort + evict half ------------------------------------------------------------------------

struct Priced {
  CacheData* data;
  uint64_t size;
  int64_t cost;
};

struct Entries {
  Entries() : data(makeCacheData(kCacheEntries, 3)) {
    constexpr uint64_t largest = 100;  // all together stay below the mark
    constexpr int64_t dearest = 1000;
    Random random(41);
    std::uniform_int_distribution<uint64_t> size(1, largest);
    std::uniform_int_distribution<int64_t> cost(1, dearest);
    for (CacheData& each : data) priced.push_back({&each, size(random), cost(random)});
  }

  std::vector<CacheData> data;
  std::vector<Priced> priced;
};

auto purgeOurs(const Entries& entries) {
  return [&entries, host = std::make_unique<CacheHost>()] {
    const ZEBCacheProcs& procs = host->procs();
    for (const Priced& priced : entries.priced) host->file(*priced.data, priced.size, priced.cost);
    const uint64_t before = deletedTimes();

    const Clock::time_point begin = Clock::now();
    ZEBCachePurge* purge = procs.NewCachePurge();
    for (size_t i = 0; i < kEvicted; ++i) benchmark::DoNotOptimize(procs.PurgeNextBlock(purge));
    procs.DeleteCachePurge(purge);
    const double seconds = secondsSince(begin);

    check(deletedTimes() == before + kEvicted, "a purge does not evict half");
    procs.PurgeAll();
    check(procs.CurrentCacheSize() == 0, "a purge of everything leaves something");
    return seconds;
  };
}

auto purgeMap(const Entries& entries) {
  return [&entries, cache = std::make_unique<MapCache>(opaque(ordersBefore),
                                                       MapCache::Eviction::leastPriority)] {
    for (const Priced& priced : entries.priced)
      cache->release(
          cache->attach(priced.data, priced.size, static_cast<double>(priced.cost), countDeleted));

    const Clock::time_point begin = Clock::now();
    cache->purge(kEvicted);
    const double seconds = secondsSince(begin);

    check(cache->count() == kCacheEntries - kEvicted, "the map does not evict half");
    cache->purge(kEvicted);
    return seconds;
  };
}

// Which entries a purge of half leaves, by their numbers.
std::vector<bool> leftByOurs(const Entries& entries) {
  const CacheHost host;
  const ZEBCacheProcs& procs = host.procs();
  for (const Priced& priced : entries.priced) host.file(*priced.data, priced.size, priced.cost);
  ZEBCachePurge* purge = procs.NewCachePurge();
  for (size_t i = 0; i < kEvicted; ++i) procs.PurgeNextBlock(purge);
  procs.DeleteCachePurge(purge);

  std::vector<bool> left;
  for (const Priced& priced : entries.priced) {
    ZEBCacheID* id = procs.SearchForID(host.set(), priced.data, ZEB_CACHE_FIND_EQUAL);
    left.push_back(procs.MarkNoPurge(id, nullptr, 0) != nullptr);
    procs.MarkPurge(id);
    procs.Release(id);
  }
  return left;
}

std::vector<bool> leftByMap(const Entries& entries) {
  MapCache cache(ordersBefore, MapCache::Eviction::leastPriority);
  for (const Priced& priced : entries.priced)
    cache.release(
        cache.attach(priced.data, priced.size, static_cast<double>(priced.cost), countDeleted));
  cache.purge(kEvicted);

  std::vector<bool> left;
  for (const Priced& priced : entries.priced) {
    MapCache::Entry* entry = cache.find(priced.data);
    left.push_back(entry != nullptr);
    if (entry) cache.release(entry);
  }
  return left;
}

Row purgeRow() {
  const Shared<Entries> entries([] { return std::make_unique<Entries>(); });
  Row row{.area = kArea,
          .name = "sort 10,000, evict half",
          .unit = "us",
          .manualTime = true,
          .goal = Goal{1.1}};
  row.prepare = [=] {
    check(leftByOurs(entries.get()) == leftByMap(entries.get()),
          "the map evicts others than the cache");
  };
  row.ours = measureManually("ours", [=] { return purgeOurs(entries.get()); });
  row.peers.push_back(measureManually("std::map + list + std::mutex, std::sort",
                                      [=] { return purgeMap(entries.get()); }));
  return row;
}

// --- longest step -----------------------------------------------------------------------------

constexpr size_t kSteps = 10'000;

template <class Call>
void takeTime(double& longest, Call call) {
  const Clock::time_point begin = Clock::now();
  call();
  longest = std::max(longest, secondsSince(begin));
}

double longestStep(size_t identifiers) {
  const CacheHost host;
  const ZEBCacheProcs& procs = host.procs();
  std::vector<CacheData> data = makeCacheData(identifiers, 4);
  for (CacheData& each : data) host.file(each, 1);
  const uint64_t before = deletedTimes();

  double longest = 0;
  ZEBCachePurge* purge = nullptr;
  takeTime(longest, [&] { purge = procs.NewCachePurge(); });
  for (size_t i = 0; i < kSteps; ++i)
    takeTime(longest, [&] { benchmark::DoNotOptimize(procs.PurgeNextBlock(purge)); });
  takeTime(longest, [&] { procs.DeleteCachePurge(purge); });
  check(deletedTimes() == before + kSteps, "a purge does not evict with each step");
  return longest;
}

Side longestStepSide(const char* name, size_t identifiers) {
  return measureManually(name, [=] { return [=] { return longestStep(identifiers); }; });
}

Row longestStepRow() {
  constexpr size_t many = 1'000'000;
  constexpr const char* sorted = "10,000";
  Row row{.area = kArea,
          .name = "longest step with 1,000,000 identifiers, beside fewer",
          .unit = "us",
          .manualTime = true,
          .turns = 1,
          .goal = Goal{1.0, {sorted}}};
  row.ours = longestStepSide("ours", many);
  row.peers = {longestStepSide(sorted, ZEB_CACHE_SORT_LIMIT),
               longestStepSide("10,001", ZEB_CACHE_SORT_LIMIT + 1)};
  return row;
}

}  // namespace

void addCachePurgeRows(Rows& rows) {
  rows.push_back(purgeRow());
  rows.push_back(longestStepRow());
}

}  // namespace zeb::bench
