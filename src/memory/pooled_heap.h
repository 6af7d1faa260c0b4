// The allocator's pooled mode: small blocks cut from pages, large blocks from the host.
//
// A page is one run of blocks that touch, ended by a header of size 0:
//
//     0        16         32                                  65056     65072
//     | unused | header 1 | data 1 | header 2 | data 2 | ... | end header |
//
// Two free blocks never touch: freeing merges. One empty page and one large block below 128 KiB are
// kept for the next request, so that a program that goes back and forth across a page border does
// not trouble the host each time. Sizes fit 16 bits, which keeps a header at 16 bytes; the marker
// that stands in a large block's size field is a size that no small block has.
//
// Thread safety: every operation takes the heap's lock. The host's page procedures are called under
// it; they must not call back into the heap.
#ifndef ZEB_MEMORY_POOLED_HEAP_H
#define ZEB_MEMORY_POOLED_HEAP_H

#include <atomic>
#include <cstdint>

#include "base/host_state.h"
#include "memory/free_blocks.h"
#include "platform/biased_lock.h"

namespace zeb {

class PooledHeap {
 public:
  static constexpr uint64_t kPageBytes = 65072;
  static constexpr uint16_t kLargestSmall = 65024;
  static constexpr uint16_t kSmallestBlock = 48;
  static constexpr uint16_t kHeaderBytes = 16;
  static constexpr uint16_t kLeastRemainder = 64;  // what a split must leave, header included
  static constexpr uint16_t kLargeMarker = 65025;
  static constexpr uint64_t kLargeHeaderBytes = 32;
  static constexpr uint64_t kNeverSpare = 131072;  // large blocks from here on are not kept

  explicit constexpr PooledHeap(const PageSource& source) noexcept : source_(source) {}
  PooledHeap(const PooledHeap&) = delete;
  PooledHeap& operator=(const PooledHeap&) = delete;

  // Null when the host has no memory or the size cannot be represented. 16-byte aligned.
  [[nodiscard]] void* alloc(uint64_t size);
  void free(void* data);
  // The block's own size: what was asked for, rounded up, or the size of the reused block.
  [[nodiscard]] static uint64_t blockSize(const void* data) noexcept;

  // Gives the spare page and the spare large block back and forgets every free block.
  void releasePages();

  // Bytes held from the host by all heaps, pages and large blocks; and that number as the last
  // allocation found it.
  [[nodiscard]] static uint32_t heldBytes() noexcept {
    return held_.load(std::memory_order_relaxed);
  }
  [[nodiscard]] static uint32_t heldBytesSnapshot() noexcept {
    return heldSnapshot_.load(std::memory_order_relaxed);
  }

 private:
  struct LargeHeader;

  void* allocSmall(uint16_t rounded, bool& openedPage) ZEB_REQUIRES(lock_);
  void* allocLarge(uint64_t size) ZEB_REQUIRES(lock_);
  FreeBlock* openPage(bool& openedPage) ZEB_REQUIRES(lock_);
  void splitOff(FreeBlock* block, uint16_t keep) ZEB_REQUIRES(lock_);
  void freeSmall(FreeBlock* block) ZEB_REQUIRES(lock_);
  void freeLarge(LargeHeader* block) ZEB_REQUIRES(lock_);
  void giveBackLarge(LargeHeader* block) const;
  void freePage(void* page) ZEB_REQUIRES(lock_);
  void giveBackPage(void* page) const;

  static void hold(uint64_t bytes) noexcept;
  static void unhold(uint64_t bytes) noexcept;

  const PageSource& source_;
  BiasedLock lock_{500};
  FreeBlocks freeBlocks_ ZEB_GUARDED_BY(lock_);
  LargeHeader* spareLarge_ ZEB_GUARDED_BY(lock_) = nullptr;
  void* sparePage_ ZEB_GUARDED_BY(lock_) = nullptr;

  static constinit std::atomic<uint32_t> held_;
  static constinit std::atomic<uint32_t> heldSnapshot_;
};

}  // namespace zeb

#endif
