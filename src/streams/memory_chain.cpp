#include "streams/memory_chain.h"

#include <algorithm>
#include <cstring>

#include "base/checked_size.h"

namespace zeb::streams {

namespace {

constexpr uint64_t kIndexedFrom = 8;  // full-sized blocks
constexpr uint64_t kLeastIndexCapacity = 64;

// A position so far away is first asked for in one piece, which the system refuses when it could
// never have it. Block by block the process would take what there is before it found out.
constexpr uint64_t kDoubtfulGrowth = uint64_t{1} << 28;

uint64_t doubled(uint64_t size) { return sizeOfMany(size, 2); }

}  // namespace

MemorySharedStreamData::~MemorySharedStreamData() {
  while (MemoryBlock* block = head_) {
    head_ = block->next;
    freeObject(block);
  }
}

MemorySharedStreamData::Place MemorySharedStreamData::placeOf(uint64_t position) {
  return head_ != nullptr ? placeToWriteAt(position) : Place{};
}

MemorySharedStreamData::Place MemorySharedStreamData::placeToWriteAt(uint64_t position) {
  if (position > length_) lengthenTo(position);
  return find(position);
}

MemoryBlock* MemorySharedStreamData::append(uint64_t need) {
  const uint64_t current = tail_ != nullptr ? tail_->size : 0;
  const uint64_t wanted = std::max({doubled(need), doubled(current), kLeastBlockBytes});
  const uint64_t size = std::min(wanted, kMostBlockBytes);
  auto* block = new (allocObject(size + MemoryBlock::kOverheadBytes))
      MemoryBlock{.size = size, .next = nullptr};
  (tail_ != nullptr ? tail_->next : head_) = block;
  tail_ = block;
  capacity_ += size;
  if (size < kMostBlockBytes) {
    smallBytes_ += size;
  } else {
    if (firstFull_ == nullptr) firstFull_ = block;
    ++fullBlocks_;
    updateIndex();
  }
  return block;
}

// The bytes in between read as zero.
void MemorySharedStreamData::lengthenTo(uint64_t position) {
  growTo(position);
  clear(length_, position);
  length_ = position;
}

void MemorySharedStreamData::growTo(uint64_t capacity) {
  if (capacity <= capacity_) return;
  if (capacity - capacity_ >= kDoubtfulGrowth) const ObjectMemory probe(capacity - capacity_);
  while (capacity_ < capacity) (void)append(0);
}

void MemorySharedStreamData::clear(uint64_t position, uint64_t end) noexcept {
  Place place = find(position);
  for (uint64_t left = end - position; left > 0; place = {place.block->next, 0}) {
    const uint64_t part = std::min(left, place.block->size - place.offset);
    std::memset(place.block->data() + place.offset, 0, part);
    left -= part;
  }
}

MemorySharedStreamData::Place MemorySharedStreamData::find(uint64_t position) const noexcept {
  MemoryBlock* block = head_;
  uint64_t start = 0;
  if (position > smallBytes_ && indexed_ > 0) {
    const uint64_t wanted = (position - smallBytes_ - 1) / kMostBlockBytes;
    const uint64_t known = std::min(wanted, indexed_ - 1);
    block = static_cast<MemoryBlock**>(index_.get())[known];
    start = smallBytes_ + known * kMostBlockBytes;
  }
  while (block != nullptr && start + block->size < position) {
    start += block->size;
    block = block->next;
  }
  return {block, position - start};
}

void MemorySharedStreamData::updateIndex() noexcept {
  if (fullBlocks_ < kIndexedFrom) return;
  if (fullBlocks_ > indexCapacity_ && !enlargeIndex()) return;
  auto** entries = static_cast<MemoryBlock**>(index_.get());
  MemoryBlock* block = indexed_ > 0 ? entries[indexed_ - 1]->next : firstFull_;
  for (; block != nullptr; block = block->next) entries[indexed_++] = block;
}

// False when there is no memory for it: then the index stays as it is, and the next block tries.
bool MemorySharedStreamData::enlargeIndex() noexcept {
  try {
    const uint64_t capacity = std::max(kLeastIndexCapacity, 2 * fullBlocks_);
    ObjectMemory larger(sizeOfPointers(capacity));
    if (indexed_ > 0) std::memcpy(larger.get(), index_.get(), indexed_ * sizeof(MemoryBlock*));
    index_ = std::move(larger);
    indexCapacity_ = capacity;
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace zeb::streams
