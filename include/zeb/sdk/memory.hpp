// Memory that modules may hand to each other.
//
//   std::vector<int, Allocator<int>> numbers;   // its block may be freed by any other module
//   Block text = Block::make(100);              // bytes with one owner
//
// When the host brought its own memory procedures, all of this is the host's memory.
#ifndef ZEB_SDK_MEMORY_HPP
#define ZEB_SDK_MEMORY_HPP

#include <cstddef>
#include <limits>
#include <new>
#include <span>

#include "zeb/sdk/owner.hpp"

namespace zeb::sdk {

namespace detail {

struct BlockEnding {
  using Handle = void;
  static void release(Handle* block) noexcept {
    if (const auto* memory = tryProcs<Memory>()) memory->Free(block);
  }
};

}  // namespace detail

// A block of memory and its only owner, aligned to 16 bytes. What is handed over is to be freed by
// ZEBMemoryInterface.
class Block : public SoleOwner<detail::BlockEnding> {
 public:
  // No block, or one that the caller owns, whichever module has allocated it.
  using SoleOwner::SoleOwner;

  // At least `size` bytes, undefined; 0 is a size as any other. Throws std::bad_alloc.
  [[nodiscard]] static Block make(uint64_t size) {
    Block block(procs<Memory>().Alloc(size));
    if (!block) throw std::bad_alloc();
    return block;
  }

  // Changes the size; the block moves, and what fits stays in it. Throws std::bad_alloc, and the
  // block is then as it was.
  void resize(uint64_t size) {
    void* moved = procs<Memory>().Realloc(get(), size);
    if (moved == nullptr) throw std::bad_alloc();
    (void)handOver();
    *out() = moved;
  }

  // The whole block: at least as many bytes as were asked for. Empty for no block.
  [[nodiscard]] std::span<std::byte> bytes() const {
    return {static_cast<std::byte*>(get()), procs<Memory>().GetBlockSize(get())};
  }
};

// For the containers of the standard library. Any two are equal: what one has allocated another
// frees, in another module as well.
template <class T>
class Allocator {
 public:
  static_assert(alignof(T) <= 16, "the library aligns its blocks to 16 bytes");
  // What is allocated.
  using value_type = T;

  // Needs the library only when it allocates.
  constexpr Allocator() noexcept = default;
  // One for T in place of one for U.
  template <class U>
  // NOLINTNEXTLINE(google-explicit-constructor): containers convert their allocator silently
  constexpr Allocator(const Allocator<U>& /*other*/) noexcept {}

  // Room for so many T. Throws std::bad_alloc.
  [[nodiscard]] T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
      throw std::bad_array_new_length();
    }
    return static_cast<T*>(Block::make(count * sizeof(T)).handOver());
  }
  // Frees what any Allocator has allocated.
  void deallocate(T* block, std::size_t /*count*/) noexcept { Block(block).reset(); }

  // Always.
  template <class U>
  friend constexpr bool operator==(const Allocator& /*a*/, const Allocator<U>& /*b*/) noexcept {
    return true;
  }
};

}  // namespace zeb::sdk

#endif
