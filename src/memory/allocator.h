// The library's own allocator.
//
// In direct mode a block is one malloc block with a 16-byte header that records the requested size,
// and a little slack behind the data. In pooled mode blocks come from a PooledHeap over the host's
// allocator pair. The mode is fixed when an allocator is made. The process's allocator is made when
// the library is loaded, when no host can have installed allocators yet, so direct mode is what
// runs; pooled mode is for allocators that are made with it.
//
// Exhaustion is never null: alloc and realloc raise "Out of Memory" or, outside an initialised
// library, where the error objects do not exist, throw a bare integer 0.
//
// Thread safety: any thread may call anything but setThrowsInteger and releasePages.
#ifndef ZEB_MEMORY_ALLOCATOR_H
#define ZEB_MEMORY_ALLOCATOR_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "base/host_state.h"
#include "memory/pooled_heap.h"
#include "util/checked_math.h"

class ZEBAllocator {
 public:
  enum class Mode : uint8_t { direct, pooled };

  static constexpr uint64_t kDirectHeaderBytes = 16;
  static constexpr float kSlackFraction = 0.05F;
  static constexpr uint64_t kLeastSlack = 16;
  static constexpr uint64_t kMostSlack = 200;

  // `pages` serves pooled mode alone; direct mode uses malloc and free whatever the host gave.
  explicit constexpr ZEBAllocator(Mode mode,
                                  const zeb::PageSource& pages = zeb::hostState.pages) noexcept
      : heap_(pages), mode_(mode) {}

  [[nodiscard]] void* alloc(uint64_t size) {
    void* block = mode_ == Mode::direct ? allocDirect(size) : heap_.alloc(size);
    if (block == nullptr) [[unlikely]]
      exhausted();
    return block;
  }
  // Always moves; null means alloc. On failure the old block is untouched.
  [[nodiscard]] void* realloc(void* block, uint64_t size);
  void free(void* block) noexcept {
    if (block == nullptr) return;
    if (mode_ == Mode::direct) {
      std::free(static_cast<DirectHeader*>(block) - 1);
    } else {
      freePooled(block);
    }
  }
  // 0 for null; in direct mode what was asked for, in pooled mode the block's own size.
  [[nodiscard]] uint64_t blockSize(const void* block) const noexcept;

  // Failing: raises "Out of Memory", or throws 0 while setThrowsInteger(true) holds.
  [[noreturn]] void exhausted() const;
  void setThrowsInteger(bool throws) noexcept { throwsInteger_ = throws; }

  void releasePages() noexcept;

  // Bytes that direct mode adds behind the data of a block of this size.
  [[nodiscard]] static uint64_t slackFor(uint64_t size) noexcept {
    if (size < kLeastSlackBelow) return kLeastSlack;
    if (size >= kMostSlackFrom) return kMostSlack;
    // Through 32 bits, which the processor converts in one step.
    const auto exact = kSlackFraction * static_cast<float>(static_cast<int32_t>(size));
    const auto slack = static_cast<uint64_t>(static_cast<int32_t>(exact));
    return std::clamp(slack, kLeastSlack, kMostSlack);
  }

 private:
  // The header before a direct block's data.
  struct DirectHeader {
    uint64_t requested;
    uint64_t reserved;
  };
  static_assert(sizeof(DirectHeader) == kDirectHeaderBytes);

  // From these sizes on the slack needs no arithmetic.
  static constexpr uint64_t kMostSlackFrom = 4000;
  static constexpr uint64_t kLeastSlackBelow = 320;
  // No block is larger than half of the address space; malloc need not be asked.
  static constexpr uint64_t kLargestDirect = ~uint64_t{0} / 2;

  // Null when there is no memory or the size cannot be represented.
  [[nodiscard]] static void* allocDirect(uint64_t size) noexcept {
    const auto bytes = zeb::checkedAdd(size, kDirectHeaderBytes + slackFor(size));
    if (!bytes || *bytes > kLargestDirect) return nullptr;
    auto* header = static_cast<DirectHeader*>(std::malloc(*bytes));
    if (header == nullptr) return nullptr;
    header->requested = size;
    return header + 1;
  }
  [[nodiscard]] static uint64_t directSize(const void* block) noexcept {
    return (static_cast<const DirectHeader*>(block) - 1)->requested;
  }
  void freePooled(void* block) noexcept;

  zeb::PooledHeap heap_;
  const Mode mode_;
  bool throwsInteger_ = true;
};

namespace zeb {
// Serves every object of the library and all client memory, unless the host brought its own procs.
extern constinit ZEBAllocator processAllocator;
}  // namespace zeb

#endif
