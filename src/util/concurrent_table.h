// A hash table of pointers that is searched without a lock while one writer at a time changes it.
//
// Open addressing, linear probing, half full at the most. A writer holds its owner's lock; a
// reader holds a read section (base/read_section.h), which keeps every node and every array that it
// can reach from being freed.
//
// What a reader is promised: a node that it gets was in the table during the search. An absence is
// certain unless a removal moved nodes meanwhile, perhaps past the reader; the search says so. A
// reader that needs to know asks again under the lock.
//
// Why that can be told: slots are stored with release and loaded with acquire at least. A reader
// that sees a slot that a removal has changed therefore also sees the version that the removal set
// before; if the version is even and unchanged around the search, the reader has seen none.
//
// The last store of a removal and every load of a slot are sequentially consistent besides: a
// remover that then looks for readers, and a reader that announces itself and then looks at slots,
// cannot both miss the other (base/read_section.h).
#ifndef ZEB_UTIL_CONCURRENT_TABLE_H
#define ZEB_UTIL_CONCURRENT_TABLE_H

#include <atomic>
#include <cstdint>
#include <new>

namespace zeb {

// `Node` offers `uint64_t hash`.
template <class Node>
class ConcurrentTable {
 public:
  struct Slot {
    std::atomic<uint64_t> hash{0};  // of the node below; may be another's for a moment
    std::atomic<Node*> node{nullptr};
  };

  // One array of slots. The owner allocates its memory and frees it when no reader can see it.
  struct Array {
    Array* nextRetired = nullptr;
    uint64_t mask = 0;
    Slot slots[1];

    static uint64_t bytesFor(uint64_t capacity) noexcept {
      return sizeof(Array) + (capacity - 1) * sizeof(Slot);
    }
    // `memory` has bytesFor(capacity) bytes; the capacity is a power of two.
    static Array* construct(void* memory, uint64_t capacity) noexcept {
      auto* array = new (memory) Array;
      array->mask = capacity - 1;
      for (uint64_t i = 1; i < capacity; ++i) new (&array->slots[i]) Slot;
      return array;
    }
  };

  // What a search came to.
  struct Found {
    Node* node;    // null: not found
    bool certain;  // false: not found, but a removal was under way
  };

  static constexpr uint64_t kLargestSparse = 16384;

  constexpr ConcurrentTable() noexcept = default;

  [[nodiscard]] bool exists() const noexcept { return array_.load(std::memory_order_seq_cst); }

  // For readers in a read section and for the writer.
  template <class Matches>
  [[nodiscard]] Found search(uint64_t hash, Matches matches) const noexcept {
    const uint64_t version = version_.load(std::memory_order_acquire);
    if (Node* node = find(hash, matches)) return {node, true};
    const bool removing = (version & 1) != 0;
    return {nullptr, !removing && version_.load(std::memory_order_relaxed) == version};
  }

  // The same without a word about certainty.
  template <class Matches>
  [[nodiscard]] Node* find(uint64_t hash, Matches matches) const noexcept {
    const Array* array = array_.load(std::memory_order_seq_cst);
    if (array == nullptr) return nullptr;
    // The bound matters only to a reader whom a writer overtakes again and again.
    for (uint64_t at = hash, steps = 0; steps <= array->mask; ++at, ++steps) {
      const Slot& slot = array->slots[at & array->mask];
      Node* node = slot.node.load(std::memory_order_seq_cst);
      if (node == nullptr) return nullptr;
      if (slot.hash.load(std::memory_order_relaxed) == hash && matches(*node)) return node;
    }
    return nullptr;
  }

  // The rest is for the writer.

