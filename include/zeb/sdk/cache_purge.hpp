// Emptying the cache: by hand, step by step, and what a module adds to it.
#ifndef ZEB_SDK_CACHE_PURGE_HPP
#define ZEB_SDK_CACHE_PURGE_HPP

#include "zeb/sdk/owner.hpp"

namespace zeb::sdk {

// The total size of all cached results of the process, in their makers' unit.
[[nodiscard]] inline int64_t cacheSize() { return procs<Cache>().CurrentCacheSize(); }

namespace detail {

struct PurgeEnding {
  using Handle = ZEBCachePurge;
  static void release(Handle* purge) noexcept {
    if (const auto* cache = tryProcs<Cache>()) cache->DeleteCachePurge(purge);
  }
};

}  // namespace detail

// A purge that the caller does step by step, between other work:
//
//   for (CachePurge purge = CachePurge::begin(); cacheSize() > budget && purge.step();) {}
//
// One goes on at a time in the process, until its object goes or is reset.
class CachePurge : public SoleOwner<detail::PurgeEnding> {
 public:
  // Sorts the results by what they are worth. When another purge goes on or memory is short there
  // is no purge, whose steps do nothing.
  [[nodiscard]] static CachePurge begin() {
    CachePurge purge;
    *purge.out() = procs<Cache>().NewCachePurge();
    return purge;
  }

  // Evicts one result, the least worth first, or passes one that is in use. False at the end.
  // NOLINTNEXTLINE(modernize-use-nodiscard): a caller may do a fixed number of steps
  bool step() { return procs<Cache>().PurgeNextBlock(get()) != 0; }
};

// On which threads the library may purge while a ClientPurge lives.
enum class PurgeThread : int32_t {
  caller = ZEB_CACHE_PURGE_ON_CALLER,  // the one that grew the cache
  any = ZEB_CACHE_PURGE_ON_ANY_THREAD  // one of the library's as well
};

// Empties a cache of the module's own whenever the library empties its static caches, as long as
// this object lives:
//
//   void forgetGlyphs() noexcept;
//   ClientPurge<&forgetGlyphs> purge;
//
// The function is called on any thread. When memory is short it is not added, and nobody is told.
template <void (*Empty)() noexcept>
class ClientPurge {
 public:
  // Adds the function.
  explicit ClientPurge(PurgeThread threads = PurgeThread::any) : threads_(threads) {
    procs<Cache>().AddClientPurge(&call, static_cast<int32_t>(threads_));
  }
  ClientPurge(const ClientPurge&) = delete;
  ClientPurge& operator=(const ClientPurge&) = delete;
  // Takes it away.
  ~ClientPurge() {
    if (const auto* cache = tryProcs<Cache>()) {
      cache->RemoveClientPurge(&call, static_cast<int32_t>(threads_));
    }
  }

 private:
  // The value belongs to whoever asked for the purge; it is passed on to the next client.
  static void* call(void* value) noexcept {
    Empty();
    return value;
  }

  const PurgeThread threads_;
};

}  // namespace zeb::sdk

#endif
