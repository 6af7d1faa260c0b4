// Cache identifiers, and one cached result of an object of yours:
//
//   class Picture {
//     ...
//     CachedValue<Bitmap> small_;  // made when it is asked for, and again after an eviction
//   };
//   const auto small = small_.get([&] { return CachedResult{scaled(), bytes}; });
//   draw(*small);
//
// Results that several objects find under a key are in cache.hpp.
#ifndef ZEB_SDK_CACHE_ID_HPP
#define ZEB_SDK_CACHE_ID_HPP

#include <concepts>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "zeb/sdk/owner.hpp"

namespace zeb::sdk {

// What a cached result has cost, as the library counts it.
struct CacheCost {
  uint32_t size = 0;  // in the unit of the cache's total; 0: there is no result
  int64_t cost = 0;   // the time it took to make, in the unit of the cache's time stamps
  uint32_t time = 0;  // when it was used last, in the cache's own count of uses
};

// A cache identifier: a result worth keeping, or the empty shell of one.
class CacheID : public Owner<detail::Counted<ZEBCacheID, Cache>> {
 public:
  // The owner that this is.
  using Base = Owner<detail::Counted<ZEBCacheID, Cache>>;

  // No identifier.
  CacheID() noexcept = default;
  // Takes a reference over.
  explicit CacheID(ZEBCacheID* owned) noexcept : Base(adopt(owned)) {}

  // An empty identifier, in no set. Throws std::bad_alloc.
  [[nodiscard]] static CacheID make() {
    CacheID id(procs<Cache>().NewCacheID());
    if (!id) throw std::bad_alloc();
    return id;
  }

  // A second owner of the identifier.
  [[nodiscard]] CacheID share() const { return CacheID(Base::share().handOver()); }

  // Nothing but zeros for an empty identifier.
  [[nodiscard]] CacheCost cost() const {
    CacheCost cost;
    procs<Cache>().ReturnCost(get(), &cost.size, &cost.cost, &cost.time);
    return cost;
  }
  // Adds to what the library takes the result for; nothing happens to an empty identifier.
  void addCost(int32_t size, int64_t cost) const { procs<Cache>().UpdateCost(get(), size, &cost); }
};

// What a maker returns: the value and its size, in the unit of the cache's total (bytes, usually).
template <class Value>
struct CachedResult {
  Value value;    // the result itself
  uint64_t size;  // 0 counts as 1
};
// Tells the kind of result by the value.
template <class Value>
CachedResult(Value, uint64_t) -> CachedResult<Value>;

// A function without arguments that makes a CachedResult<Value>.
template <class Make, class Value>
concept CacheMaker = std::convertible_to<std::invoke_result_t<Make&>, CachedResult<Value>>;

namespace detail {

// A pin holds a reference, and both go together.
struct PinEnding {
  using Handle = ZEBCacheID;
  static void release(Handle* id) noexcept {
    if (const auto* cache = tryProcs<Cache>()) cache->MarkPurge(id);
  }
};

}  // namespace detail

// A cached value that cannot be evicted as long as this object lives. After a move only the new one
// may be used.
template <class Value>
class Pinned {
 public:
  // The value.
  [[nodiscard]] const Value& operator*() const noexcept { return *value_; }
  // The value's members.
  [[nodiscard]] const Value* operator->() const noexcept { return value_; }

 private:
  template <class, class, class>
  friend class CacheSet;
  template <class>
  friend class CachedValue;
  Pinned(ZEBCacheID* id, const Value* value) noexcept : pin_(id), value_(value) {}

  SoleOwner<detail::PinEnding> pin_;
  const Value* value_;
};

// One cached result. Any thread may call get; makers run without a lock, and when two threads make
// the result at once, the first one's is kept by both. After a move only the new one may be used.
template <class Value>
class CachedValue {
 public:
  // Without a result yet. Throws std::bad_alloc.
  CachedValue() : id_(CacheID::make()) {}

  // The result; `make()` makes it when it is not there. What the maker throws passes through, and
  // nothing is kept then. Throws std::bad_alloc.
  template <CacheMaker<Value> Make>
  [[nodiscard]] Pinned<Value> get(Make make) {
    const auto& cache = procs<Cache>();
    uint64_t begin = 0;
    // Pinned first: whatever is attached from here on stays.
    Pinned<Value> pinned(id_.get(), nullptr);
    const void* data = cache.MarkNoPurge(id_.get(), &begin, 1);
    if (data == nullptr) data = attach(make(), begin);
    pinned.value_ = static_cast<const Value*>(data);
    return pinned;
  }

  // Whether there is a result at this moment. For looking without making.
  [[nodiscard]] bool exists() const { return id_.cost().size != 0; }

  // Forgets the result, because what it was made from has changed; one that is pinned lives on
  // until its Pinned ends. No other thread may be in a call of this object. Throws std::bad_alloc.
  void forget() { id_ = CacheID::make(); }

 private:
  const void* attach(CachedResult<Value> made, uint64_t begin) {
    auto value = std::make_unique<Value>(std::move(made.value));
    ZEBCacheID* id = id_.get();
    const void* kept =
        procs<Cache>().Attach(&id, value.get(), nullptr, made.size, &deleteValue, &begin);
    if (kept == nullptr) throw std::bad_alloc();
    if (kept == value.get()) (void)value.release();
    return kept;
  }

  static void deleteValue(void* value, int32_t /*survives*/) noexcept {
    delete static_cast<Value*>(value);
  }

  CacheID id_;
};

}  // namespace zeb::sdk

#endif