  [[nodiscard]] uint64_t count() const noexcept { return count_; }
  [[nodiscard]] uint64_t capacity() const noexcept {
    const Array* array = array_.load(std::memory_order_relaxed);
    return array != nullptr ? array->mask + 1 : 0;
  }
  // Small tables stay three quarters empty, because most searches are for what is not the first in
  // its run otherwise; large ones half, because of their size.
  [[nodiscard]] bool hasRoom() const noexcept {
    const uint64_t slotsPerNode = capacity() <= kLargestSparse ? 4 : 2;
    return (count_ + 1) * slotsPerNode <= capacity();
  }

  // Copies everything into a larger, fresh array and returns the old one (null at first), which
  // readers may still be searching.
  Array* adopt(Array* fresh) noexcept {
    Array* old = array_.load(std::memory_order_relaxed);
    if (old != nullptr) {
      for (uint64_t i = 0; i <= old->mask; ++i) {
        Node* node = old->slots[i].node.load(std::memory_order_relaxed);
        if (node != nullptr) place(*fresh, node);
      }
    }
    array_.store(fresh, std::memory_order_seq_cst);
    return old;
  }

  // Needs hasRoom().
  void insert(Node* node) noexcept {
    place(*array_.load(std::memory_order_relaxed), node);
    ++count_;
  }

  // Returns false when the node is not in the table.
  bool remove(Node* node) noexcept {
    Array* array = array_.load(std::memory_order_relaxed);
    if (array == nullptr) return false;
    uint64_t hole = node->hash;
    for (;; ++hole) {
      Node* here = at(*array, hole).node.load(std::memory_order_relaxed);
      if (here == nullptr) return false;
      if (here == node) break;
    }
    moveVersion();
    closeHole(*array, hole & array->mask);
    moveVersion();
    --count_;
    return true;
  }

  // Calls `visit` with each node. `visit` may remove the very node that it is given if it then
  // returns true: the slot is looked at again, because closing a hole may move another node there.
  // A node that wrapped around the end may in this way come back before it and be visited twice.
  template <class Visit>
  void forEach(Visit visit) {
    Array* array = array_.load(std::memory_order_relaxed);
    if (array == nullptr) return;
    for (uint64_t i = 0; i <= array->mask;) {
      Node* node = array->slots[i].node.load(std::memory_order_relaxed);
      const bool removed = node != nullptr && visit(node);
      if (!removed) ++i;
    }
  }

  // Forgets the array and everything in it and hands the array out.
  Array* release() noexcept {
    count_ = 0;
    return array_.exchange(nullptr, std::memory_order_seq_cst);
  }

 private:
  static Slot& at(Array& array, uint64_t position) noexcept {
    return array.slots[position & array.mask];
  }

  static void fill(Slot& slot, Node* node, uint64_t hash) noexcept {
    slot.hash.store(hash, std::memory_order_relaxed);
    slot.node.store(node, std::memory_order_release);
  }

  static void place(Array& array, Node* node) noexcept {
    uint64_t position = node->hash;
    while (at(array, position).node.load(std::memory_order_relaxed) != nullptr) ++position;
    fill(at(array, position), node, node->hash);
  }

  // Odd while a removal moves nodes.
  void moveVersion() noexcept {
    version_.store(version_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }

  // Moves later nodes of the same run down, so that no search ends early at the hole.
  static void closeHole(Array& array, uint64_t hole) noexcept {
    for (uint64_t next = hole + 1;; ++next) {
      Node* node = at(array, next).node.load(std::memory_order_relaxed);
      if (node == nullptr) break;
      const uint64_t hash = at(array, next).hash.load(std::memory_order_relaxed);
      const uint64_t distanceFromHome = (next - hash) & array.mask;
      if (distanceFromHome < ((next - hole) & array.mask)) continue;
      fill(at(array, hole), node, hash);
      hole = next;
    }
    at(array, hole).node.store(nullptr, std::memory_order_seq_cst);
  }

  std::atomic<Array*> array_{nullptr};
  std::atomic<uint64_t> version_{0};
  uint64_t count_ = 0;  // the writer's
};

}  // namespace zeb

#endif
