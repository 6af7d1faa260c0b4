// The policies written for comparison differ in what makes an object worth keeping; all of them
// evict the least worth first.
#include "policies.h"

#include <set>
#include <tuple>

#include "../check.h"

namespace zeb::bench {

namespace {

// What worth is computed from.
struct Usage {
  uint64_t time;       // of the last request
  uint64_t frequency;  // requests since it came in
  double inflation;    // the worth of what was evicted last
};

using Worth = double (*)(const Item& item, const Usage& usage);

double lruWorth(const Item&, const Usage& usage) { return static_cast<double>(usage.time); }
double lfuWorth(const Item&, const Usage& usage) { return static_cast<double>(usage.frequency); }

// Greedy dual size with frequency: worth ages as that of what is evicted rises.
double gdsfWorth(const Item& item, const Usage& usage) {
  return usage.inflation + static_cast<double>(usage.frequency) * static_cast<double>(item.cost) /
                               static_cast<double>(item.size);
}

enum class Eviction { toFit, toLowWaterMark };

class WorthCache : public Cache {
 public:
  WorthCache(const std::vector<Item>& items, Worth worth, Eviction eviction)
      : items_(items), worth_(worth), eviction_(eviction), entries_(items.size()) {}

  bool request(uint32_t object) override {
    const bool hit = entries_[object].frequency != 0;
    if (hit) {
      order_.erase(placeOf(object));
    } else {
      if (items_[object].size > kBudget) return false;
      if (eviction_ == Eviction::toFit) evictTo(kBudget - items_[object].size);
      used_ += items_[object].size;
    }
    touch(object);
    if (eviction_ == Eviction::toLowWaterMark && used_ > kBudget) evictTo(kLowWaterMark);
    return hit;
  }

 private:
  struct Entry {
    uint64_t frequency = 0;  // 0: not here
    uint64_t time = 0;
    double worth = 0;
  };

  using Place = std::tuple<double, uint64_t, uint32_t>;  // worth, last request, object

  Place placeOf(uint32_t object) const {
    return {entries_[object].worth, entries_[object].time, object};
  }

  void touch(uint32_t object) {
    Entry& entry = entries_[object];
    entry.frequency += 1;
    entry.time = ++clock_;
    entry.worth = worth_(items_[object], {entry.time, entry.frequency, inflation_});
    order_.insert(placeOf(object));
  }

  void evictTo(uint64_t most) {
    while (used_ > most) {
      const uint32_t object = std::get<2>(*order_.begin());
      order_.erase(order_.begin());
      inflation_ = entries_[object].worth;
      used_ -= items_[object].size;
      entries_[object] = {};
    }
  }

  const std::vector<Item>& items_;
  Worth worth_;
  Eviction eviction_;
  std::vector<Entry> entries_;
  std::set<Place> order_;
  uint64_t used_ = 0;
  uint64_t clock_ = 0;
  double inflation_ = 0;
};

Policy policy(std::string name, Worth worth, Eviction eviction = Eviction::toFit) {
  return {std::move(name), [=](const std::vector<Item>& items) {
            return std::make_unique<WorthCache>(items, worth, eviction);
          }};
}

// Objects 0 to 3, of which three fit: who is gone after the requests?
void checkEvicted(const char* name, Worth worth, const std::vector<Item>& items,
                  const std::vector<uint32_t>& requests, uint32_t gone) {
  for (uint32_t object = 0; object < items.size(); ++object) {
    WorthCache cache(items, worth, Eviction::toFit);
    for (const uint32_t request : requests) cache.request(request);
    check(cache.request(object) == (object != gone), std::string(name) + " evicts another object");
  }
}

}  // namespace

std::vector<Policy> allPolicies() {
  return {{"libzeb", makeLibraryCache},
          policy("LRU", lruWorth),
          policy("LRU, same marks", lruWorth, Eviction::toLowWaterMark),
          policy("LFU", lfuWorth),
          policy("GDSF", gdsfWorth)};
}

void checkPolicies() {
  constexpr uint64_t third = kBudget / 3;
  const std::vector<Item> equal(4, {third, 10});
  checkEvicted("LRU", lruWorth, equal, {0, 1, 2, 0, 3}, 1);
  checkEvicted("LFU", lfuWorth, equal, {0, 0, 1, 2, 2, 1, 1, 0, 0, 3}, 2);
  const std::vector<Item> dearer = {{third, 30}, {third, 20}, {third, 10}, {third, 40}};
  checkEvicted("GDSF", gdsfWorth, dearer, {0, 1, 2, 2, 2, 3}, 1);
}

}  // namespace zeb::bench
