// Cached results, in one call:
//
//   CacheSet<std::string, Picture> pictures;
//   auto picture = pictures.get(path, [&] { return CachedResult{decode(path), bytes}; });
//   draw(*picture);
//
// The result is made when nobody has made it yet, or when it was evicted since; the time that takes
// is its cost, by which the library decides what to evict first. While a Pinned lives, its result
// stays. One result that belongs to one object is a CachedValue (cache_id.hpp).
#ifndef ZEB_SDK_CACHE_HPP
#define ZEB_SDK_CACHE_HPP

#include <functional>
#include <memory>
#include <new>
#include <type_traits>

#include "zeb/sdk/cache_id.hpp"

namespace zeb::sdk {

namespace detail {

struct CacheSetCounting {
  using Handle = ZEBCacheSet;
  static void addReference(Handle* handle) { sdk::procs<Cache>().AddRefCacheSet(handle); }
  static void release(Handle* handle) noexcept {
    if (const auto* cache = tryProcs<Cache>()) cache->DeleteCacheSet(handle);
  }
};

}  // namespace detail

// Results of one kind under keys. Any thread may call anything; makers run without a lock, and when
// two threads make the same result at once, the first one's is kept by both. After a move only the
// new set may be used. Less must not throw. What is pinned lives on when its set goes, until its
// Pinned ends.
template <class Key, class Value, class Less = std::less<Key>>
class CacheSet : private Owner<detail::CacheSetCounting> {
 public:
  // The owner that this is.
  using Base = Owner<detail::CacheSetCounting>;

  static_assert(std::is_empty_v<Less> && std::is_default_constructible_v<Less>,
                "the order is called by a C procedure, which has no room for an object");

  // An empty set. Throws std::bad_alloc.
  CacheSet() : Base(Base::share(procs<Cache>().NewCacheSet(&isBefore))) {
    if (get() == nullptr) throw std::bad_alloc();
  }

  // For calls of procs.
  using Base::get;
  // A second owner of the same set.
  [[nodiscard]] CacheSet share() const { return CacheSet(Base::share()); }

  // The result under the key; `make()` makes it when it is not there. What the maker throws passes
  // through, and nothing is kept then. Throws std::bad_alloc.
  template <CacheMaker<Value> Make>
  [[nodiscard]] Pinned<Value> get(const Key& key, Make make) {
    const auto& cache = procs<Cache>();
    for (;;) {
      ZEBCacheID* id = cache.SearchForID(get(), keyOf(key), ZEB_CACHE_FIND_EQUAL);
      if (id == nullptr) throw std::bad_alloc();
      uint64_t begin = 0;
      void* data = cache.MarkNoPurge(id, &begin, 1);
      cache.Release(id);  // the pin keeps it
      Pinned<Value> pinned(id, valueOf(data));
      if (data != nullptr) return pinned;

      std::unique_ptr<Entry> entry = makeEntry(key, make);
      const uint64_t size = entry->size;
      // The reference that this call may exchange for one to somebody else's result.
      cache.AddRef(id);
      ZEBCacheID* filed = id;
      data = cache.Attach(&filed, &entry->key, get(), size, &deleteEntry, &begin);
      if (data == &entry->key) {
        pinned.value_ = &entry.release()->value;
        cache.Release(filed);
        return pinned;
      }
      if (data == nullptr) {
        cache.Release(filed);
        throw std::bad_alloc();
      }
      // Somebody was faster. Pinning can still find that the result has been evicted already.
      const void* theirs = cache.MarkNoPurge(filed, nullptr, 1);
      cache.Release(filed);
      Pinned<Value> other(filed, valueOf(theirs));
      if (theirs != nullptr) return other;
    }
  }

  // Whether the result under the key is there; nothing is made.
  [[nodiscard]] bool contains(const Key& key) {
    const auto& cache = procs<Cache>();
    ZEBCacheID* id = cache.SearchForID(get(), keyOf(key), ZEB_CACHE_FIND_EQUAL);
    if (id == nullptr) return false;
    uint32_t size = 0;
    int64_t cost = 0;
    uint32_t time = 0;
    cache.ReturnCost(id, &size, &cost, &time);
    cache.Release(id);
    return size != 0;
  }

  // Forgets the result under the key; one that is pinned lives on until its Pinned ends.
  void remove(const Key& key) { procs<Cache>().RemoveID(get(), keyOf(key), ZEB_CACHE_FIND_EQUAL); }

 private:
  explicit CacheSet(Base base) noexcept : Base(std::move(base)) {}

  // The key leads: the library knows an entry by the address of its key.
  struct Entry {
    Key key;
    Value value;
    uint64_t size;
  };

  // The library compares keys only and changes none.
  static void* keyOf(const Key& key) noexcept {
    return const_cast<Key*>(&key);  // NOLINT(cppcoreguidelines-pro-type-const-cast): as said
  }

  static const Value* valueOf(const void* key) noexcept {
    return key != nullptr ? &static_cast<const Entry*>(key)->value : nullptr;
  }

  template <class Make>
  static std::unique_ptr<Entry> makeEntry(const Key& key, Make& make) {
    CachedResult<Value> made = make();
    return std::unique_ptr<Entry>(new Entry{key, std::move(made.value), made.size});
  }

  static int32_t isBefore(void* a, void* b) noexcept {
    return Less{}(*static_cast<const Key*>(a), *static_cast<const Key*>(b)) ? 1 : 0;
  }

  static void deleteEntry(void* key, int32_t /*survives*/) noexcept {
    delete static_cast<Entry*>(key);
  }
};

}  // namespace zeb::sdk

#endif
