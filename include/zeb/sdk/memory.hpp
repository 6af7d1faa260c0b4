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
#include <utility>

#include "zeb/sdk/binding.hpp"

namespace zeb::sdk {

// A block of memory and its only owner, aligned to 16 bytes.
class Block {
 public:
  // No block.
  Block() noexcept = default;
  // Takes over a block that the caller owns, whichever module has allocated it.
  explicit Block(void* owned) noexcept : block_(owned) {}
  // Leaves the other one without a block.
  Block(Block&& other) noexcept : block_(other.handOver()) {}
  // Frees what was owned before.
  Block& operator=(Block&& other) noexcept {
    Block(std::move(other)).swap(*this);
    return *this;
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { reset(); }

  // At least `size` bytes, undefined; 0 is a size as any other. Throws std::bad_alloc.
  [[nodiscard]] static Block make(uint64_t size) {
    Block block(procs<Memory>().Alloc(size));
    if (!block) throw std::bad_alloc();
    return block;
  }

  // Changes the size; the block moves, and what fits stays in it. Throws std::bad_alloc, and the
  // block is then as it was.
  void resize(uint64_t size) {
    void* moved = procs<Memory>().Realloc(block_, size);
    if (moved == nullptr) throw std::bad_alloc();
    block_ = moved;
  }

  // Still this owner's; null for no block.
  [[nodiscard]] void* get() const noexcept { return block_; }
  // The whole block: at least as many bytes as were asked for. Empty for no block.
  [[nodiscard]] std::span<std::byte> bytes() const {
    return {static_cast<std::byte*>(block_), procs<Memory>().GetBlockSize(block_)};
  }
  // The caller's from now on, to be freed by ZEBMemoryInterface.
  [[nodiscard]] void* handOver() noexcept { return std::exchange(block_, nullptr); }
  // Whether there is a block.
  explicit operator bool() const noexcept { return block_ != nullptr; }

  // Frees the block.
  void reset() noexcept {
    if (block_ == nullptr) return;
    if (const auto* memory = tryProcs<Memory>()) memory->Free(block_);
    block_ = nullptr;
  }
  // Exchanges the blocks.
  void swap(Block& other) noexcept { std::swap(block_, other.block_); }

 private:
  void* block_ = nullptr;
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
