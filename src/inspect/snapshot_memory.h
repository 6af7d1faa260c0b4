// The memory of one snapshot: the block that the client sees, and blocks behind it that live as
// long.
//
// Each block begins with a link to the next one, so that the address of the first is all that it
// takes to free them all.
#ifndef ZEB_INSPECT_SNAPSHOT_MEMORY_H
#define ZEB_INSPECT_SNAPSHOT_MEMORY_H

#include <cstdint>
#include <utility>

namespace zeb::inspect {

class SnapshotMemory {
 public:
  // Raises what allocation raises.
  explicit SnapshotMemory(uint64_t size) : first_(makeBlock(size, nullptr)) {}
  SnapshotMemory(SnapshotMemory&& other) noexcept : first_(std::exchange(other.first_, nullptr)) {}
  SnapshotMemory(const SnapshotMemory&) = delete;
  SnapshotMemory& operator=(const SnapshotMemory&) = delete;
  ~SnapshotMemory() { freeFrom(first_); }

  // 16-byte aligned.
  [[nodiscard]] void* data() const noexcept { return first_ + 1; }

  // A further block. Raises what allocation raises.
  [[nodiscard]] void* addBlock(uint64_t size) {
    first_->next = makeBlock(size, first_->next);
    return first_->next + 1;
  }

  // Hands the first block's data out; free() ends it.
  [[nodiscard]] void* release() noexcept { return std::exchange(first_, nullptr) + 1; }

  // Null is ignored.
  static void free(void* data) noexcept {
    if (data != nullptr) freeFrom(static_cast<Block*>(data) - 1);
  }

 private:
  struct alignas(16) Block {
    Block* next;
  };

  static Block* makeBlock(uint64_t size, Block* next);
  static void freeFrom(Block* block) noexcept;

  Block* first_;
};

}  // namespace zeb::inspect

#endif
