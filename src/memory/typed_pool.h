// A pool for objects of one type.
#ifndef ZEB_MEMORY_TYPED_POOL_H
#define ZEB_MEMORY_TYPED_POOL_H

#include <new>
#include <utility>

#include "memory/object_pool.h"

namespace zeb {

// `ObjectBytes` is the room that a slot has for the object.
template <class T, uint64_t ObjectBytes, uint32_t SlotsPerPage>
class TypedPool {
 public:
  static_assert(sizeof(T) <= ObjectBytes && alignof(T) <= 8);

  explicit constexpr TypedPool(const ZEB_T_MT::CZEBEventCounter& pageMiss) noexcept
      : pool_(SlotsPerPage, ObjectPool::kLinkBytes + ObjectBytes, pageMiss) {}

  // Raises "Out of Memory".
  template <class... Arguments>
  [[nodiscard]] T* make(Arguments&&... arguments) {
    return new (pool_.take()) T(std::forward<Arguments>(arguments)...);
  }

  void destroy(T* object) noexcept {
    object->~T();
    pool_.giveBack(object);
  }

  [[nodiscard]] uint64_t live() noexcept { return pool_.taken(); }

 private:
  ObjectPool pool_;
};

}  // namespace zeb

#endif
