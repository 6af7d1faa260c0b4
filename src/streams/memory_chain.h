// The bytes of a memory stream: a chain of blocks that grows at its end and never moves a byte.
//
// Blocks double from 256 bytes up to 65028; once a block has that size, all later ones have it,
// too. An index of these full-sized blocks stands beside the chain, so that a position is found by
// arithmetic. It begins with the eighth of them: shorter chains are walked. When there is no memory
// for it, the chain is walked from the last block that it knows.
//
// Only the one stream of a writable body changes the chain. Streams over a read-only body read it
// without a lock.
#ifndef ZEB_STREAMS_MEMORY_CHAIN_H
#define ZEB_STREAMS_MEMORY_CHAIN_H

#include <cstdint>

#include "memory/object_memory.h"
#include "streams/shared_stream.h"

namespace zeb::streams {

struct MemoryBlock {
  // What a block is allocated with beyond its data.
  static constexpr uint64_t kOverheadBytes = 24;

  uint64_t size;  // of the data
  MemoryBlock* next;

  [[nodiscard]] unsigned char* data() noexcept {
    return reinterpret_cast<unsigned char*>(this + 1);
  }
};

class MemorySharedStreamData final : public SharedStreamData {
 public:
  static constexpr uint64_t kLeastBlockBytes = 256;
  static constexpr uint64_t kMostBlockBytes = 65028;

  // A position in the chain. It may stand at a block's end, which is also the next one's beginning.
  struct Place {
    MemoryBlock* block = nullptr;  // null: the chain is empty
    uint64_t offset = 0;
  };

  MemorySharedStreamData() noexcept = default;
  ~MemorySharedStreamData() override;

  [[nodiscard]] uint64_t End() const noexcept override { return length_; }
  [[nodiscard]] bool IsValidPosition(uint64_t position) const noexcept override {
    return isReadOnly() ? position <= length_ : isBelowWrapping(position);
  }

  // Where a position is. An empty chain stays empty; any other is lengthened to a position past its
  // end. Unchanged, but for blocks without bytes, when memory is short.
  [[nodiscard]] Place placeOf(uint64_t position);
  // The same for a write: an empty chain is lengthened, too.
  [[nodiscard]] Place placeToWriteAt(uint64_t position);

  // The block after this one; at the tail, or when there is none at all, a new one with room for
  // `need` more bytes if a single block can have it.
  [[nodiscard]] MemoryBlock* blockAfter(MemoryBlock* block, uint64_t need) {
    MemoryBlock* next = block != nullptr ? block->next : head_;
    return next != nullptr ? next : append(need);
  }
  // Bytes have been written up to here.
  void coverTo(uint64_t position) noexcept {
    if (position > length_) length_ = position;
  }

 private:
  MemoryBlock* append(uint64_t need);
  void lengthenTo(uint64_t position);
  void growTo(uint64_t capacity);
  void clear(uint64_t position, uint64_t end) noexcept;
  [[nodiscard]] Place find(uint64_t position) const noexcept;
  void updateIndex() noexcept;
  [[nodiscard]] bool enlargeIndex() noexcept;

  MemoryBlock* head_ = nullptr;
  uint64_t length_ = 0;
  MemoryBlock* tail_ = nullptr;
  uint64_t capacity_ = 0;  // of all blocks

  uint64_t smallBytes_ = 0;           // of the blocks before the first full-sized one
  MemoryBlock* firstFull_ = nullptr;  // the first full-sized block
  uint64_t fullBlocks_ = 0;
  uint64_t indexed_ = 0;  // of them, in the index
  uint64_t indexCapacity_ = 0;
  ObjectMemory index_;
};

}  // namespace zeb::streams

#endif
