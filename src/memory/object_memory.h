// The one way to get memory for an object of the library: the host's object allocator set when
// there is one, else the process's allocator.
#ifndef ZEB_MEMORY_OBJECT_MEMORY_H
#define ZEB_MEMORY_OBJECT_MEMORY_H

#include <cstdint>
#include <new>
#include <utility>

#include "base/host_state.h"
#include "memory/allocator.h"

namespace zeb {

// Never null: exhaustion is raised.
[[nodiscard]] inline void* allocObject(uint64_t size) {
  if (hostState.objects.alloc == nullptr) return processAllocator.alloc(size);
  void* block = hostState.objects.alloc(size);
  if (block == nullptr) processAllocator.exhausted();
  return block;
}

// Frees through `hostFree`, or through the process's allocator when that is null. What a host's
// procedure throws is swallowed. Null is ignored.
void freeObjectThrough(ZEBObjFree hostFree, void* block) noexcept;

inline void freeObject(void* block) noexcept { freeObjectThrough(hostState.objects.free, block); }

// A raw block that is freed unless it is handed on.
class ObjectMemory {
 public:
  ObjectMemory() noexcept = default;
  explicit ObjectMemory(uint64_t size) : block_(allocObject(size)) {}
  ObjectMemory(ObjectMemory&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  ObjectMemory& operator=(ObjectMemory&& other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ObjectMemory(const ObjectMemory&) = delete;
  ObjectMemory& operator=(const ObjectMemory&) = delete;
  ~ObjectMemory() { freeObject(block_); }

  explicit operator bool() const noexcept { return block_ != nullptr; }
  [[nodiscard]] void* get() const noexcept { return block_; }
  [[nodiscard]] void* release() noexcept { return std::exchange(block_, nullptr); }

 private:
  void* block_ = nullptr;
};

// Makes an object in memory of its own; destroyObject ends it.
template <class T, class... Arguments>
[[nodiscard]] T* makeObject(Arguments&&... arguments) {
  ObjectMemory memory(sizeof(T));
  T* object = new (memory.get()) T(std::forward<Arguments>(arguments)...);
  (void)memory.release();
  return object;
}

template <class T>
void destroyObject(T* object) noexcept {
  if (object == nullptr) return;
  object->~T();
  freeObject(object);
}

// Owns an object of makeObject.
template <class T>
class ObjectHolder {
 public:
  explicit ObjectHolder(T* object) noexcept : object_(object) {}
  ObjectHolder(const ObjectHolder&) = delete;
  ObjectHolder& operator=(const ObjectHolder&) = delete;
  ~ObjectHolder() { destroyObject(object_); }

  [[nodiscard]] T* get() const noexcept { return object_; }
  [[nodiscard]] T* release() noexcept { return std::exchange(object_, nullptr); }

 private:
  T* object_;
};

}  // namespace zeb

#endif
