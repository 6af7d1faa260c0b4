// Searching shared structures without a lock, and freeing what such searches may still see.
//
// A reader announces itself in a cell of its own thread (ReadSection), searches, and leaves. A
// writer, under the lock of its structure, first unlinks an object and then gives it to a
// RetireList, which hands it back for freeing as soon as every section that could have reached it
// has ended. Nobody waits for anybody: what is still in sight is handed back by a later call.
//
// Why that is safe: entering, the searching loads, the unlinking stores and the writer's look at
// the cells are all sequentially consistent. If the writer finds a cell at rest, the section that
// follows in that cell starts after the unlinking in their one order and cannot find the object. If
// it finds a section under way, it frees nothing until that cell has moved on. Leaving is a release
// store that the writer's look acquires, so the reader's last access happens before the object is
// freed.
//
// Sections do not nest, and nothing is called out of a section.
#ifndef ZEB_BASE_READ_SECTION_H
#define ZEB_BASE_READ_SECTION_H

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/thread_slot.h"

namespace zeb {

namespace read_section {
// Odd while the thread that owns the slot is in a section.
struct alignas(64) Cell {
  std::atomic<uint64_t> sequence{0};
};
extern constinit std::array<Cell, kExclusiveThreadSlots> cells;

// Where every cell stood at one moment.
struct Moment {
  std::array<uint64_t, kExclusiveThreadSlots> sequences{};
  bool anybodyReading = false;

  static Moment now() noexcept;
  // True when every section that was under way at that moment has ended.
  [[nodiscard]] bool passed() const noexcept;
};
}  // namespace read_section

class ReadSection {
 public:
  ReadSection() noexcept {
    const unsigned slot = threadSlot();
    if (slot == kSharedThreadSlot) return;
    cell_ = &read_section::cells[slot].sequence;
    cell_->store(cell_->load(std::memory_order_relaxed) + 1, std::memory_order_seq_cst);
  }
  ~ReadSection() {
    if (cell_ == nullptr) return;
    cell_->store(cell_->load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  ReadSection(const ReadSection&) = delete;
  ReadSection& operator=(const ReadSection&) = delete;

  // False for a thread that has no cell of its own: it must search under the lock instead.
  [[nodiscard]] bool entered() const noexcept { return cell_ != nullptr; }

 private:
  std::atomic<uint64_t>* cell_ = nullptr;
};

// Objects that are unlinked but may still be in somebody's sight. `T` offers `T* nextRetired`. The
// owner's lock guards the list.
template <class T>
class RetireList {
 public:
  constexpr RetireList() noexcept = default;

  // The object is unlinked already.
  void add(T* object) noexcept {
    object->nextRetired = fresh_;
    fresh_ = object;
  }

  // A chain of objects that nobody can see any more. Free them after leaving the lock.
  [[nodiscard]] T* takeUnseen() noexcept {
    T* unseen = nullptr;
    if (waiting_ != nullptr && since_.passed()) moveAll(waiting_, unseen);
    if (fresh_ == nullptr || waiting_ != nullptr) return unseen;
    since_ = read_section::Moment::now();
    moveAll(fresh_, since_.anybodyReading ? waiting_ : unseen);
    return unseen;
  }

  // All of them. Only while no other thread uses the library.
  [[nodiscard]] T* takeAll() noexcept {
    T* all = nullptr;
    moveAll(waiting_, all);
    moveAll(fresh_, all);
    return all;
  }

 private:
  static void moveAll(T*& from, T*& to) noexcept {
    while (from != nullptr) {
      T* object = from;
      from = object->nextRetired;
      object->nextRetired = to;
      to = object;
    }
  }

  T* fresh_ = nullptr;    // retired after `since_`
  T* waiting_ = nullptr;  // retired before `since_`
  read_section::Moment since_;
};

// Calls `dispose` with every object of a chain that a RetireList handed out.
template <class T, class Dispose>
void disposeRetired(T* chain, Dispose dispose) {
  while (chain != nullptr) {
    T* next = chain->nextRetired;
    dispose(chain);
    chain = next;
  }
}

}  // namespace zeb

#endif
